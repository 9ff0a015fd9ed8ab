// The PoE controllers and the LAN switch. Device 11 handlers print a banner, then their
// lines framed by tab-indented separators; loops send one request per port or board
// with the pauses the controllers need between requests. Every model rule is a table.
#include "poe_handlers.h"

#include <cstdlib>
#include <iterator>
#include <string_view>

#include "shapes/exchange_steps.h"
#include "shapes/rows.h"

using namespace steps;

namespace poe {

namespace {

constexpr const char* SEPT = "\t====================================";
constexpr const char* SEPT46 = "\t==============================================";
constexpr const char* SEP44 = "============================================";

constexpr std::string_view EIGHT_PORTS[] = {"KX40"};
constexpr std::string_view SIX_PORTS[] = {"KX19"};
constexpr std::string_view FOUR_PORTS[] = {"KX39", "KX41", "KX42", "KX08", "KX11", "KX06",
                                           "KX15", "KX16", "KX13", "KX14", "KX10", "KX05",
                                           "KX27", "KX28", "KX68", "KX43", "KX58"};
constexpr std::string_view TWO_PORTS[] = {"KX04", "KX63", "KX52", "KX07",
                                          "KX12", "KX17", "KX18", "KX20"};
// The port control's own lists: no KX40 nor KX41, and KX26 with two ports.
constexpr std::string_view CONTROL_FOUR_PORTS[] = {"KX39", "KX42", "KX08", "KX11", "KX06", "KX15",
                                                   "KX16", "KX13", "KX14", "KX10", "KX05", "KX27",
                                                   "KX28", "KX68", "KX43", "KX58"};
constexpr std::string_view CONTROL_TWO_PORTS[] = {"KX04", "KX63", "KX52", "KX07", "KX12",
                                                  "KX17", "KX18", "KX20", "KX26"};
// Boards whose status byte also tells the port amount and the power-good state.
constexpr std::string_view AMOUNT_MODELS[] = {"KX08", "KX10", "KX13", "KX14", "KX05"};
// Boards with a settable power budget.
constexpr std::string_view BUDGET_MODELS[] = {"KX05", "KX08", "KX15", "KX16", "KX13",
                                              "KX14", "KX11", "KX06", "KX10"};

bool kx73(std::string_view product) {
    return isModel(product, {"KX73"});
}
bool kx19(std::string_view product) {
    return isModel(product, {"KX19"});
}

// The magnitude of a byte read as a signed value.
int magnitude(BYTE b) {
    return std::abs(static_cast<int>(static_cast<signed char>(b)));
}

std::string line(const char* text) {
    return std::string(text) + '\n';
}

// One spelling mistake ("SINATURE") is the controllers' own and stays in all tables.
constexpr const char* IP8008_PORT_STATE_NAMES[37] = {
    "DISABLED",
    "IDLE",
    "RESERVED",
    "TEST_ERROR",
    "START_DETECTION",
    "DETECT EVALUATE",
    "START CXN CHECK",
    "CXN CHECK EVALUATE",
    "RESERVED",
    "RESERVED",
    "BACKOFF",
    "CLASSIFICATION",
    "RESERVED",
    "RESERVED",
    "CLASS EV1 LCE",
    "RESERVED",
    "MARK_EV1",
    "CLASS_EV2",
    "MARK EV2",
    "CLASS_EV3",
    "MARK EV3",
    "CLASS_EV4",
    "MARK EV4",
    "CLASS_EV5",
    "MARK EVLAST",
    "MARK EV LAST HALT",
    "CLASS EVALUATE",
    "POWER DENY",
    "POWER UP",
    "POWER ON",
    "PRIMARY SEMI POWER ON",
    "SECONDARY SEMI POWER ON",
    "Error DELAY",
    "NEXT DELAY",
    "ALT AB WAIT",
    "POWER UP SUSPEND",
    "CASC SUSPEND",
};
constexpr const char* IP808_PORT_STATE_NAMES[22] = {
    "DISABLED",
    "TEST_MODE",
    "TEST_ERROR",
    "IDLE",
    "START_DETECTION",
    "DETECT EVAL",
    "SINATURE INVALID",
    "BACKOFF",
    "START CLASSIFICATION(AF Mode)",
    "CLASS_EV1 (AT Mode)",
    "MARK_EV1 (AT Mode)",
    "CLASS_EV2 (AT Mode)",
    "MARK EV2 (AT Mode)",
    "CLASSIFICATION EVAL",
    "POWER DENIED",
    "POWER UP",
    "POWER ON",
    "Error Response",
    "Error Response",
    "ERROR DELAY",
    "PWRUP SUSPENDED",
    "Error Response",
};
// The KX19 controllers' states; 17, 18 and 21 up have no name.
constexpr Named KX19_STATES[] = {
    {0, "DISABLE"},
    {1, "TEST_MODE"},
    {2, "TEST_ERROR"},
    {3, "IDLE"},
    {4, "START_DETECTION"},
    {5, "DETECT_EVAL"},
    {6, "SINATURE_INVALID"},
    {7, "BACKOFF"},
    {8, "START_CLASSIFICATION(AF Mode)"},
    {9, "CLASS_EV1(AT Mode)"},
    {10, "MARK_EV1(AT Mode)"},
    {11, "CLASS_EV2(AT Mode)"},
    {12, "MARK_EV2(AT Mode)"},
    {13, "CLASSIFICATION_EVAL"},
    {14, "POWER_DENIED"},
    {15, "POWER_UP"},
    {16, "POWER_ON"},
    {19, "ERROR_DELAY"},
    {20, "PWRUP_SUSPENDED"},
};
// The name shown for a state value past the end of a table.
constexpr const char* NO_STATE = "Error Response";

constexpr const char* DETECTION[8] = {"Unknow , ",       "Short , ",   "Cpd too high , ",
                                      "RSIG too low , ", "Good , ",    "RSIG too high , ",
                                      "Open Circuit , ", "Reserved , "};
constexpr const char* DETECTION_KX73[8] = {"Unknow, ",       "Short, ",   "Cpd too high, ",
                                           "RSIG too low, ", "Good, ",    "RSIG too high, ",
                                           "Open Circuit, ", "Reserved, "};
constexpr const char* CLASSIFICATION[8] = {"Unknow",  "Class 1",  "Class 2", "Class 3",
                                           "Class 4", "Reserved", "Class 0", "Over Current"};
constexpr const char* CLASSIFICATION_KX73[8] = {"Unknow",  "Class 1",  "Class 2", "Class 3",
                                                "Class 4", "Reserved", "Class 0", "Over-Current."};

constexpr const char* IP8008_PORT_ON[5] = {
    "fd(%d) Lan Port 1 POE power on.\n", "fd(%d) Lan Port 2 POE power on.\n",
    "fd(%d) Lan Port 3 POE power on.\n", "fd(%d) Lan Port 4 POE power on.\n",
    "fd(%d) Lan Port 5 POE power on.\n"};
constexpr const char* IP8008_PORT_OFF[5] = {
    "fd(%d) Lan Port 1 POE power off.\n", "fd(%d) Lan Port 2 POE power off.\n",
    "fd(%d) Lan Port 3 POE power off.\n", "fd(%d) Lan Port 4 POE power off.\n",
    "fd(%d) Lan Port 5 POE power off.\n"};

constexpr const char* SPEEDS[4] = {"Not connected", "10 Mbps", "100 Mbps", "1000 Mbps"};

constexpr Named PORT1_STATES[] = {
    {0, "\tfd(%d) POE port 1 is power off.\n"},
    {1, "\tfd(%d) POE port 1 is power on.\n"},
};
constexpr Named PORT2_STATES[] = {
    {0, "\tfd(%d) POE port 2 is power off.\n"},
    {1, "\tfd(%d) POE port 2 is power on.\n"},
};
// The PoE card fitted, by the model it makes.
const shapes::GetRow GET_POE_CARD_DETECT = {.lines = {{.states = {{0, "KX28."}, {1, "KX27."}}}}};

const char* boardName(int board) {
    return board ? "Rear" : "Front";
}

std::vector<BYTE> bytes(std::initializer_list<BYTE> b) {
    return b;
}

// A device 11 handler's banner.
void banner(const char* name) {
    print(format("***\t%s\t***\n", name));
}

}  // namespace

int PoePortCount(std::string_view product) {
    if (isModel(product, EIGHT_PORTS)) return 8;
    if (isModel(product, SIX_PORTS)) return 6;
    if (isModel(product, FOUR_PORTS)) return 4;
    if (isModel(product, TWO_PORTS)) return 2;
    if (kx73(product)) return 4;
    return 0;
}

int controlPortCount(std::string_view product) {
    if (isModel(product, SIX_PORTS)) return 6;
    if (isModel(product, CONTROL_FOUR_PORTS)) return 4;
    if (isModel(product, CONTROL_TWO_PORTS)) return 2;
    if (kx73(product)) return 4;
    return 0;
}

int ip8008PortCount(std::string_view product) {
    if (isModel(product, {"KX57"})) return 4;
    if (isModel(product, {"KX59"})) return 5;
    return 0;
}

std::string ip8008StateName(int value) {
    return value >= 0 && value < static_cast<int>(std::size(IP8008_PORT_STATE_NAMES))
               ? IP8008_PORT_STATE_NAMES[value]
               : NO_STATE;
}

std::string ip808StateName(int value) {
    return value >= 0 && value < static_cast<int>(std::size(IP808_PORT_STATE_NAMES))
               ? IP808_PORT_STATE_NAMES[value]
               : NO_STATE;
}

std::string kx19State(int value) {
    for (const Named& n : KX19_STATES)
        if (n.value == value) return line(n.line);
    return {};
}

std::string detectionClass(BYTE b, bool kx73Board) {
    int detection = b & 0x07, classification = (b >> 4) & 0x07;
    if (kx73Board)
        return std::string(DETECTION_KX73[detection]) + CLASSIFICATION_KX73[classification];
    return std::string(DETECTION[detection]) + CLASSIFICATION[classification] + '\n';
}

// ---------------------------------------------------------------- device 11

std::string renderFwVersion(Bytes a, std::string_view product, int fd) {
    if (kx73(product))
        return framed(format("\tfd(%d) PSE Main Board FW Version = %d\n", fd, byteAt(a, 0)), SEPT);
    std::string s;
    for (size_t i = 0; i < a.size(); ++i)
        s += format("\tfd(%d) PSE %d FW Version = %d\n", fd, static_cast<int>(i + 1), a[i]);
    return framed(s, SEPT);
}

std::string renderTemperature(Bytes a, std::string_view product, int fd) {
    if (kx73(product)) {
        BYTE t = byteAt(a, 0);
        // A reading above zero prints a NUL where the sign would be.
        bool negative = t & 0x80;
        return framed(format("\tfd(%d) PSE Main Board Temperature = %c%d\n", fd,
                             negative ? '-' : '\0', negative ? 256 - t : t),
                      SEPT);
    }
    std::string s;
    for (size_t i = 0; i < a.size(); ++i)
        s += format("\tfd(%d) PSE %d Temperature = %d\n", fd, static_cast<int>(i + 1),
                    magnitude(a[i]));
    return framed(s, SEPT);
}

std::string renderKx19Temperature(int index, Bytes a, int fd) {
    BYTE tenths = byteAt(a, 1);
    // The sign is not shown; the tenths are taken as a magnitude too.
    return framed(format("\tfd(%d) PSE %d Temperature = %d.%d\n", fd, index + 1,
                         magnitude(byteAt(a, 0)), tenths < 128 ? tenths : 256 - tenths),
                  SEPT);
}

std::string renderTotalConsumption(Bytes a, std::string_view product, int fd) {
    return framed(format(kx73(product) ? "\tfd(%d) Main Board Total Consumption = %d(W)\n"
                                       : "\tfd(%d) Total Consumption = %d W\n",
                         fd, byteAt(a, 0)),
                  SEPT);
}

std::string renderPoeStatus(Bytes a, std::string_view product, int fd) {
    BYTE b = byteAt(a, 0);
    if (kx73(product)) {
        std::string s = std::string(SEPT) + '\n' + format("\tfd(%d) Main Board PSE Lan ", fd);
        for (int port = 1; port <= 4; ++port)
            s += format("\t\n\tPort%d %s", port, (b >> (port - 1) & 1) ? "Power on" : "Power off");
        return s + "\n" + SEPT;
    }
    std::string s;
    int count = PoePortCount(product);
    for (int port = 1; port <= count; ++port)
        s += format("\tfd(%d) Lan Port %d Status : %s \n", fd, port,
                    (b >> (port - 1) & 1) ? "Power On" : "Power Off");
    if (isModel(product, AMOUNT_MODELS)) {
        s += format("\tfd(%d) PoE Port Amount : %s \n", fd, (b & 0x40) ? "4 ports" : "2 ports");
        s +=
            format("\tfd(%d) PoE Pok Status : %s \n", fd, (b & 0x80) ? "Power OK" : "Power not OK");
    }
    return framed(s, SEPT);
}

std::string renderPortConsumption(int port, Bytes a, std::string_view product, int fd) {
    if (kx73(product))
        return format("\tfd(%d) Main Board Port%d Power Consumption = %d W\n", fd, port,
                      byteAt(a, 0));
    if (kx19(product))
        return framed(format("\tfd(%d) Port %d Power Consumption = %d.%d W\n", fd, port,
                             byteAt(a, 0), byteAt(a, 1)),
                      SEPT);
    return framed(format("\tfd(%d) Port %d Power Consumption = %d W\n", fd, port, byteAt(a, 0)),
                  SEPT);
}

std::string renderAllPortLink(Bytes a, std::string_view product, int fd) {
    if (kx73(product)) {
        std::string s = std::string(SEPT46) + '\n' + format("\tfd(%d) Main board ", fd);
        for (int port = 1; port <= 4; ++port)
            s += format("\n\t\tPort%d ", port) + detectionClass(byteAt(a, port - 1), true);
        return s + "\n" + SEPT46;
    }
    int count = PoePortCount(product);
    if (count == 0) return {};
    std::string s;
    for (int port = 1; port <= count; ++port)
        s += format("\tfd(%d) Port %d Status : ", fd, port) +
             detectionClass(byteAt(a, port - 1), false);
    return framed(s, SEPT46);
}

std::string renderPowerBudgetStatus(Bytes a, std::string_view product, int fd) {
    std::string s = format("fd(%d) PoePowerBudget = %d\n", fd, byteAt(a, 0));
    if (isModel(product, BUDGET_MODELS))
        s += format("fd(%d) Poe Power Budget = %d (0~255)(unit: W)\n", fd, byteAt(a, 0));
    return framed(s);
}

std::string renderNotSupported(std::string_view product) {
    // The product name keeps its own line end, which splits the message.
    return format("========  %s does not support this function  ========\n",
                  std::string(product).c_str()) +
           LONG_RULE + '\n';
}

// ---------------------------------------------------------------- device 13

std::string render808Temperature(int board, int port, Bytes a, int fd) {
    BYTE whole = byteAt(a, 0), tenths = byteAt(a, 1);
    bool negative = whole & 0x80;
    if (negative) {
        whole = static_cast<BYTE>(256 - whole);
        tenths = static_cast<BYTE>(256 - tenths);
    }
    return format("\tfd(%d) PSE %s Board Port%d Temperature = %c%d.%d\n", fd, boardName(board),
                  port, negative ? '-' : '\0', whole, tenths);
}

std::string render808PortStatus(int board, Bytes a, int fd) {
    std::string s =
        std::string(SEPT) + '\n' + format("\tfd(%d) %s Board PSE Lan ", fd, boardName(board));
    for (int port = 1; port <= 8; ++port)
        s += format("\t\n\tPort%d %s", port,
                    (byteAt(a, 0) >> (port - 1) & 1) ? "Power on" : "Power off");
    return s + "\n" + SEPT;
}

std::string render808Link(int board, int index, Bytes a, int fd) {
    BYTE b = byteAt(a, 0);
    std::string s = format(board ? "\tfd(%d) Rear board" : "\tfd(%d) Front board", fd);
    s += format(" Port%d Port State:%s", index + 1, ip808StateName(b & 0x1F).c_str());
    if (b & 0x20) s += " ,Start Power Up";
    if (b & 0x40) s += " ,Step State Machine";
    if (b & 0x80) s += " ,Power Up Suspended";
    return s + ".";
}

std::string renderIp8008PortStatus(Bytes a, std::string_view product, int fd) {
    std::string s;
    int count = ip8008PortCount(product);
    for (int port = 0; port < count; ++port)
        s += format((byteAt(a, 0) >> port & 1) ? IP8008_PORT_ON[port] : IP8008_PORT_OFF[port], fd);
    return framed(s);
}

std::string renderIp8008Link(int index, Bytes a) {
    return format("Port%d Port State:%s.\n", index + 1, ip8008StateName(byteAt(a, 0)).c_str());
}

std::string renderLinkStatus(Bytes a, std::string_view product, int fd) {
    if (!isModel(product, {"KX39"})) return {};
    std::string s;
    for (int port = 1; port <= 4; ++port)
        s += format("\tfd(%d) Lan Port %d Status : %s \n", fd, port,
                    (byteAt(a, 0) >> (port - 1) & 1) ? "Connected" : "Not Connected");
    return framed(s, SEPT);
}

std::string renderLinkSpeed(Bytes a, std::string_view product, int fd) {
    if (!isModel(product, {"KX39"})) return framed("", SEPT);
    std::string s;
    for (int port = 1; port <= 4; ++port)
        s += format("\tfd(%d) Lan Port %d Speed : %s \n", fd, port,
                    SPEEDS[byteAt(a, 0) >> (2 * (port - 1)) & 3]);
    return framed(s, SEPT);
}

}  // namespace poe

