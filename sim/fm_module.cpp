// The simulated FM radio module: per-product start state and the answer to each of the
// module's commands.
#include "fm_module.h"

#include <algorithm>

#include "sim_frame.h"

namespace brdsim {

namespace {

// Module commands (request byte 1); the answer carries the command plus one.
enum FmCommand : uint8_t {
    FM_POWER = 0x80,
    FM_CONFIG = 0x82,
    FM_VOLUME = 0x84,
    FM_MUTE = 0x86,
    FM_FREQUENCY = 0x88,
    FM_SCAN = 0x8A,
    FM_RDS_STATUS = 0x8C,
    FM_PID = 0x8E,
    FM_PS = 0x90,
    FM_RDS = 0x92,
    FM_SEEK_UP = 0x94,
    FM_SEEK_DOWN = 0x96,
    FM_AUDIO = 0x98,
    FM_VOICE = 0x9A,
    FM_ZONE = 0x9C,
};

constexpr uint8_t FM_OK = 1;
constexpr uint8_t FM_REFUSED = 0;
constexpr uint8_t MAX_VOLUME = 63;

std::string model(const std::string& product) {
    std::string m = product;
    while (!m.empty() && (m.back() == '\n' || m.back() == ' ')) m.pop_back();
    return m;
}

Bytes text(const std::string& s) {
    return Bytes(s.begin(), s.end());
}

uint8_t byteAt(const Bytes& frame, size_t i) {
    return i < frame.size() ? frame[i] : 0;
}

uint16_t frequencyAt(const Bytes& frame) {
    return static_cast<uint16_t>(byteAt(frame, 2) | byteAt(frame, 3) << 8);
}

void appendFrequency(Bytes& out, uint16_t f) {
    out.push_back(static_cast<uint8_t>(f & 0xFF));
    out.push_back(static_cast<uint8_t>(f >> 8));
}

std::vector<uint16_t> inZone(const FmState& s) {
    std::vector<uint16_t> found;
    for (uint16_t f : s.stations)
        if (f >= fmZoneLow(s.zone) && f <= fmZoneHigh(s.zone)) found.push_back(f);
    std::sort(found.begin(), found.end());
    return found;
}

// The next station above (or below) `from`, wrapping round the band; `from` itself when
// the band holds no station.
uint16_t seek(const FmState& s, uint16_t from, bool up) {
    std::vector<uint16_t> found = inZone(s);
    if (found.empty()) return from;
    if (up) {
        auto it = std::upper_bound(found.begin(), found.end(), from);
        return it == found.end() ? found.front() : *it;
    }
    auto it = std::lower_bound(found.begin(), found.end(), from);
    return it == found.begin() ? found.back() : *(it - 1);
}

// A setting that accepts 0..max: stored and acknowledged, or refused.
uint8_t setValue(uint8_t* field, uint8_t value, uint8_t max) {
    if (value > max) return FM_REFUSED;
    *field = value;
    return FM_OK;
}

}  // namespace

FmState fmDefaults(const std::string& product) {
    FmState s;
    s.pid = {0xC2, 0x01};
    s.ps = "BRD FM  ";
    s.rds = "Traffic news at the hour";
    std::string m = model(product);
    if (m == "KX56") {
        // Low bytes that are start, end and escape codes on the line.
        s.zone = 2;
        s.stations = {0x1DF2, 0x1FF3, 0x21F0, 0x22F1};
        s.rdsFlags = 0x05;
        s.ps = "JFM 86.8";
    } else if (m == "KX22") {
        s.zone = 1;
        s.volume = 30;
        s.stations = {8800, 9390, 10230};
    } else {
        s.stations = {8810, 9150, 9870, 10110, 10790};
    }
    return s;
}

bool isFmFrame(const Bytes& lineFrame) {
    return lineFrame.size() >= 3 && lineFrame[0] == kFrameStart && lineFrame[1] >= 0x80;
}

Bytes fmUnescape(const Bytes& lineFrame) {
    Bytes out;
    for (size_t i = 0; i < lineFrame.size(); ++i) {
        uint8_t b = lineFrame[i];
        if (b == kFrameEscape && i + 1 < lineFrame.size() &&
            (lineFrame[i + 1] == 0x01 || lineFrame[i + 1] == 0x02)) {
            out.push_back(static_cast<uint8_t>(kFrameEscape + lineFrame[++i]));
        } else {
            out.push_back(b);
        }
    }
    return out;
}

Bytes encodeFmFrame(const Bytes& payload) {
    return stuff(payload);
}

uint16_t fmZoneLow(uint8_t zone) {
    return zone == 2 ? 7600 : 8750;
}

uint16_t fmZoneHigh(uint8_t zone) {
    return zone == 2 ? 9000 : 10790;
}

Bytes fmAnswer(FmState& s, const Bytes& frame, bool wrongCommand) {
    uint8_t command = byteAt(frame, 1);
    uint8_t value = byteAt(frame, 2);
    // A wrong answer carries the answer byte of another command.
    Bytes out = {static_cast<uint8_t>(command + (wrongCommand ? 3 : 1))};
    switch (command) {
        case FM_POWER:
            out.push_back(setValue(&s.power, value, 1));
            break;
        case FM_CONFIG:
            out.push_back(setValue(&s.zone, value, 2));
            break;
        case FM_VOLUME:
            out.push_back(setValue(&s.volume, value, MAX_VOLUME));
            break;
        case FM_MUTE:
            out.push_back(setValue(&s.mute, value, 1));
            break;
        case FM_AUDIO:
            out.push_back(setValue(&s.audio, value, 1));
            break;
        case FM_FREQUENCY: {
            uint16_t f = frequencyAt(frame);
            bool ok = f >= fmZoneLow(s.zone) && f <= fmZoneHigh(s.zone);
            if (ok) s.frequency = f;
            out.push_back(ok ? FM_OK : FM_REFUSED);
            break;
        }
        case FM_SCAN: {
            std::vector<uint16_t> found = inZone(s);
            out.push_back(static_cast<uint8_t>(found.size()));
            for (uint16_t f : found) appendFrequency(out, f);
            break;
        }
        case FM_SEEK_UP:
        case FM_SEEK_DOWN:
            s.frequency = seek(s, frequencyAt(frame), command == FM_SEEK_UP);
            appendFrequency(out, s.frequency);
            break;
        case FM_RDS_STATUS:
            out.push_back(s.rdsFlags);
            break;
        case FM_PID:
            if (s.rdsFlags & 0x01) out.insert(out.end(), s.pid.begin(), s.pid.end());
            break;
        case FM_PS:
            if (s.rdsFlags & 0x02) {
                Bytes t = text(s.ps);
                out.insert(out.end(), t.begin(), t.end());
            }
            break;
        case FM_RDS:
            if (s.rdsFlags & 0x04) {
                Bytes t = text(s.rds);
                out.insert(out.end(), t.begin(), t.end());
            }
            break;
        case FM_VOICE:
            out.push_back(s.volume);
            break;
        case FM_ZONE:
            out.push_back(s.zone);
            break;
        default:
            out.push_back(FM_REFUSED);
            break;
    }
    return out;
}

}  // namespace brdsim
