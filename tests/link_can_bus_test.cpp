// The simulated CAN bus through real links: the system MCU's channels (devices 6, 7)
// and an NXP controller, frames crossing between them, bit rates, filters, errors and
// the generator's counter.
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "brdsim.h"
#include "can_bus.h"
#include "mcu_base.h"
#include "nxp_controller.h"

namespace {

std::mutex g_mu;
std::vector<std::pair<int, CALLBACK_DATA>> g_got;  // (fd, record)

void collect(CALLBACK_DATA d) {
    if (d.type != CALLBACK_TYPE_CAN) return;
    std::lock_guard<std::mutex> g(g_mu);
    g_got.push_back({d.fd, d});
}

// Request indices pushed into the pools below.
enum : int {
    ST1_RATE = 1,
    ST1_FILTER,
    ST1_SEND,
    ST2_SEND,
    ST1_ERR,
    NXP_RATE = 1,
    NXP_SEND,
    NXP_ERR
};

struct Board {
    brdsim::CanBus bus;
    brdsim::Simulator sim;
    brdsim::NxpController nxp{bus};
    MCU_CONTENT* st = nullptr;
    MCU_CONTENT* can = nullptr;

    Board() {
        brdsim::attachStChannels(sim, bus);
        EXPECT_TRUE(sim.start());
        EXPECT_TRUE(nxp.start());
        Register_MCU_EventCallBack(0, 0, collect);
        st = init_MCU(sim.ptyPath().c_str(), MCU_TYPE_ST, 115200);
        st->stMode = ST_MODE_AP;
        pushCommandToPool(st, ST1_RATE, 6, 3, 0x01);
        pushCommandToPool(st, ST1_FILTER, 6, 3, 0x02);
        pushCommandToPool(st, ST1_SEND, 6, 3, 0x03);
        pushCommandToPool(st, ST2_SEND, 7, 3, 0x03);
        pushCommandToPool(st, ST1_ERR, 6, 2, 0x01);
        can = init_MCU(nxp.ptyPath().c_str(), MCU_TYPE_NXP, 115200);
        can->nxpMode = NXP_MODE_AP;
        BYTE rate[] = {0x10}, send[] = {0x20}, err[] = {0x34};
        pushCommandToPoolCustomise(can, NXP_RATE, rate, 1);
        pushCommandToPoolCustomise(can, NXP_SEND, send, 1);
        pushCommandToPoolCustomise(can, NXP_ERR, err, 1);
        std::lock_guard<std::mutex> g(g_mu);
        g_got.clear();
    }
    ~Board() {
        exit_LIB(st);
        exit_LIB(can);
        Register_MCU_EventCallBack(0, 0, nullptr);
    }

    std::vector<BYTE> exchange(MCU_CONTENT* m, int index, std::vector<BYTE> data, int* r) {
        BYTE out[256];
        int n = 0;
        *r = sendCMD(m, index, data.data(), static_cast<int>(data.size()), out, &n);
        return std::vector<BYTE>(out, out + (n > 0 ? n : 0));
    }

