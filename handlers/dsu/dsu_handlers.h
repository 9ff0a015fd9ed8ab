// The display unit commands (device 12): the handlers, and the pure renders of their
// answers and menus for tests.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "mcu_base.h"
#include "shapes/rows.h"

int FUNC_ST_DSU_GET_DEVICE_TYPE(int cmdIndex, char* funName);
int FUNC_ST_DSU_GET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName);
int FUNC_ST_DSU_GET_MUTE_STATUS(int cmdIndex, char* funName);
int FUNC_ST_DSU_GET_AUTO_BACKLIGHT_STATUS(int cmdIndex, char* funName);
int FUNC_ST_DSU_GET_VIDEO_CONTROL_MODE(int cmdIndex, char* funName);
int FUNC_ST_DSU_GET_PANEL_MODE(int cmdIndex, char* funName);
int FUNC_ST_DSU_SET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName);
int FUNC_ST_DSU_SET_MUTE_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_DSU_SET_AUTO_BACKLIGHT_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_DSU_SET_VIDEO_CONTROL_MODE(int cmdIndex, char* funName);
int FUNC_ST_DSU_SET_KEY_SIMULATION(int cmdIndex, char* funName);
int FUNC_ST_DSU_SET_PANEL_CONTROL(int cmdIndex, char* funName);

namespace dsu {

using Bytes = std::span<const BYTE>;

std::string renderDeviceType(Bytes a, std::string_view product, int fd);
std::string renderVideoInputSource(Bytes a, std::string_view product, int fd);
std::string renderMuteStatus(Bytes a, std::string_view product, int fd);
std::string renderAutoBacklightStatus(Bytes a, std::string_view product, int fd);
std::string renderVideoControlMode(Bytes a, std::string_view product, int fd);
std::string renderPanelMode(Bytes a, std::string_view product, int fd);
// The menu of a SET handler, up to its prompt (null for other handlers).
std::string renderMenuOf(int (*handler)(int, char*));

// Every handler that runs a menu row, with its row.
extern const std::span<const shapes::MenuRef> menuRows;

}  // namespace dsu
