// sendCMD through the real link library on a pseudo-terminal, mostly against the
// simulated board: answers, time-outs, the busy link, faults on the line, the other
// controller types and the send thread's CAN series.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <thread>

#include "brdsim.h"
#include "mcu_base.h"
#include "pty_pair.h"

using brdsim::Bytes;
using brdsim::FaultKind;

namespace {

constexpr int IDX_TEMPERATURE = 10;  // GET 0C
constexpr int IDX_IGNITION = 11;     // GET 0A
constexpr int IDX_SET_IGNITION = 12;
constexpr int IDX_CAN_SEND = 13;  // what a CAN command sends for each message

bool eventually(const std::function<bool()>& done, int timeoutMs = 5000) {
    auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Redirects file descriptor 1 into a pipe and collects what the library prints.
struct StdoutTap {
    StdoutTap() {
        fflush(stdout);
        saved = dup(STDOUT_FILENO);
        int p[2];
        if (pipe2(p, O_CLOEXEC) != 0) return;
        readFd = p[0];
        dup2(p[1], STDOUT_FILENO);
        close(p[1]);
    }
    ~StdoutTap() { restore(); }
    // Collects output until it holds `needle` or `timeoutMs` pass; true when found.
    bool waitFor(const std::string& needle, int timeoutMs = 5000) {
        return eventually(
            [&] {
                struct pollfd p = {readFd, POLLIN, 0};
                char buf[4096];
                ssize_t n = poll(&p, 1, 10) > 0 ? read(readFd, buf, sizeof buf) : 0;
                if (n > 0) text.append(buf, static_cast<size_t>(n));
                return text.find(needle) != std::string::npos;
            },
            timeoutMs);
    }
    void restore() {
        if (saved < 0) return;
        fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        close(saved);
        close(readFd);
        saved = readFd = -1;
    }
    std::string text;
    int saved = -1, readFd = -1;
};

size_t countOf(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

int numberAfter(const std::string& text, const std::string& key) {
    size_t at = text.find(key);
    return at == std::string::npos ? -1 : std::atoi(text.c_str() + at + key.size());
}

struct Link : testing::Test {
    brdsim::Simulator sim{"KX07"};
    MCU_CONTENT* m = nullptr;
    BYTE out[RESPONSE_BUFFER_SIZE] = {};
    int outLen = -1;

    void SetUp() override {
        ASSERT_TRUE(sim.start());
        m = init_MCU(sim.ptyPath().c_str(), MCU_TYPE_ST, 115200);
        ASSERT_TRUE(m && m->result == MCU_RESULT_OK);
        m->stMode = ST_MODE_AP;
        pushCommandToPool(m, IDX_TEMPERATURE, 0x00, 0x02, 0x0C);
        pushCommandToPool(m, IDX_IGNITION, 0x00, 0x02, 0x0A);
        pushCommandToPool(m, IDX_SET_IGNITION, 0x00, 0x03, 0x0A);
        pushCommandToPool(m, IDX_CAN_SEND, 0x06, 0x03, 0x01);
    }
    void TearDown() override { EXPECT_EQ(m ? exit_LIB(m) : 1, 1); }

    int send(int index, Bytes data = {}) {
        outLen = -1;
        return sendCMD(m, index, data.data(), static_cast<int>(data.size()), out, &outLen);
    }
    Bytes answer() const { return outLen < 0 ? Bytes{} : Bytes(out, out + outLen); }
    void startSeries(unsigned int id, DWORD count, DWORD intervalUs) {
        m->canSendInfo.nID = id;
        m->canSendInfo.sendMax = count;
        m->canSendInfo.intervalTime = intervalUs;
        m->canSendInfo.cmdIndex = IDX_CAN_SEND;
        startCANSend(m);
    }
    // Waits for the series' summary (it goes out in one write, its last line with the
    // rest) and the send thread to be idle again; with `restore` stdout is given back.
    bool seriesDone(StdoutTap& tap, bool restore = true) {
        bool done = tap.waitFor("Each Sending Time: ") &&
                    eventually([&] { return m->canSendInfo.senFlag == 0; });
        if (restore) tap.restore();
        return done;
    }
};

// What one request gives, plainly or when the MCU's answer goes wrong in a given way.
TEST_F(Link, AnswersAndFaultsOnTheLine) {
    const brdsim::Fault none{FaultKind::NoAnswer, 0, 0};  // applies to no request
    struct Case {
        const char* what;
        brdsim::Fault fault;
        int index, result;
        Bytes data, answer;  // the answer, when result is 1
    };
    const Case cases[] = {
        {"plain get", none, IDX_TEMPERATURE, MCU_RESULT_OK, {}, {40}},
        {"set, stuffed", none, IDX_SET_IGNITION, MCU_RESULT_OK, {0x00, 0xF1}, {1}},
        {"get sees the set", none, IDX_IGNITION, MCU_RESULT_OK, {}, {0x00, 0xF1}},
        {"no answer", {FaultKind::NoAnswer}, IDX_TEMPERATURE, MCU_RESULT_TIMEOUT, {}, {}},
        {"bad crc", {FaultKind::BadCrc}, IDX_TEMPERATURE, MCU_RESULT_TIMEOUT, {}, {}},
        {"device 0xFF", {FaultKind::DeviceFF}, IDX_TEMPERATURE, MCU_RESULT_NONE, {}, {}},
        {"garbage first", {FaultKind::GarbageBefore}, IDX_TEMPERATURE, MCU_RESULT_OK, {}, {40}},
        {"split in two", {FaultKind::SplitAnswer, 5}, IDX_TEMPERATURE, MCU_RESULT_OK, {}, {40}},
        {"late, in time", {FaultKind::LateAnswer, 5}, IDX_TEMPERATURE, MCU_RESULT_OK, {}, {40}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const unsigned long timeouts = timerErrorCount,
                            linkTimeouts = m->canSendInfo.sendCommandTimeCount;
        sim.queueFault(c.fault);
        int r = send(c.index, c.data);
        EXPECT_EQ(r, c.result);
        EXPECT_EQ(answer(), c.answer);  // nothing handed out unless answered
        unsigned timedOut = r == MCU_RESULT_TIMEOUT ? 1 : 0;
        EXPECT_EQ(timerErrorCount - timeouts, timedOut);
        EXPECT_EQ(m->canSendInfo.sendCommandTimeCount - linkTimeouts, timedOut);
        // Whatever happened, the link is free and the next exchange works.
        EXPECT_EQ(m->lock, 0);
        EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_OK);
        EXPECT_EQ(answer(), Bytes{40});
    }
}

TEST_F(Link, BusyUnknownAndTooLate) {
    m->lock = 1;
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_BUSY);
    m->lock = 0;
    EXPECT_EQ(send(4242), MCU_RESULT_NO_COMMAND);
    EXPECT_EQ(m->lock, 0);
    EXPECT_FALSE(sim.waitForRequests(1, 20));

    // A second caller while the first still waits for its answer. The first waits with the
    // update mode's long time-out, so a slow machine cannot end its wait before the second
    // caller comes.
    m->stMode = ST_MODE_UPDATE;
    sim.queueFault({FaultKind::LateAnswer, 300});
    int first = 0, firstLen = 0;
    BYTE firstOut[RESPONSE_BUFFER_SIZE];
    std::thread t([&] { first = sendCMD(m, IDX_TEMPERATURE, nullptr, 0, firstOut, &firstLen); });
    ASSERT_TRUE(sim.waitForRequests(1, 1000));
    EXPECT_EQ(send(IDX_IGNITION), MCU_RESULT_BUSY);
    t.join();
    m->stMode = ST_MODE_AP;
    EXPECT_EQ(first, MCU_RESULT_OK);
    EXPECT_EQ(Bytes(firstOut, firstOut + firstLen), Bytes{40});
    EXPECT_EQ(sim.requestCount(), 1u);

    // Too late: a time-out, and the stale answer is not taken for the next request's.
    // The answer comes 100 ms after the 50 ms time-out; the next request 150 ms after that.
    sim.queueFault({FaultKind::LateAnswer, 150});
    auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_TIMEOUT);
    EXPECT_EQ(m->lock, 0);
    std::this_thread::sleep_until(t0 + std::chrono::milliseconds(300));  // it arrives
    EXPECT_EQ(send(IDX_IGNITION), MCU_RESULT_OK);
    EXPECT_EQ(answer(), Bytes{1});
}

TEST_F(Link, HangUpGivesTimeOutsAndIsNotReadInALoop) {
    sim.queueFault({FaultKind::HangUp});
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_TIMEOUT);
    EXPECT_NE(send(IDX_TEMPERATURE), MCU_RESULT_OK);
    std::clock_t before = std::clock();  // the process's processor time, all threads
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    // The dead line is looked at a few times a second, not read in a busy loop.
    EXPECT_LT((std::clock() - before) * 1000 / CLOCKS_PER_SEC, 250);
}