using namespace poe;

namespace {

// A one-exchange device 11 GET after its banner.
int bannerGet(int cmdIndex, char* funName, const char* name, std::span<const BYTE> request,
              size_t need, Render render, int pauseAfter = 0) {
    banner(name);
    int verdict = runGet(cmdIndex, funName, request, need, render);
    if (pauseAfter > 0) pauseMs(pauseAfter);
    return verdict;
}

// Reads a port in 1..count, then on or off after the port's title; `rule` puts the 44-"="
// separator before the option prompt. False when the input ended.
bool askPortAndSwitch(int count, const char* optionPrompt, bool rule, int* port, int* option) {
    print(format("Select which port to control(1~%d):", count));
    if (!choose(port, 1, count)) return false;
    print(format("=====          Port %d control          =====\n", *port) +
          "0. Power Off\n1. Power On\n" + (rule ? std::string(SEP44) + '\n' : "") + optionPrompt);
    return choose(option, 0, 1);
}

}  // namespace

// ---------------------------------------------------------------- device 11

int FUNC_PSE_FW_VERSION(int cmdIndex, char* funName) {
    bool main = kx73(productName());
    return bannerGet(cmdIndex, funName, "PSE_FW_VERSION", main ? bytes({0}) : bytes({}),
                     main ? 1 : 0, renderFwVersion, main ? 10 : 0);
}

