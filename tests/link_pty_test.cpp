// A whole link (init_MCU, receive and send threads) on a pseudo-terminal whose master
// side plays the controller: sendCMD results, streams through the receive thread,
// callbacks, CAN series and shutdown.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "mcu_base.h"
#include "pty_pair.h"

namespace {

using Bytes = std::vector<uint8_t>;

std::mutex g_mu;
std::condition_variable g_cv;
std::vector<CALLBACK_DATA> g_calls;

void record(CALLBACK_DATA d) {
    {
        std::lock_guard<std::mutex> g(g_mu);
        g_calls.push_back(d);
    }
    g_cv.notify_all();
}

// Waits (bounded) until `n` callbacks have arrived; returns them.
std::vector<CALLBACK_DATA> waitCalls(size_t n) {
    std::unique_lock<std::mutex> lk(g_mu);
    g_cv.wait_for(lk, std::chrono::seconds(5), [n] { return g_calls.size() >= n; });
    return g_calls;
}

// Waits (bounded) until `done` holds.
bool eventually(const std::function<bool()>& done) {
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

Bytes stWire(const Bytes& inner, int crcDelta = 0) {
    Bytes raw = inner;
    raw.push_back(uint8_t(Get_CRC8(inner.data(), inner.size()) + crcDelta));
    BYTE out[256];
    unsigned n = stuffFrame(0xF1, 0xF2, 0xF0, raw.data(), raw.size(), out, sizeof out);
    return Bytes(out, out + n);
}

Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

// Plays the controller: every request that arrives (a frame ending with `endCode`, or
// any read when endCode is 0) is recorded and answered with what `answer` returns.
class Controller {
   public:
    Controller(PtyPair& pty, uint8_t endCode, std::function<Bytes(const Bytes&)> answer)
        : pty_(pty), end_(endCode), answer_(std::move(answer)), t_([this] { run(); }) {}
    ~Controller() {
        stop_ = true;
        t_.join();
    }
    std::vector<Bytes> requests() {
        std::lock_guard<std::mutex> g(mu_);
        return requests_;
    }

   private:
    void run() {
        Bytes pending;
        while (!stop_) {
            Bytes got = pty_.read(20, 1);
            pending.insert(pending.end(), got.begin(), got.end());
            while (!pending.empty()) {
                size_t cut = pending.size();
                if (end_) {
                    auto it = std::find(pending.begin(), pending.end(), end_);
                    if (it == pending.end()) break;
                    cut = size_t(it - pending.begin()) + 1;
                }
                Bytes req(pending.begin(), pending.begin() + cut);
                pending.erase(pending.begin(), pending.begin() + cut);
                {
                    std::lock_guard<std::mutex> g(mu_);
                    requests_.push_back(req);
                }
                Bytes a = answer_(req);
                if (!a.empty()) pty_.write(a);
            }
        }
    }
    PtyPair& pty_;
    uint8_t end_;
    std::function<Bytes(const Bytes&)> answer_;
    std::mutex mu_;
    std::vector<Bytes> requests_;
    std::atomic<bool> stop_{false};
    std::thread t_;
};

class Link : public ::testing::Test {
   protected:
    void open(int type, int stMode = ST_MODE_AP, int nxpMode = NXP_MODE_AP) {
        Register_MCU_EventCallBack(0, 0, record);
        {
            std::lock_guard<std::mutex> g(g_mu);
            g_calls.clear();
        }
        testing::internal::CaptureStdout();
        m = init_MCU(pty.slavePath.c_str(), type, 115200);
        testing::internal::GetCapturedStdout();
        ASSERT_EQ(m->result, 1);
        m->stMode = stMode;
        m->nxpMode = nxpMode;
        pushCommandToPool(m, 1, 0x00, 0x02, 0x01);
        pushCommandToPool(m, 2, 0x06, 0x03, 0x10);
    }
    void TearDown() override {
        controller.reset();
        if (m) {
            EXPECT_EQ(exit_LIB(m), 1);
        }
        Register_MCU_EventCallBack(0, 0, nullptr);
    }
    void answerWith(uint8_t endCode, std::function<Bytes(const Bytes&)> f) {
        controller = std::make_unique<Controller>(pty, endCode, std::move(f));
    }
    // Marks a request outstanding, puts `chunks` on the line one write each, and
    // waits for the answer as sendCMD would (with a generous limit).
    int deliver(const std::vector<Bytes>& chunks, BYTE* out, int* outLen) {
        m->lock = 1;
        for (const auto& c : chunks) pty.write(c);
        int w = WaitForRecevData(m, 5000);
        return w == 1 ? receive(m, out, outLen) : w;
    }

    PtyPair pty;
    MCU_CONTENT* m = nullptr;
    std::unique_ptr<Controller> controller;
};

}  // namespace

TEST_F(Link, AnswerReceived) {
    open(MCU_TYPE_ST, ST_MODE_UPDATE);  // the long time limit keeps the test free of timing
    answerWith(0xF2, [](const Bytes&) { return stWire({0x00, 0x02, 0x01, 0x11, 0x22}); });
    BYTE out[64];
    int outLen = -1;
    EXPECT_EQ(sendCMD(m, 1, nullptr, 0, out, &outLen), 1);
    ASSERT_EQ(outLen, 2);
    EXPECT_EQ(Bytes(out, out + 2), (Bytes{0x11, 0x22}));
    EXPECT_EQ(controller->requests(), (std::vector<Bytes>{{0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}}));
    EXPECT_EQ(m->lock, 0);
}

TEST_F(Link, DeviceFFIsNoAnswer) {
    open(MCU_TYPE_ST, ST_MODE_UPDATE);
    answerWith(0xF2, [](const Bytes&) { return stWire({0xFF, 0x02, 0x01, 0x11}); });
    BYTE out[64];
    int outLen = -1;
    EXPECT_EQ(sendCMD(m, 1, nullptr, 0, out, &outLen), 0);
    EXPECT_EQ(outLen, -1);
}

TEST_F(Link, TimeOutThenNotBusy) {
    open(MCU_TYPE_ST);
    unsigned long before = timerErrorCount;
    BYTE out[64];
    int outLen = 0;
    EXPECT_EQ(sendCMD(m, 1, nullptr, 0, out, &outLen), -4);
    EXPECT_EQ(timerErrorCount, before + 1);
    EXPECT_EQ(m->canSendInfo.sendCommandTimeCount, 1u);
    EXPECT_EQ(m->lock, 0);
    EXPECT_EQ(sendCMD(m, 1, nullptr, 0, out, &outLen), -4);  // not -5
}

TEST_F(Link, BusyAndUnknownIndexSendNothing) {
    open(MCU_TYPE_ST);
    BYTE out[64];
    int outLen = 0;
    m->lock = 1;
    EXPECT_EQ(sendCMD(m, 1, nullptr, 0, out, &outLen), -5);
    m->lock = 0;
    EXPECT_EQ(sendCMD(m, 99, nullptr, 0, out, &outLen), -20);
    EXPECT_EQ(m->lock, 0);
    EXPECT_TRUE(pty.read(50).empty());
}

TEST_F(Link, StStreamWithCanFramesBetweenAnswers) {
    open(MCU_TYPE_ST);
    Bytes can1 = stWire({0x06, 0x04, 0x00, 0x78, 0x56, 0x34, 0x12, 0x04, 0x00, 0x02, 0xAA, 0xBB});
    Bytes can2 = stWire({0x07, 0x04, 0x00, 0x01, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00});
    Bytes answer = stWire({0x00, 0x02, 0x01, 0x42});
    // Split mid-frame, junk in front, several frames in one write.
    Bytes stream = cat({{0x00, 0x13}, can1, answer, can2});
    BYTE out[64];
    int outLen = 0;
    EXPECT_EQ(deliver({Bytes(stream.begin(), stream.begin() + 9),
                       Bytes(stream.begin() + 9, stream.end())},
                      out, &outLen),
              1);
    ASSERT_EQ(outLen, 1);
    EXPECT_EQ(out[0], 0x42);
    auto calls = waitCalls(2);
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].type, CALLBACK_TYPE_CAN);
    EXPECT_EQ(calls[0].canData.id, 0x12345678u);
    EXPECT_EQ(calls[0].canData.dlc, 2);
    EXPECT_EQ(calls[1].canData.id, 1u);
    EXPECT_EQ(calls[1].canData.dlc, 0);
}

