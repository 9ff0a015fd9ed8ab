// sendCMD through the real link library against the simulated board on a pseudo-terminal:
// answers, time-outs, the busy link, faults on the line and the send thread's CAN series.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <regex>
#include <string>
#include <thread>

#include "brdsim.h"
#include "mcu_base.h"

using brdsim::Bytes;
using brdsim::Fault;
using brdsim::FaultKind;

namespace {

constexpr int IDX_TEMPERATURE = 10;  // GET 0C
constexpr int IDX_IGNITION = 11;     // GET 0A
constexpr int IDX_SET_IGNITION = 12;
constexpr int IDX_CAN_SEND = 13;  // what a CAN command sends for each message

struct Link : testing::Test {
    brdsim::Simulator sim{"KX07"};
    MCU_CONTENT* m = nullptr;
    BYTE out[RESPONSE_BUFFER_SIZE] = {};
    int outLen = -1;

    void SetUp() override {
        ASSERT_TRUE(sim.start());
        m = init_MCU(sim.ptyPath().c_str(), MCU_TYPE_ST, 115200);
        ASSERT_NE(m, nullptr);
        ASSERT_EQ(m->result, MCU_RESULT_OK);
        m->stMode = ST_MODE_AP;
        pushCommandToPool(m, IDX_TEMPERATURE, 0x00, 0x02, 0x0C);
        pushCommandToPool(m, IDX_IGNITION, 0x00, 0x02, 0x0A);
        pushCommandToPool(m, IDX_SET_IGNITION, 0x00, 0x03, 0x0A);
        pushCommandToPool(m, IDX_CAN_SEND, 0x06, 0x03, 0x01);
    }
    void TearDown() override {
        if (m) exit_LIB(m);
    }

    int send(int index, Bytes data = {}) {
        outLen = -1;
        return sendCMD(m, index, data.data(), static_cast<int>(data.size()), out, &outLen);
    }
    Bytes answer() const { return outLen < 0 ? Bytes{} : Bytes(out, out + outLen); }
};

TEST_F(Link, GetAndSetGoThroughTheRegisterModel) {
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_OK);
    EXPECT_EQ(answer(), Bytes{40});
    EXPECT_EQ(send(IDX_SET_IGNITION, {0x00, 0xF1}), MCU_RESULT_OK);
    EXPECT_EQ(answer(), Bytes{0x01});
    EXPECT_EQ(send(IDX_IGNITION), MCU_RESULT_OK);
    EXPECT_EQ(answer(), (Bytes{0x00, 0xF1}));
    auto reqs = sim.requests();
    ASSERT_EQ(reqs.size(), 3u);
    EXPECT_EQ(reqs[1].raw, brdsim::encodeStFrame(0x00, 0x03, 0x0A, {0x00, 0xF1}));
    EXPECT_EQ(m->lock, 0);
}