int FUNC_PSE_TEMPERATURE(int cmdIndex, char* funName) {
    const char* product = productName();
    if (kx19(product)) {
        banner("PSE_TEMPERATURE");
        return runLoop(
            cmdIndex, funName, 6, [](int i) { return bytes({static_cast<BYTE>(i)}); }, 0,
            [](int i, const Answer& a) { print(renderKx19Temperature(i, a.bytes, fd())); }, 2);
    }
    bool main = kx73(product);
    return bannerGet(cmdIndex, funName, "PSE_TEMPERATURE", main ? bytes({0}) : bytes({}),
                     main ? 1 : 0, renderTemperature, main ? 10 : 0);
}

int FUNC_TOTAL_CONSUMPTION(int cmdIndex, char* funName) {
    bool main = kx73(productName());
    return bannerGet(cmdIndex, funName, "TOTAL_CONSUMPTION", main ? bytes({0}) : bytes({}), 1,
                     renderTotalConsumption, main ? 10 : 0);
}

int FUNC_POWER_BUDGET(int cmdIndex, char* funName) {
    return bannerGet(
        cmdIndex, funName, "POWER_BUDGET", {}, 1, [](Bytes a, std::string_view, int fd) {
            return framed(format("\tfd(%d) Power Budget = %d W\n", fd, byteAt(a, 0)), SEPT);
        });
}

