// The simulated board's own frame code: CRC-8 bit by bit, byte stuffing and unstuffing.
// Written apart from the link library's so that the simulator checks the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace brdsim {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kFrameStart = 0xF1;
constexpr uint8_t kFrameEnd = 0xF2;
constexpr uint8_t kFrameEscape = 0xF0;

// CRC-8, polynomial 0x5A (x^8 + x^6 + x^4 + x^3 + x), initial value 0, most significant
// bit first, no reflection, no final XOR.
uint8_t crc8(const uint8_t* data, size_t length);

// Start code, `inner` with F0..F3 each sent as F0 followed by 00..03, end code.
Bytes stuff(const Bytes& inner);

// The frame `wire` (start and end codes included) with its escapes undone into *plain.
// False when an escape byte is followed by anything but 00..03 (that byte is then kept
// as it came) or stands last.
bool unstuff(const Bytes& wire, Bytes* plain);

// The same for the framing of another controller type (the NXP controller's C1, C2, C0).
Bytes stuffWith(uint8_t start, uint8_t end, uint8_t escape, const Bytes& inner);
bool unstuffWith(uint8_t escape, const Bytes& wire, Bytes* plain);

}  // namespace brdsim