TEST_F(Link, OverflowIsDroppedAndTheLinkRecovers) {
    open(MCU_TYPE_ST);
    pty.write(Bytes(2100, 0x00));
    EXPECT_TRUE(eventually([&] { return m->receiveErrorCount >= 1; }));
    BYTE out[64];
    int outLen = 0;
    EXPECT_EQ(deliver({stWire({0x00, 0x02, 0x01, 0x07})}, out, &outLen), 1);
    EXPECT_EQ(outLen, 1);
    EXPECT_EQ(out[0], 0x07);
}

TEST_F(Link, NxpCanFrameReachesTheCallback) {
    open(MCU_TYPE_NXP);
    pty.write({0xC1, 0x30, 0x78, 0x56, 0x34, 0x12, 0x00, 0x00, 0x02, 0xAA, 0xBB, 0xC2});
    auto calls = waitCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].canData.id, 0x12345678u);
    EXPECT_EQ(calls[0].canData.dlc, 2);
    EXPECT_EQ(calls[0].canData.data[0], 0xAA);
    EXPECT_EQ(calls[0].canData.data[1], 0xBB);
    EXPECT_EQ(calls[0].receiveCANDataCount, 1u);
}

TEST_F(Link, NxpUpdateAnswerWithoutCodes) {
    open(MCU_TYPE_NXP, ST_MODE_AP, NXP_MODE_UPDATE);
    answerWith(0xF2, [](const Bytes&) { return Bytes{0xF1, 0x21, 0x01, 0xF0, 0x03, 0xF2}; });
    BYTE out[64];
    int outLen = 0;
    BYTE data[] = {0xC1};
    EXPECT_EQ(sendCMD(m, 2, data, 1, out, &outLen), 1);
    EXPECT_EQ(Bytes(out, out + outLen), (Bytes{0x21, 0x01, 0xF3}));
    EXPECT_EQ(controller->requests(), (std::vector<Bytes>{{0xF1, 0x06, 0xC1, 0xF2}}));
}

