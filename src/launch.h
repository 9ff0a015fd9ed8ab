// What the front ends share beyond the core: the raw command path of brdctl, the CAN
// device switch, and the interrupt and event callbacks.
#pragma once

#include <atomic>

#include "context.h"
#include "exchange.h"
#include "prompt.h"
#include "report.h"

// Sends the row named `funName` on the system-MCU link as an ST request with the bytes
// DataIn, trying up to 20 times; on an answer copies it into DataOut/*DataOutLength
// (DataOut holds RESPONSE_BUFFER_SIZE bytes). Returns the link's result code.
int LAUNCH_MCU_COMMAND(char* funName, BYTE* DataIn, int DataInLength, BYTE* DataOut,
                       int* DataOutLength);

int switchCAN(int index);

// What the CAN receive loops and the interrupt handler share.
extern std::atomic<bool> EXIT_LOOP;
extern std::atomic<unsigned int> receiveCANDataCountOnAP;

// SIGINT: prints the received-data count and ends the receive loops (async-signal-safe).
void handle_signal_from_keyevent(int sign_no);
// Event callback registered at start-up: counts CAN data events, ends a timed run at 60 s.
void callback_gotEventData(CALLBACK_DATA callback_data);
// Marks the start of a timed CAN receive run.
void startReceiveTimer();
