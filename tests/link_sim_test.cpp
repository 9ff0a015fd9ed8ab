// The simulated board on its own, seen from a host that opens its pseudo-terminal, and
// the brdsim program run as a child.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <sstream>

#include "brdsim.h"
#include "mcu_base.h"
#include "run_program.h"

extern char** environ;

using brdsim::Bytes;
using brdsim::encodeStFrame;
using brdsim::FaultKind;

namespace {

// The host side of the line: the pseudo-terminal slave, opened raw.
struct Host {
    int fd;
    explicit Host(const std::string& path) : fd(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_GE(fd, 0) << path;
        struct termios t;
        if (fd < 0 || tcgetattr(fd, &t) != 0) return;
        cfmakeraw(&t);
        tcsetattr(fd, TCSANOW, &t);
    }
    ~Host() { close(fd); }
    void send(const Bytes& b) { EXPECT_EQ(write(fd, b.data(), b.size()), ssize_t(b.size())); }
    // Reads until `ends` end codes came (anything at all when 0), the line hangs up, or
    // timeoutMs pass.
    Bytes read(int timeoutMs = 1000, long ends = 1, bool* hungUp = nullptr) {
        Bytes out;
        auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (ends ? std::count(out.begin(), out.end(), 0xF2) < ends : out.empty()) {
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            struct pollfd p = {fd, POLLIN, 0};
            if (left.count() <= 0 || poll(&p, 1, int(left.count())) <= 0) break;
            uint8_t buf[512];
            ssize_t n = ::read(fd, buf, sizeof buf);
            if (n <= 0) {
                if (hungUp) *hungUp = true;
                break;
            }
            out.insert(out.end(), buf, buf + n);
        }
        return out;
    }
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

Bytes get(uint8_t address) {
    return encodeStFrame(0, 0x02, address, {});
}

struct Started {
    explicit Started(const std::string& product = "KX07") : sim(product) {
        EXPECT_TRUE(sim.start());
        host = std::make_unique<Host>(sim.ptyPath());
    }
    brdsim::Simulator sim;
    std::unique_ptr<Host> host;
};

}  // namespace

TEST(Simulator, GetAnswersTheProductDefaults) {
    struct Case {
        const char* product;
        uint8_t address;
        Bytes data;
    };
    // clang-format off
    const Case cases[] = {
        {"KX07", 0x0A, {1}},           {"KX07", 0x0C, {40}},      {"KX07", 0x0B, {120, 0}},
        {"KX25", 0x0B, {0xB0, 0x04}},  {"KX07", 0x18, {1}},       {"KX71", 0x18, {1, 1}},
        {"KX07", 0x62, {1, 30}},       {"KX07", 0x3F, {0x10, 0x27, 0, 0}},
        {"KX07", 0x01, {'S', 'T', '3', '2', 'F', '1', ' ', 'R', 7}},
        {"KX73", 0x01, {'S', 'T', '3', '2', 'F', 'R', 7}},
        {"KX07", 0xEE, {0}},  // no such register
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.product) + " address " + std::to_string(c.address));
        Started s(c.product);
        s.host->send(get(c.address));
        EXPECT_EQ(s.host->read(), encodeStFrame(0, 0x02, c.address, c.data));
    }
}

TEST(Simulator, RegisterModelAndAnswers) {
    Started s;
    s.host->send(encodeStFrame(0, 0x03, 0x0A, {0x00, 0xF2}));
    EXPECT_EQ(s.host->read(), encodeStFrame(0, 0x03, 0x0A, {0x01}));
    s.host->send(get(0x0A));
    EXPECT_EQ(s.host->read(), encodeStFrame(0, 0x02, 0x0A, {0x00, 0xF2}));
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

    // A set answer wins over the register model and the acknowledgement.
    s.sim.setRegister(0, 0x0C, {20});
    s.sim.setAnswer(0, 0x02, 0x0C, {0xF6});
    s.sim.setAnswer(0, 0x03, 0x4B, {0x00});  // the MCU refuses
    s.host->send(get(0x0C));
    EXPECT_EQ(s.host->read(), encodeStFrame(0, 0x02, 0x0C, {0xF6}));
    s.host->send(encodeStFrame(0, 0x03, 0x4B, {1}));
    EXPECT_EQ(s.host->read(), encodeStFrame(0, 0x03, 0x4B, {0x00}));
    s.sim.clearAnswer(0, 0x02, 0x0C);
    s.host->send(get(0x0C));
    EXPECT_EQ(s.host->read(), encodeStFrame(0, 0x02, 0x0C, {20}));

    // A request with a bad CRC is recorded but not answered; junk between frames is ignored.
    s.host->send({0xF1, 0x00, 0x02, 0x01, 0xAD, 0xF2});
    ASSERT_TRUE(s.sim.waitForRequests(4, 1000));
    EXPECT_FALSE(s.sim.requests()[3].crcOk);
    EXPECT_TRUE(s.host->read(50, 0).empty());
    s.host->send({0x11, 0x22, 0xF2, 0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2});
    EXPECT_TRUE(crcOk(s.host->read()));
}

