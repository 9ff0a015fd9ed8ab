// The radio modules (WWAN, WIFI, BT, USB), the SIM card slot, the general-purpose output
// and input lines, the AST text, the PCIe/SATA switch and the program LEDs. A GET prints
// one state line per radio, slot or line between separators; a SET offers its menu and
// sends the choice (or the lines' bits) as one byte.
#include "power_io.h"
#include "system_bespoke.h"
#include "system_renders.h"
#include "system_steps.h"

namespace sysrender {

std::array<Byte, 16> astRequest(std::string_view text) {
    std::array<Byte, 16> request{};
    text = text.substr(0, request.size());
    for (size_t i = 0; i < text.size(); ++i) request[i] = static_cast<Byte>(text[i]);
    return request;
}

}  // namespace sysrender

// ---------------------------------------------------------------- handlers

using namespace sysflow;
using namespace shapes;

namespace system_power_io {

// A radio reads 0 off and 1 on; other values name nothing.
const GetRow GET_WWAN_STATUS = {
    .lines = {{.states = {{0, "WWAN Power Off"}, {1, "WWAN Power On"}}}}};
const GetRow GET_WIFI_STATUS = {
    .lines = {{.states = {{0, "WIFI Power Off"}, {1, "WIFI Power On"}}}}};
const GetRow GET_BT_STATUS = {.lines = {{.states = {{0, "BT Power Off"}, {1, "BT Power On"}}}}};
const GetRow GET_USB_STATUS = {.lines = {{.states = {{0, "USB Power Off"}, {1, "USB Power On"}}}}};
const GetRow GET_SIM_CARD_STATUS = {
    .lines = {{.states = {{0, "SIM Card 1 Selected."}, {1, "SIM Card 2 Selected."}}}}};
// One line per output or input, bit n-1 for line n.
const GetRow GET_GPO_STATUS = {
    .lines = {{.mask = 0x01, .states = {{0, "GPO1 Low."}, {1, "GPO1 High."}}},
              {.mask = 0x02, .states = {{0, "GPO2 Low."}, {1, "GPO2 High."}}},
              {.mask = 0x04, .states = {{0, "GPO3 Low."}, {1, "GPO3 High."}}},
              {.mask = 0x08, .states = {{0, "GPO4 Low."}, {1, "GPO4 High."}}}}};
const GetRow GET_GPI_STATUS = {
    .lines = {{.mask = 0x01, .states = {{0, "GPI1 Low."}, {1, "GPI1 High."}}},
              {.mask = 0x02, .states = {{0, "GPI2 Low."}, {1, "GPI2 High."}}},
              {.mask = 0x04, .states = {{0, "GPI3 Low."}, {1, "GPI3 High."}}},
              {.mask = 0x08, .states = {{0, "GPI4 Low."}, {1, "GPI4 High."}}}}};

const MenuRow SET_WWAN_CONTROL = {"========\t\tWWAN Control\t\t========",
                                  {"0. WWAN Power Off.", "1. WWAN Power On."}};
const MenuRow SET_WIFI_CONTROL = {"========\t\tWIFI Control\t\t========",
                                  {"0. WIFI Power Off.", "1. WIFI Power On."}};
const MenuRow SET_BT_CONTROL = {"========\t\tBT Control\t\t========",
                                {"0. BT Power Off.", "1. BT Power On."}};
const MenuRow SET_USB_CONTROL = {"========\t\tUSB Control\t\t========",
                                 {"0. USB Power Off.", "1. USB Power On."}};
const MenuRow SET_SIM_CARD_SELECT = {"========\t\tSIM Card Select\t\t========",
                                     {"0. SIM Card 1.", "1. SIM Card 2."}};
const MenuRow SET_PCIE_SATA_CONTROL = {"========\t\tPCIE/SATA Control\t\t========",
                                       {"0. PCIE.", "1. SATA."}};
// The program LEDs take the health LED's options under titles of their own.
const MenuRow SET_PROGRAM_LED_CONTROL = {"========\tProgram LED Control \t\t========",
                                         {"0. LED Off.", "1. Green LED On.", "2. Red LED On."}};
const MenuRow SET_PROGRAM_LED2_CONTROL = {"========\tProgram LED2 Control \t\t========",
                                          {"0. LED Off.", "1. Green LED On.", "2. Red LED On."}};

// One menu per output; High sets the output's bit.
const SetRow SET_GPO_CONTROL = {
    .variants = {{.steps = {{.title = "========\tGPO Control - GPO1\t\t========",
                             .options = {"0. GPO1 Pin to Low", "1. GPO1 Pin to High"},
                             .bits = 0x01},
                            {.title = "========\tGPO Control - GPO2\t\t========",
                             .options = {"0. GPO2 Pin to Low", "1. GPO2 Pin to High"},
                             .bits = 0x02},
                            {.title = "========\tGPO Control - GPO3\t\t========",
                             .options = {"0. GPO3 Pin to Low", "1. GPO3 Pin to High"},
                             .bits = 0x04},
                            {.title = "========\tGPO Control - GPO4\t\t========",
                             .options = {"0. GPO4 Pin to Low", "1. GPO4 Pin to High"},
                             .bits = 0x08}}}}};

}  // namespace system_power_io

