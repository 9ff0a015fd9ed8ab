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

// What the handlers' menus never send; the rest is reached through the handlers.
// clang-format off
const ModuleCase MODULE_CASES[] = {
    {"volume above 63 refused", "KX07", {{0xF1, 0x84, 64, 0xF2}}, {0xF1, 0x9A, 0xF2}, {0x9B, 20}},
    {"zone 3 refused", "KX07", {}, {0xF1, 0x82, 3, 0xF2}, {0x83, 0}},
    {"scan follows the zone", "KX56", {{0xF1, 0x82, 0, 0xF2}}, {0xF1, 0x8A, 0xF2}, {0x8B, 1, 0xF1, 0x22}},
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

TEST(TpmsReceiver, CommandFoundAnywhereInTheAsciiStream) {
    brdsim::AsciiCommandMatcher m;
    std::string stream = "xxATBATB01ATB0ATB01";
    std::vector<size_t> hits;
    for (size_t i = 0; i < stream.size(); ++i)
        if (m.feed(static_cast<uint8_t>(stream[i]))) hits.push_back(i);
    EXPECT_EQ(hits, (std::vector<size_t>{9, 18}));
}

// A real link on the simulator.
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
