// The receive decoders fed byte by byte as reads would deliver them: reassembly,
// checks, routing to the answer buffer or the callback, and the buffer limits.
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <vector>

#include "mcu_base.h"

namespace {

using Bytes = std::vector<BYTE>;

std::mutex g_mu;
std::vector<CALLBACK_DATA> g_calls;

void record(CALLBACK_DATA d) {
    std::lock_guard<std::mutex> g(g_mu);
    g_calls.push_back(d);
}

std::vector<CALLBACK_DATA> calls(int type) {
    std::lock_guard<std::mutex> g(g_mu);
    std::vector<CALLBACK_DATA> out;
    for (const auto& c : g_calls)
        if (c.type == type) out.push_back(c);
    return out;
}

Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

// An ST frame on the wire: F1, escaped (inner, CRC), F2; `crcDelta` spoils the CRC.
Bytes stWire(const Bytes& inner, int crcDelta = 0) {
    Bytes raw = inner;
    raw.push_back(BYTE(Get_CRC8(inner.data(), inner.size()) + crcDelta));
    BYTE out[512];
    unsigned n = stuffFrame(0xF1, 0xF2, 0xF0, raw.data(), raw.size(), out, sizeof out);
    return Bytes(out, out + n);
}

Bytes stUnstuffed(const Bytes& inner) {
    Bytes f{0xF1};
    f.insert(f.end(), inner.begin(), inner.end());
    f.push_back(Get_CRC8(inner.data(), inner.size()));
    f.push_back(0xF2);
    return f;
}

// An ST CAN frame: device, 04, address, id (LSB first), ide, rtr, dlc, data.
Bytes stCanInner(BYTE device, uint32_t id, BYTE rtr, BYTE dlc, const Bytes& data) {
    Bytes in{device,         0x04,           0x00, BYTE(id), BYTE(id >> 8),
             BYTE(id >> 16), BYTE(id >> 24), 0x04, rtr,      dlc};
    in.insert(in.end(), data.begin(), data.end());
    return in;
}

class Decoder : public ::testing::Test {
   protected:
    void SetUp() override {
        Register_MCU_EventCallBack(0, 0, record);
        std::lock_guard<std::mutex> g(g_mu);
        g_calls.clear();
    }
    void TearDown() override { Register_MCU_EventCallBack(0, 0, nullptr); }

    MCU_CONTENT* make(int type, int mode) {
        m.reset(new MCU_CONTENT{});
        m->fd = 7;
        m->mcuType = type;
        m->stMode = type == MCU_TYPE_ST ? mode : 0;
        m->nxpMode = type == MCU_TYPE_NXP ? mode : 0;
        m->lock = 1;  // a request is outstanding
        return m.get();
    }
    std::vector<int> feed(int (*core)(MCU_CONTENT*, const BYTE*, unsigned int),
                          const std::vector<Bytes>& chunks) {
        std::vector<int> results;
        for (const auto& c : chunks) results.push_back(core(m.get(), c.data(), c.size()));
        return results;
    }
    Bytes answer() const {
        return Bytes(m->CommandResponseData, m->CommandResponseData + m->CommandResponseDataLength);
    }
    std::unique_ptr<MCU_CONTENT> m;
};

const Bytes kAnswer = stWire({0x00, 0x02, 0x01, 0x05});
const Bytes kAnswer2 = stWire({0x00, 0x02, 0x0A, 0x01, 0xF1});
const Bytes kCan8 = stWire(stCanInner(0x06, 0x123, 0, 8, {1, 2, 3, 4, 5, 6, 7, 8}));

struct StCase {
    const char* what;
    int mode;
    std::vector<Bytes> chunks;
    std::vector<int> results;
    Bytes answer;  // empty: nothing stored
    size_t cans, events;
    unsigned errors;
    unsigned held;
};

}  // namespace

