// Power type, delay times, start-up/shut-down thresholds, supply range and watchdog:
// the per-product tables, the packed bytes and what each GET prints.
#include "system_renders.h"

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

const std::string RULE46 = std::string(46, '=') + "\n";

constexpr const char* THRESHOLD_ROWS[4] = {
    "    11.5V  10.5V            23.0V   21.0V", "    12.0V  11.0V            24.0V   22.0V",
    "    12.5V  11.0V            25.0V   22.0V", "    12.5V  11.5V            25.0V   23.0V"};
constexpr const char* THRESHOLD_ROWS_KX61[2] = {"    12.5V  11.0V            22.0V   20.5V",
                                                "    11.5V  10.0V            24.0V   22.5V"};
constexpr const char* POWER_RANGE_ROWS[2] = {"   10.5V  9.5V         25.0V   23.0V",
                                             "   12.5V  11.0V         25.0V   22.0V"};

}  // namespace

const ModelSet WATCHDOG_UNIT_MODELS = {"KX07", "KX12", "KX17", "KX18"};

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