TEST_F(Link, OverflowIsDroppedAndTheLinkRecovers) {
    sim.injectRaw(Bytes(2100, 0x00));  // more than the receive buffer holds
    EXPECT_TRUE(eventually([&] { return m->receiveErrorCount >= 1; }));
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_OK);
    EXPECT_EQ(answer(), Bytes{40});
}

TEST_F(Link, UnsolicitedCanFrameDoesNotReleaseAWaiter) {
    // A CAN frame right before the answer must not be taken for it.
    sim.queueFault({FaultKind::LateAnswer, 15});
    static std::atomic<int> canFrames{0};
    canFrames = 0;
    Register_MCU_EventCallBack(0, 0, [](CALLBACK_DATA d) {
        if (d.type == CALLBACK_TYPE_CAN && d.canData.id == 0x12345678) ++canFrames;
    });
    std::thread t([&] {
        sim.waitForRequests(1, 1000);
        sim.injectCanFrame(0x06, 0x12345678, 0, 0, {1, 2, 3});
    });
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_OK);
    t.join();
    EXPECT_EQ(answer(), Bytes{40});
    EXPECT_TRUE(eventually([] { return canFrames == 1; }));
    Register_MCU_EventCallBack(0, 0, nullptr);
}

TEST_F(Link, CanSeriesSendsEveryMessageAndSumsUp) {
    StdoutTap tap;
    startSeries(0x123, 0, 0);  // a series of nothing still sums up
    ASSERT_TRUE(seriesDone(tap, false)) << tap.text;
    EXPECT_NE(tap.text.find("sendTotalCount(0), sendCommandSuccessCount(0)"), std::string::npos);
    EXPECT_NE(tap.text.find("Each Sending Time: 0 microseconds\n"), std::string::npos);
    EXPECT_EQ(tap.text.find("[SEND]"), std::string::npos);
    EXPECT_EQ(sim.requestCount(), 0u);
    tap.text.clear();

    sim.queueFault({FaultKind::NoAnswer});  // the first message goes unanswered
    startSeries(0x1A2B3C4D, 4, 500);
    ASSERT_TRUE(seriesDone(tap)) << tap.text;
    const std::string fd = "fd(" + std::to_string(m->fd) + ")";
    for (const std::string& line :
         {fd + " sendTotalCount(4), sendCommandSuccessCount(3), sendCommandErrorCount(0), "
               "sendCommandTimeCount(1)\n",
          fd + " => ID(0x1a2b3c4d), RTR(0), IDE(4), Len(8), "
               "Data1~8(0x2)(0x0)(0x0)(0x0)(0x0)(0x0)(0x0)(0x2)\n",
          std::string("interval time = 500 (us)\n"), std::string("\n\n\n>>> [DONE] <<<\n\n")})
        EXPECT_NE(tap.text.find(line), std::string::npos) << line << tap.text;
    EXPECT_EQ(countOf(tap.text, "[SEND] "), 4u);

    // Each message: id LSB first, IDE 4, RTR 0, length 8, count LSB first, count MSB first.
    auto reqs = sim.requests();
    ASSERT_EQ(reqs.size(), 4u);
    for (uint8_t n = 1; n <= 4; ++n)
        EXPECT_EQ(reqs[n - 1].raw,
                  brdsim::encodeStFrame(0x06, 0x03, 0x01,
                                        {0x4D, 0x3C, 0x2B, 0x1A, 4, 0, 8, n, 0, 0, 0, 0, 0, 0, n}));
}

