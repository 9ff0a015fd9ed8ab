// Fan duty values and speeds, the two SP339A transceivers' modes and the front-panel key
// lock: the per-product layouts and packed bytes.
#include "power_io.h"
#include "system_bespoke.h"
#include "system_renders.h"
#include "system_steps.h"

namespace sysrender {

namespace {

constexpr const char* SP339A_MODES[4] = {"Loop Back", "RS232", "RS485", "RS422"};

const ModelSet KEY_BIT_MODELS = {"KX35", "KX34"};

}  // namespace

std::string renderFanValue(const Answer& a) {
    std::string out = SEP26;
    if (a.is("KX64")) {
        out += fdLine(a, format("POE FAN = %d", a.at(1)));
        out += fdLine(a, format("GRAPHICS FAN = %d", a.at(2)));
    } else {
        out += fdLine(a, format("CPU FAN = %d", a.at(0)));
        out += fdLine(a, format("TOP FAN = %d", a.at(1)));
        out += fdLine(a, format("FAN KIT = %d", a.at(2)));
    }
    return out + SEP26;
}

std::string renderFanRpm(const Answer& a) {
    if (a.is("KX64")) {
        std::string out;
        for (size_t i = 0; i < 4; ++i)
            out += fdLine(a, format("SYS FAN%zu RPM = %d", i + 1, a.word(2 * i)));
        out += fdLine(a, format("POE FAN RPM = %d", a.word(8)));
        out += fdLine(a, format("GRAPHICS FAN RPM = %d", a.word(10)));
        return out;
    }
    return SEP26 + fdLine(a, format("CPU FAN RPM = %d", a.word(0))) +
           fdLine(a, format("TOP FAN RPM = %d", a.word(2))) +
           fdLine(a, format("FAN KIT RPM = %d", a.word(4))) + SEP26;
}

std::string renderSp339aMode(const Answer& a) {
    Byte b = a.at(0);
    std::string out;
    for (int n = 1; n <= 2; ++n) {
        int bits = n == 1 ? b : b >> 4;
        out += fdLine(a, format("SP339A-%d is %s Mode.", n, SP339A_MODES[bits & 0x03]));
        out += fdLine(a, format("SP339A-%d is Terminal %s.", n, bits & 0x04 ? "On" : "Off"));
    }
    return out;
}

std::string renderKeyLock(const Answer& a) {
    Byte b = a.at(0);
    std::string out = SEP26 + fdLine(a, format("Key Lock Status : 0x%02X", b));
    const auto onOff = [&](int bit) { return b & (1 << bit) ? "On" : "Off"; };
    if (a.in(KEY_BIT_MODELS) || a.is("KX30")) {
        out += fdLine(a, format("Volume key lock %s.", onOff(0)));
        out += fdLine(a, format("Backlight key lock %s.", onOff(1)));
        if (!a.is("KX30")) {
            out += fdLine(a, format("MUTE key lock %s.", onOff(2)));
            out += fdLine(a, format("Function Key lock %s.", onOff(3)));
        }
    } else {
        switch (b) {
            case 0:
                out += fdLine(a, "Volume key and Backlight key unlock.");
                break;
            case 1:
                out += fdLine(a, "Volume key locked.");
                break;
            case 2:
                out += fdLine(a, "Backlight key locked.");
                break;
            case 3:
                out += fdLine(a, "Volume key and Backlight key locked.");
                break;
        }
    }
    return out + SEP26;
}

}  // namespace sysrender

// ---------------------------------------------------------------- handlers

using namespace sysflow;

namespace system_power_io {

using shapes::Rule;
using shapes::Step;

constexpr const char* FAN_PROMPT = "Range 0-100, OFF=0, ON=1-100: ";

constexpr Step fanStep(const char* title, int at) {
    return {.title = title, .rule = Rule::None, .prompt = FAN_PROMPT, .max = 100, .at = at};
}

// The products other than KX64 set the CPU fan, top fan and fan kit in bytes 0-2; KX64
// its PoE and graphics fans in bytes 1 and 2, byte 0 left at 0.
const shapes::SetRow SET_FAN_VALUE = {
    .variants =
        {{.models = {.names = {"KX64"}},
          .steps = {fanStep("========            Set POE FAN Value           ========", 1),
                    // Fewer blanks before the closing run, as the title stands.
                    fanStep("========            Set GRAPHICS FAN Value      ========", 2)}},
         {.steps = {fanStep("========            Set CPU FAN Value           ========", 0),
                    fanStep("========            Set TOP FAN Value           ========", 1),
                    fanStep("========            Set FAN KIT Value           ========", 2)}}},
    .length = 3};

}  // namespace system_power_io
using sysrender::format;

