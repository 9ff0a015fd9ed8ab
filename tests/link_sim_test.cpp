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
#include <sstream>
#include <tuple>

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
    bool hungUp = false;  // the last read ended because the line was closed
    // Reads until `ends` end codes came (anything at all when 0), the line hangs up, or
    // timeoutMs pass.
    Bytes read(int timeoutMs = 1000, long ends = 1) {
        Bytes out;
        hungUp = false;
        auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        for (uint8_t buf[512];
             ends ? std::count(out.begin(), out.end(), 0xF2) < ends : out.empty();) {
            auto left = std::chrono::ceil<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            struct pollfd p = {fd, POLLIN, 0};
            if (left.count() <= 0 || poll(&p, 1, int(left.count())) <= 0) break;
            ssize_t n = ::read(fd, buf, sizeof buf);
            if ((hungUp = n <= 0)) break;
            out.insert(out.end(), buf, buf + n);
        }
        return out;
    }
    Bytes ask(const Bytes& request) {
        send(request);
        return read();
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

std::string slurp(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// A started simulator and the host side of its line.
struct Started {
    explicit Started(const char* product = "KX07") : sim(product) {}
    brdsim::Simulator sim;
    bool started = sim.start();
    Host host{sim.ptyPath()};
};

}  // namespace

TEST(Simulator, RegisterModelDefaultsAndAnswers) {
    // Two representative defaults: one that depends on the product, and a missing register.
    for (auto [product, address, data] :
         {std::tuple<const char*, uint8_t, Bytes>{"KX25", 0x0B, {0xB0, 0x04}}, {"KX07", 0xEE, {0}}})
        EXPECT_EQ(Started(product).host.ask(get(address)), encodeStFrame(0, 2, address, data));

    Started s;
    ASSERT_TRUE(s.started);
    EXPECT_EQ(s.host.ask(encodeStFrame(0, 3, 0x0A, {0x00, 0xF2})), encodeStFrame(0, 3, 0x0A, {1}));
    EXPECT_EQ(s.host.ask(get(0x0A)), encodeStFrame(0, 2, 0x0A, {0x00, 0xF2}));
    EXPECT_EQ(s.sim.getRegister(0, 0x0A), (Bytes{0x00, 0xF2}));
    auto reqs = s.sim.requests();
    ASSERT_EQ(reqs.size(), 2u);
    EXPECT_TRUE(reqs[0].command == 0x03 && reqs[0].address == 0x0A && reqs[0].crcOk);
    EXPECT_EQ(reqs[0].data, (Bytes{0x00, 0xF2}));  // unstuffed

    // A set answer wins over the register model and the acknowledgement, until cleared.
    s.sim.setRegister(0, 0x0C, {20});
    s.sim.setAnswer(0, 0x02, 0x0C, {0xF6});
    s.sim.setAnswer(0, 0x03, 0x4B, {0x00});  // the MCU refuses
    EXPECT_EQ(s.host.ask(get(0x0C)), encodeStFrame(0, 2, 0x0C, {0xF6}));
    EXPECT_EQ(s.host.ask(encodeStFrame(0, 3, 0x4B, {1})), encodeStFrame(0, 3, 0x4B, {0x00}));
    s.sim.clearAnswer(0, 0x02, 0x0C);
    EXPECT_EQ(s.host.ask(get(0x0C)), encodeStFrame(0, 2, 0x0C, {20}));
}

// What the host sees of an answer that goes wrong; the link's view is in the exchange tests.
TEST(Simulator, FaultsChangeTheNextAnswer) {
    using K = FaultKind;
    const Bytes good = encodeStFrame(0, 0x02, 0x0A, {1});
    for (K kind : {K::NoAnswer, K::LateAnswer, K::BadCrc, K::SplitAnswer, K::GarbageBefore,
                   K::DeviceFF, K::HangUp}) {
        SCOPED_TRACE(static_cast<int>(kind));
        Started s;
        // What comes within 150 ms, and what comes after the 400 ms delay.
        s.sim.queueFault({kind, 400});
        s.host.send(get(0x0A));
        Bytes first = s.host.read(150, 0), f = first;
        if (!s.host.hungUp && std::count(f.begin(), f.end(), 0xF2) == 0) {
            Bytes rest = s.host.read(kind == K::NoAnswer ? 100 : 2000, 1);
            f.insert(f.end(), rest.begin(), rest.end());
        }
        const bool silent = kind == K::NoAnswer || kind == K::HangUp;
        EXPECT_EQ(s.host.hungUp, kind == K::HangUp);
        EXPECT_EQ(s.sim.hungUp(), kind == K::HangUp);
        EXPECT_EQ(f.empty(), silent);
        EXPECT_EQ(first.empty(), silent || kind == K::LateAnswer);
        // Late and split answers come whole in the end, a split one in two parts.
        EXPECT_EQ(f == good, kind == K::LateAnswer || kind == K::SplitAnswer);
        EXPECT_TRUE(kind != K::SplitAnswer || first.size() < good.size());
        EXPECT_TRUE(kind != K::DeviceFF || (crcOk(f) && unstuff(f).at(1) == 0xFF));
        // A bad CRC changes only the CRC byte; garbage comes before the whole answer.
        EXPECT_TRUE(kind != K::BadCrc || (!crcOk(f) && f.size() == good.size() &&
                                          std::equal(good.begin(), good.end() - 2, f.begin())));
        EXPECT_TRUE(kind != K::GarbageBefore || (f.size() > good.size() && f[0] != 0xF1 &&
                                                 Bytes(f.end() - good.size(), f.end()) == good));
        // The fault is used up: the next request gets the plain answer.
        if (kind == K::HangUp) continue;
        EXPECT_EQ(s.host.ask(get(0x0A)), good);
    }
}

TEST(Simulator, InjectsCanFramesEventsRawBytesAndStreams) {
    Started s;
    s.sim.injectCanFrame(0x06, 0x12345678, 0, 2, {0xAA, 0xF1});
    Bytes can = unstuff(s.host.read());
    ASSERT_EQ(can.size(), 15u);
    EXPECT_EQ(can, (Bytes{0xF1, 0x06, 0x04, 0x00, 0x78, 0x56, 0x34, 0x12, 0x00, 0x02, 0x02, 0xAA,
                          0xF1, Get_CRC8(can.data() + 1, 12), 0xF2}));
    s.sim.injectEvent({0x30, 0x01, 0x02});
    EXPECT_EQ(s.host.read(), encodeStFrame(0x00, 0x04, 0x30, {0x01, 0x02}));
    s.sim.injectRaw({0x01, 0x02, 0x03, 0xF2});
    EXPECT_EQ(s.host.read(), (Bytes{0x01, 0x02, 0x03, 0xF2}));
    // A stream sends just the frames asked for, then stops.
    s.sim.startCanStream(1000, 3, 0x321);
    Bytes all = s.host.read(3000, 3);
    EXPECT_EQ(std::count(all.begin(), all.end(), 0xF1), 3);
    EXPECT_TRUE(s.host.read(50, 0).empty());
}

TEST(WriteConfig, NamesThePtyAndHasEverySection) {
    char tmpl[] = "/tmp/brdsim-conf-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    std::string path = brdsim::writeConfig(tmpl, "KX71\n", "/dev/pts/77", 3);
    EXPECT_EQ(path, std::string(tmpl) + "/KX71.conf");
    std::string text = slurp(path);
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
    const std::string conf = std::string(dir) + "/KX07.conf";
    EXPECT_NE(slurp(conf).find("\nMCU_DEVICE=" + line + ",115200,1\n"), std::string::npos);
    std::remove(conf.c_str());
    rmdir(dir);
    if (line.rfind("/dev/pts/", 0) == 0) {
        Host h(line);
        Bytes f = h.ask({0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2});
        EXPECT_TRUE(f.size() >= 6 && Bytes(f.begin(), f.begin() + 4) == (Bytes{0xF1, 0, 2, 1}));
        EXPECT_TRUE(crcOk(f));
    }
    EXPECT_EQ(line.rfind("/dev/pts/", 0), 0u) << "no pty path: " << line;
    kill(pid, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
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
}