TEST_F(Decoder, StStreams) {
    const Bytes a1 = stUnstuffed({0x00, 0x02, 0x01, 0x05});
    const Bytes a2 = stUnstuffed({0x00, 0x02, 0x0A, 0x01, 0xF1});
    const Bytes event = stWire({0x00, 0x04, 0x01, 0x33});
    const Bytes longDev6 =
        stWire({0x06, 0x02, 0x01, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    StCase cases[] = {
        {"answer split over two reads",
         ST_MODE_AP,
         {{0xF1, 0x00, 0x02, 0x01}, Bytes(kAnswer.begin() + 4, kAnswer.end())},
         {0, 1},
         a1,
         0,
         0,
         0,
         0},
        {"two answers in one read: the last stays",
         ST_MODE_AP,
         {cat({kAnswer, kAnswer2})},
         {1},
         a2,
         0,
         0,
         0,
         0},
        {"CAN frame of 21 bytes goes to the callback", ST_MODE_AP, {kCan8}, {1}, {}, 1, 0, 0, 0},
        {"CAN frames between answers",
         ST_MODE_AP,
         {cat({kCan8, kAnswer, kCan8})},
         {1},
         a1,
         2,
         0,
         0,
         0},
        {"bad CRC is dropped",
         ST_MODE_AP,
         {stWire({0x00, 0x02, 0x01, 0x05}, 1)},
         {1},
         {},
         0,
         0,
         0,
         0},
        {"garbage before the answer",
         ST_MODE_AP,
         {cat({{0x55, 0xAA}, kAnswer})},
         {1},
         a1,
         0,
         0,
         0,
         2},
        {"partial next frame is held",
         ST_MODE_AP,
         {cat({kAnswer, {0xF1, 0x00}})},
         {1},
         a1,
         0,
         0,
         0,
         2},
        {"event answer reaches the callback",
         ST_MODE_AP,
         {event},
         {1},
         stUnstuffed({0x00, 0x04, 0x01, 0x33}),
         0,
         1,
         0,
         0},
        {"long frame from device 6 is no answer", ST_MODE_AP, {longDev6}, {1}, {}, 0, 0, 0, 0},
        {"overflow past 2047 bytes",
         ST_MODE_AP,
         {Bytes(1000, 0), Bytes(1000, 0), Bytes(100, 0)},
         {0, 0, -7},
         {},
         0,
         0,
         1,
         0},
        {"update mode answer", ST_MODE_UPDATE, {kAnswer}, {1}, a1, 0, 0, 0, 0},
        {"update mode bad CRC",
         ST_MODE_UPDATE,
         {stWire({0x00, 0x02, 0x01}, 3)},
         {-8},
         {},
         0,
         0,
         0,
         0},
        {"unknown mode delivers nothing", 0, {kAnswer}, {0}, {}, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        make(MCU_TYPE_ST, c.mode);
        EXPECT_EQ(feed(ST_DecodeBytes, c.chunks), c.results);
        EXPECT_EQ(answer(), c.answer);
        EXPECT_EQ(m->lock, c.answer.empty() ? 1 : 0);
        EXPECT_EQ(calls(CALLBACK_TYPE_CAN).size(), c.cans);
        EXPECT_EQ(calls(CALLBACK_TYPE_EVENT).size(), c.events);
        EXPECT_EQ(m->receiveErrorCount, c.errors);
        EXPECT_EQ(m->receiveDataStartIndex, c.held);
    }
}

TEST_F(Decoder, StFailedReadDropsHeldBytes) {
    make(MCU_TYPE_ST, ST_MODE_AP);
    EXPECT_EQ(feed(ST_DecodeBytes, {{0xF1, 0x00}}), (std::vector<int>{0}));
    EXPECT_EQ(ST_DecodeBytes(m.get(), nullptr, static_cast<unsigned>(-1)), -7);
    EXPECT_EQ(m->receiveErrorCount, 1u);
    EXPECT_EQ(m->receiveDataStartIndex, 0u);
    EXPECT_EQ(ST_DecodeBytes(m.get(), kAnswer.data(), kAnswer.size()), 1);
    EXPECT_EQ(m->lock, 0);
}

TEST_F(Decoder, StCanFields) {
    struct Row {
        const char* what;
        BYTE rtr, dlc;
        Bytes data, expectData;
        uint16_t expectDlc;
    } rows[] = {
        {"data frame", 0, 2, {0xAA, 0xBB}, {0xAA, 0xBB}, 2},
        {"remote request keeps dlc, copies nothing", 2, 4, {1, 2, 3, 4}, {}, 4},
        {"dlc 0", 0, 0, {}, {}, 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.what);
        SetUp();
        make(MCU_TYPE_ST, ST_MODE_AP);
        Bytes wire = stWire(stCanInner(0x07, 0x12345678, r.rtr, r.dlc, r.data));
        EXPECT_EQ(ST_DecodeBytes(m.get(), wire.data(), wire.size()), 1);
        auto got = calls(CALLBACK_TYPE_CAN);
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].fd, 7);
        EXPECT_EQ(got[0].canData.id, 0x12345678u);
        EXPECT_EQ(got[0].canData.rtr, r.rtr);
        EXPECT_EQ(got[0].canData.dlc, r.expectDlc);
        Bytes data(got[0].canData.data, got[0].canData.data + 8);
        Bytes expect = r.expectData;
        expect.resize(8, 0);
        EXPECT_EQ(data, expect);
    }
}

TEST_F(Decoder, NxpStreams) {
    const Bytes can = {0xC1, 0x30, 0x78, 0x56, 0x34, 0x12, 0x00, 0x00, 0x02, 0xAA, 0xBB, 0xC2};
    const Bytes answer = {0xC1, 0x21, 0x01, 0xC2};
    struct Case {
        const char* what;
        int mode;
        std::vector<Bytes> chunks;
        std::vector<int> results;
        Bytes answer;
        size_t cans;
        unsigned errors, held;
    } cases[] = {
        {"CAN frame", NXP_MODE_AP, {can}, {1}, {}, 1, 0, 0},
        {"CAN frame and answer in one read",
         NXP_MODE_AP,
         {cat({can, answer})},
         {1},
         answer,
         1,
         0,
         0},
        {"answer split", NXP_MODE_AP, {{0xC1, 0x21}, {0x01, 0xC2}}, {0, 1}, answer, 0, 0, 0},
        {"escaped C1 in the data",
         NXP_MODE_AP,
         {{0xC1, 0x21, 0xC0, 0x01, 0xC2}},
         {1},
         {0xC1, 0x21, 0xC1, 0xC2},
         0,
         0,
         0},
        {"garbage after the end code",
         NXP_MODE_AP,
         {cat({answer, {0x55, 0x66}})},
         {1},
         answer,
         0,
         0,
         0},
        {"next start code is held",
         NXP_MODE_AP,
         {cat({answer, {0xC1, 0x22}})},
         {1},
         answer,
         0,
         0,
         2},
        {"no start code", NXP_MODE_AP, {{0x55, 0x21, 0xC2}}, {-7}, {}, 0, 1, 0},
        {"update mode",
         NXP_MODE_UPDATE,
         {{0x00, 0xF1, 0x21, 0xF0, 0x02, 0xF2}},
         {1},
         {0xF1, 0x21, 0xF2, 0xF2},
         0,
         0,
         0},
        {"full read is thrown away", NXP_MODE_AP, {Bytes(1024, 0xC2)}, {0}, {}, 0, 0, 0},
        {"overflow",
         NXP_MODE_AP,
         {Bytes(1000, 0), Bytes(1000, 0), Bytes(100, 0)},
         {0, 0, -7},
         {},
         0,
         1,
         0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        make(MCU_TYPE_NXP, c.mode);
        EXPECT_EQ(feed(NXP_DecodeBytes, c.chunks), c.results);
        EXPECT_EQ(this->answer(), c.answer);
        EXPECT_EQ(m->lock, c.answer.empty() ? 1 : 0);
        EXPECT_EQ(calls(CALLBACK_TYPE_CAN).size(), c.cans);
        EXPECT_EQ(m->receiveCANDataCount, c.cans);
        EXPECT_EQ(m->receiveErrorCount, c.errors);
        EXPECT_EQ(m->receiveDataStartIndex, c.held);
    }
}

TEST_F(Decoder, NxpCanFields) {
    struct Row {
        BYTE rtr;
        uint16_t dlc;
        Bytes data;
    } rows[] = {
        {0, 2, {0xAA, 0xBB}},
        {2, 2, {0xAA, 0xBB}},  // rtr 2 is an ordinary data frame on NXP
        {1, 2, {}},            // remote request
    };
    for (const auto& r : rows) {
        SetUp();
        make(MCU_TYPE_NXP, NXP_MODE_AP);
        Bytes can = {0xC1, 0x30, 0x78, 0x56, 0x34, 0x12, 0x01, r.rtr, 0x02, 0xAA, 0xBB, 0xC2};
        EXPECT_EQ(NXP_DecodeBytes(m.get(), can.data(), can.size()), 1);
        auto got = calls(CALLBACK_TYPE_CAN);
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].canData.id, 0x12345678u);
        EXPECT_EQ(got[0].canData.ide, 1);
        EXPECT_EQ(got[0].canData.dlc, r.dlc);
        Bytes expect = r.data;
        expect.resize(8, 0);
        EXPECT_EQ(Bytes(got[0].canData.data, got[0].canData.data + 8), expect);
    }
}

