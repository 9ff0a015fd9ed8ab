// CAN frames in the can-utils conventions: cansend's frame syntax, candump's filters,
// its line and log formats, and a reader of candump logs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace can {

// Flag bits carried above the identifier, as can-utils carries them.
constexpr uint32_t EFF_FLAG = 0x80000000u;  // extended (29-bit) identifier
constexpr uint32_t RTR_FLAG = 0x40000000u;  // remote request
constexpr uint32_t SFF_MASK = 0x000007FFu;
constexpr uint32_t EFF_MASK = 0x1FFFFFFFu;

struct Frame {
    uint32_t id = 0;  // without flags
    bool ext = false;
    bool rtr = false;
    uint8_t dlc = 0;
    uint8_t data[8] = {};

    // The identifier with the can-utils flag bits, as filters see it.
    uint32_t flaggedId() const { return id | (ext ? EFF_FLAG : 0) | (rtr ? RTR_FLAG : 0); }
};

// Parses cansend's syntax: 123#DEADBEEF, 1F334455#11.22, 123#R, 123#R3. Three hex digits
// give a standard identifier, eight an extended one. False with the reason in *why.
bool parseFrame(const std::string& text, Frame* out, std::string* why);

// candump's filters: ID:MASK passes when (received & MASK) == (ID & MASK); ID~MASK when
// it does not. The received identifier carries the flags EFF_FLAG and RTR_FLAG; eight
// digits before the separator set EFF_FLAG in ID.
struct Filter {
    uint32_t id = 0;
    uint32_t mask = 0;
    bool inverted = false;
    bool matches(const Frame& f) const {
        bool hit = (f.flaggedId() & mask) == (id & mask);
        return inverted ? !hit : hit;
    }
};

bool parseFilter(const std::string& text, Filter* out, std::string* why);

// A channel with its filters as given on the dump command line: "st1,123:7FF,j".
struct ChannelSpec {
    std::string name;
    std::vector<Filter> filters;
    bool join = false;  // all filters must pass (candump's 'j'), else any one
    bool passes(const Frame& f) const;
};

bool parseChannelSpec(const std::string& text, ChannelSpec* out, std::string* why);

// Timestamp kinds of candump's -t.
enum class Stamp { None, Absolute, Date, Delta, Zero };

// Appends candump's line for one frame (no line end): the stamp (when any), the channel
// name right-aligned to `nameWidth`, identifier, [dlc] and data or "remote request".
// `stampUs` is the stamp's value in microseconds (absolute, or relative for Delta/Zero).
void formatLine(std::string* out, Stamp stamp, int64_t stampUs, const std::string& name,
                int nameWidth, const Frame& f);

// Appends one candump log line with its line end: "(1700000000.123456) st1 123#1122\n".
void formatLogLine(std::string* out, int64_t epochUs, const std::string& name, const Frame& f);

// The frame part of a log line: 123#1122, 12345678#, 123#R, 123#R3.
std::string frameText(const Frame& f);

// One line of a candump log.
struct LogRecord {
    int64_t epochUs = 0;
    std::string channel;
    Frame frame;
    int line = 0;
};

// Reads a candump log. False with "line N: reason" in *why on the first line that is not
// in the format (blank lines are skipped).
bool readLog(FILE* f, std::vector<LogRecord>* out, std::string* why);
bool parseLogLine(const std::string& line, LogRecord* out, std::string* why);

// The file name candump -l gives a log started at `epochSeconds` (local time).
std::string logFileName(int64_t epochSeconds);

}  // namespace can
