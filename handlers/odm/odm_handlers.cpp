// The customer LED board (ODM) and OS shutdown (NVR) commands. Every GET frames its
// lines with 26-"=" separators; SETs ask for a slot where the board has two, then the
// values, and the MCU acknowledges with answer byte 0.
#include "odm_handlers.h"

#include "shapes/exchange_steps.h"
#include "shapes/rows.h"

using namespace steps;
using shapes::GetRow;
using shapes::MenuRow;

namespace odm {

namespace {

const GetRow GET_SHUTDOWN_STATUS = {
    .lines = {{.states = {{0, "OS not Shutdown."}, {1, "OS has been shutdown."}}}}};
const GetRow GET_FACTORY_DEFAULT_STATUS = {
    .lines = {{.states = {{0, "Return to factory default."}, {255, "Keep current setting."}}}}};
constexpr Named WIFI_LED_STATES[] = {
    {0, "fd(%d) LED Off.\n"},
    {1, "fd(%d) LED On.\n"},
    {255, "fd(%d) Out of slot range.\n"},
};
const GetRow GET_GPS_LED_STATUS = {
    .lines = {{.states = {
                   {0, "LED Off (Green)."}, {1, "LED On (Green)."}, {255, "Out of Slot Range."}}}}};
const GetRow GET_VINM_FAULT_STATUS = {
    .lines = {{.states = {{0, "Take Place VINM FAULT."}, {255, "No VINM Fault Event."}}}}};
const GetRow GET_WAKEUP_EVENT = {.lines = {{.states = {{0, "Free."},
                                                       {1, "Ignition."},
                                                       {2, "Power Button."},
                                                       {3, "Event Button."},
                                                       {4, "RTC."},
                                                       {5, "SMS."},
                                                       {6, "G-Sensor."}}}}};
const GetRow GET_GSENSOR_STATUS = {
    .lines = {{.states = {{0, "G-Sensor Wakeup Off."}, {1, "G-Sensor Wakeup On. (Default)"}}}}};
const GetRow GET_POWER_LED_STATUS = {.lines = {{.states = {{0, "LED Off. (Green)"},
                                                           {1, "LED On. (Green)(Default)"},
                                                           {255, "Out of Slot Range."}}}}};
const GetRow GET_WWAN_ENABLE_STATUS = {
    .lines = {{.states = {{0, "WWAN Disable"}, {1, "WWAN Enable"}}}}, .request = {0}};
const GetRow GET_WWAN_RESET_STATUS = {
    .lines = {{.states = {{0, "WWAN Reset Off"}, {1, "WWAN Reset On"}}}}, .request = {0}};

constexpr Named SIGNAL_LED[] = {
    {0, "fd(%d) Signal LED is Off.\n"},
    {1, "fd(%d) Signal LED is Green.\n"},
    {2, "fd(%d) Signal LED is Yellow.\n"},
    {3, "fd(%d) Reserve.\n"},
};
constexpr Named SERVICE_LED[] = {
    {0, "fd(%d) Service LED is Off.\n"},
    {1, "fd(%d) Service LED is Green.\n"},
    {2, "fd(%d) Service LED is Yellow.\n"},
    {3, "fd(%d) Reserve.\n"},
};
constexpr Named LED_RESULT[] = {
    {0, "fd(%d) Command OK.\n"},
    {15, "fd(%d) Command Failure !!!\n"},
};

// The flash-time lines: always lit, command error, time, unknown.
struct FlashTexts {
    const char* always;
    const char* error;
    const char* time;
    const char* unknown;
};
constexpr FlashTexts FLASH = {"fd(%d) Always Light\n", "fd(%d) Command error !!!\n",
                              "fd(%d) Flash Time = %d (unit:ms)\n", "fd(%d) Unknown.\n"};
constexpr FlashTexts SIGNAL_FLASH = {
    "fd(%d) Signal LED Always Light\n", "fd(%d) Signal LED Command error !!!\n",
    "fd(%d) Signal LED Flash Time = %d (unit:ms)\n", "fd(%d) Signal LED Unknown.\n"};
constexpr FlashTexts SERVICE_FLASH = {
    "fd(%d) Service LED Always Light\n", "fd(%d) Service LED Command error !!!\n",
    "fd(%d) Service LED Flash Time = %d (unit:ms)\n", "fd(%d) Service LED Unknown.\n"};

// `code` picks the line; the time printed is `tenths` times 100 ms.
std::string flashLine(const FlashTexts& t, int code, int tenths, int fd) {
    if (code == 0) return format(t.always, fd);
    if (code == 255) return format(t.error, fd);
    if (code <= 10) return format(t.time, fd, tenths * 100);
    return format(t.unknown, fd);
}

constexpr const char* SIM_LINES[4][2] = {
    {"fd(%d) SIM 1 has plugged out.\n", "fd(%d) SIM 1 has plugged in.\n"},
    {"fd(%d) SIM 2 has plugged out.\n", "fd(%d) SIM 2 has plugged in.\n"},
    {"fd(%d) SIM 3 has plugged out.\n", "fd(%d) SIM 3 has plugged in.\n"},
    {"fd(%d) SIM 4 has plugged out.\n", "fd(%d) SIM 4 has plugged in.\n"},
};

// ---------------------------------------------------------------- prompts

constexpr const char* SLOT_OPTIONS[] = {"0. Slot 1.", "1. Slot 2."};
constexpr Menu WIFI_SLOT_ASK = {nullptr, SLOT_OPTIONS, 0, 1, false, "Select WIFI Slot: "};
constexpr Menu WWAN_SLOT_ASK = {nullptr, SLOT_OPTIONS, 0, 1, false, "Select WWAN Slot: "};
constexpr Menu WIFI_SLOT_MENU = {"========\t\tSelect WIFI Slot \t\t========", SLOT_OPTIONS};
constexpr Menu WWAN_SLOT_MENU = {"========\t\tSelect WWAN Slot \t\t========", SLOT_OPTIONS};

const MenuRow SET_SHUTDOWN_FLAG = {
    "========\t\tShutdown Flag \t\t========",
    {"0. OS can not start shutdown process.", "1. OS start shutdown process."}};
constexpr const char* GREEN_LED_OPTIONS[] = {"0. LED Off. (Green)", "1. LED On. (Green)"};
constexpr Menu WIFI_LED_MENU = {"========\t\tWIFI LED Control \t\t========", GREEN_LED_OPTIONS};
constexpr Menu POWER_LED_MENU = {"========\tPower LED Control\t \t========", GREEN_LED_OPTIONS};
constexpr const char* WWAN_LED_OPTIONS[] = {"0. Off", "1. Green", "2. Yellow"};
constexpr Menu SIGNAL_LED_MENU = {"========\tWWAN Signal LED Control\t\t========", WWAN_LED_OPTIONS,
                                  0, 2};
constexpr Menu SERVICE_LED_MENU = {
    "========\tWWAN Service LED Control\t\t========", WWAN_LED_OPTIONS, 0, 2};
const MenuRow SET_GPS_LED_CONTROL = {"========\tGPS LED Control \t\t========",
                                     {"0. LED Off.", "1. LED On."}};
const MenuRow SET_GSENSOR_CONTROL = {
    "========\tG-Sensor Control\t \t========",
    {"0. Disable G-Sensor Wakeup Function.", "1. Enable G-Sensor Wakeup Function. (Default)"}};
constexpr const char* WWAN_ENABLE_OPTIONS[] = {"0. Disable.", "1. Enable."};
constexpr Menu WWAN_ENABLE_MENU = {"========\tWWAN Enable Control\t\t========",
                                   WWAN_ENABLE_OPTIONS};
constexpr const char* WWAN_RESET_OPTIONS[] = {"0. Reset Off.", "1. Reset On."};
constexpr Menu WWAN_RESET_MENU = {"========\tWWAN Reset Control\t\t========", WWAN_RESET_OPTIONS};

constexpr const char* FLASH_PROMPT_5 =
    "Input Flash Time (0 ~ 10, 0 is always light, default is 5)(unit:100ms) :";
constexpr const char* FLASH_PROMPT_0 =
    "Input Flash Time (0 ~ 10, 0 is always light, default is 0)(unit:100ms) :";

// A title line, then a number prompt.
constexpr Menu numberAsk(const char* title, const char* prompt, int max) {
    return {title, {}, 0, max, false, prompt};
}
constexpr Menu WIFI_FLASH_ASK =
    numberAsk("========\t\tWIFI LED Flash Time \t\t========", FLASH_PROMPT_5, 10);
constexpr Menu SIGNAL_FLASH_ASK =
    numberAsk("========\tWWAN Signal LED Flash Time\t\t========", FLASH_PROMPT_5, 10);
constexpr Menu SERVICE_FLASH_ASK =
    numberAsk("========\tWWAN Service LED Flash Time\t\t========", FLASH_PROMPT_5, 10);
constexpr Menu GPS_FLASH_ASK =
    numberAsk("========\tGPS LED Flash Time\t\t========", FLASH_PROMPT_5, 10);
constexpr Menu POWER_FLASH_ASK =
    numberAsk("========\tPower LED Flash Time \t\t========", FLASH_PROMPT_0, 10);
constexpr Menu DELAY_ON_ASK = numberAsk(
    "========\tDelay On Time\t \t\t========", "Set Delay On Time, EX: 300 (0~64800 Sec) :", 64800);
constexpr Menu DELAY_OFF_ASK = numberAsk("========\tDelay Off Time\t \t\t========",
                                         "Set Delay Off Time, EX: 300 (0~64800 Sec) :", 64800);

// The WWAN slot: asked on boards with two, slot 0 on KX25. False when the input ended.
bool wwanSlot(const Menu& menu, int* slot) {
    *slot = 0;
    return oneWwanSlot(productName()) || ask(menu, slot);
}

int send(int cmdIndex, char* funName, std::initializer_list<BYTE> request) {
    return exchange(cmdIndex, request, Report::Ack, funName).verdict;
}

// A slot, then one value: two request bytes.
int slotAndValue(int cmdIndex, char* funName, const Menu& slotMenu, const Menu& valueMenu) {
    int slot = 0, value = 0;
    if (!ask(slotMenu, &slot) || !ask(valueMenu, &value)) return 0;
    return send(cmdIndex, funName, {static_cast<BYTE>(slot), static_cast<BYTE>(value)});
}

// A 16-bit number, low byte first.
int wordSet(int cmdIndex, char* funName, const Menu& menu) {
    int value = 0;
    if (!ask(menu, &value)) return 0;
    return send(cmdIndex, funName,
                {static_cast<BYTE>(value & 0xFF), static_cast<BYTE>(value >> 8)});
}

// A value after the fixed byte 0.
int afterZero(int cmdIndex, char* funName, const Menu& menu) {
    int value = 0;
    if (!ask(menu, &value)) return 0;
    return send(cmdIndex, funName, {0, static_cast<BYTE>(value)});
}

}  // namespace

bool oneWwanSlot(std::string_view product) {
    return isModel(product, {"KX25"});
}

std::string renderFlashTime(Bytes a, std::string_view, int fd) {
    BYTE t = byteAt(a, 0);
    return framed(flashLine(FLASH, t, t, fd));
}

std::string renderWwanLed(Bytes a, std::string_view, int fd) {
    BYTE b = byteAt(a, 0);
    return framed(named(SIGNAL_LED, b & 0x03, fd) + named(SERVICE_LED, (b >> 2) & 0x03, fd) +
                  named(LED_RESULT, b >> 4, fd));
}

std::string renderWwanFlashTime(Bytes a, std::string_view, int fd) {
    BYTE signal = byteAt(a, 0);
    // The service line shows the signal LED's time: the MCU's answer is read so.
    return framed(flashLine(SIGNAL_FLASH, signal, signal, fd) +
                  flashLine(SERVICE_FLASH, byteAt(a, 1), signal, fd));
}

std::string renderSimStatus(Bytes a, std::string_view product, int fd) {
    int sims = oneWwanSlot(product) ? 2 : 4;
    std::string s;
    for (int n = 0; n < sims; ++n) s += format(SIM_LINES[n][byteAt(a, 0) >> n & 1], fd);
    return framed(s);
}

std::string renderDelayOnTime(Bytes a, std::string_view, int fd) {
    return framed(format("fd(%d) Delay On Time = %d (0~64800)(unit:Sec)\n", fd, wordAt(a, 0)));
}

std::string renderDelayOffTime(Bytes a, std::string_view, int fd) {
    return framed(format("fd(%d) Delay Off Time = %d (0~64800)(unit:Sec)\n", fd, wordAt(a, 0)));
}

const shapes::GetRef STATE_ROWS[] = {
    {FUNC_ST_NVR_GET_SHUTDOWN_STATUS, GET_SHUTDOWN_STATUS},
    {FUNC_ST_ODM_GET_FACTORY_DEFAULT_STATUS, GET_FACTORY_DEFAULT_STATUS},
    {FUNC_ST_ODM_GET_GPS_LED_STATUS, GET_GPS_LED_STATUS},
    {FUNC_ST_ODM_GET_VINM_FAULT_STATUS, GET_VINM_FAULT_STATUS},
    {FUNC_ST_ODM_GET_WAKEUP_EVENT, GET_WAKEUP_EVENT},
    {FUNC_ST_ODM_GET_GSENSOR_STATUS, GET_GSENSOR_STATUS},
    {FUNC_ST_ODM_GET_POWER_LED_STATUS, GET_POWER_LED_STATUS},
    {FUNC_ST_ODM_GET_WWAN_ENABLE_STATUS, GET_WWAN_ENABLE_STATUS},
    {FUNC_ST_ODM_GET_WWAN_RESET_STATUS, GET_WWAN_RESET_STATUS},
};
const std::span<const shapes::GetRef> rows = STATE_ROWS;

std::string renderStateOf(int (*handler)(int, char*), Bytes a, int fd) {
    if (handler == FUNC_ST_ODM_GET_WIFI_LED_STATUS)
        return framed(named(WIFI_LED_STATES, byteAt(a, 0), fd));
    const shapes::GetRow* row = shapes::rowOf<shapes::GetRow>(rows, handler);
    return row ? shapes::renderGet(*row, fd, a, "KX07\n") : std::string();
}

}  // namespace odm

