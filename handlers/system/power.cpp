// Power type, delay times, start-up/shut-down thresholds, supply range and watchdog:
// the per-product tables, the packed bytes and what each GET prints.
#include "power_io.h"
#include "system_bespoke.h"
#include "system_renders.h"
#include "system_steps.h"

namespace sysrender {

namespace {

// Power type texts per product set; the sets are tried in this order.
struct PowerTypeSet {
    ModelSet models;
    const char* texts[4];  // null: no line for that code
};

constexpr const char* TYPE_9_36 = "Power Type = 9~36V";
constexpr const char* TYPE_24 = "Power Type = 24V";
constexpr const char* TYPE_12 = "Power Type = 12V";

const PowerTypeSet POWER_TYPE_SETS[] = {
    {{"KX01", "KX02", "KX04", "KX08", "KX09", "KX11", "KX06", "KX10", "KX05", "KX16", "KX15",
      "KX13", "KX14", "KX20", "KX19", "KX21", "KX69", "KX68", "KX32", "KX37", "KX38", "KX45",
      "KX49", "KX53", "KX40", "KX41", "KX56", "KX71", "KX47", "KX43", "KX58", "KX48", "KX59"},
     {TYPE_9_36, TYPE_9_36, TYPE_24, TYPE_12}},
    {{"KX54", "KX39", "KX57", "KX66", "KX72", "KX65"},
     {"Power Type = 9~48V (Default)", "Power Type = 9~48V (Reserved)", TYPE_24, TYPE_12}},
    {{"KX29", "KX35", "KX34"},
     {"Power Type = 9~60V (Default)", "Power Type = 9~60V (Reserved)", TYPE_24, TYPE_12}},
    {{"KX25"}, {"Power Type = 9~36V (Default)", "Power Type = User Mode", TYPE_24, TYPE_12}},
    // This product swaps codes 2 and 3 against every other set, on purpose.
    {{"KX74"}, {"Power Type = 14~60V (Default)", "Power Type = 14~60V", TYPE_12, TYPE_24}},
    {{"KX51", "KX62", "KX30", "KX17", "KX18", "KX12", "KX07"},
     {"Power Type = 9~36V (Default)", "Power Type = Reserved (9~36V)", TYPE_24, TYPE_12}},
    {{"KX60", "KX61"}, {"Power Type = 12V(default)", TYPE_24, nullptr, nullptr}},
};

constexpr const char* DELAY_OFF_TIMES[8] = {
    "Delay Off Time = 20 Seconds", "Delay Off Time = 1 Minutes",  "Delay Off Time = 5 Minutes",
    "Delay Off Time = 10 Minutes", "Delay Off Time = 30 Minutes", "Delay Off Time = 1 hours",
    "Delay Off Time = 6 hours",    "Delay Off Time = 18 hours"};
constexpr const char* DELAY_ON_TIMES[8] = {
    "Delay On Time = 10 Seconds", "Delay On Time = 30 Seconds", "Delay On Time = 1 Minutes",
    "Delay On Time = 5 Minutes",  "Delay On Time = 10 Minutes", "Delay On Time = 15 Minutes",
    "Delay On Time = 30 Minutes", "Delay On Time = 1 hours"};

// Products whose watchdog counts in seconds or minutes (bit 0 of its configuration byte).
const ModelSet WATCHDOG_UNIT_MODELS = {"KX07", "KX12", "KX17", "KX18"};

const std::string RULE46 = std::string(46, '=') + "\n";

constexpr const char* THRESHOLD_ROWS[4] = {
    "    11.5V  10.5V            23.0V   21.0V", "    12.0V  11.0V            24.0V   22.0V",
    "    12.5V  11.0V            25.0V   22.0V", "    12.5V  11.5V            25.0V   23.0V"};
constexpr const char* THRESHOLD_ROWS_KX61[2] = {"    12.5V  11.0V            22.0V   20.5V",
                                                "    11.5V  10.0V            24.0V   22.5V"};
constexpr const char* POWER_RANGE_ROWS[2] = {"   10.5V  9.5V         25.0V   23.0V",
                                             "   12.5V  11.0V         25.0V   22.0V"};

}  // namespace

std::string renderPowerType(const Answer& a) {
    Byte code = a.at(0);
    std::string out = SEP26 + format("Power Type = %d\n", code);
    const PowerTypeSet* set = nullptr;
    for (const PowerTypeSet& s : POWER_TYPE_SETS)
        if (a.in(s.models)) {
            set = &s;
            break;
        }
    if (!set)
        out += fdLine(a, format("Power Type Output Result Data: 0x%02X", code));
    else if (code < 4 && set->texts[code])
        out += fdLine(a, set->texts[code]);
    return out + SEP26;
}

std::string renderDelayTime(const Answer& a) {
    Byte b = a.at(0);
    return SEP26 + format("Delay Off Control = %d\n", (b >> 6) & 1) +
           fdLine(a, DELAY_OFF_TIMES[b & 0x07]) + format("Delay On Control = %d\n", (b >> 7) & 1) +
           fdLine(a, DELAY_ON_TIMES[(b >> 3) & 0x07]) + SEP26;
}

Byte delayTimeByte(bool offEnabled, int offCode, bool onEnabled, int onCode) {
    return static_cast<Byte>((offCode & 0x07) | (onCode & 0x07) << 3 | (offEnabled ? 0x40 : 0) |
                             (onEnabled ? 0x80 : 0));
}

std::string renderStartupShutdown(const Answer& a) {
    Byte row = a.at(0);
    std::string out = RULE46 + "         12V           /         24V\n";
    if (a.is("KX61")) {
        out += "   \t  High/Low        \t\t  High/Low\n";
        if (row < 2) out += std::string(THRESHOLD_ROWS_KX61[row]) + "\n";
    } else {
        out += "   Startup/Shutdown        Startup/Shutdown\n";
        if (row < 4) out += std::string(THRESHOLD_ROWS[row]) + "\n";
    }
    return out + RULE46;
}

std::string renderPowerRange(const Answer& a) {
    Byte row = a.at(0);
    std::string out =
        RULE46 + "      12V        /        24V\n" + "    High/Low            High/Low\n";
    if (row < 2) out += std::string(POWER_RANGE_ROWS[row]) + "\n";
    return out + RULE46;
}

std::string renderWatchdog(const Answer& a) {
    Byte config = a.at(0);
    Byte time = a.at(1);
    std::string out = SEP26;
    out +=
        fdLine(a, config & 0x80 ? "Watchdog Timer Enable." : "Watchdog Timer Disable. (Default)");
    if (a.is("KX71"))
        out += fdLine(a, format("Watchdog Time = %d (3~255).When the version is R07 or later, use "
                                "Min; otherwise, use Sec.",
                                time));
    else if (a.in(WATCHDOG_UNIT_MODELS))
        // The whole byte is compared, so an enabled watchdog counting minutes (0x81) shows
        // "Sec": kept on purpose.
        out +=
            fdLine(a, format("Watchdog Time = %d %s (3~255)", time, config == 1 ? "Min" : "Sec"));
    else
        out += fdLine(a, format("Watchdog Time = %d (3~255 Sec)", time));
    return out + SEP26;
}

}  // namespace sysrender

