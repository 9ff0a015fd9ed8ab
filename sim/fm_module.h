// The board's FM radio module as brdsim plays it: raw F1 .. F2 frames whose byte 1 is the
// module's command, answered from a per-product state that requests change.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brdsim {

using Bytes = std::vector<uint8_t>;

// What the module remembers. Frequencies are in units of 10 kHz (8750 = 87.50 MHz).
struct FmState {
    uint8_t power = 1;
    uint8_t zone = 0;  // 0 USA, 1 EUROPE, 2 JAPAN (anything else is answered as it is)
    uint8_t volume = 20;
    uint8_t mute = 0;
    uint8_t audio = 0;  // 0 FM, 1 WWAN
    uint16_t frequency = 8750;
    std::vector<uint16_t> stations;  // what an auto scan or a seek finds, ascending
    uint8_t rdsFlags = 0x07;         // bit 0 PID, bit 1 PS, bit 2 RDS text received
    Bytes pid;
    std::string ps;
    std::string rds;
};

// The state a module of `product` starts with (a trailing line end is ignored).
FmState fmDefaults(const std::string& product);

// True when an F1 .. F2 request frame (as on the line) is for the FM module: its byte 1
// is a module command (0x80 and above), never a system-MCU device number.
bool isFmFrame(const Bytes& lineFrame);

// The request as the module reads it: F0 01 and F0 02 stand for F1 and F2; an F0 before
// anything else is itself (the host leaves F0 and F3 unescaped).
Bytes fmUnescape(const Bytes& lineFrame);

// An answer on the line: F1, the payload with F0..F3 escaped, F2.
Bytes encodeFmFrame(const Bytes& payload);

// The lowest and highest frequency the module tunes to in `zone`.
uint16_t fmZoneLow(uint8_t zone);
uint16_t fmZoneHigh(uint8_t zone);

// Answers one request (`frame` as fmUnescape gives it) and updates `state`. Returns the
// answer's payload (command byte + 1 first, no start or end code). `wrongCommand` makes
// the module answer with a command byte that does not belong to the request.
Bytes fmAnswer(FmState& state, const Bytes& frame, bool wrongCommand = false);

}  // namespace brdsim
