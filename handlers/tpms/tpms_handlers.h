// The TPMS receiver's handlers: the sensor list, the display-mode command and the wait
// for real-time records on the current CAN link.
#pragma once

#include <atomic>

#include "tpms_render.h"

// The sensors entered with TPMS_SET_SENSOR_ID: bytes 0..3 of each record hold the ID,
// most significant byte first. Kept for the rest of the run (the menu reuses it).
extern tpms::SensorTable TPMS_Data;
extern int nWheelNumber;
// Set by STOP_TPMS_READ (the interrupt during the real-time wait).
extern std::atomic<int> stopTPMSReadFlag;

void STOP_TPMS_READ(int signo);

int FUNC_TPMS_SET_SENSOR_ID(int cmdIndex, char* funName);
int FUNC_TPMS_DISPLAY_MODE(int cmdIndex, char* funName);
int FUNC_TPMS_GET_REALTIME_CALLBACK_DATA_FROM_MCU(int cmdIndex, char* funName);