TEST_F(Decoder, FmStreams) {
    struct Case {
        const char* what;
        std::vector<Bytes> chunks;
        std::vector<int> results;
        Bytes answer;
        unsigned errors, held;
    } cases[] = {
        {"escape undone", {{0xF1, 0x88, 0xF0, 0x01, 0xF2}}, {1}, {0xF1, 0x88, 0xF1, 0xF2}, 0, 0},
        {"split", {{0xF1, 0x88}, {0x01, 0xF2}}, {1, 1}, {0xF1, 0x88, 0x01, 0xF2}, 0, 0},
        {"end code before the start code waits", {{0xF2, 0xF1, 0x01}}, {1}, {}, 0, 3},
        {"overflow", {Bytes(1000, 0), Bytes(1000, 0), Bytes(100, 0)}, {1, 1, -7}, {}, 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        make(MCU_TYPE_FM, 0);
        EXPECT_EQ(feed(FM_DecodeBytes, c.chunks), c.results);
        EXPECT_EQ(answer(), c.answer);
        EXPECT_EQ(m->lock, c.answer.empty() ? 1 : 0);
        EXPECT_EQ(m->receiveErrorCount, c.errors);
        EXPECT_EQ(m->receiveDataStartIndex, c.held);
        EXPECT_TRUE(g_calls.empty());
    }
}

TEST_F(Decoder, CustomisedReadIsOneAnswerAndOneEvent) {
    make(MCU_TYPE_CUSTOMISE, 0);
    Bytes in = {0x10, 0x20, 0x03, 0x03, 0x50};
    EXPECT_EQ(Customise_DecodeBytes(m.get(), in.data(), in.size()), 1);
    EXPECT_EQ(answer(), in);
    EXPECT_EQ(m->lock, 0);
    auto ev = calls(CALLBACK_TYPE_EVENT);
    ASSERT_EQ(ev.size(), 1u);
    EXPECT_EQ(ev[0].szDataLength, 5);
    EXPECT_EQ(Bytes(ev[0].szData, ev[0].szData + 5), in);
}

TEST_F(Decoder, LongEventIsClipped) {
    make(MCU_TYPE_CUSTOMISE, 0);
    Bytes in(300, 0x41);
    EXPECT_EQ(Customise_DecodeBytes(m.get(), in.data(), in.size()), 1);
    auto ev = calls(CALLBACK_TYPE_EVENT);
    ASSERT_EQ(ev.size(), 1u);
    EXPECT_EQ(ev[0].szDataLength, EVENT_DATA_SIZE);
    EXPECT_EQ(m->CommandResponseDataLength, 300);
}
