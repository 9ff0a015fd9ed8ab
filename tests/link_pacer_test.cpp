// The simulated line's pacing: byte slots on the sending side, delivery times on the
// receiving side, and a whole exchange through a paced simulator.
#include <gtest/gtest.h>

#include <chrono>

#include "brdsim.h"
#include "line_pacer.h"
#include "mcu_base.h"

using brdsim::LinePacer;
using namespace std::chrono;
using Clock = LinePacer::Clock;

namespace {

Clock::time_point at(long us) {
    return Clock::time_point(microseconds(1000000 + us));
}

}  // namespace

TEST(LinePacer, UnpacedLetsEverythingThrough) {
    LinePacer p(0);
    EXPECT_FALSE(p.paced());
    EXPECT_GT(p.allowed(at(0)), 1000000u);
    p.book(at(0), 5000);
    EXPECT_EQ(p.delivered(at(0), 5000), 5000u);
}

TEST(LinePacer, SendingSlots) {
    // 100000 baud: 100 us a byte; bursts may reach 500 us ahead.
    struct Case {
        long bookAtUs;
        size_t booked;
        long askAtUs;
        size_t allowed;
    } cases[] = {
        {0, 0, 0, 11},      // idle line: the slots of one quantum back and one ahead
        {0, 6, 0, 5},       // six booked at 0 take the slots from -500 to 100 us
        {0, 6, 100, 6},     // 100 us later: slots 100 .. 600
        {0, 6, 1000, 11},   // idle since 100 us: no more than one quantum back
        {0, 100, 9000, 1},  // 100 bytes occupy the line until 9500 us
        {0, 100, 9600, 7},  // slots 9500 .. 10100 us
    };
    for (const Case& c : cases) {
        LinePacer p(100000, microseconds(500));
        EXPECT_EQ(p.byteTime(), microseconds(100));
        p.book(at(c.bookAtUs), c.booked);
        EXPECT_EQ(p.allowed(at(c.askAtUs)), c.allowed) << c.booked << " asked at " << c.askAtUs;
    }
}

TEST(LinePacer, NextSlotWaitsForTheLine) {
    LinePacer p(100000, microseconds(500));
    p.book(at(0), 100);  // busy until 9500 us
    EXPECT_EQ(p.nextSlot(at(0)), at(9000));
    EXPECT_EQ(p.allowed(p.nextSlot(at(0))), 1u);
    // Waiting for a chunk of three slots within reach.
    EXPECT_EQ(p.burst(), 5u);
    EXPECT_EQ(p.nextSlot(at(0), 3), at(9200));
    EXPECT_EQ(p.allowed(at(9200)), 3u);
    EXPECT_EQ(p.allowed(at(9199)), 2u);
}

TEST(LinePacer, ReceivedBytesArriveOneByteTimeApart) {
    struct Case {
        long askAtUs;
        size_t delivered;
    } cases[] = {{0, 0}, {99, 0}, {100, 1}, {250, 2}, {1000, 10}, {5000, 10}};
    for (const Case& c : cases) {
        LinePacer p(100000);
        p.receive(at(0), 10);  // ten bytes read at once
        EXPECT_EQ(p.delivered(at(c.askAtUs), 10), c.delivered) << c.askAtUs;
    }
    LinePacer p(100000);
    p.receive(at(0), 10);
    EXPECT_EQ(p.nextDelivery(10, 0), at(100));
    EXPECT_EQ(p.nextDelivery(10, 3), at(400));
    // Bytes read while earlier ones are still on the line queue behind them.
    p.receive(at(500), 5);
    EXPECT_EQ(p.delivered(at(1000), 15), 10u);
    EXPECT_EQ(p.delivered(at(1500), 15), 15u);
}

// A paced simulator answers no sooner than the line carries request and answer:
// The request's 6 bytes at 38400 baud reach the simulator no sooner than 6 byte times
// of 260 us after they were written.
TEST(LinePacer, SimulatorExchangeTakesTheLineTime) {
    brdsim::Simulator sim;
    sim.setLineRate(38400);
    ASSERT_TRUE(sim.start());
    MCU_CONTENT* m = init_MCU(sim.ptyPath().c_str(), MCU_TYPE_ST, 38400);
    ASSERT_EQ(m->result, 1);
    m->stMode = ST_MODE_AP;
    pushCommandToPool(m, 1, 0, 2, 1);
    BYTE out[64];
    int outLen = 0;
    auto start = steady_clock::now();
    int r = sendCMD(m, 1, nullptr, 0, out, &outLen);
    auto took = steady_clock::now() - start;
    EXPECT_EQ(r, 1);
    EXPECT_GE(took, microseconds(6 * 260));
    exit_LIB(m);
}
