// The receive decoders of every controller type on byte streams read from a
// pseudo-terminal, one read per step: reassembly, checks, routing to the answer buffer
// or the callback, and the buffer limits.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "mcu_base.h"
#include "pty_pair.h"

namespace {

using Bytes = std::vector<BYTE>;

// The decoders run on the test's thread and call back on it.
std::vector<CALLBACK_DATA> g_calls;
void record(CALLBACK_DATA d) {
    g_calls.push_back(d);
}

Bytes from(const Bytes& b, size_t n) {
    return Bytes(b.begin() + n, b.end());
}

Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

// An ST frame: F1, (inner, CRC) escaped, F2; `crcDelta` spoils the CRC.
Bytes st(const Bytes& inner, int crcDelta = 0) {
    Bytes raw = inner;
    raw.push_back(BYTE(Get_CRC8(inner.data(), inner.size()) + crcDelta));
    BYTE out[512];
    return Bytes(out, out + stuffFrame(0xF1, 0xF2, 0xF0, raw.data(), raw.size(), out, sizeof out));
}

// The same frame as the waiter gets it: unescaped.
Bytes plain(const Bytes& inner) {
    return cat({{0xF1}, inner, {Get_CRC8(inner.data(), inner.size()), 0xF2}});
}

// An ST CAN frame: device, 04, address 0, id (LSB first), ide 4, rtr, dlc, data.
Bytes stCan(BYTE device, uint32_t id, BYTE rtr, BYTE dlc, const Bytes& data) {
    Bytes in{device,         0x04,           0x00, BYTE(id), BYTE(id >> 8),
             BYTE(id >> 16), BYTE(id >> 24), 4,    rtr,      dlc};
    return st(cat({in, data}));
}

struct Decoder {
    int (*fromPort)(MCU_CONTENT*);
    int (*fromBytes)(MCU_CONTENT*, const BYTE*, unsigned int);
};

Decoder decoderOf(int type) {
    switch (type) {
        case MCU_TYPE_ST:
            return {ST_DecodingResponse, ST_DecodeBytes};
        case MCU_TYPE_NXP:
            return {NXP_DecodingResponse, NXP_DecodeBytes};
        case MCU_TYPE_FM:
            return {FM_DecodingResponse, FM_DecodeBytes};
        default:
            return {Customise_DecodingResponse, Customise_DecodeBytes};
    }
}

// Waits (bounded) until `n` bytes written on the master side can be read from `fd`.
void waitPending(int fd, size_t n) {
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    int pending = 0;
    while (ioctl(fd, FIONREAD, &pending) == 0 && size_t(pending) < n &&
           std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

const Bytes kA1 = {0x00, 0x02, 0x01, 0x05};
const Bytes kA2 = {0x00, 0x02, 0x0A, 0x01, 0xF1};
const Bytes kCan8 = stCan(0x06, 0x123, 0, 8, {1, 2, 3, 4, 5, 6, 7, 8});
const Bytes kCanAB = stCan(0x07, 0x12345678, 0, 2, {0xAA, 0xBB});
const Bytes kNxpCan = {0xC1, 0x30, 0x78, 0x56, 0x34, 0x12, 0x00, 0x00, 0x02, 0xAA, 0xBB, 0xC2};
const Bytes kNxpAnswer = {0xC1, 0x21, 0x01, 0xC2};
const Bytes kZeros1000(1000, 0);
const Bytes kZeros100(100, 0);
const can_msg_t kIdAB = {.ide = 4, .id = 0x12345678, .dlc = 2, .data = {0xAA, 0xBB}, .rtr = 0};

Bytes nxpCan(BYTE ide, BYTE rtr) {
    return {0xC1, 0x30, 0x78, 0x56, 0x34, 0x12, ide, rtr, 0x02, 0xAA, 0xBB, 0xC2};
}

struct Row {
    const char* what;
    int type, mode;
    std::vector<Bytes> reads;  // what each read delivers; an empty one is a failed read
    std::vector<int> results;
    Bytes answer;  // what the waiter gets; empty: it still waits
    size_t cans, events;
    unsigned errors, held;
    std::optional<can_msg_t> can;  // the last CAN message handed on
};

constexpr int ST = MCU_TYPE_ST, NXP = MCU_TYPE_NXP, FM = MCU_TYPE_FM, CU = MCU_TYPE_CUSTOMISE;
constexpr int AP = ST_MODE_AP, UPD = ST_MODE_UPDATE, NAP = NXP_MODE_AP, NUPD = NXP_MODE_UPDATE;

// clang-format off
const Row kRows[] = {
    {"ST answer split over two reads", ST, AP, {{0xF1, 0x00, 0x02, 0x01}, from(st(kA1), 4)},
     {0, 1}, plain(kA1), 0, 0, 0, 0, {}},
    {"ST two answers in one read: the last stays", ST, AP, {cat({st(kA1), st(kA2)})}, {1},
     plain(kA2), 0, 0, 0, 0, {}},
    {"ST CAN frame of 21 bytes goes to the callback", ST, AP, {kCan8}, {1}, {}, 1, 0, 0, 0, {}},
    {"ST junk, CAN frames between answers, split mid-frame", ST, AP,
     {{0x00, 0x13, 0xF1, 0x06, 0x04}, cat({from(kCan8, 3), st(kA1), kCanAB})},
     {0, 1}, plain(kA1), 2, 0, 0, 2, kIdAB},
    {"ST remote request keeps dlc, copies nothing", ST, AP, {stCan(0x07, 0x12345678, 2, 4, {1, 2, 3, 4})},
     {1}, {}, 1, 0, 0, 0, can_msg_t{.ide = 4, .id = 0x12345678, .dlc = 4, .data = {}, .rtr = 2}},
    {"ST bad CRC is dropped", ST, AP, {st(kA1, 1)}, {1}, {}, 0, 0, 0, 0, {}},
    {"ST garbage before the answer", ST, AP, {cat({{0x55, 0xAA}, st(kA1)})}, {1}, plain(kA1),
     0, 0, 0, 2, {}},
    {"ST partial next frame is held", ST, AP, {cat({st(kA1), {0xF1, 0x00}})}, {1}, plain(kA1),
     0, 0, 0, 2, {}},
    {"ST event answer reaches the callback", ST, AP, {st({0x00, 0x04, 0x01, 0x33})}, {1},
     plain({0x00, 0x04, 0x01, 0x33}), 0, 1, 0, 0, {}},
    {"ST long frame from device 6 is no answer", ST, AP,
     {st({0x06, 0x02, 0x01, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16})}, {1}, {},
     0, 0, 0, 0, {}},
    {"ST overflow past 2047 bytes", ST, AP, {kZeros1000, kZeros1000, kZeros100}, {0, 0, -7}, {},
     0, 0, 1, 0, {}},
    {"ST failed read drops held bytes", ST, AP, {{0xF1, 0x00}, {}, st(kA1)}, {0, -7, 1}, plain(kA1),
     0, 0, 1, 0, {}},
    {"ST update mode answer", ST, UPD, {st(kA1)}, {1}, plain(kA1), 0, 0, 0, 0, {}},
    {"ST update mode bad CRC", ST, UPD, {st({0x00, 0x02, 0x01}, 3)}, {-8}, {}, 0, 0, 0, 0, {}},
    {"ST unknown mode delivers nothing", ST, 0, {st(kA1)}, {0}, {}, 0, 0, 0, 0, {}},
    {"NXP CAN frame", NXP, NAP, {kNxpCan}, {1}, {}, 1, 0, 0, 0,
     can_msg_t{.ide = 0, .id = 0x12345678, .dlc = 2, .data = {0xAA, 0xBB}, .rtr = 0}},
    {"NXP CAN frame and answer in one read", NXP, NAP, {cat({kNxpCan, kNxpAnswer})}, {1},
     kNxpAnswer, 1, 0, 0, 0, {}},
    {"NXP rtr 2 is an ordinary data frame", NXP, NAP, {nxpCan(1, 2)}, {1}, {}, 1, 0, 0, 0,
     can_msg_t{.ide = 1, .id = 0x12345678, .dlc = 2, .data = {0xAA, 0xBB}, .rtr = 2}},
    {"NXP remote request", NXP, NAP, {nxpCan(1, 1)}, {1}, {}, 1, 0, 0, 0,
     can_msg_t{.ide = 1, .id = 0x12345678, .dlc = 2, .data = {}, .rtr = 1}},
    {"NXP answer split", NXP, NAP, {{0xC1, 0x21}, {0x01, 0xC2}}, {0, 1}, kNxpAnswer, 0, 0, 0, 0, {}},
    {"NXP escaped C1 in the data", NXP, NAP, {{0xC1, 0x21, 0xC0, 0x01, 0xC2}}, {1},
     {0xC1, 0x21, 0xC1, 0xC2}, 0, 0, 0, 0, {}},
    {"NXP garbage after the end code", NXP, NAP, {cat({kNxpAnswer, {0x55, 0x66}})}, {1}, kNxpAnswer,
     0, 0, 0, 0, {}},
    {"NXP next start code is held", NXP, NAP, {cat({kNxpAnswer, {0xC1, 0x22}})}, {1}, kNxpAnswer,
     0, 0, 0, 2, {}},
    {"NXP no start code", NXP, NAP, {{0x55, 0x21, 0xC2}}, {-7}, {}, 0, 0, 1, 0, {}},
    {"NXP update mode", NXP, NUPD, {{0x00, 0xF1, 0x21, 0xF0, 0x02, 0xF2}}, {1},
     {0xF1, 0x21, 0xF2, 0xF2}, 0, 0, 0, 0, {}},
    {"NXP full read is thrown away", NXP, NAP, {Bytes(1024, 0xC2)}, {0}, {}, 0, 0, 0, 0, {}},
    {"NXP overflow", NXP, NAP, {kZeros1000, kZeros1000, kZeros100}, {0, 0, -7}, {}, 0, 0, 1, 0, {}},
    {"FM escape undone", FM, 0, {{0xF1, 0x88, 0xF0, 0x01, 0xF2}}, {1}, {0xF1, 0x88, 0xF1, 0xF2},
     0, 0, 0, 0, {}},
    {"FM split", FM, 0, {{0xF1, 0x88}, {0x01, 0xF2}}, {1, 1}, {0xF1, 0x88, 0x01, 0xF2}, 0, 0, 0, 0, {}},
    {"FM end code before the start code waits", FM, 0, {{0xF2, 0xF1, 0x01}}, {1}, {}, 0, 0, 0, 3, {}},
    {"FM overflow", FM, 0, {kZeros1000, kZeros1000, kZeros100}, {1, 1, -7}, {}, 0, 0, 1, 0, {}},
    {"customised read is one answer and one event", CU, 0, {{0x10, 0x20, 0x03, 0x03, 0x50}}, {1},
     {0x10, 0x20, 0x03, 0x03, 0x50}, 0, 1, 0, 0, {}},
    {"customised long event is clipped", CU, 0, {Bytes(300, 0x41)}, {1}, Bytes(300, 0x41),
     0, 1, 0, 0, {}},
};
// clang-format on

TEST(Decoders, StreamsFromAPseudoTerminal) {
    Register_MCU_EventCallBack(0, 0, record);
    for (const Row& r : kRows) {
        SCOPED_TRACE(r.what);
        g_calls.clear();
        PtyPair pty;
        std::unique_ptr<MCU_CONTENT> m(new MCU_CONTENT{});
        m->fd = open(pty.slavePath.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        ASSERT_GT(m->fd, 0);
        m->mcuType = r.type;
        (r.type == NXP ? m->nxpMode : m->stMode) = r.mode;
        m->lock = 1;  // a request is outstanding
        Decoder d = decoderOf(r.type);
        std::vector<int> results;
        for (const Bytes& chunk : r.reads) {
            if (chunk.empty()) {
                results.push_back(d.fromBytes(m.get(), nullptr, static_cast<unsigned>(-1)));
                continue;
            }
            pty.write(chunk);
            waitPending(m->fd, chunk.size());
            results.push_back(d.fromPort(m.get()));
        }
        EXPECT_EQ(results, r.results);
        Bytes answer(m->CommandResponseData, m->CommandResponseData + m->CommandResponseDataLength);
        EXPECT_EQ(answer, r.answer);
        EXPECT_EQ(m->lock, r.answer.empty() ? 1 : 0);
        EXPECT_EQ(m->receiveErrorCount, r.errors);
        EXPECT_EQ(m->receiveDataStartIndex, r.held);
        size_t cans = 0, events = 0;
        for (const CALLBACK_DATA& c : g_calls) {
            EXPECT_EQ(c.fd, m->fd);
            if (c.type == CALLBACK_TYPE_CAN) ++cans;
            if (c.type != CALLBACK_TYPE_EVENT) continue;
            ++events;
            // An event carries the answer, at most EVENT_DATA_SIZE bytes of it.
            size_t n = std::min<size_t>(answer.size(), EVENT_DATA_SIZE);
            EXPECT_EQ(Bytes(c.szData, c.szData + c.szDataLength),
                      Bytes(answer.begin(), answer.begin() + n));
        }
        EXPECT_EQ(cans, r.cans);
        EXPECT_EQ(events, r.events);
        if (r.type == NXP) {
            EXPECT_EQ(m->receiveCANDataCount, r.cans);
        }
        if (r.can) {
            const can_msg_t& got = g_calls.back().canData;
            EXPECT_EQ(got.id, r.can->id);
            EXPECT_EQ(got.ide, r.can->ide);
            EXPECT_EQ(got.rtr, r.can->rtr);
            EXPECT_EQ(got.dlc, r.can->dlc);
            EXPECT_EQ(Bytes(got.data, got.data + 8), Bytes(r.can->data, r.can->data + 8));
        }
        close(m->fd);
    }
    Register_MCU_EventCallBack(0, 0, nullptr);
}

}  // namespace