namespace {

// One per-key lock menu, read without a prompt line; On sets `bit`.
struct KeyMenu {
    const char* title;
    const char* off;
    const char* on;
    int bit;
};
const KeyMenu VOLUME_KEY = {"========                Volume Key Lock                ========",
                            "0. Volume Key Lock Off", "1. Volume Key Lock On", 0};
const KeyMenu BACKLIGHT_KEY = {"========                backlight Key Lock                ========",
                               "0. backlight Key Lock Off", "1. backlight Key Lock On", 1};
const KeyMenu MUTE_KEY = {"========                MUTE Key Lock                ========",
                          "0. MUTE Key Lock Off", "1. MUTE Key Lock On", 2};
const KeyMenu FUNCTION_KEY = {"========                Function Key Lock                ========",
                              "0. Function Key Lock Off", "1. Function Key Lock On", 3};

bool askKeys(std::initializer_list<const KeyMenu*> menus, Byte* bits) {
    for (const KeyMenu* m : menus) {
        int on = 0;
        if (!ask(menuText(m->title, {m->off, m->on}, RULE_56, NO_PROMPT), 0, 1, &on)) return false;
        if (on) *bits |= static_cast<Byte>(1 << m->bit);
    }
    return true;
}

}  // namespace

int FUNC_ST_SYSTEM_GET_FAN_VALUE(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderFanValue);
}

int FUNC_ST_SYSTEM_SET_FAN_VALUE_CONTROL(int cmdIndex, char* funName) {
    return shapes::runSet(system_power_io::SET_FAN_VALUE, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_FAN_RPM(int cmdIndex, char* funName) {
    // The speeds are read whatever the answer's length.
    return get(cmdIndex, funName, sysrender::renderFanRpm, {}, Warn::Never);
}

int FUNC_ST_SYSTEM_GET_SP339A_MODE(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderSp339aMode);
}

int FUNC_ST_SYSTEM_SET_SP339A_MODE(int cmdIndex, char* funName) {
    Byte mode = 0;
    for (int n = 1; n <= 2; ++n) {
        int line = 0, terminal = 0;
        std::string modeMenu = menuText(
            format("========        Set SP339A-%d Mode Control        ========", n).c_str(),
            {format("0. SP339A-%d Loop Back Mode.", n).c_str(),
             format("1. SP339A-%d RS232 Mode.", n).c_str(),
             format("2. SP339A-%d RS485 Mode.", n).c_str(),
             format("3. SP339A-%d RS422 Mode.", n).c_str()});
        if (!ask(modeMenu, 0, 3, &line)) return 0;
        std::string terminalMenu = menuText(
            format("========        Set SP339A-%d terminal Control        ========", n).c_str(),
            {format("0. SP339A-%d terminal off.", n).c_str(),
             format("1. SP339A-%d terminal on.", n).c_str()});
        if (!ask(terminalMenu, 0, 1, &terminal)) return 0;
        int shift = n == 1 ? 0 : 4;
        mode |= static_cast<Byte>((line | terminal << 2) << shift);
    }
    const Byte request[] = {mode};
    return set(cmdIndex, funName, request);
}

int FUNC_ST_SYSTEM_GET_KEY_LOCK_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderKeyLock);
}

int FUNC_ST_SYSTEM_SET_KEY_LOCK_CONTROL(int cmdIndex, char* funName) {
    Byte bits = 0;
    bool answered = false;
    if (productIs({"KX30"})) {
        answered = askKeys({&VOLUME_KEY, &BACKLIGHT_KEY, &MUTE_KEY}, &bits);
    } else if (productIs({"KX35", "KX34"})) {
        answered = askKeys({&VOLUME_KEY, &BACKLIGHT_KEY, &MUTE_KEY, &FUNCTION_KEY}, &bits);
    } else {
        // The code chosen here is replaced by the volume-lock bit alone: options 2 and 3
        // are marked unusable for that reason. Kept on purpose.
        int code = 0;
        answered = ask(menuText("========                Key Lock                ========",
                                {"0. Unlock Volume key and Backlight key", "1. Lock Volume key",
                                 "2. Lock Backlight key (Unusable)",
                                 "3. Lock Volume key and Backlight key (Unusable)"}),
                       0, 3, &code) &&
                   askKeys({&VOLUME_KEY}, &bits);
    }
    if (!answered) return 0;
    const Byte request[] = {bits};
    return set(cmdIndex, funName, request);
}
