// The FM radio module's handlers: the FM_ rows of the command table. Each sends the
// row's frame as held in the system-MCU link's pool, with the user's value patched in.
#pragma once

#include <span>

#include "shapes/rows.h"

// The module's current frequency, low and high byte (10 kHz units), kept across a run:
// 87.50 MHz at start, set by FM_SET_FREQ, moved by every successful seek.
extern BYTE data2;
extern BYTE data3;

int FUNC_FM_POWER_ON_OFF(int cmdIndex, char* funName);
int FUNC_GET_BREAK(int cmdIndex, char* funName);
int FUNC_FM_CONFIG(int cmdIndex, char* funName);
int FUNC_FM_SET_VOLUME(int cmdIndex, char* funName);
int FUNC_FM_SET_MUTE(int cmdIndex, char* funName);
int FUNC_FM_SET_FREQ(int cmdIndex, char* funName);
int FUNC_FM_AUTO_SCAN(int cmdIndex, char* funName);
int FUNC_FM_RDS_STATUS(int cmdIndex, char* funName);
int FUNC_FM_GET_PID(int cmdIndex, char* funName);
int FUNC_FM_GET_PS(int cmdIndex, char* funName);
int FUNC_FM_GET_RDS(int cmdIndex, char* funName);
int FUNC_FM_SEEK_UP(int cmdIndex, char* funName);
int FUNC_FM_SEEK_DOWN(int cmdIndex, char* funName);
int FUNC_FM_AUDIO_SWITCH(int cmdIndex, char* funName);
int FUNC_FM_GET_VOICE(int cmdIndex, char* funName);
int FUNC_FM_GET_FM_ZONE(int cmdIndex, char* funName);
int FUNC_FM_SET_FLASH(int cmdIndex, char* funName);
int FUNC_FM_LOAD_DEFAULT(int cmdIndex, char* funName);

namespace fm {
// Each FM handler with its answer's render, for the checks that walk every row.
extern const std::span<const shapes::RenderRef> renders;
}  // namespace fm