int FUNC_PORT1_STATUS(int cmdIndex, char* funName) {
    return bannerGet(cmdIndex, funName, "PORT1_STATUS", {}, 1,
                     [](Bytes a, std::string_view, int fd) {
                         return framed(named(PORT1_STATES, byteAt(a, 0), fd), SEPT);
                     });
}

int FUNC_PORT2_STATUS(int cmdIndex, char* funName) {
    return bannerGet(cmdIndex, funName, "PORT2_STATUS", {}, 1,
                     [](Bytes a, std::string_view, int fd) {
                         return framed(named(PORT2_STATES, byteAt(a, 0), fd), SEPT);
                     });
}

int FUNC_POE_STATUS(int cmdIndex, char* funName) {
    const char* product = productName();
    if (PoePortCount(product) == 0) return 1;  // a model without PoE ports
    bool main = kx73(product);
    return bannerGet(cmdIndex, funName, "POE_STATUS", main ? bytes({0}) : bytes({}), 1,
                     renderPoeStatus, main ? 10 : 0);
}

int FUNC_PORT_POWER_CONSUMPTION(int cmdIndex, char* funName) {
    const char* product = productName();
    int count = PoePortCount(product);
    if (count == 0) return 1;
    banner("PORT_POWER_CONSUMPTION");
    if (kx73(product)) {
        print(std::string(SEPT) + '\n');
        int verdict = runLoop(
            cmdIndex, funName, 4,
            [](int i) {
                return bytes({0, static_cast<BYTE>(i + 1)});
            },
            10,
            [product](int i, const Answer& a) {
                print(renderPortConsumption(i + 1, a.bytes, product, fd()));
            },
            1);
        print(std::string(SEPT) + '\n');
        return verdict;
    }
    return runLoop(
        cmdIndex, funName, count, [](int i) { return bytes({static_cast<BYTE>(i + 1)}); }, 100,
        [product](int i, const Answer& a) {
            print(renderPortConsumption(i + 1, a.bytes, product, fd()));
        },
        kx19(product) ? 2 : 1);
}

