// The simulated FM module and TPMS receiver: their answers as pure functions, and the
// receiver's records reaching a link typed as the customised device.
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "brdsim.h"
#include "mcu_base.h"
#include "tpms.h"

namespace {

using brdsim::Bytes;

struct ModuleCase {
    const char* what;
    const char* product;
    std::vector<Bytes> before;  // requests answered first
    Bytes request;              // as the module reads it
    Bytes answer;               // payload, command byte + 1 first
};

// clang-format off
const ModuleCase MODULE_CASES[] = {
    {"volume stored", "KX07", {{0xF1, 0x84, 40, 0xF2}}, {0xF1, 0x9A, 0xF2}, {0x9B, 40}},
    {"volume above 63 refused", "KX07", {{0xF1, 0x84, 64, 0xF2}}, {0xF1, 0x9A, 0xF2}, {0x9B, 20}},
    {"volume answer", "KX07", {}, {0xF1, 0x84, 64, 0xF2}, {0x85, 0}},
    {"zone per product", "KX22", {}, {0xF1, 0x9C, 0xF2}, {0x9D, 1}},
    {"zone set", "KX07", {{0xF1, 0x82, 2, 0xF2}}, {0xF1, 0x9C, 0xF2}, {0x9D, 2}},
    {"zone 3 refused", "KX07", {}, {0xF1, 0x82, 3, 0xF2}, {0x83, 0}},
    {"frequency outside the zone", "KX07", {}, {0xF1, 0x88, 0xB0, 0x1D, 0xF2}, {0x89, 0}},
    {"frequency inside the zone", "KX07", {}, {0xF1, 0x88, 0x26, 0x2A, 0xF2}, {0x89, 1}},
    {"scan", "KX22", {}, {0xF1, 0x8A, 0xF2}, {0x8B, 3, 0x60, 0x22, 0xAE, 0x24, 0xF6, 0x27}},
    {"scan follows the zone", "KX56", {{0xF1, 0x82, 0, 0xF2}}, {0xF1, 0x8A, 0xF2}, {0x8B, 1, 0xF1, 0x22}},
    {"seek up", "KX56", {}, {0xF1, 0x94, 0x2E, 0x22, 0xF2}, {0x95, 0xF1, 0x22}},
    {"seek up wraps", "KX56", {}, {0xF1, 0x94, 0xF1, 0x22, 0xF2}, {0x95, 0xF2, 0x1D}},
    {"seek down", "KX56", {}, {0xF1, 0x96, 0x2E, 0x22, 0xF2}, {0x97, 0xF0, 0x21}},
    {"seek down wraps", "KX56", {}, {0xF1, 0x96, 0xF2, 0x1D, 0xF2}, {0x97, 0xF1, 0x22}},
    {"RDS flags", "KX56", {}, {0xF1, 0x8C, 0xF2}, {0x8D, 0x05}},
    {"no PS without its flag", "KX56", {}, {0xF1, 0x90, 0xF2}, {0x91}},
    {"PID", "KX07", {}, {0xF1, 0x8E, 0xF2}, {0x8F, 0xC2, 0x01}},
    {"unknown command", "KX07", {}, {0xF1, 0xA0, 0xF2}, {0xA1, 0}},
};
// clang-format on

TEST(FmModule, AnswersFromItsState) {
    for (const ModuleCase& c : MODULE_CASES) {
        brdsim::FmState s = brdsim::fmDefaults(std::string(c.product) + "\n");
        for (const Bytes& b : c.before) brdsim::fmAnswer(s, b);
        EXPECT_EQ(brdsim::fmAnswer(s, c.request), c.answer) << c.what;
    }
    brdsim::FmState s = brdsim::fmDefaults("KX07");
    EXPECT_EQ(brdsim::fmAnswer(s, {0xF1, 0x84, 1, 0xF2}, true), (Bytes{0x87, 1}));
    brdsim::fmAnswer(s, {0xF1, 0x94, 0x2E, 0x22, 0xF2});
    EXPECT_EQ(s.frequency, 8810);
}

TEST(FmModule, ReadsOnlyItsOwnEscapes) {
    EXPECT_EQ(brdsim::fmUnescape({0xF1, 0x88, 0xF0, 0x01, 0xF0, 0x02, 0xF2}),
              (Bytes{0xF1, 0x88, 0xF1, 0xF2, 0xF2}));
    EXPECT_EQ(brdsim::fmUnescape({0xF1, 0x88, 0xF0, 0x22, 0xF2}),
              (Bytes{0xF1, 0x88, 0xF0, 0x22, 0xF2}));
    EXPECT_EQ(brdsim::encodeFmFrame({0x95, 0xF1, 0x22}),
              (Bytes{0xF1, 0x95, 0xF0, 0x01, 0x22, 0xF2}));
    EXPECT_TRUE(brdsim::isFmFrame({0xF1, 0x80, 0x01, 0xF2}));
    EXPECT_FALSE(brdsim::isFmFrame({0xF1, 0x00, 0x03, 0x08, 0x44, 0xF2}));
}

TEST(TpmsReceiver, CommandFoundAnywhereInTheAsciiStream) {
    brdsim::AsciiCommandMatcher m;
    std::string stream = "xxATBATB01ATB0ATB01";
    std::vector<size_t> hits;
    for (size_t i = 0; i < stream.size(); ++i)
        if (m.feed(static_cast<uint8_t>(stream[i]))) hits.push_back(i);
    EXPECT_EQ(hits, (std::vector<size_t>{9, 18}));
    EXPECT_EQ(brdsim::encodeTpmsRecord({0xABCD1234, 230, 24, 1}),
              (Bytes{0xAB, 0xCD, 0x12, 0x34, 0x00, 0xE6, 74, 0x01}));
    auto sensors = brdsim::tpmsDefaultSensors();
    EXPECT_NE(brdsim::tpmsStreamRecord(sensors, 0), brdsim::tpmsStreamRecord(sensors, 4));
    Bytes fifth = brdsim::tpmsStreamRecord(sensors, 5);
    EXPECT_EQ(Bytes(fifth.begin(), fifth.begin() + 4), (Bytes{0x00, 0xC0, 0xFF, 0xEE}));
}

// A real link on the simulator, with raw rows in its pool.
struct Line {
    brdsim::Simulator sim;
    MCU_CONTENT* link = nullptr;
    explicit Line(const char* product = "KX07") : sim(product) {
        EXPECT_TRUE(sim.start());
        link = init_MCU(sim.ptyPath().c_str(), MCU_TYPE_ST, 115200);
    }
    ~Line() { exit_LIB(link); }
};

// What the customised decoder handed over, read after read.
std::mutex g_seenMu;
Bytes g_seen;
void remember(CALLBACK_DATA d) {
    std::lock_guard<std::mutex> g(g_seenMu);
    g_seen.insert(g_seen.end(), d.szData, d.szData + d.szDataLength);
}

TEST(TpmsReceiver, StreamsRecordsUnasked) {
    Line line;
    line.link->mcuType = MCU_TYPE_CUSTOMISE;  // nothing is outstanding on the link
    auto previous = callback_EventToLibrary.exchange(remember);
    {
        brdsim::TpmsStreamer stream(line.sim, 100, 6);
        auto until = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        for (;;) {
            {
                std::lock_guard<std::mutex> g(g_seenMu);
                if (g_seen.size() >= 6 * 8) break;
            }
            ASSERT_LT(std::chrono::steady_clock::now(), until);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    callback_EventToLibrary = previous;
    std::lock_guard<std::mutex> g(g_seenMu);
    auto sensors = brdsim::tpmsDefaultSensors();
    Bytes sent;
    for (uint32_t n = 0; n < 6; ++n) {
        Bytes r = brdsim::tpmsStreamRecord(sensors, n);
        sent.insert(sent.end(), r.begin(), r.end());
    }
    EXPECT_EQ(g_seen, sent);  // in order, and no more than asked for
    EXPECT_EQ(line.sim.requestCount(), 0u);
}

}  // namespace
