// The display unit commands: each GET prints its raw byte in decimal between
// separators; each SET is one menu whose option is the byte sent.
#include "dsu_handlers.h"

#include "shapes/exchange_steps.h"
#include "shapes/rows.h"

using namespace steps;
using shapes::GetRow;
using shapes::MenuRow;

namespace dsu {

namespace {

// The video-source title also heads the video-mode and panel menus: the unit's menus
// are titled so.
constexpr const char* VIDEO_TITLE = "========              Video Input Source        ========";

const MenuRow SET_VIDEO_INPUT_SOURCE = {
    VIDEO_TITLE, {"0. LVDS", "1. CVBS1", "2. CVBS2", "3. CVBS3", "4. CVBS4"}};
const MenuRow SET_MUTE_CONTROL = {"========                Mute Control           ========",
                                  {"0. Audio Mute Disable", "1. Audio Mute Enable"}};
const MenuRow SET_AUTO_BACKLIGHT_CONTROL = {
    "========            Auto Backlight Control      ========", {"0. Disable", "1. Enable"}};
const MenuRow SET_VIDEO_CONTROL_MODE = {VIDEO_TITLE, {"0. Auto Mode", "1. Menu Mode"}};
// The keys start at 1: there is no key 0.
constexpr const char* KEY_OPTIONS[] = {"1. Power",       "2. Menu",         "3. Volume Up",
                                       "4. Volume Down", "5. Backlight Up", "6. Backlight Down Key",
                                       "7. Auto Key"};
constexpr Menu KEY_MENU = {"========                Key Simulation          ========", KEY_OPTIONS,
                           1, 7};
const MenuRow SET_PANEL_CONTROL = {VIDEO_TITLE,
                                   {"0. Panel Backlight Disable", "1. Panel Backlight Enable"}};

std::string valueLine(const char* line, Bytes a, int fd) {
    return framed(format(line, fd, byteAt(a, 0)));
}

}  // namespace

std::string renderDeviceType(Bytes a, std::string_view, int fd) {
    return valueLine("fd(%d) Device Type = %d\n", a, fd);
}
std::string renderVideoInputSource(Bytes a, std::string_view, int fd) {
    return valueLine("fd(%d) Video Input Source = %d\n", a, fd);
}
std::string renderMuteStatus(Bytes a, std::string_view, int fd) {
    return valueLine("fd(%d) Mute Status = %d\n", a, fd);
}
std::string renderAutoBacklightStatus(Bytes a, std::string_view, int fd) {
    return valueLine("fd(%d) Get Auto Backlight Status = %d\n", a, fd);
}
std::string renderVideoControlMode(Bytes a, std::string_view, int fd) {
    return valueLine("fd(%d) Get Video Control Mode = %d\n", a, fd);
}
std::string renderPanelMode(Bytes a, std::string_view, int fd) {
    return valueLine("fd(%d) Get Panel Mode = %d\n", a, fd);
}

}  // namespace dsu

using namespace dsu;

int FUNC_ST_DSU_GET_DEVICE_TYPE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderDeviceType);
}
int FUNC_ST_DSU_GET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderVideoInputSource);
}
int FUNC_ST_DSU_GET_MUTE_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderMuteStatus);
}
int FUNC_ST_DSU_GET_AUTO_BACKLIGHT_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderAutoBacklightStatus);
}
int FUNC_ST_DSU_GET_VIDEO_CONTROL_MODE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderVideoControlMode);
}
int FUNC_ST_DSU_GET_PANEL_MODE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderPanelMode);
}
int FUNC_ST_DSU_SET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_VIDEO_INPUT_SOURCE, cmdIndex, funName);
}
int FUNC_ST_DSU_SET_MUTE_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_MUTE_CONTROL, cmdIndex, funName);
}
int FUNC_ST_DSU_SET_AUTO_BACKLIGHT_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_AUTO_BACKLIGHT_CONTROL, cmdIndex, funName);
}
int FUNC_ST_DSU_SET_VIDEO_CONTROL_MODE(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_VIDEO_CONTROL_MODE, cmdIndex, funName);
}
int FUNC_ST_DSU_SET_KEY_SIMULATION(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, KEY_MENU);
}
int FUNC_ST_DSU_SET_PANEL_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_PANEL_CONTROL, cmdIndex, funName);
}

std::string dsu::renderMenuOf(int (*handler)(int, char*)) {
    if (handler == FUNC_ST_DSU_SET_KEY_SIMULATION) return renderMenu(KEY_MENU);
    const MenuRow* row = shapes::rowOf<MenuRow>(menuRows, handler);
    return row ? shapes::renderStep(shapes::menuStep(*row)) : std::string();
}

namespace dsu {

namespace {
const shapes::MenuRef MENU_LIST[] = {
    {FUNC_ST_DSU_SET_VIDEO_INPUT_SOURCE, SET_VIDEO_INPUT_SOURCE},
    {FUNC_ST_DSU_SET_MUTE_CONTROL, SET_MUTE_CONTROL},
    {FUNC_ST_DSU_SET_AUTO_BACKLIGHT_CONTROL, SET_AUTO_BACKLIGHT_CONTROL},
    {FUNC_ST_DSU_SET_VIDEO_CONTROL_MODE, SET_VIDEO_CONTROL_MODE},
    {FUNC_ST_DSU_SET_PANEL_CONTROL, SET_PANEL_CONTROL},
};
}  // namespace

const std::span<const shapes::MenuRef> menuRows = MENU_LIST;

}  // namespace dsu