int FUNC_PORT_1_POWER_CONSUMPTION(int cmdIndex, char* funName) {
    return bannerGet(
        cmdIndex, funName, "PORT_1_POWER_CONSUMPTION", {}, 1,
        [](Bytes a, std::string_view, int fd) {
            return framed(
                format("\tfd(%d) POE Port 1 Power Consumption = %d W\n", fd, byteAt(a, 0)), SEPT);
        });
}

int FUNC_PORT_2_POWER_CONSUMPTION(int cmdIndex, char* funName) {
    // This banner carries the handler's prefix, unlike its sibling's.
    return bannerGet(
        cmdIndex, funName, "FUNC_PORT_2_POWER_CONSUMPTION", {}, 1,
        [](Bytes a, std::string_view, int fd) {
            return framed(
                format("\tfd(%d) POE Port 2 Power Consumption = %d W\n", fd, byteAt(a, 0)), SEPT);
        });
}

int FUNC_ALL_PORT_LINK_STATUS(int cmdIndex, char* funName) {
    const char* product = productName();
    banner("ALL_PORT_LINK_STATUS");
    if (kx19(product)) {
        int verdict = runLoop(
            cmdIndex, funName, 6, [](int i) { return bytes({static_cast<BYTE>(i)}); }, 0,
            [](int i, const Answer& a) {
                print(std::string(SEPT46) + '\n' +
                      format("\tfd(%d) Port %d Status : ", fd(), i + 1) +
                      kx19State(byteAt(a.bytes, 0)));
            },
            1);
        print(std::string(SEPT46) + '\n');
        return verdict;
    }
    bool main = kx73(product);
    // Other models send first and look at the model afterwards.
    return runGet(cmdIndex, funName, main ? bytes({0}) : bytes({}),
                  main ? 4 : static_cast<size_t>(PoePortCount(product)), renderAllPortLink);
}