// ---------------------------------------------------------------- handlers

using namespace sysflow;

namespace system_power_io {

constexpr const char* POWER_TYPE_TITLE = "========\t\tPower Type\t\t========";

// The SET menus have product sets of their own, not the GET's; a product in none of them
// is refused without an exchange, yet reported as done.
const shapes::SetRow SET_POWER_TYPE = {
    .variants = {{.models = {.names = {"KX01", "KX04", "KX08", "KX09", "KX12", "KX07", "KX11",
                                       "KX06", "KX10", "KX05", "KX17", "KX18", "KX16", "KX15",
                                       "KX13", "KX14", "KX20", "KX19", "KX02", "KX21", "KX69",
                                       "KX32", "KX37", "KX38", "KX45", "KX49", "KX53", "KX40",
                                       "KX41", "KX48", "KX60"}},
                  .steps = {{.title = POWER_TYPE_TITLE,
                             .options = {"0. 9 ~ 36V (Default)", "1. Reserved (9~36V)", "2. 24V",
                                         "3. 12V"},
                             .rule = shapes::Rule::None,
                             .max = 3}}},
                 {.models = {.names = {"KX54", "KX39", "KX70"}},
                  .steps = {{.title = POWER_TYPE_TITLE,
                             .options = {"0. 9 ~ 48V (Default)", "1. Reserved (9~48V)", "2. 24V",
                                         "3. 12V"},
                             .rule = shapes::Rule::None,
                             .max = 3}}},
                 {.models = {.names = {"KX29", "KX31", "KX34"}},
                  .steps = {{.title = POWER_TYPE_TITLE,
                             .options = {"0. 9 ~ 60V (Default)", "1. Reserved (9~60V)", "2. 24V",
                                         "3. 12V"},
                             .rule = shapes::Rule::None,
                             .max = 3}}}},
    .off = shapes::OffModel::NotSupported};

}  // namespace system_power_io

namespace {

// 55 "=", six blanks and one "=": the rule of the two-menu watchdog control, as it stands.
const char* const WATCHDOG_ODD_RULE =
    "=======================================================      =";

int setOneByte(int cmdIndex, char* funName, Byte value) {
    const Byte request[] = {value};
    return set(cmdIndex, funName, request);
}

}  // namespace