TEST_F(Link, CustomisedAnswerAndEvent) {
    open(MCU_TYPE_CUSTOMISE);
    BYTE row[] = {0x01, 0x02, 0x03};
    pushCommandToPoolCustomise(m, 3, row, 3);
    answerWith(0, [](const Bytes&) { return Bytes{0x10, 0x20, 0x30, 0x40, 0x50}; });
    BYTE out[64];
    int outLen = 0;
    EXPECT_EQ(sendCMD(m, 3, nullptr, 0, out, &outLen), 1);
    EXPECT_EQ(Bytes(out, out + outLen), (Bytes{0x10, 0x20, 0x30, 0x40, 0x50}));
    auto calls = waitCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].type, CALLBACK_TYPE_EVENT);
    EXPECT_EQ(calls[0].szDataLength, 5);
}

TEST_F(Link, FmAnswer) {
    open(MCU_TYPE_FM);
    BYTE row[] = {0xF1, 0x88, 0x01, 0xF1, 0xF2};  // the F1 at position 3 goes escaped
    pushCommandToPoolCustomise(m, 3, row, 5);
    answerWith(0xF2, [](const Bytes&) { return Bytes{0xF1, 0x88, 0xF0, 0x01, 0xF2}; });
    BYTE out[64];
    int outLen = 0;
    EXPECT_EQ(sendCMD(m, 3, nullptr, 0, out, &outLen), 1);
    EXPECT_EQ(Bytes(out, out + outLen), (Bytes{0xF1, 0x88, 0xF1, 0xF2}));
    EXPECT_EQ(controller->requests(), (std::vector<Bytes>{{0xF1, 0x88, 0x01, 0xF0, 0x01, 0xF2}}));
}

