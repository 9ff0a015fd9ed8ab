// The simulated board on its own, seen from a host that opens its pseudo-terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>

#include "brdsim.h"
#include "mcu_base.h"
#include "run_program.h"

extern char** environ;

using brdsim::Bytes;
using brdsim::Fault;
using brdsim::FaultKind;
using brdsim::Simulator;

namespace {

// The host side of the line: the pseudo-terminal slave, opened raw.
class Host {
   public:
    explicit Host(const std::string& path) {
        fd_ = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_GE(fd_, 0) << path << ": " << strerror(errno);
        struct termios t;
        if (fd_ >= 0 && tcgetattr(fd_, &t) == 0) {
            cfmakeraw(&t);
            tcsetattr(fd_, TCSANOW, &t);
        }
    }
    ~Host() {
        if (fd_ >= 0) ::close(fd_);
    }
    void send(const Bytes& b) { ASSERT_EQ(::write(fd_, b.data(), b.size()), (ssize_t)b.size()); }
    // Reads until `stop` returns true for what came, the line hangs up, or timeoutMs pass.
    template <class Stop>
    Bytes readUntil(int timeoutMs, Stop stop, bool* hungUp = nullptr) {
        Bytes out;
        auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (!stop(out)) {
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                            deadline - std::chrono::steady_clock::now())
                            .count();
            if (left <= 0) break;
            struct pollfd p = {fd_, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(left)) <= 0) break;
            uint8_t buf[512];
            ssize_t n = ::read(fd_, buf, sizeof buf);
            if (n <= 0) {
                if (hungUp) *hungUp = true;
                break;
            }
            out.insert(out.end(), buf, buf + n);
        }
        return out;
    }
    // One whole frame (up to its end code), with whatever came before it.
    Bytes readFrame(int timeoutMs = 1000) {
        return readUntil(timeoutMs, [](const Bytes& b) { return !b.empty() && b.back() == 0xF2; });
    }
    Bytes readAny(int timeoutMs) {
        return readUntil(timeoutMs, [](const Bytes& b) { return !b.empty(); });
    }

   private:
    int fd_ = -1;
};

Bytes unstuff(const Bytes& frame) {
    Bytes out(frame.size());
    out.resize(unstuffFrame(ESCAPE_CODE_F0, frame.data(), frame.size(), out.data()));
    return out;
}

bool crcOk(const Bytes& frame) {
    Bytes u = unstuff(frame);
    return u.size() >= 5 && Get_CRC8(u.data() + 1, u.size() - 3) == u[u.size() - 2];
}

Bytes get(uint8_t address, uint8_t device = 0) {
    return brdsim::encodeStFrame(device, 0x02, address, {});
}

struct Started {
    explicit Started(const std::string& product = "KX07") : sim(product) {
        EXPECT_TRUE(sim.start());
        host = std::make_unique<Host>(sim.ptyPath());
    }
    Simulator sim;
    std::unique_ptr<Host> host;
};

}  // namespace

TEST(StFrame, EncodesLikeTheMcuLink) {
    EXPECT_EQ(brdsim::encodeStFrame(0x00, 0x02, 0x01, {}),
              (Bytes{0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}));
    EXPECT_EQ(brdsim::encodeStFrame(0x00, 0x01, 0x10, {0xF1}),
              (Bytes{0xF1, 0x00, 0x01, 0x10, 0xF0, 0x01, 0x7A, 0xF2}));
    EXPECT_EQ(brdsim::encodeStFrame(0x00, 0x02, 0x50, {}),
              (Bytes{0xF1, 0x00, 0x02, 0x50, 0xF0, 0x00, 0xF2}));
}

struct DefaultCase {
    const char* product;
    uint8_t address;
    Bytes data;
};

