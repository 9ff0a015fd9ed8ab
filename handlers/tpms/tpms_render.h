// The TPMS receiver's pure parts: the sensor list (count and IDs as typed, IDs stored
// most significant byte first) and the line shown for each real-time record.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

typedef unsigned char BYTE;

namespace tpms {

constexpr int MAX_SENSORS = 24;
constexpr int SENSOR_RECORD_SIZE = 32;
using SensorTable = std::array<std::array<BYTE, SENSOR_RECORD_SIZE>, MAX_SENSORS>;

// A sensor count as typed: a decimal number 0..24 alone on its line.
std::optional<int> parseSensorCount(std::string_view line);
// A sensor ID as typed: 1 to 8 hexadecimal digits alone on the line.
std::optional<uint32_t> parseSensorId(std::string_view line);
// Stores `id` in bytes 0..3 of `record`, most significant byte first.
void storeSensorId(std::array<BYTE, SENSOR_RECORD_SIZE>& record, uint32_t id);

// The wheels (1-based) of the first `count` sensors whose ID appears, as four bytes
// most significant first, anywhere in `record`.
std::string matchWheels(std::span<const BYTE> record, const SensorTable& sensors, int count);

// One real-time record as shown: local time of day with milliseconds, the bytes in hex,
// and the wheels it names, e.g. "12:00:01.250  AB CD 12 34 00 E6 4A 00  wheel 1\n".
// `millisOfDay` is the time of day in milliseconds.
std::string renderRecord(long millisOfDay, std::span<const BYTE> record, const SensorTable& sensors,
                         int count);

}  // namespace tpms