TEST_F(Link, CanSeries) {
    open(MCU_TYPE_ST, ST_MODE_UPDATE);
    answerWith(0xF2, [](const Bytes&) { return stWire({0x06, 0x03, 0x10, 0x00}); });
    m->canSendInfo.nID = 0x1A2B3C4D;
    m->canSendInfo.sendMax = 3;
    m->canSendInfo.intervalTime = 0;
    m->canSendInfo.cmdIndex = 2;
    testing::internal::CaptureStdout();
    startCANSend(m);
    EXPECT_TRUE(eventually([&] { return m->canSendInfo.senFlag == 0; }));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("fd(" + std::to_string(m->fd) +
                       ") => ID(0x1a2b3c4d), RTR(0), IDE(4), Len(8), "
                       "Data1~8(0x3)(0x0)(0x0)(0x0)(0x0)(0x0)(0x0)(0x3)\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("sendTotalCount(3), sendCommandSuccessCount(3), sendCommandErrorCount(0), "
                       "sendCommandTimeCount(0)\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("\n\n\n>>> [DONE] <<<\n\n"), std::string::npos);
    auto reqs = controller->requests();
    ASSERT_EQ(reqs.size(), 3u);
    // The second message: id LSB first, IDE 4, RTR 0, length 8, count LSB first, count MSB first.
    Bytes inner = {0x06, 0x03, 0x10, 0x4D, 0x3C, 0x2B, 0x1A, 4, 0, 8, 2, 0, 0, 0, 0, 0, 0, 2};
    EXPECT_EQ(reqs[1], stWire(inner));
}

TEST_F(Link, CanSeriesOfNothing) {
    open(MCU_TYPE_ST);
    m->canSendInfo.sendMax = 0;
    testing::internal::CaptureStdout();
    startCANSend(m);
    EXPECT_TRUE(eventually([&] { return m->canSendInfo.senFlag == 0; }));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("sendTotalCount(0), sendCommandSuccessCount(0)"), std::string::npos) << out;
    EXPECT_NE(out.find("Each Sending Time: 0 microseconds\n"), std::string::npos) << out;
    EXPECT_EQ(out.find("[SEND]"), std::string::npos);
}

TEST_F(Link, StopSendEndsTheSeries) {
    open(MCU_TYPE_ST, ST_MODE_UPDATE);
    answerWith(0xF2, [](const Bytes&) { return stWire({0x06, 0x03, 0x10, 0x00}); });
    m->canSendInfo.sendMax = 100000;
    m->canSendInfo.intervalTime = 1000;
    m->canSendInfo.cmdIndex = 2;
    testing::internal::CaptureStdout();
    startCANSend(m);
    EXPECT_TRUE(eventually([&] { return m->canSendInfo.sendCommandSuccessCount >= 2; }));
    raise(SIGINT);  // stopSend is the handler while the series runs
    EXPECT_TRUE(eventually([&] { return m->canSendInfo.senFlag == 0; }));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("!!! STOP SEND !!!"), std::string::npos);
    EXPECT_NE(out.find(">>> [DONE] <<<"), std::string::npos);
    EXPECT_EQ(out.find("sendTotalCount(100000)"), std::string::npos);
    // The previous handler is back once the series has ended.
    struct sigaction now = {};
    sigaction(SIGINT, nullptr, &now);
    EXPECT_NE(now.sa_handler, stopSend);
}

TEST_F(Link, ExitStopsAWaitingSeries) {
    open(MCU_TYPE_ST, ST_MODE_UPDATE);  // no answer comes, and the limit is 20 s
    m->canSendInfo.sendMax = 5;
    m->canSendInfo.cmdIndex = 2;
    testing::internal::CaptureStdout();
    startCANSend(m);
    EXPECT_FALSE(pty.read(5000, 1).empty());  // the first request is out
    EXPECT_EQ(exit_LIB(m), 1);
    m = nullptr;
    std::string out = testing::internal::GetCapturedStdout();
    // The waiting request was cut short, not timed out.
    EXPECT_EQ(out.find("sendCommandTimeCount=1"), std::string::npos) << out;
    EXPECT_EQ(out.find(">>> [DONE] <<<"), std::string::npos);
}

TEST_F(Link, HungUpLineIsNotReadInALoop) {
    open(MCU_TYPE_ST);
    close(pty.master);  // the controller's side goes away
    pty.master = -1;
    auto cpuMs = [] {
        struct rusage u;
        getrusage(RUSAGE_SELF, &u);
        return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1000L +
               (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1000L;
    };
    long before = cpuMs();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    // The dead line is looked at a few times a second, not read in a busy loop.
    EXPECT_LT(cpuMs() - before, 250);
}

TEST(LinkLifecycle, MissingDeviceAndNullContext) {
    testing::internal::CaptureStdout();
    MCU_CONTENT* m = init_MCU("/nonexistent/tty", MCU_TYPE_ST, 115200);
    testing::internal::GetCapturedStdout();
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->result, -1);
    EXPECT_EQ(exit_LIB(m), 1);
    EXPECT_EQ(exit_LIB(nullptr), 1);
}