TEST(Simulator, GetAnswersTheProductDefaults) {
    const DefaultCase cases[] = {
        {"KX07", 0x0A, {1}},                 // ignition on
        {"KX07", 0x0C, {40}},                // temperature
        {"KX07", 0x0B, {120, 0}},            // supply voltage in 100 mV
        {"KX25", 0x0B, {0xB0, 0x04}},        // ... and in 10 mV
        {"KX07", 0x18, {1}},                 // GPS
        {"KX71", 0x18, {1, 1}},              // GPS and antenna
        {"KX07", 0x62, {1, 30}},             // heartbeat
        {"KX07", 0x3F, {0x10, 0x27, 0, 0}},  // pulse count
        {"KX07", 0x01, {'S', 'T', '3', '2', 'F', '1', ' ', 'R', 7}},
        {"KX73", 0x01, {'S', 'T', '3', '2', 'F', 'R', 7}},
        {"KX07", 0xEE, {0}},  // no such register
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.product) + " address " + std::to_string(c.address));
        Started s(c.product);
        s.host->send(get(c.address));
        EXPECT_EQ(s.host->readFrame(), brdsim::encodeStFrame(0, 0x02, c.address, c.data));
    }
}

TEST(Simulator, SetIsSeenByTheNextGetAndRecorded) {
    Started s;
    s.host->send(brdsim::encodeStFrame(0, 0x03, 0x0A, {0x00, 0xF2}));
    EXPECT_EQ(s.host->readFrame(), brdsim::encodeStFrame(0, 0x03, 0x0A, {0x01}));
    s.host->send(get(0x0A));
    EXPECT_EQ(s.host->readFrame(), brdsim::encodeStFrame(0, 0x02, 0x0A, {0x00, 0xF2}));
    EXPECT_EQ(s.sim.getRegister(0, 0x0A), (Bytes{0x00, 0xF2}));

    auto reqs = s.sim.requests();
    ASSERT_EQ(reqs.size(), 2u);
    EXPECT_EQ(reqs[0].command, 0x03);
    EXPECT_EQ(reqs[0].address, 0x0A);
    EXPECT_EQ(reqs[0].data, (Bytes{0x00, 0xF2}));  // unstuffed
    EXPECT_TRUE(reqs[0].crcOk);
    EXPECT_EQ(reqs[1].raw, get(0x0A));
    s.sim.clearRequests();
    EXPECT_EQ(s.sim.requestCount(), 0u);
}

TEST(Simulator, SetAnswerOverridesRegistersAndAcknowledgement) {
    Started s;
    s.sim.setRegister(0, 0x0C, {20});
    s.sim.setAnswer(0, 0x02, 0x0C, {0xF6});
    s.sim.setAnswer(0, 0x03, 0x4B, {0x00});  // the MCU refuses
    s.host->send(get(0x0C));
    EXPECT_EQ(s.host->readFrame(), brdsim::encodeStFrame(0, 0x02, 0x0C, {0xF6}));
    s.host->send(brdsim::encodeStFrame(0, 0x03, 0x4B, {1}));
    EXPECT_EQ(s.host->readFrame(), brdsim::encodeStFrame(0, 0x03, 0x4B, {0x00}));
    s.sim.clearAnswer(0, 0x02, 0x0C);
    s.host->send(get(0x0C));
    EXPECT_EQ(s.host->readFrame(), brdsim::encodeStFrame(0, 0x02, 0x0C, {20}));
}

TEST(Simulator, RequestWithBadCrcIsRecordedButNotAnswered) {
    Started s;
    s.host->send({0xF1, 0x00, 0x02, 0x01, 0xAD, 0xF2});
    ASSERT_TRUE(s.sim.waitForRequests(1, 1000));
    EXPECT_FALSE(s.sim.requests()[0].crcOk);
    EXPECT_TRUE(s.host->readAny(50).empty());
    // Junk between frames is ignored; the next good request is answered.
    s.host->send({0x11, 0x22, 0xF2, 0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2});
    EXPECT_TRUE(crcOk(s.host->readFrame()));
}

