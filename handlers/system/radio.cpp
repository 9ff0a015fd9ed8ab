// The radio modules (WWAN, WIFI, BT, USB), the SIM card slot, the general-purpose output
// and input lines, the AST text, the PCIe/SATA switch and the program LEDs. A GET prints
// one state line per radio, slot or line between separators; a SET offers its menu and
// sends the choice (or the lines' bits) as one byte.
#include "system_bespoke.h"
#include "system_renders.h"
#include "system_steps.h"

namespace sysrender {

namespace {

constexpr int GPO_LINES = 4;
constexpr int GPI_LINES = 4;

std::string levelLines(const Answer& a, const char* name, int lines) {
    Byte b = a.at(0);
    std::string out = SEP26;
    for (int n = 1; n <= lines; ++n)
        out += fdLine(a, format("%s%d %s.", name, n, b & (1 << (n - 1)) ? "High" : "Low"));
    return out + SEP26;
}

}  // namespace

std::string renderRadioStatus(const Answer& a, std::string_view radio) {
    Byte b = a.at(0);
    std::string out = SEP26;
    // A value that means nothing prints no state line.
    if (b <= 1) out += fdLine(a, std::string(radio) + (b ? " Power On" : " Power Off"));
    return out + SEP26;
}

std::string renderSimCardStatus(const Answer& a) {
    Byte b = a.at(0);
    std::string out = SEP26;
    if (b <= 1) out += fdLine(a, format("SIM Card %d Selected.", b + 1));
    return out + SEP26;
}

std::string renderGpoStatus(const Answer& a) {
    return levelLines(a, "GPO", GPO_LINES);
}

std::string renderGpiStatus(const Answer& a) {
    return levelLines(a, "GPI", GPI_LINES);
}

std::array<Byte, 16> astRequest(std::string_view text) {
    std::array<Byte, 16> request{};
    text = text.substr(0, request.size());
    for (size_t i = 0; i < text.size(); ++i) request[i] = static_cast<Byte>(text[i]);
    return request;
}

}  // namespace sysrender

// ---------------------------------------------------------------- handlers

using namespace sysflow;
using sysrender::format;

namespace {

int choiceByte(int cmdIndex, char* funName, const std::string& menu, int max) {
    int choice = 0;
    if (!ask(menu, 0, max, &choice)) return 0;
    const Byte request[] = {static_cast<Byte>(choice)};
    return set(cmdIndex, funName, request);
}

int radioControl(int cmdIndex, char* funName, const char* radio) {
    std::string title = format("========\t\t%s Control\t\t========", radio);
    std::string off = format("0. %s Power Off.", radio);
    std::string on = format("1. %s Power On.", radio);
    return choiceByte(cmdIndex, funName, menuText(title.c_str(), {off.c_str(), on.c_str()}), 1);
}

template <const char* Radio>
std::string radioStatus(const sysrender::Answer& a) {
    return sysrender::renderRadioStatus(a, Radio);
}
constexpr char WWAN[] = "WWAN";
constexpr char WIFI[] = "WIFI";
constexpr char BT[] = "BT";
constexpr char USB[] = "USB";

// The program LEDs' menus: the health LED's options under each LED's own title.
int programLed(int cmdIndex, char* funName, const char* title) {
    return choiceByte(cmdIndex, funName,
                      menuText(title, {"0. LED Off.", "1. Green LED On.", "2. Red LED On."}), 2);
}

}  // namespace

int FUNC_ST_SYSTEM_GET_WWAN_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, radioStatus<WWAN>);
}
int FUNC_ST_SYSTEM_SET_WWAN_CONTROL(int cmdIndex, char* funName) {
    return radioControl(cmdIndex, funName, WWAN);
}
int FUNC_ST_SYSTEM_GET_WIFI_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, radioStatus<WIFI>);
}
int FUNC_ST_SYSTEM_SET_WIFI_CONTROL(int cmdIndex, char* funName) {
    return radioControl(cmdIndex, funName, WIFI);
}
int FUNC_ST_SYSTEM_GET_BT_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, radioStatus<BT>);
}
int FUNC_ST_SYSTEM_SET_BT_CONTROL(int cmdIndex, char* funName) {
    return radioControl(cmdIndex, funName, BT);
}
int FUNC_ST_SYSTEM_GET_USB_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, radioStatus<USB>);
}
int FUNC_ST_SYSTEM_SET_USB_CONTROL(int cmdIndex, char* funName) {
    return radioControl(cmdIndex, funName, USB);
}

int FUNC_ST_SYSTEM_GET_SIM_CARD_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderSimCardStatus);
}

int FUNC_ST_SYSTEM_SET_SIM_CARD_SELECT(int cmdIndex, char* funName) {
    return choiceByte(
        cmdIndex, funName,
        menuText("========\t\tSIM Card Select\t\t========", {"0. SIM Card 1.", "1. SIM Card 2."}),
        1);
}

int FUNC_ST_SYSTEM_GET_GPO_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderGpoStatus);
}

int FUNC_ST_SYSTEM_SET_GPO_CONTROL(int cmdIndex, char* funName) {
    // One menu per line; High sets the line's bit.
    Byte bits = 0;
    for (int n = 1; n <= 4; ++n) {
        int high = 0;
        std::string menu = menuText(
            format("========\tGPO Control - GPO%d\t\t========", n).c_str(),
            {format("0. GPO%d Pin to Low", n).c_str(), format("1. GPO%d Pin to High", n).c_str()});
        if (!ask(menu, 0, 1, &high)) return 0;
        if (high) bits |= static_cast<Byte>(1 << (n - 1));
    }
    const Byte request[] = {bits};
    return set(cmdIndex, funName, request);
}

int FUNC_ST_SYSTEM_GET_GPI_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderGpiStatus);
}

int FUNC_ST_SYSTEM_SET_AST(int cmdIndex, char* funName) {
    print("========\t\tAST Setting\t\t========\n");
    print("Input AST (at most 16 characters) : ");
    std::string text;
    if (!readWord(16, &text)) return 0;
    return set(cmdIndex, funName, sysrender::astRequest(text));
}

int FUNC_ST_SYSTEM_SET_PCIE_SATA_CONTROL(int cmdIndex, char* funName) {
    return choiceByte(
        cmdIndex, funName,
        menuText("========\t\tPCIE/SATA Control\t\t========", {"0. PCIE.", "1. SATA."}), 1);
}

int FUNC_ST_SYSTEM_SET_PROGRAM_LED_CONTROL(int cmdIndex, char* funName) {
    return programLed(cmdIndex, funName, "========\tProgram LED Control \t\t========");
}

int FUNC_ST_SYSTEM_SET_PROGRAM_LED2_CONTROL(int cmdIndex, char* funName) {
    return programLed(cmdIndex, funName, "========\tProgram LED2 Control \t\t========");
}
