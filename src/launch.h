// What every command handler relies on: the shared link contexts and buffers,
// the raw command path, the standard result report and the number prompt.
#pragma once

#include <atomic>
#include <cstdio>

#include "mcu_base.h"

constexpr int MAX_CAN_DEVICE = 8;
constexpr int SHARED_BUFFER_SIZE = 1024;

extern MCU_CONTENT* mcu_content;
extern int nMCUDevice;
extern MCU_CONTENT* can_content[MAX_CAN_DEVICE];
extern int nCANDevice;
extern int currentCANDevice;
extern int CAN1_fd;
extern int CAN2_fd;
extern char szProductName[64];
extern BYTE data[SHARED_BUFFER_SIZE];
extern BYTE dataOut[SHARED_BUFFER_SIZE];
extern int dataOutLength;

// Program name for "<program>: <what>: <why>" messages on stderr.
extern const char* g_progName;
// Where prompts read their answers (stdin unless a test swaps it).
extern FILE* g_input;

// The 56-"=" rule that closes menus and frames check_result's report.
extern const char* const RULE56;
// The 26-"=" separator around decoded results.
extern const char* const SEPARATOR26;
extern const char* const SELECT_PROMPT;  // "Select which option you want to do:"

int LAUNCH_MCU_COMMAND(char* funName, BYTE* DataIn, int DataInLength, BYTE* DataOut,
                       int* DataOutLength);
int check_result(int fd, int mode, int result, void* data, int length, char* funName);

// Sends the pool entry cmdIndex on the system-MCU link with the first `dataLength`
// bytes of `data`, after clearing dataOut/dataOutLength so no earlier answer can show,
// and reports through check_result in `mode`. Returns check_result's verdict.
int stExchange(int cmdIndex, int dataLength, int mode, char* funName);

// Reads one whole line holding a number within [min, max] into *value. Re-asks on a
// non-number ("\nInput Error !!! Please input a number.") or out of range
// ("\nSelect Error !!! Please select a option again."). Returns 1 with a value, or 0 when
// the input ended (after printing "input ended" on stderr): the caller then sends nothing
// and returns 0.
int checkSelect(int* value, int min, int max);

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