int FUNC_POE_CARD_DETECT(int cmdIndex, char* funName) {
    banner("POE_CARD_DETECT");
    return shapes::runGet(GET_POE_CARD_DETECT, cmdIndex, funName);
}

int FUNC_POE_GET_POWER_BUDGET(int cmdIndex, char* funName) {
    return bannerGet(cmdIndex, funName, "POWER_BUDGET_STATUS", {}, 1, renderPowerBudgetStatus);
}

int FUNC_PORT_POWER_CONTROL(int cmdIndex, char* funName) {
    const char* product = productName();
    int count = controlPortCount(product);
    if (count == 0) return 1;  // a model the control does not know
    banner("PORT_POWER_CONTROL");
    print(std::string(SEP44) + '\n');
    bool main = kx73(product);
    if (main) print("Control Board\n");
    int port = 0, option = 0;
    if (!askPortAndSwitch(count, SELECT_QUESTION, !main, &port, &option)) return 0;
    if (main) {
        print(std::string(SEP44) + '\n');
        return exchange(cmdIndex, {0, static_cast<BYTE>(port), static_cast<BYTE>(option)},
                        Report::Get, funName)
            .verdict;
    }
    return exchange(cmdIndex, {static_cast<BYTE>(port), static_cast<BYTE>(option)}, Report::Get,
                    funName)
        .verdict;
}

int FUNC_POE_SET_POWER_BUDGET(int cmdIndex, char* funName) {
    const char* product = productName();
    if (!isModel(product, BUDGET_MODELS)) {
        print(renderNotSupported(product));
        return 1;
    }
    int watts = 0;
    if (!ask({"========\t\tPOE POWER BUDGET\t\t========",
              {},
              0,
              255,
              false,
              "Set POE POWER BUDGET (0-255)(Unit: W):"},
             &watts))
        return 0;
    return exchange(cmdIndex, {static_cast<BYTE>(watts)}, Report::Get, funName).verdict;
}