TEST_F(Link, InterruptEndsTheSeriesEarly) {
    StdoutTap tap;
    startSeries(0x7FF, 100000, 1000);
    ASSERT_TRUE(sim.waitForRequests(3, 5000));
    raise(SIGINT);  // the send thread has stopSend installed while the series runs
    ASSERT_TRUE(seriesDone(tap)) << tap.text.substr(0, 2000);
    EXPECT_NE(tap.text.find("!!! STOP SEND !!!"), std::string::npos);
    EXPECT_NE(tap.text.find(">>> [DONE] <<<"), std::string::npos);
    int total = numberAfter(tap.text, "sendTotalCount(");
    EXPECT_TRUE(total >= 3 && total < 100000) << total;
    EXPECT_EQ(static_cast<size_t>(total), sim.requestCount());
    EXPECT_EQ(numberAfter(tap.text, "sendCommandSuccessCount("), total);
    EXPECT_EQ(countOf(tap.text, "[SEND] "), static_cast<size_t>(total));
    // The previous handler is back, and the link is usable again.
    struct sigaction now = {};
    sigaction(SIGINT, nullptr, &now);
    EXPECT_NE(now.sa_handler, stopSend);
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_OK);
}

TEST_F(Link, ExitStopsAWaitingSeries) {
    m->stMode = ST_MODE_UPDATE;  // no answer comes, and the limit is 20 s
    sim.queueFault({FaultKind::NoAnswer});
    StdoutTap tap;
    startSeries(0x123, 5, 0);
    ASSERT_TRUE(sim.waitForRequests(1, 5000));
    EXPECT_EQ(exit_LIB(m), 1);
    m = nullptr;
    tap.restore();
    // The waiting request was cut short, not timed out.
    EXPECT_EQ(tap.text.find("sendCommandTimeCount=1"), std::string::npos) << tap.text;
    EXPECT_EQ(tap.text.find(">>> [DONE] <<<"), std::string::npos);
}