    // Waits for `n` CAN records.
    std::vector<std::pair<int, CALLBACK_DATA>> waitFor(size_t n, int ms = 2000) {
        auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        while (std::chrono::steady_clock::now() < until) {
            {
                std::lock_guard<std::mutex> g(g_mu);
                if (g_got.size() >= n) return g_got;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        std::lock_guard<std::mutex> g(g_mu);
        return g_got;
    }
};

std::vector<BYTE> message(uint32_t id, BYTE ide, BYTE rtr, std::vector<BYTE> data) {
    std::vector<BYTE> m = {BYTE(id), BYTE(id >> 8), BYTE(id >> 16),   BYTE(id >> 24),
                           ide,      rtr,           BYTE(data.size())};
    data.resize(8);
    m.insert(m.end(), data.begin(), data.end());
    return m;
}

}  // namespace

// A frame sent on one channel arrives on the two others, each in its controller's coding.
TEST(CanBus, FrameCrossesBetweenControllers) {
    struct Case {
        const char* what;
        bool fromSt;
        std::vector<BYTE> msg;
        uint32_t id;
        uint16_t stIde, stRtr, nxpIde, nxpRtr, dlc;
    } cases[] = {
        {"standard from st1", true, message(0x123, 0, 0, {0xDE, 0xAD}), 0x123, 0, 0, 0, 0, 2},
        {"extended from st1", true, message(0x1F334455, 4, 0, {1}), 0x1F334455, 4, 0, 1, 0, 1},
        {"remote from nxp", false, message(0x7FF, 0, 1, {}), 0x7FF, 0, 2, 0, 1, 0},
        {"extended from nxp", false, message(0x12345, 1, 0, {1, 2, 3, 4, 5, 6, 7, 8}), 0x12345, 4,
         0, 1, 0, 8},
    };
    for (const Case& c : cases) {
        Board b;
        int r = 0;
        auto ans = c.fromSt ? b.exchange(b.st, ST1_SEND, c.msg, &r)
                            : b.exchange(b.can, NXP_SEND, c.msg, &r);
        ASSERT_EQ(r, 1) << c.what;
        if (c.fromSt)
            EXPECT_EQ(ans, std::vector<BYTE>{1}) << c.what;
        else
            EXPECT_EQ(ans, (std::vector<BYTE>{0x21, 0x01})) << c.what;
        auto got = b.waitFor(2);
        ASSERT_EQ(got.size(), 2u) << c.what;
        for (auto& [fd, d] : got) {
            bool onSt = fd == b.st->fd;
            EXPECT_EQ(d.canData.id, c.id) << c.what;
            EXPECT_EQ(d.canData.ide, onSt ? c.stIde : c.nxpIde) << c.what;
            EXPECT_EQ(d.canData.rtr, onSt ? c.stRtr : c.nxpRtr) << c.what;
            if (c.stRtr == 0) {
                EXPECT_EQ(d.canData.dlc, c.dlc) << c.what;
                EXPECT_EQ(d.canData.data[0], c.msg[7]) << c.what;
            }
        }
    }
}

TEST(CanBus, BitRateMismatchCountsErrorsAndDeliversNothing) {
    Board b;
    int r = 0;
    b.exchange(b.can, NXP_RATE, {8}, &r);  // NXP at 1M, the ST channels at 500k
    ASSERT_EQ(r, 1);
    b.exchange(b.st, ST1_SEND, message(0x100, 0, 0, {1}), &r);
    ASSERT_EQ(r, 1);
    auto got = b.waitFor(1);
    ASSERT_EQ(got.size(), 1u);  // st2 at the same rate still receives it
    EXPECT_EQ(got[0].first, b.st->fd);
    auto err = b.exchange(b.can, NXP_ERR, {}, &r);
    ASSERT_EQ(r, 1);
    ASSERT_EQ(err.size(), 9u);
    EXPECT_EQ(err[2], 2);  // form error
    EXPECT_EQ(err[4], 1);  // one receive error
    EXPECT_EQ(err[5], 1);  // count 1
}

TEST(CanBus, FiltersPassOnlyMatchingFrames) {
    Board b;
    int r = 0;
    // st1 accepts standard 0x120-0x12F only.
    b.exchange(b.st, ST1_FILTER, {1, 0x20, 0x01, 0, 0, 0xF0, 0x07, 0, 0, 0}, &r);
    ASSERT_EQ(r, 1);
    for (uint32_t id : {0x123u, 0x223u, 0x12Fu})
        b.exchange(b.can, NXP_SEND, message(id, 0, 0, {BYTE(id)}), &r);
    b.waitFor(5);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // nothing more comes
    auto got = b.waitFor(6, 0);
    // Both ST channels share one link: st2 (no filter) takes all three, st1 two.
    EXPECT_EQ(got.size(), 5u);
    b.exchange(b.st, ST1_FILTER, {0}, &r);
    EXPECT_EQ(r, 1);
}

TEST(CanBus, GeneratorCountsWithoutGaps) {
    brdsim::CanBus bus;
    std::mutex mu;
    std::vector<uint32_t> seen;
    bus.attach([&](const brdsim::CanMessage& m) {
        std::lock_guard<std::mutex> g(mu);
        seen.push_back(m.data[0] | m.data[1] << 8 | m.data[2] << 16 | uint32_t(m.data[3]) << 24);
    });
    bus.startGenerator(0, 500, 0x123, false, brdsim::CanBus::DEFAULT_RATE_CODE);
    for (int i = 0; i < 200 && bus.generating(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    bus.stopGenerator();
    std::lock_guard<std::mutex> g(mu);
    ASSERT_EQ(seen.size(), 500u);
    for (uint32_t i = 0; i < seen.size(); ++i) ASSERT_EQ(seen[i], i);
}