// ---------------------------------------------------------------- device 13, IP808

namespace {

// Every IP808 request is followed by 10 ms; boards go front (0) then rear (1).
constexpr int IP808_PAUSE = 10;

int perBoard(int cmdIndex, char* funName,
             const std::function<void(int board, const Answer&)>& onAnswer) {
    return runLoop(
        cmdIndex, funName, 2, [](int b) { return bytes({static_cast<BYTE>(b)}); }, IP808_PAUSE,
        onAnswer, 1);
}

// For each board: its opening text, one request per port, its closing text.
int perBoardPort(int cmdIndex, char* funName, const char* open, const char* close, int firstPort,
                 size_t need,
                 const std::function<std::string(int board, int index, const Answer&)>& render) {
    int verdict = 0;
    for (int board = 0; board < 2; ++board) {
        print(std::string(open) + '\n');
        verdict = runLoop(
            cmdIndex, funName, 8,
            [board, firstPort](int i) {
                return bytes({static_cast<BYTE>(board), static_cast<BYTE>(i + firstPort)});
            },
            IP808_PAUSE, [board, &render](int i, const Answer& a) { print(render(board, i, a)); },
            need);
        print(std::string(close) + '\n');
    }
    return verdict;
}

}  // namespace

int FUNC_808_PSE_FW_VERSION(int cmdIndex, char* funName) {
    if (!kx73(productName())) return 0;
    return perBoard(cmdIndex, funName, [](int board, const Answer& a) {
        print(framed(format(board ? "\tfd(%d) PSE Rear  Board FW Version = %d\n"
                                  : "\tfd(%d) PSE Front Board FW Version = %d\n",
                            fd(), byteAt(a.bytes, 0)),
                     SEPT));
    });
}

int FUNC_808_PSE_TEMPERATURE(int cmdIndex, char* funName) {
    if (!kx73(productName())) return 0;
    // The temperature ports count from 0 on the wire.
    return perBoardPort(cmdIndex, funName, SEPT, SEPT, 0, 2, [](int board, int i, const Answer& a) {
        return render808Temperature(board, i + 1, a.bytes, fd());
    });
}

int FUNC_808_TOTAL_CONSUMPTION(int cmdIndex, char* funName) {
    if (!kx73(productName())) return 0;
    return perBoard(cmdIndex, funName, [](int board, const Answer& a) {
        print(framed(format(board ? "\tfd(%d) Rear Board Total Consumption = %d(W)\n"
                                  : "\tfd(%d) Front Board Total Consumption = %d(W)\n",
                            fd(), byteAt(a.bytes, 0)),
                     SEPT));
    });
}

int FUNC_808_PORT_STATUS(int cmdIndex, char* funName) {
    if (!kx73(productName())) return 0;
    return perBoard(cmdIndex, funName, [](int board, const Answer& a) {
        print(render808PortStatus(board, a.bytes, fd()));
    });
}

int FUNC_808_PORT_POWER_CONSUMPTION(int cmdIndex, char* funName) {
    if (!kx73(productName())) return 0;
    // Unlike the temperature command, these ports count from 1.
    return perBoardPort(cmdIndex, funName, SEPT, SEPT, 1, 1, [](int board, int i, const Answer& a) {
        return format("\tfd(%d) %s Board Port%d Power Consumption = %d W\n", fd(),
                      board ? "Rear" : "Front", i + 1, byteAt(a.bytes, 0));
    });
}

int FUNC_808_ALL_PORT_LINK_STATUS(int cmdIndex, char* funName) {
    if (!kx73(productName())) return 0;
    return perBoardPort(
        cmdIndex, funName, SEPT46, SEPT46, 0, 1,
        [](int board, int i, const Answer& a) { return render808Link(board, i, a.bytes, fd()); });
}

int FUNC_808_PORT_POWER_CONTROL(int cmdIndex, char* funName) {
    if (!kx73(productName())) return 0;
    print(std::string(SEP44) + '\n');
    int board = 0, port = 0, option = 0;
    if (!ask({nullptr, {}, 0, 1, false, "Select which Board to control(0: Front, 1:Rear):"},
             &board))
        return 0;
    // The option prompt is spelt so on these boards.
    if (!askPortAndSwitch(8, "Select which option you wnat to do:", false, &port, &option))
        return 0;
    print(std::string(SEP44) + '\n');
    return exchange(cmdIndex,
                    {static_cast<BYTE>(board), static_cast<BYTE>(port), static_cast<BYTE>(option)},
                    Report::Get, funName)
        .verdict;
}