// The other controller types, with the pseudo-terminal's master side answering.
TEST(OtherControllers, AnswerThroughARealLink) {
    struct Row {
        const char* what;
        int type, nxpMode;
        Bytes row, data, request, reply, out;
    };
    // clang-format off
    const Row rows[] = {
        {"NXP update mode", MCU_TYPE_NXP, NXP_MODE_UPDATE, {0x06}, {0xC1}, {0xF1, 0x06, 0xC1, 0xF2},
         {0xF1, 0x21, 0x01, 0xF0, 0x03, 0xF2}, {0x21, 0x01, 0xF3}},
        {"FM, the F1 at position 3 escaped", MCU_TYPE_FM, 0, {0xF1, 0x88, 0x01, 0xF1, 0xF2}, {},
         {0xF1, 0x88, 0x01, 0xF0, 0x01, 0xF2}, {0xF1, 0x88, 0xF0, 0x01, 0xF2}, {0xF1, 0x88, 0xF1, 0xF2}},
        {"customised", MCU_TYPE_CUSTOMISE, 0, {0x01, 0x02, 0x03}, {}, {0x01, 0x02, 0x03},
         {0x10, 0x20, 0x30, 0x40, 0x50}, {0x10, 0x20, 0x30, 0x40, 0x50}},
    };
    // clang-format on
    for (const Row& r : rows) {
        SCOPED_TRACE(r.what);
        PtyPair pty;
        MCU_CONTENT* m = init_MCU(pty.slavePath.c_str(), r.type, 115200);
        ASSERT_EQ(m->result, MCU_RESULT_OK);
        m->nxpMode = r.nxpMode;
        Bytes row = r.row, data = r.data, request;
        if (r.type == MCU_TYPE_NXP) pushCommandToPool(m, 3, row[0], 0x03, 0x10);
        if (r.type != MCU_TYPE_NXP) pushCommandToPoolCustomise(m, 3, row.data(), int(row.size()));
        std::thread controller([&] {
            request = pty.read(5000, r.request.size());
            pty.write(r.reply);
        });
        BYTE out[64];
        int outLen = 0;
        EXPECT_EQ(sendCMD(m, 3, data.data(), int(data.size()), out, &outLen), MCU_RESULT_OK);
        controller.join();
        EXPECT_EQ(request, r.request);
        EXPECT_EQ(Bytes(out, out + outLen), r.out);
        EXPECT_EQ(exit_LIB(m), 1);
    }
}

TEST(LinkLifecycle, MissingDeviceAndNullContext) {
    MCU_CONTENT* m = init_MCU("/nonexistent/tty", MCU_TYPE_ST, 115200);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->result, MCU_RESULT_OPEN_FAIL);
    EXPECT_EQ(exit_LIB(m), 1);
    EXPECT_EQ(exit_LIB(nullptr), 1);
}

}  // namespace
