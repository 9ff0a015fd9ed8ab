// Fan duty values and speeds, the two SP339A transceivers' modes and the front-panel key
// lock: the per-product layouts and packed bytes.
#include "system_renders.h"

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
        for (int i = 0; i < 4; ++i)
            out +=
                fdLine(a, format("SYS FAN%d RPM = %d", i + 1, a.word(static_cast<size_t>(2 * i))));
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