int FUNC_ST_SYSTEM_GET_POWER_TYPE(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderPowerType);
}

int FUNC_ST_SYSTEM_SET_POWER_TYPE(int cmdIndex, char* funName) {
    return shapes::runSet(system_power_io::SET_POWER_TYPE, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_DELAY_TIME_OPTION(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderDelayTime);
}

int FUNC_ST_SYSTEM_SET_DELAY_TIME_OPTION(int cmdIndex, char* funName) {
    int offEnabled = 0, offCode = 0, onEnabled = 0, onCode = 0;
    if (!ask(menuText("========\t\tDelay off Control\t========",
                      {"0. Delay Off Disable. (Default)", "1. Delay Off Enable."}),
             0, 1, &offEnabled))
        return 0;
    if (offEnabled && !ask(menuText("========\t\tDelay Off Time\t\t========",
                                    {"0. 20 second", "1. 1 minute", "2. 5 minute", "3. 10 minute",
                                     "4. 30 minute", "5. 1 hour", "6. 6 hour", "7. 18 hour"}),
                           0, 7, &offCode))
        return 0;
    if (!ask(menuText("========\t\tDelay on Control\t========",
                      {"0. Delay On Disable (Default)", "1. Delay On Enable "}),
             0, 1, &onEnabled))
        return 0;
    if (onEnabled && !ask(menuText("========\t\tDelay On Time\t\t========",
                                   {"0. 10 second", "1. 30 second", "2. 1 minute", "3. 5 minute",
                                    "4. 10 minute", "5. 15 minute", "6. 30 minute", "7. 1 hour"}),
                          0, 7, &onCode))
        return 0;
    return setOneByte(cmdIndex, funName,
                      sysrender::delayTimeByte(offEnabled, offCode, onEnabled, onCode));
}

int FUNC_ST_SYSTEM_GET_STARTUP_SHUTDOWN_OPTION(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderStartupShutdown);
}

int FUNC_ST_SYSTEM_SET_STARTUP_SHUTDOWN_OPTION(int cmdIndex, char* funName) {
    int choice = 0;
    if (!ask(menuText("========\tStartup Shutdown Option\t\t========",
                      {"         12V           /         24V",
                       "   Startup/Shutdown        Startup/Shutdown",
                       "0.  11.5V  10.5V            23.0V   21.0V",
                       "1.  12.0V  11.0V            24.0V   22.0V",
                       "2.  12.5V  11.0V            25.0V   22.0V",
                       "3.  12.5V  11.5V            25.0V   23.0V"}),
             0, 3, &choice))
        return 0;
    return setOneByte(cmdIndex, funName, static_cast<Byte>(choice));
}

int FUNC_ST_SYSTEM_GET_POWER_RANGE(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderPowerRange);
}

int FUNC_ST_SYSTEM_GET_WATCHDOG_CONFIGURE(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderWatchdog);
}

int FUNC_ST_SYSTEM_SET_WATCHDOG_CONTROL(int cmdIndex, char* funName) {
    int unit = 0, enable = 0;
    if (productIs(sysrender::WATCHDOG_UNIT_MODELS)) {
        if (!ask(menuText("========    Watchdog Control \t    ========",
                          {"0. Seconds (Default)", "1. Minutes"}, Rule{WATCHDOG_ODD_RULE}),
                 0, 1, &unit))
            return 0;
        if (!ask(menuText("========    Watchdog Control        ========",
                          {"0. Disable (Default)", "1. Enable."}, Rule{WATCHDOG_ODD_RULE}),
                 0, 1, &enable))
            return 0;
    } else if (!ask(menuText("========\tWatchdog Control\t\t========",
                             {"0. Watchdog Disable. (Default)", "1. Watchdog Enable."}),
                    0, 1, &enable)) {
        return 0;
    }
    return setOneByte(cmdIndex, funName, static_cast<Byte>(unit | enable << 7));
}

int FUNC_ST_SYSTEM_SET_WATCHDOG_TIMER(int cmdIndex, char* funName) {
    const char* prompt = "Set Watchdog Time (3~255)(unit:Sec):";
    if (productIs({"KX71"}))
        // The missing closing parenthesis is part of the text.
        prompt =
            "Set Watchdog Time (3-255)(If the version is R07 or later, use minutes(Min) as "
            "the unit; otherwise, use seconds(Sec)";
    else if (productIs(sysrender::WATCHDOG_UNIT_MODELS))
        prompt = "Set Watchdog Time (3~255)(unit:Sec/Min):";
    int time = 0;
    if (!ask(menuText("========\t\tWatchdog Time \t\t========", {}, NO_RULE, prompt), 3, 255,
             &time))
        return 0;
    return setOneByte(cmdIndex, funName, static_cast<Byte>(time));
}