using namespace odm;

// ---------------------------------------------------------------- GET

int FUNC_ST_NVR_GET_SHUTDOWN_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_SHUTDOWN_STATUS, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_FACTORY_DEFAULT_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_FACTORY_DEFAULT_STATUS, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_WIFI_LED_STATUS(int cmdIndex, char* funName) {
    int slot = 0;
    if (!ask(WIFI_SLOT_ASK, &slot)) return 0;
    const BYTE request[] = {static_cast<BYTE>(slot)};
    return runState(cmdIndex, funName, WIFI_LED_STATES, request);
}
int FUNC_ST_ODM_GET_WIFI_LED_FLASH_TIME(int cmdIndex, char* funName) {
    int slot = 0;
    if (!ask(WIFI_SLOT_ASK, &slot)) return 0;
    return runGet(cmdIndex, funName, {static_cast<BYTE>(slot)}, 1, renderFlashTime);
}
int FUNC_ST_ODM_GET_WWAN_LED_STATUS(int cmdIndex, char* funName) {
    int slot = 0;
    if (!wwanSlot(WWAN_SLOT_ASK, &slot)) return 0;
    return runGet(cmdIndex, funName, {static_cast<BYTE>(slot)}, 1, renderWwanLed);
}
int FUNC_ST_ODM_GET_WWAN_LED_FLASH_TIME(int cmdIndex, char* funName) {
    int slot = 0;
    if (!wwanSlot(WWAN_SLOT_ASK, &slot)) return 0;
    return runGet(cmdIndex, funName, {static_cast<BYTE>(slot)}, 2, renderWwanFlashTime);
}
int FUNC_ST_ODM_GET_GPS_LED_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_GPS_LED_STATUS, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_GPS_LED_FLASH_TIME(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderFlashTime);
}
int FUNC_ST_ODM_GET_VINM_FAULT_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_VINM_FAULT_STATUS, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_SIM_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderSimStatus);
}
int FUNC_ST_ODM_GET_DELAY_ON_TIME(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderDelayOnTime);
}
int FUNC_ST_ODM_GET_DELAY_OFF_TIME(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderDelayOffTime);
}
int FUNC_ST_ODM_GET_WAKEUP_EVENT(int cmdIndex, char* funName) {
    return shapes::runGet(GET_WAKEUP_EVENT, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_GSENSOR_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_GSENSOR_STATUS, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_POWER_LED_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_POWER_LED_STATUS, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_POWER_LED_FLASH_TIME(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderFlashTime);
}
int FUNC_ST_ODM_GET_WWAN_ENABLE_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_WWAN_ENABLE_STATUS, cmdIndex, funName);
}
int FUNC_ST_ODM_GET_WWAN_RESET_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_WWAN_RESET_STATUS, cmdIndex, funName);
}

