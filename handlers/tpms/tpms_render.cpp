// Sensor list parsing and the real-time record line.
#include "tpms_render.h"

#include <algorithm>
#include <cstdio>

namespace tpms {

namespace {

std::string_view trimmed(std::string_view s) {
    const char* blanks = " \t\r\n";
    size_t first = s.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    size_t last = s.find_last_not_of(blanks);
    return s.substr(first, last - first + 1);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::optional<int> parseSensorCount(std::string_view line) {
    std::string_view s = trimmed(line);
    if (s.empty() || s.size() > 3) return std::nullopt;
    int v = 0;
    for (char c : s) {
        if (c < '0' || c > '9') return std::nullopt;
        v = v * 10 + (c - '0');
    }
    if (v > MAX_SENSORS) return std::nullopt;
    return v;
}

std::optional<uint32_t> parseSensorId(std::string_view line) {
    std::string_view s = trimmed(line);
    if (s.empty() || s.size() > 8) return std::nullopt;
    uint32_t v = 0;
    for (char c : s) {
        int d = hexDigit(c);
        if (d < 0) return std::nullopt;
        v = v << 4 | static_cast<uint32_t>(d);
    }
    return v;
}

void storeSensorId(std::array<BYTE, SENSOR_RECORD_SIZE>& record, uint32_t id) {
    for (int i = 0; i < 4; ++i) record[i] = static_cast<BYTE>(id >> (24 - 8 * i));
}

std::string matchWheels(std::span<const BYTE> record, const SensorTable& sensors, int count) {
    std::string out;
    count = std::clamp(count, 0, MAX_SENSORS);
    for (int w = 0; w < count; ++w) {
        std::span<const BYTE> id(sensors[w].data(), 4);
        if (std::search(record.begin(), record.end(), id.begin(), id.end()) == record.end())
            continue;
        out += "  wheel " + std::to_string(w + 1);
    }
    return out;
}

std::string renderRecord(long millisOfDay, std::span<const BYTE> record, const SensorTable& sensors,
                         int count) {
    char stamp[32];
    long ms = millisOfDay % (24L * 3600 * 1000);
    snprintf(stamp, sizeof stamp, "%02ld:%02ld:%02ld.%03ld ", ms / 3600000, ms / 60000 % 60,
             ms / 1000 % 60, ms % 1000);
    std::string out = stamp;
    for (BYTE b : record) {
        char hex[4];
        snprintf(hex, sizeof hex, " %02X", b);
        out += hex;
    }
    out += matchWheels(record, sensors, count);
    out += '\n';
    return out;
}

}  // namespace tpms