using namespace system_power_io;

int FUNC_ST_SYSTEM_GET_WWAN_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_WWAN_STATUS, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_WWAN_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_WWAN_CONTROL, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_GET_WIFI_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_WIFI_STATUS, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_WIFI_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_WIFI_CONTROL, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_GET_BT_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_BT_STATUS, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_BT_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_BT_CONTROL, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_GET_USB_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_USB_STATUS, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_USB_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_USB_CONTROL, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_SIM_CARD_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_SIM_CARD_STATUS, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_SIM_CARD_SELECT(int cmdIndex, char* funName) {
    return runMenu(SET_SIM_CARD_SELECT, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_GPO_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_GPO_STATUS, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_GPO_CONTROL(int cmdIndex, char* funName) {
    return runSet(SET_GPO_CONTROL, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_GPI_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_GPI_STATUS, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_SET_AST(int cmdIndex, char* funName) {
    print("========\t\tAST Setting\t\t========\n");
    print("Input AST (at most 16 characters) : ");
    std::string text;
    if (!readWord(16, &text)) return 0;
    return set(cmdIndex, funName, sysrender::astRequest(text));
}

int FUNC_ST_SYSTEM_SET_PCIE_SATA_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_PCIE_SATA_CONTROL, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_PROGRAM_LED_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_PROGRAM_LED_CONTROL, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_SET_PROGRAM_LED2_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_PROGRAM_LED2_CONTROL, cmdIndex, funName);
}

// ---------------------------------------------------------------- every row and render

namespace system_power_io {

namespace {

using sysrender::Answer;

// A render of its own as the shapes' render type.
template <std::string (*R)(const Answer&)>
std::string asRender(std::span<const BYTE> answer, int fd, const char* product) {
    return R(Answer(answer, product, fd));
}

const GetRef ROWS[] = {
    {FUNC_ST_SYSTEM_GET_WWAN_STATUS, GET_WWAN_STATUS},
    {FUNC_ST_SYSTEM_GET_WIFI_STATUS, GET_WIFI_STATUS},
    {FUNC_ST_SYSTEM_GET_BT_STATUS, GET_BT_STATUS},
    {FUNC_ST_SYSTEM_GET_USB_STATUS, GET_USB_STATUS},
    {FUNC_ST_SYSTEM_GET_SIM_CARD_STATUS, GET_SIM_CARD_STATUS},
    {FUNC_ST_SYSTEM_GET_GPO_STATUS, GET_GPO_STATUS},
    {FUNC_ST_SYSTEM_GET_GPI_STATUS, GET_GPI_STATUS},
};

const MenuRef MENUS[] = {
    {FUNC_ST_SYSTEM_SET_WWAN_CONTROL, SET_WWAN_CONTROL},
    {FUNC_ST_SYSTEM_SET_WIFI_CONTROL, SET_WIFI_CONTROL},
    {FUNC_ST_SYSTEM_SET_BT_CONTROL, SET_BT_CONTROL},
    {FUNC_ST_SYSTEM_SET_USB_CONTROL, SET_USB_CONTROL},
    {FUNC_ST_SYSTEM_SET_SIM_CARD_SELECT, SET_SIM_CARD_SELECT},
    {FUNC_ST_SYSTEM_SET_PCIE_SATA_CONTROL, SET_PCIE_SATA_CONTROL},
    {FUNC_ST_SYSTEM_SET_PROGRAM_LED_CONTROL, SET_PROGRAM_LED_CONTROL},
    {FUNC_ST_SYSTEM_SET_PROGRAM_LED2_CONTROL, SET_PROGRAM_LED2_CONTROL},
};

const SetRef SET_ROWS[] = {
    {FUNC_ST_SYSTEM_SET_POWER_TYPE, SET_POWER_TYPE},
    {FUNC_ST_SYSTEM_SET_FAN_VALUE_CONTROL, SET_FAN_VALUE},
    {FUNC_ST_SYSTEM_SET_GPI_ACTIVE_MODE, SET_GPI_ACTIVE_MODE},
    {FUNC_ST_SYSTEM_SET_GPO_PULLUP_MODE, SET_GPO_PULLUP_MODE},
    {FUNC_ST_SYSTEM_SET_GPO_CONTROL, SET_GPO_CONTROL},
};

const RenderRef RENDERS[] = {
    {FUNC_ST_SYSTEM_GET_POWER_TYPE, asRender<sysrender::renderPowerType>},
    {FUNC_ST_SYSTEM_GET_DELAY_TIME_OPTION, asRender<sysrender::renderDelayTime>},
    {FUNC_ST_SYSTEM_GET_STARTUP_SHUTDOWN_OPTION, asRender<sysrender::renderStartupShutdown>},
    {FUNC_ST_SYSTEM_GET_POWER_RANGE, asRender<sysrender::renderPowerRange>},
    {FUNC_ST_SYSTEM_GET_WATCHDOG_CONFIGURE, asRender<sysrender::renderWatchdog>},
    {FUNC_ST_SYSTEM_GET_MCU_VERSION, asRender<sysrender::renderMcuVersion>},
    {FUNC_ST_SYSTEM_GET_EVENT_LOG, asRender<sysrender::renderEventLog>},
    {FUNC_ST_SYSTEM_GET_SYSTEM_PARAMETER,
     [](std::span<const BYTE> a, int fd, const char* product) {
         return sysrender::renderSystemParameter(0, Answer(a, product, fd)) +
                sysrender::renderSystemParameter(1, Answer(a, product, fd)) +
                sysrender::renderSystemParameter(2, Answer(a, product, fd));
     }},
    {FUNC_ST_SYSTEM_GET_MACHINE_PARAMETER,
     [](std::span<const BYTE> a, int fd, const char* product) {
         return sysrender::renderMachineParameter(0, Answer(a, product, fd), true);
     }},
    {FUNC_ST_SYSTEM_GET_MODULE_NAME, asRender<sysrender::renderModuleName>},
    {FUNC_ST_SYSTEM_GET_BOARD_ID, asRender<sysrender::renderBoardId>},
    {FUNC_ST_SYSTEM_GET_IO_BOARD_ID, asRender<sysrender::renderIoBoardId>},
    {FUNC_ST_SYSTEM_GET_EXPANSION_BOARD_ID, asRender<sysrender::renderExpansionBoardId>},
    {FUNC_ST_SYSTEM_GET_MDIO_MODE_STATUS, asRender<sysrender::renderMdioMode>},
    {FUNC_ST_SYSTEM_GET_GPIO_MODE_STATUS, asRender<sysrender::renderGpioMode>},
    {FUNC_ST_SYSTEM_GET_GPI_ACTIVE_MODE, asRender<sysrender::renderGpiActiveMode>},
    {FUNC_ST_SYSTEM_GET_GPO_PULLUP_MODE, asRender<sysrender::renderGpoPullupMode>},
    {FUNC_ST_SYSTEM_GET_MDO_STATUS, asRender<sysrender::renderMdoStatus>},
    {FUNC_ST_SYSTEM_GET_MDI_STATUS, asRender<sysrender::renderMdiStatus>},
    {FUNC_ST_SYSTEM_GET_GSENSOR_DATA,
     [](std::span<const BYTE> a, int fd, const char* product) {
         return sysrender::renderGsensor(0x2C, Answer(a, product, fd));
     }},
    {FUNC_ST_SYSTEM_GET_I_BUTTON_KEY,
     [](std::span<const BYTE> a, int fd, const char* product) {
         return sysrender::renderIButtonKey(0x31, Answer(a, product, fd));
     }},
    {FUNC_ST_SYSTEM_GET_RFID_KEY,
     [](std::span<const BYTE> a, int fd, const char* product) {
         return sysrender::renderRfidKey(9, Answer(a, product, fd));
     }},
    {FUNC_ST_SYSTEM_GET_FAN_VALUE, asRender<sysrender::renderFanValue>},
    {FUNC_ST_SYSTEM_GET_FAN_RPM, asRender<sysrender::renderFanRpm>},
    {FUNC_ST_SYSTEM_GET_SP339A_MODE, asRender<sysrender::renderSp339aMode>},
    {FUNC_ST_SYSTEM_GET_KEY_LOCK_STATUS, asRender<sysrender::renderKeyLock>},
};

}  // namespace

const std::span<const GetRef> rows = ROWS;
const std::span<const MenuRef> menus = MENUS;
const std::span<const SetRef> setRows = SET_ROWS;
const std::span<const RenderRef> renders = RENDERS;

}  // namespace system_power_io
