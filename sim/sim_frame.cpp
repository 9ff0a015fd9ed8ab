// The simulated board's own frame code: CRC-8 bit by bit, byte stuffing and unstuffing.
#include "sim_frame.h"

namespace brdsim {

namespace {

constexpr uint8_t kPolynomial = 0x5A;

bool escaped(uint8_t b, uint8_t escape) {
    return b >= escape && b <= escape + 3;
}

}  // namespace

uint8_t crc8(const uint8_t* data, size_t length) {
    uint8_t crc = 0;
    for (size_t i = 0; i < length; ++i) {
        crc ^= data[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<uint8_t>((crc & 0x80) ? (crc << 1) ^ kPolynomial : crc << 1);
    }
    return crc;
}

Bytes stuff(const Bytes& inner) {
    return stuffWith(kFrameStart, kFrameEnd, kFrameEscape, inner);
}

bool unstuff(const Bytes& wire, Bytes* plain) {
    return unstuffWith(kFrameEscape, wire, plain);
}

Bytes stuffWith(uint8_t start, uint8_t end, uint8_t escape, const Bytes& inner) {
    Bytes out;
    out.reserve(2 * inner.size() + 2);
    out.push_back(start);
    for (uint8_t b : inner) {
        if (escaped(b, escape)) {
            out.push_back(escape);
            out.push_back(static_cast<uint8_t>(b - escape));
        } else {
            out.push_back(b);
        }
    }
    out.push_back(end);
    return out;
}

bool unstuffWith(uint8_t escape, const Bytes& wire, Bytes* plain) {
    plain->clear();
    bool ok = true;
    for (size_t i = 0; i < wire.size(); ++i) {
        uint8_t b = wire[i];
        if (i > 0 && b == escape) {
            if (i + 1 < wire.size() && wire[i + 1] <= 3) {
                b = static_cast<uint8_t>(escape + wire[++i]);
            } else {
                ok = false;
            }
        }
        plain->push_back(b);
    }
    return ok;
}

}  // namespace brdsim