// ---------------------------------------------------------------- SET

int FUNC_ST_NVR_SET_SHUTDOWN_FLAG(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_SHUTDOWN_FLAG, cmdIndex, funName);
}
int FUNC_ST_ODM_SET_FACTORY_DEFAULT_FLAG(int cmdIndex, char* funName) {
    return send(cmdIndex, funName, {});
}
int FUNC_ST_ODM_SET_VINM_FAULT_OFF_FLAG(int cmdIndex, char* funName) {
    return send(cmdIndex, funName, {});
}
int FUNC_ST_ODM_SET_WIFI_LED_CONTROL(int cmdIndex, char* funName) {
    return slotAndValue(cmdIndex, funName, WIFI_SLOT_MENU, WIFI_LED_MENU);
}
int FUNC_ST_ODM_SET_WIFI_LED_FLASH_TIME(int cmdIndex, char* funName) {
    return slotAndValue(cmdIndex, funName, WIFI_SLOT_MENU, WIFI_FLASH_ASK);
}
int FUNC_ST_ODM_SET_WWAN_LED_CONTROL(int cmdIndex, char* funName) {
    int slot = 0, signal = 0, service = 0;
    if (!wwanSlot(WWAN_SLOT_MENU, &slot) || !ask(SIGNAL_LED_MENU, &signal) ||
        !ask(SERVICE_LED_MENU, &service))
        return 0;
    return send(cmdIndex, funName,
                {static_cast<BYTE>(slot), static_cast<BYTE>(signal + 4 * service)});
}
int FUNC_ST_ODM_SET_WWAN_LED_FLASH_TIME(int cmdIndex, char* funName) {
    int slot = 0, signal = 0, service = 0;
    if (!wwanSlot(WWAN_SLOT_MENU, &slot) || !ask(SIGNAL_FLASH_ASK, &signal) ||
        !ask(SERVICE_FLASH_ASK, &service))
        return 0;
    return send(cmdIndex, funName,
                {static_cast<BYTE>(slot), static_cast<BYTE>(signal), static_cast<BYTE>(service)});
}
int FUNC_ST_ODM_SET_GPS_LED_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_GPS_LED_CONTROL, cmdIndex, funName);
}
int FUNC_ST_ODM_SET_GPS_LED_FLASH_TIME(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, GPS_FLASH_ASK);
}
int FUNC_ST_ODM_SET_DELAY_ON_TIME(int cmdIndex, char* funName) {
    return wordSet(cmdIndex, funName, DELAY_ON_ASK);
}
int FUNC_ST_ODM_SET_DELAY_OFF_TIME(int cmdIndex, char* funName) {
    return wordSet(cmdIndex, funName, DELAY_OFF_ASK);
}
int FUNC_ST_ODM_SET_GSENSOR_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_GSENSOR_CONTROL, cmdIndex, funName);
}
int FUNC_ST_ODM_SET_POWER_LED_CONTROL(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, POWER_LED_MENU);
}
int FUNC_ST_ODM_SET_POWER_LED_FLASH_TIME(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, POWER_FLASH_ASK);
}
int FUNC_ST_ODM_SET_WWAN_ENABLE_STATUS(int cmdIndex, char* funName) {
    return afterZero(cmdIndex, funName, WWAN_ENABLE_MENU);
}
int FUNC_ST_ODM_SET_WWAN_RESET_STATUS(int cmdIndex, char* funName) {
    return afterZero(cmdIndex, funName, WWAN_RESET_MENU);
}

namespace odm {

namespace {
const shapes::MenuRef MENU_LIST[] = {
    {FUNC_ST_NVR_SET_SHUTDOWN_FLAG, SET_SHUTDOWN_FLAG},
    {FUNC_ST_ODM_SET_GPS_LED_CONTROL, SET_GPS_LED_CONTROL},
    {FUNC_ST_ODM_SET_GSENSOR_CONTROL, SET_GSENSOR_CONTROL},
};
}  // namespace

const std::span<const shapes::MenuRef> menuRows = MENU_LIST;

}  // namespace odm