// What one request gives when the MCU's answer goes wrong in a given way.
TEST_F(Link, FaultsOnTheLine) {
    struct Case {
        const char* what;
        Fault fault;
        int result;
        Bytes data;  // the answer, when result is 1
    };
    const Case cases[] = {
        {"no answer", {FaultKind::NoAnswer}, MCU_RESULT_TIMEOUT, {}},
        {"bad crc", {FaultKind::BadCrc}, MCU_RESULT_TIMEOUT, {}},
        {"device 0xFF", {FaultKind::DeviceFF}, MCU_RESULT_NONE, {}},
        {"garbage first", {FaultKind::GarbageBefore}, MCU_RESULT_OK, {40}},
        {"split in two", {FaultKind::SplitAnswer, 5}, MCU_RESULT_OK, {40}},
        {"late, in time", {FaultKind::LateAnswer, 10}, MCU_RESULT_OK, {40}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        unsigned long timeoutsBefore = timerErrorCount;
        sim.queueFault(c.fault);
        int r = send(IDX_TEMPERATURE);
        EXPECT_EQ(r, c.result);
        if (r == MCU_RESULT_OK) {
            EXPECT_EQ(answer(), c.data);
        }
        if (r == MCU_RESULT_NONE) {
            EXPECT_EQ(outLen, -1);  // left as it was
        }
        EXPECT_EQ(timerErrorCount - timeoutsBefore, r == MCU_RESULT_TIMEOUT ? 1u : 0u);
        // Whatever happened, the link is free and the next exchange works.
        EXPECT_EQ(m->lock, 0);
        EXPECT_EQ(send(IDX_IGNITION), MCU_RESULT_OK);
        EXPECT_EQ(answer(), Bytes{1});
    }
}

TEST_F(Link, LateAnswerTimesOutAndALaterRequestStillWorks) {
    sim.queueFault({FaultKind::LateAnswer, 80});
    auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_TIMEOUT);
    EXPECT_EQ(m->lock, 0);
    // Let the stale answer arrive and be decoded before the next request goes out.
    std::this_thread::sleep_until(t0 + std::chrono::milliseconds(110));
    EXPECT_EQ(send(IDX_IGNITION), MCU_RESULT_OK);
    EXPECT_EQ(answer(), Bytes{1});
}

TEST_F(Link, BusyLinkSendsNothing) {
    m->lock = 1;
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_BUSY);
    m->lock = 0;
    EXPECT_FALSE(sim.waitForRequests(1, 20));

    // A second caller while the first still waits for its answer.
    sim.queueFault({FaultKind::LateAnswer, 30});
    int first = 0;
    BYTE firstOut[RESPONSE_BUFFER_SIZE];
    int firstLen = 0;
    std::thread t([&] { first = sendCMD(m, IDX_TEMPERATURE, nullptr, 0, firstOut, &firstLen); });
    ASSERT_TRUE(sim.waitForRequests(1, 1000));
    EXPECT_EQ(send(IDX_IGNITION), MCU_RESULT_BUSY);
    t.join();
    EXPECT_EQ(first, MCU_RESULT_OK);
    EXPECT_EQ(Bytes(firstOut, firstOut + firstLen), Bytes{40});
    EXPECT_EQ(sim.requestCount(), 1u);
}

TEST_F(Link, UnknownIndexLeavesTheLinkIdle) {
    EXPECT_EQ(send(4242), MCU_RESULT_NO_COMMAND);
    EXPECT_EQ(m->lock, 0);
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_OK);
    EXPECT_EQ(sim.requestCount(), 1u);
}

TEST_F(Link, HangUpGivesTimeOutsNotAHang) {
    sim.queueFault({FaultKind::HangUp});
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_TIMEOUT);
    EXPECT_NE(send(IDX_TEMPERATURE), MCU_RESULT_OK);
}

// Redirects file descriptor 1 into a pipe and collects what the library prints.
class StdoutTap {
   public:
    StdoutTap() {
        fflush(stdout);
        saved_ = dup(STDOUT_FILENO);
        int p[2];
        if (pipe2(p, O_CLOEXEC) != 0) return;
        readFd_ = p[0];
        dup2(p[1], STDOUT_FILENO);
        close(p[1]);
    }
    ~StdoutTap() { restore(); }
    // Collects output until it holds `needle` or `timeoutMs` pass; true when found.
    bool waitFor(const std::string& needle, int timeoutMs) {
        auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (text.find(needle) == std::string::npos) {
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                            deadline - std::chrono::steady_clock::now())
                            .count();
            if (left <= 0) return false;
            struct pollfd p = {readFd_, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(left)) <= 0) continue;
            char buf[4096];
            ssize_t n = read(readFd_, buf, sizeof buf);
            if (n > 0) text.append(buf, static_cast<size_t>(n));
        }
        return true;
    }
    void restore() {
        if (saved_ < 0) return;
        fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
        saved_ = -1;
        if (readFd_ >= 0) close(readFd_);
        readFd_ = -1;
    }
    std::string text;

   private:
    int saved_ = -1;
    int readFd_ = -1;
};