// What the host sees of an answer that goes wrong; the link's view is in the exchange tests.
TEST(Simulator, FaultsChangeTheNextAnswer) {
    const Bytes good = encodeStFrame(0, 0x02, 0x0A, {1});
    for (FaultKind kind : {FaultKind::NoAnswer, FaultKind::LateAnswer, FaultKind::BadCrc,
                           FaultKind::SplitAnswer, FaultKind::GarbageBefore, FaultKind::DeviceFF}) {
        SCOPED_TRACE(static_cast<int>(kind));
        Started s;
        s.sim.queueFault({kind, 150});
        s.host->send(get(0x0A));
        Bytes first = s.host->read(kind == FaultKind::LateAnswer ? 40 : 1000, 0);
        Bytes f = first, rest = s.host->read(kind == FaultKind::NoAnswer ? 60 : 2000);
        f.insert(f.end(), rest.begin(), rest.end());
        using K = FaultKind;
        EXPECT_EQ(f.empty(), kind == K::NoAnswer);
        EXPECT_EQ(first.empty(), kind == K::NoAnswer || kind == K::LateAnswer);
        // Late and split answers come whole in the end, a split one in two parts.
        EXPECT_EQ(f == good, kind == K::LateAnswer || kind == K::SplitAnswer);
        EXPECT_TRUE(kind != K::SplitAnswer || first.size() < good.size());
        EXPECT_TRUE(kind != K::DeviceFF || (crcOk(f) && unstuff(f).at(1) == 0xFF));
        if (kind == K::BadCrc) {
            EXPECT_FALSE(crcOk(f));
            ASSERT_EQ(f.size(), good.size());
            EXPECT_EQ(Bytes(f.begin(), f.end() - 2), Bytes(good.begin(), good.end() - 2));
        }
        if (kind == K::GarbageBefore) {
            ASSERT_GT(f.size(), good.size());
            EXPECT_NE(f[0], 0xF1);
            EXPECT_EQ(Bytes(f.end() - good.size(), f.end()), good);
        }
        // The fault is used up: the next request gets the plain answer.
        s.host->send(get(0x0A));
        EXPECT_EQ(s.host->read(), good);
    }
}

TEST(Simulator, FaultCountClearAndHangUp) {
    Started s;
    s.sim.queueFault({FaultKind::NoAnswer, 0, 2});
    for (int i = 0; i < 2; ++i) {
        s.host->send(get(0x0A));
        ASSERT_TRUE(s.sim.waitForRequests(i + 1, 1000));
    }
    EXPECT_TRUE(s.host->read(30, 0).empty());
    s.sim.queueFault({FaultKind::NoAnswer});
    s.sim.clearFaults();
    s.host->send(get(0x0A));
    EXPECT_TRUE(crcOk(s.host->read()));

    s.sim.queueFault({FaultKind::HangUp});
    s.host->send(get(0x0A));
    bool hungUp = false;
    EXPECT_TRUE(s.host->read(2000, 1, &hungUp).empty());
    EXPECT_TRUE(hungUp);
    EXPECT_TRUE(s.sim.hungUp());
    s.sim.injectRaw({0x01});  // nowhere to go, and no harm
    s.sim.stop();
}