TEST(Simulator, FaultsChangeTheNextAnswers) {
    const Bytes good = brdsim::encodeStFrame(0, 0x02, 0x0A, {1});
    struct Case {
        Fault fault;
        std::function<void(Host&)> check;
    };
    const Case cases[] = {
        {{FaultKind::NoAnswer}, [](Host& h) { EXPECT_TRUE(h.readAny(60).empty()); }},
        {{FaultKind::LateAnswer, 150},
         [&](Host& h) {
             EXPECT_TRUE(h.readAny(40).empty());
             EXPECT_EQ(h.readFrame(2000), good);
         }},
        {{FaultKind::BadCrc},
         [&](Host& h) {
             Bytes f = h.readFrame();
             ASSERT_EQ(f.size(), good.size());
             EXPECT_EQ(Bytes(f.begin(), f.end() - 2), Bytes(good.begin(), good.end() - 2));
             EXPECT_FALSE(crcOk(f));
         }},
        {{FaultKind::SplitAnswer, 150},
         [&](Host& h) {
             Bytes first = h.readAny(1000);
             EXPECT_FALSE(first.empty());
             EXPECT_LT(first.size(), good.size());
             Bytes rest = h.readFrame(2000);
             first.insert(first.end(), rest.begin(), rest.end());
             EXPECT_EQ(first, good);
         }},
        {{FaultKind::GarbageBefore},
         [&](Host& h) {
             Bytes f = h.readFrame();
             ASSERT_GT(f.size(), good.size());
             EXPECT_NE(f[0], 0xF1);
             EXPECT_EQ(Bytes(f.end() - good.size(), f.end()), good);
         }},
        {{FaultKind::DeviceFF},
         [&](Host& h) {
             Bytes f = h.readFrame();
             EXPECT_EQ(unstuff(f)[1], 0xFF);
             EXPECT_TRUE(crcOk(f));
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.fault.kind));
        Started s;
        s.sim.queueFault(c.fault);
        s.host->send(get(0x0A));
        c.check(*s.host);
        // The fault is used up: the next request gets the plain answer.
        s.host->send(get(0x0A));
        EXPECT_EQ(s.host->readFrame(), good);
    }
}

TEST(Simulator, FaultCountCoversSeveralRequests) {
    Started s;
    s.sim.queueFault({FaultKind::NoAnswer, 0, 2});
    for (int i = 0; i < 2; ++i) {
        s.host->send(get(0x0A));
        ASSERT_TRUE(s.sim.waitForRequests(i + 1, 1000));
    }
    EXPECT_TRUE(s.host->readAny(30).empty());
    s.host->send(get(0x0A));
    EXPECT_TRUE(crcOk(s.host->readFrame()));
    s.sim.queueFault({FaultKind::NoAnswer});
    s.sim.clearFaults();
    s.host->send(get(0x0A));
    EXPECT_TRUE(crcOk(s.host->readFrame()));
}

TEST(Simulator, HangUpClosesTheLineAndStaysStoppable) {
    Started s;
    s.sim.queueFault({FaultKind::HangUp});
    s.host->send(get(0x0A));
    bool hungUp = false;
    Bytes got = s.host->readUntil(
        2000, [](const Bytes&) { return false; }, &hungUp);
    EXPECT_TRUE(hungUp);
    EXPECT_TRUE(got.empty());
    EXPECT_TRUE(s.sim.hungUp());
    s.sim.injectRaw({0x01});  // nowhere to go, and no harm
    s.sim.stop();
}

TEST(Simulator, InjectsCanFramesEventsAndRawBytes) {
    Started s;
    s.sim.injectCanFrame(0x06, 0x12345678, 0, 2, {0xAA, 0xF1});
    Bytes can = unstuff(s.host->readFrame());
    ASSERT_EQ(can.size(), 13u + 2u);
    EXPECT_EQ(Bytes(can.begin(), can.begin() + 13), (Bytes{0xF1, 0x06, 0x04, 0x00, 0x78, 0x56, 0x34,
                                                           0x12, 0x00, 0x02, 0x02, 0xAA, 0xF1}));
    EXPECT_EQ(can.back(), 0xF2);
    EXPECT_EQ(Get_CRC8(can.data() + 1, 12), can[13]);

    s.sim.injectEvent({0x30, 0x01, 0x02});
    EXPECT_EQ(s.host->readFrame(), brdsim::encodeStFrame(0x00, 0x04, 0x30, {0x01, 0x02}));

    s.sim.injectRaw({0x01, 0x02, 0x03, 0xF2});
    EXPECT_EQ(s.host->readFrame(), (Bytes{0x01, 0x02, 0x03, 0xF2}));
}