// The summary line of a CAN series and its numbers.
struct Summary {
    int fd = -1, total = -1, ok = -1, errors = -1, timeouts = -1;
};
Summary parseSummary(const std::string& text) {
    std::smatch mm;
    Summary s;
    std::regex re(R"(fd\((\d+)\) sendTotalCount\((\d+)\), sendCommandSuccessCount\((\d+)\), )"
                  R"(sendCommandErrorCount\((\d+)\), sendCommandTimeCount\((\d+)\)\n)");
    if (std::regex_search(text, mm, re)) {
        s = {std::stoi(mm[1]), std::stoi(mm[2]), std::stoi(mm[3]), std::stoi(mm[4]),
             std::stoi(mm[5])};
    }
    return s;
}

size_t countOf(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

const char kLastLines[] = "Each Sending Time: ";

void startSeries(MCU_CONTENT* m, unsigned int id, DWORD count, DWORD intervalUs) {
    m->canSendInfo.nID = id;
    m->canSendInfo.sendMax = count;
    m->canSendInfo.intervalTime = intervalUs;
    m->canSendInfo.cmdIndex = IDX_CAN_SEND;
    startCANSend(m);
}

bool waitIdle(MCU_CONTENT* m, int timeoutMs) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (m->canSendInfo.senFlag != 0) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

TEST_F(Link, CanSeriesSendsEveryMessageAndSumsUp) {
    sim.queueFault({FaultKind::NoAnswer});  // the first message goes unanswered
    StdoutTap tap;
    startSeries(m, 0x123, 4, 500);
    bool done = tap.waitFor(kLastLines, 5000) && waitIdle(m, 2000);
    tap.restore();
    ASSERT_TRUE(done) << tap.text;

    Summary s = parseSummary(tap.text);
    EXPECT_EQ(s.fd, m->fd);
    EXPECT_EQ(s.total, 4);
    EXPECT_EQ(s.ok, 3);
    EXPECT_EQ(s.errors, 0);
    EXPECT_EQ(s.timeouts, 1);
    EXPECT_EQ(countOf(tap.text, "[SEND] "), 4u);
    EXPECT_NE(tap.text.find("interval time = 500 (us)\n"), std::string::npos);

    auto reqs = sim.requests();
    ASSERT_EQ(reqs.size(), 4u);
    for (size_t i = 0; i < reqs.size(); ++i) {
        const uint8_t n = static_cast<uint8_t>(i + 1);
        EXPECT_EQ(reqs[i].device, 0x06);
        EXPECT_EQ(reqs[i].data, (Bytes{0x23, 0x01, 0, 0, 4, 0, 8, n, 0, 0, 0, 0, 0, 0, n}));
    }
}

TEST_F(Link, InterruptEndsTheSeriesEarly) {
    const DWORD sendMax = 100000;
    StdoutTap tap;
    startSeries(m, 0x7FF, sendMax, 1000);
    ASSERT_TRUE(sim.waitForRequests(3, 5000));
    // The send thread has stopSend installed for SIGINT while the series runs.
    raise(SIGINT);
    bool done = tap.waitFor(kLastLines, 5000) && waitIdle(m, 2000);
    tap.restore();
    ASSERT_TRUE(done) << tap.text.substr(0, 2000);

    EXPECT_NE(tap.text.find("!!! STOP SEND !!!"), std::string::npos);
    Summary s = parseSummary(tap.text);
    EXPECT_GE(s.total, 3);
    EXPECT_LT(s.total, static_cast<int>(sendMax));
    EXPECT_EQ(static_cast<size_t>(s.total), sim.requestCount());
    EXPECT_EQ(s.ok, s.total);
    EXPECT_EQ(countOf(tap.text, "[SEND] "), static_cast<size_t>(s.total));

    // The link is usable again afterwards.
    EXPECT_EQ(send(IDX_TEMPERATURE), MCU_RESULT_OK);
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
    EXPECT_EQ(canFrames, 1);
}

}  // namespace