// ---------------------------------------------------------------- device 13, IP8008

namespace {
// The IP8008 loops wait 200 ms after each request; the first request byte is 0.
constexpr int IP8008_PAUSE = 200;
}  // namespace

int FUNC_IP8008_GET_FW_VERSION(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {0}, ip8008PortCount(productName()) ? 1 : 0,
                  [](Bytes a, std::string_view product, int fd) {
                      if (ip8008PortCount(product) == 0) return std::string();
                      return framed(format("fd(%d) IP8008 FW Version = %d\n", fd, byteAt(a, 0)));
                  });
}

int FUNC_IP8008_GET_TOTAL_CONSUMPTION(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {0}, 2, [](Bytes a, std::string_view, int fd) {
        return framed(
            format("fd(%d) Total Integer Power Consumption = %d. (Unit: W)\n", fd, byteAt(a, 0)) +
            format("fd(%d) Total Fract Power Consumption = %d. (Unit: W)\n", fd, byteAt(a, 1)));
    });
}

int FUNC_IP8008_GET_PORT_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {0}, ip8008PortCount(productName()) ? 1 : 0,
                  renderIp8008PortStatus);
}

int FUNC_IP8008_GET_PORT_POWER_CONSUMPTION(int cmdIndex, char* funName) {
    int count = ip8008PortCount(productName());
    if (count == 0) return 0;
    return runLoop(
        cmdIndex, funName, count,
        [](int i) {
            return bytes({0, static_cast<BYTE>(i + 1)});
        },
        IP8008_PAUSE,
        [](int i, const Answer& a) {
            print(framed(format("fd(%d) Port %d Integer Power Consumption = %d. (Unit: W)\n", fd(),
                                i + 1, byteAt(a.bytes, 0)) +
                         format("fd(%d) Port %d Fract Power Consumption = %d. (Unit: W)\n", fd(),
                                i + 1, byteAt(a.bytes, 1))));
        },
        2);
}

int FUNC_IP8008_GET_ALL_PORT_LINK_STATUS(int cmdIndex, char* funName) {
    int count = ip8008PortCount(productName());
    if (count == 0) return 0;
    print(std::string(SEPT46) + '\n');
    int verdict = runLoop(
        cmdIndex, funName, count,
        [](int i) {
            return bytes({0, static_cast<BYTE>(i)});
        },
        IP8008_PAUSE, [](int i, const Answer& a) { print(renderIp8008Link(i, a.bytes)); }, 1);
    print(std::string(SEPT46) + '\n');
    return verdict;
}

int FUNC_IP8008_SET_PORT_POWER_CONTROL(int cmdIndex, char* funName) {
    const char* product = productName();
    // The controller selector: 1 on KX57, 0 on KX59. Other models offer ports 1 to 0,
    // so no answer is accepted and the prompt repeats until the input ends.
    BYTE selector = isModel(product, {"KX57"}) ? 1 : 0;
    int count = ip8008PortCount(product);
    print(std::string(SEP44) + '\n');
    int port = 0, option = 0;
    if (!askPortAndSwitch(count, "Select which option you wnat to do:", false, &port, &option))
        return 0;
    print(std::string(SEP44) + '\n');
    return exchange(cmdIndex, {selector, static_cast<BYTE>(port), static_cast<BYTE>(option)},
                    Report::Ack, funName)
        .verdict;
}

// ---------------------------------------------------------------- LAN switch

int FUNC_GET_CHIPID(int cmdIndex, char* funName) {
    return bannerGet(cmdIndex, funName, "GET_CHIP_ID", {}, 2,
                     [](Bytes a, std::string_view, int fd) {
                         return framed(format("\tfd(%d) MSB Chip ID = %d\n", fd, byteAt(a, 0)) +
                                           format("\tfd(%d) LSB Chip ID = %d\n", fd, byteAt(a, 1)),
                                       SEPT);
                     });
}

int FUNC_GET_PORT_LINK_STATUS(int cmdIndex, char* funName) {
    return bannerGet(cmdIndex, funName, "GET_PORT_LINK_STATUS", {}, 1, renderLinkStatus);
}

int FUNC_GET_PORT_LINK_SPEED(int cmdIndex, char* funName) {
    return bannerGet(cmdIndex, funName, "GET_PORT_LINK_SPEED", {}, 1, renderLinkSpeed);
}
