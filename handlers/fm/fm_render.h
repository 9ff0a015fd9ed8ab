// The FM radio module's rows as data (title, menu, how the answer reads) and the pure
// renders of its answers: answer bytes in, text and result out, no serial line needed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

typedef unsigned char BYTE;

namespace fm {

// How a handler reads the module's answer.
enum class Reading {
    Status,        // byte 2 = 1: success
    SetFrequency,  // byte 2 = 1: success and the frequency that was set
    AutoScan,      // the stations found, from byte 3, two bytes each
    RdsStatus,     // bits 0..2 of byte 2: PID, PS and RDS received
    DataBytes,     // the bytes between byte 2 and the last one (PID, PS, RDS)
    SeekUp,        // bytes 2..3: the frequency found, kept for the next seek
    SeekDown,
    Voice,        // byte 2: the volume level (above 62 counts as failure)
    Zone,         // byte 2: the zone
    Byte4Status,  // byte 4 = 1: success (answers in the system MCU's frame)
};

// A menu of a setting command: its lines, the rule under them, the prompt, the range.
struct Menu {
    std::span<const char* const> lines;
    const char* rule;
    const char* prompt;
    int min, max;
    bool frequency;  // the value goes into bytes 2 and 3, low byte first
};

struct Row {
    const char* title;
    const Menu* menu;  // null: nothing asked
    Reading reading;
    const char* label;  // DataBytes: the text before the bytes
    bool checkCommand;  // byte 1 must be the request's command byte plus one
    // A command-byte mismatch keeps the exchange's result 1 (else the result is 0).
    bool keepResultOnMismatch;
};

// The rows of each FM handler.
extern const Row POWER_ROW, CONFIG_ROW, VOLUME_ROW, MUTE_ROW, FREQUENCY_ROW, AUTO_SCAN_ROW,
    RDS_STATUS_ROW, PID_ROW, PS_ROW, RDS_ROW, SEEK_UP_ROW, SEEK_DOWN_ROW, AUDIO_ROW, VOICE_ROW,
    ZONE_ROW, FLASH_ROW, LOAD_DEFAULT_ROW;

// What a handler prints before it asks anything: the title, and the menu with its prompt.
std::string renderIntro(const Row& row);

// How many answer bytes `row`'s reading needs (0: it looks at the length itself).
size_t bytesNeeded(const Row& row);

struct Outcome {
    std::string out;  // stdout, from the "Result" rule to the closing rule
    int result = 1;
    std::optional<uint16_t> frequency;  // a seek's new frequency (10 kHz units)
};

struct Request {
    BYTE command;        // byte 1 of the frame that was sent
    uint16_t frequency;  // the frequency that was set (SetFrequency only)
};

// Renders the module's answer (every byte the decoder delivered, F1 .. F2) to `row`'s
// request. An answer shorter than bytesNeeded() is not read past.
Outcome renderAnswer(const Row& row, std::span<const BYTE> answer, const Request& request, int fd,
                     const char* funName);

// A frequency in 10 kHz units as the module's low and high byte, and back.
inline BYTE frequencyLow(uint16_t f) {
    return static_cast<BYTE>(f & 0xFF);
}
inline BYTE frequencyHigh(uint16_t f) {
    return static_cast<BYTE>(f >> 8);
}
inline uint16_t frequencyOf(BYTE low, BYTE high) {
    return static_cast<uint16_t>(low + 256 * high);
}

}  // namespace fm