TEST(Simulator, CanStreamSendsCountFramesWithARunningCounter) {
    Started s;
    s.sim.startCanStream(1000, 5, 0x321);
    Bytes all = s.host->readUntil(
        3000, [](const Bytes& b) { return std::count(b.begin(), b.end(), 0xF2) >= 5; });
    EXPECT_TRUE(s.host->readAny(50).empty());  // and then it stops
    std::vector<Bytes> frames;
    Bytes cur;
    for (uint8_t b : all) {
        cur.push_back(b);
        if (b == 0xF2) frames.push_back(unstuff(cur)), cur.clear();
    }
    ASSERT_EQ(frames.size(), 5u);
    for (size_t i = 0; i < frames.size(); ++i) {
        const Bytes& f = frames[i];
        ASSERT_EQ(f.size(), 13u + 8u);
        EXPECT_EQ(f[1], 0x06);
        EXPECT_EQ(f[4] | f[5] << 8, 0x321);
        EXPECT_EQ(f[10], 8);
        EXPECT_EQ(f[11], i);  // the first data bytes count the frames
        EXPECT_TRUE(crcOk(frames[i]));
    }
}

TEST(Simulator, StartsAgainAfterStopAndRefusesADoubleStart) {
    Simulator sim;
    ASSERT_TRUE(sim.start());
    EXPECT_FALSE(sim.start());
    sim.stop();
    sim.stop();
    ASSERT_TRUE(sim.start());
    Host h(sim.ptyPath());
    h.send(get(0x0A));
    EXPECT_TRUE(crcOk(h.readFrame()));
}

TEST(WriteConfig, NamesThePtyAndHasEverySection) {
    char tmpl[] = "/tmp/brdsim-conf-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    std::string path = brdsim::writeConfig(tmpl, "KX71\n", "/dev/pts/77", 3);
    EXPECT_EQ(path, std::string(tmpl) + "/KX71.conf");
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    std::string text = ss.str();
    for (const char* line :
         {"<MCU_INFO>\nMCU_DEVICE=/dev/pts/77,115200,1\nDEBUG_LEVEL=3\n", "<MCU_UPDATE_INFO>\n",
          "\nFW_MODEL=KX71\n", "<CAN_INFO>\n", "<CAN_UPDATE_INFO>\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
    std::remove(path.c_str());
    rmdir(tmpl);
    EXPECT_EQ(brdsim::writeConfig("/proc/no/such/dir", "KX07", "/dev/pts/1"), "");
}

// The program: prints the pty path, writes the configuration, answers, ends on SIGINT.
TEST(BrdsimProgram, ServesUntilInterrupted) {
    char tmpl[] = "/tmp/brdsim-prog-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    int out[2];
    ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_adddup2(&fa, out[1], 1);
    std::string dir = tmpl;
    const char* argv[] = {BRDSIM_BIN, "--product", "KX07", "--write-config", dir.c_str(), nullptr};
    pid_t pid;
    ASSERT_EQ(posix_spawn(&pid, BRDSIM_BIN, &fa, nullptr, const_cast<char**>(argv), environ), 0);
    posix_spawn_file_actions_destroy(&fa);
    close(out[1]);

    std::string line;
    char c;
    struct pollfd p = {out[0], POLLIN, 0};
    while (line.find('\n') == std::string::npos && poll(&p, 1, 5000) > 0 &&
           read(out[0], &c, 1) == 1)
        line += c;
    close(out[0]);
    ASSERT_FALSE(line.empty());
    line.pop_back();
    EXPECT_EQ(line.rfind("/dev/pts/", 0), 0u) << line;

    std::ifstream conf(dir + "/KX07.conf");
    std::string first;
    bool named = false;
    while (std::getline(conf, first)) named = named || first == "MCU_DEVICE=" + line + ",115200,1";
    EXPECT_TRUE(named);

    {
        Host h(line);
        h.send({0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2});
        Bytes f = h.readFrame(2000);
        ASSERT_GE(f.size(), 6u);
        EXPECT_EQ(Bytes(f.begin(), f.begin() + 4), (Bytes{0xF1, 0x00, 0x02, 0x01}));
        EXPECT_TRUE(crcOk(f));
    }
    kill(pid, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    std::remove((dir + "/KX07.conf").c_str());
    rmdir(tmpl);
}

TEST(BrdsimProgram, UsageErrorsExitTwoWithOneLine) {
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"--bogus"}, {"--can-rate", "fast"}, {"--product"}}) {
        ProgramResult r = runProgram(BRDSIM_BIN, args, "", {}, 5000);
        EXPECT_EQ(r.status, 2) << args[0];
        EXPECT_EQ(r.err.rfind("brdsim: ", 0), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
    ProgramResult help = runProgram(BRDSIM_BIN, {"--help"}, "", {}, 5000);
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--write-config"), std::string::npos);
}