TEST(Simulator, InjectsCanFramesEventsRawBytesAndStreams) {
    Started s;
    s.sim.injectCanFrame(0x06, 0x12345678, 0, 2, {0xAA, 0xF1});
    Bytes can = unstuff(s.host->read());
    ASSERT_EQ(can.size(), 15u);
    EXPECT_EQ(can, (Bytes{0xF1, 0x06, 0x04, 0x00, 0x78, 0x56, 0x34, 0x12, 0x00, 0x02, 0x02, 0xAA,
                          0xF1, Get_CRC8(can.data() + 1, 12), 0xF2}));
    s.sim.injectEvent({0x30, 0x01, 0x02});
    EXPECT_EQ(s.host->read(), encodeStFrame(0x00, 0x04, 0x30, {0x01, 0x02}));
    s.sim.injectRaw({0x01, 0x02, 0x03, 0xF2});
    EXPECT_EQ(s.host->read(), (Bytes{0x01, 0x02, 0x03, 0xF2}));

    // A stream of CAN frames from device 6 whose first data byte counts them.
    s.sim.startCanStream(1000, 5, 0x321);
    Bytes all = s.host->read(3000, 5), f;
    EXPECT_TRUE(s.host->read(50, 0).empty());  // and then it stops
    int n = 0;
    for (uint8_t b : all) {
        f.push_back(b);
        if (b != 0xF2) continue;
        Bytes u = unstuff(f);
        EXPECT_TRUE(u.size() == 21 && crcOk(f) && u[1] == 0x06 && (u[4] | u[5] << 8) == 0x321 &&
                    u[10] == 8 && u[11] == n)
            << "frame " << n;
        ++n;
        f.clear();
    }
    EXPECT_EQ(n, 5);
}

TEST(WriteConfig, NamesThePtyAndHasEverySection) {
    char tmpl[] = "/tmp/brdsim-conf-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    std::string path = brdsim::writeConfig(tmpl, "KX71\n", "/dev/pts/77", 3);
    EXPECT_EQ(path, std::string(tmpl) + "/KX71.conf");
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    for (const char* line :
         {"<MCU_INFO>\nMCU_DEVICE=/dev/pts/77,115200,1\nDEBUG_LEVEL=3\n", "<MCU_UPDATE_INFO>\n",
          "\nFW_MODEL=KX71\n", "<CAN_INFO>\n", "<CAN_UPDATE_INFO>\n"})
        EXPECT_NE(text.str().find(line), std::string::npos) << line;
    std::remove(path.c_str());
    rmdir(tmpl);
    EXPECT_EQ(brdsim::writeConfig("/proc/no/such/dir", "KX07", "/dev/pts/1"), "");
}

// The program: prints the pty path, writes the configuration, answers, ends on SIGINT.
TEST(BrdsimProgram, ServesUntilInterrupted) {
    char dir[] = "/tmp/brdsim-prog-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    int out[2];
    ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_adddup2(&fa, out[1], 1);
    const char* argv[] = {BRDSIM_BIN, "--product", "KX07", "--write-config", dir, nullptr};
    pid_t pid;
    ASSERT_EQ(posix_spawn(&pid, BRDSIM_BIN, &fa, nullptr, const_cast<char**>(argv), environ), 0);
    posix_spawn_file_actions_destroy(&fa);
    close(out[1]);
    std::string line;
    char c;
    struct pollfd p = {out[0], POLLIN, 0};
    while (poll(&p, 1, 5000) > 0 && read(out[0], &c, 1) == 1 && c != '\n') line += c;
    close(out[0]);
    if (line.rfind("/dev/pts/", 0) != 0) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        FAIL() << "no pty path: " << line;
    }

    std::stringstream conf;
    conf << std::ifstream(std::string(dir) + "/KX07.conf").rdbuf();
    EXPECT_NE(conf.str().find("\nMCU_DEVICE=" + line + ",115200,1\n"), std::string::npos);
    {
        Host h(line);
        h.send({0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2});
        Bytes f = h.read(2000);
        ASSERT_GE(f.size(), 6u);
        EXPECT_EQ(Bytes(f.begin(), f.begin() + 4), (Bytes{0xF1, 0x00, 0x02, 0x01}));
        EXPECT_TRUE(crcOk(f));
    }
    kill(pid, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    std::remove((std::string(dir) + "/KX07.conf").c_str());
    rmdir(dir);
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
