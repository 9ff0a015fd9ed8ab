// The core exchange: controller types taking turns on one link, the receive side
// choosing its decoder once the bytes are in, retries, and rows travelling on the link
// and as the type their table columns name.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "board_fixture.h"
#include "brdsim.h"
#include "exchange.h"
#include "pty_pair.h"
#include "report.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr int FM_ROW = 1, ST_ROW = 2;

// One link on a pseudo-terminal whose master side plays the board.
struct LinkOnPty {
    PtyPair pty;
    MCU_CONTENT* link = nullptr;
    LinkOnPty() {
        link = init_MCU(pty.slavePath.c_str(), MCU_TYPE_ST, 115200);
        EXPECT_EQ(link->result, MCU_RESULT_OK);
        BYTE fmFrame[] = {0xF1, 0x8E, 0xF2, 0xF2};  // an FM row is the whole frame
        pushCommandToPoolCustomise(link, FM_ROW, fmFrame, sizeof fmFrame);
        pushCommandToPool(link, ST_ROW, 0, 2, 0x0C);
    }
    ~LinkOnPty() { exit_LIB(link); }
};

// FM and ST requests alternate on one link: each answer is decoded as the type its
// request was sent as.
TEST(CoreExchange, TypesTakeTurnsOnOneLink) {
    struct Turn {
        int type, mode, index;
        Bytes reply, answer;
    };
    const Bytes st = brdsim::encodeStFrame(0, 2, 0x0C, {0x19});
    const Turn turns[] = {
        {MCU_TYPE_FM,
         0,
         FM_ROW,
         {0xF1, 0x8E, 0x01, 0xF0, 0x01, 0xF2},
         {0xF1, 0x8E, 0x01, 0xF1, 0xF2}},
        {MCU_TYPE_ST, ST_MODE_AP, ST_ROW, st, {0x19}},
        {MCU_TYPE_FM, 0, FM_ROW, {0xF1, 0x8E, 0x02, 0xF2}, {0xF1, 0x8E, 0x02, 0xF2}},
        {MCU_TYPE_ST, ST_MODE_AP, ST_ROW, st, {0x19}},
    };
    LinkOnPty board;
    for (const Turn& t : turns) {
        SCOPED_TRACE(t.type);
        std::thread controller([&] {
            board.pty.read(2000, 1);
            board.pty.write(t.reply);
        });
        const core::Answer a = core::exchange(board.link, t.type, t.mode, t.index);
        controller.join();
        EXPECT_EQ(a.result, MCU_RESULT_OK);
        EXPECT_EQ(Bytes(a.view().begin(), a.view().end()), t.answer);
    }
}

// While an answer is outstanding, another request neither goes out nor changes the
// type the outstanding answer will be decoded as.
TEST(CoreExchange, TypeStaysWhileAnAnswerIsOutstanding) {
    LinkOnPty board;
    board.link->lock = 1;
    const core::Answer a = core::exchange(board.link, MCU_TYPE_FM, 0, FM_ROW);
    EXPECT_EQ(a.result, MCU_RESULT_BUSY);
    EXPECT_EQ(board.link->mcuType.load(), MCU_TYPE_ST);
    EXPECT_TRUE(board.pty.read(100).empty());
    board.link->lock = 0;
}

// The receive side reads the controller type after its read returns: bytes that
// arrive after the type changed meet the new type's decoder.
TEST(CoreExchange, DecoderIsChosenOnceTheBytesAreIn) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    auto m = std::make_unique<MCU_CONTENT>();
    m->fd = fds[0];
    m->mcuType = MCU_TYPE_ST;
    m->lock = 1;
    std::thread receiver([&] { ReceiveMessageFromMCU(m.get()); });  // blocks in read
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    m->mcuType = MCU_TYPE_FM;
    const BYTE fmAnswer[] = {0xF1, 0x88, 0xF0, 0x01, 0xF2};
    ASSERT_EQ(write(fds[1], fmAnswer, sizeof fmAnswer), ssize_t(sizeof fmAnswer));
    receiver.join();
    // The FM decoder unstuffs from the second byte on and releases the waiter.
    EXPECT_EQ(m->lock.load(), 0);
    EXPECT_EQ(Bytes(m->CommandResponseData, m->CommandResponseData + m->CommandResponseDataLength),
              (Bytes{0xF1, 0x88, 0xF1, 0xF2}));
    close(fds[0]);
    close(fds[1]);
}

TEST(CoreExchange, NoLinkIsAnOpenFailureAndItsReport) {
    const core::Answer a = core::exchange(nullptr, MCU_TYPE_ST, ST_MODE_AP, 1);
    EXPECT_EQ(a.result, MCU_RESULT_OPEN_FAIL);
    testing::internal::CaptureStdout();
    EXPECT_EQ(core::report(nullptr, REPORT_STANDARD, a, "ROW"), MCU_RESULT_OPEN_FAIL);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("fd(-1) ROW : Fail to open serial port"),
              std::string::npos);
}

TEST(CoreExchange, RetriesUntilAnAnswerOrTheLastTry) {
    struct {
        int swallowed, tries, result;
        size_t sent;
    } cases[] = {{0, 3, MCU_RESULT_OK, 1}, {2, 3, MCU_RESULT_OK, 3}, {5, 3, MCU_RESULT_TIMEOUT, 3}};
    for (const auto& c : cases) {
        BoardFixture board;
        int index = 0;
        findCommandIndex("ST_SYSTEM_GET_0C_01_TEMPERATURE", &index);
        if (c.swallowed) board.sim.queueFault({brdsim::FaultKind::NoAnswer, 0, c.swallowed});
        const BYTE data[] = {0x07};
        const core::Answer a =
            core::exchangeRetrying(mcu_content, MCU_TYPE_ST, ST_MODE_AP, index, data, c.tries);
        EXPECT_EQ(a.result, c.result) << c.swallowed;
        const auto sent = board.sim.requests();
        ASSERT_EQ(sent.size(), c.sent) << c.swallowed;
        for (const brdsim::Request& q : sent) EXPECT_EQ(q.data, Bytes{0x07});
    }
}

// Rows travel on the link their table column names: the generic handler sends a system
// row on the system MCU's line, and a CAN row with no CAN link open sends nothing there.
TEST(CoreExchange, GenericRowsTravelOnTheirOwnLink) {
    struct {
        const char* name;
        size_t sent;
        int result;
    } cases[] = {
        {"ST_SYSTEM_GET_01_01_MCU_VERSION", 1, 1},
        {"NXP_CAN_AP_02_READ_FW_VERSION", 0, MCU_RESULT_OPEN_FAIL},
    };
    BoardFixture board;
    for (const auto& c : cases) {
        ASSERT_NE(findFunctionEntry(c.name), nullptr) << c.name;
        int index = 0;
        findCommandIndex(c.name, &index);
        char name[128];
        snprintf(name, sizeof name, "%s", c.name);
        board.sim.clearRequests();
        testing::internal::CaptureStdout();
        const int result = FUNC_GENERIC(index, name);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(result, c.result) << c.name << out;
        EXPECT_EQ(board.sim.requests().size(), c.sent) << c.name;
    }
}

}  // namespace
