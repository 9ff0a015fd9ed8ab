// The programs on bad devices and a shared port: a lock held by another process, paths
// that are not terminals, closed standard descriptors, termination signals, and a
// standard output that cannot be written.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "brdsim.h"
#include "mcu_base.h"
#include "pty_pair.h"
#include "run_program.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string makeTempDir() {
    char tmpl[] = "/tmp/brdctl-hard-XXXXXX";
    const char* dir = mkdtemp(tmpl);
    EXPECT_NE(dir, nullptr);
    return dir ? dir : "/tmp";
}

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

struct Program {
    const char* path;
    const char* arg;  // what to run: one GET
    int deviceError;  // exit status of a device error
};
const Program kPrograms[] = {
    {BRDCTL_BIN, "02 01 01", 255},
    {BRDCMD_BIN, "ST_SYSTEM_GET_0C_01_TEMPERATURE", 3},
};

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

ProgramResult run(const Program& p, const std::string& dir,
                  std::vector<std::pair<std::string, std::string>> env = {}) {
    env.push_back({"BRDCTL_PRODUCT", "KX07"});
    env.push_back({"BRDCTL_CONFIG_DIR", dir});
    return runProgram(p.path, split(p.arg), "", env, 15000);
}

const char* programName(const Program& p) {
    return strrchr(p.path, '/') + 1;
}

}  // namespace

TEST(HardeningDevice, PortHeldByAnotherProcess) {
    brdsim::Simulator sim("KX07");
    ASSERT_TRUE(sim.start());
    std::string dir = makeTempDir();
    brdsim::writeConfig(dir, "KX07", sim.ptyPath());
    int holder = open(sim.ptyPath().c_str(), O_RDWR | O_NOCTTY);
    ASSERT_GE(holder, 0);
    ASSERT_EQ(flock(holder, LOCK_EX), 0);
    for (const Program& p : kPrograms) {
        SCOPED_TRACE(p.path);
        auto start = Clock::now();
        ProgramResult r = run(p, dir, {{"BRDCTL_LOCK_TIMEOUT", "1"}});
        double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        EXPECT_EQ(r.status, p.deviceError);
        std::string name = programName(p);
        EXPECT_NE(r.err.find(name + ": " + sim.ptyPath() +
                             " is in use by another process; waiting up to 1 s\n"),
                  std::string::npos)
            << r.err;
        EXPECT_NE(r.err.find(name + ": cannot open " + sim.ptyPath()), std::string::npos);
        EXPECT_GE(seconds, 0.9);
        EXPECT_LT(seconds, 8.0);
    }
    EXPECT_EQ(sim.requestCount(), 0u);

    // Released within the deadline: the program goes on and gets its answer.
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_EQ(flock(holder, LOCK_UN), 0);
    });
    ProgramResult r = run(kPrograms[0], dir, {{"BRDCTL_LOCK_TIMEOUT", "5"}});
    release.join();
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.err.find("waiting up to 5 s"), std::string::npos);
    EXPECT_NE(r.out.find("[Output] Data out: "), std::string::npos) << r.out;
    close(holder);
}

TEST(HardeningDevice, OnlyTerminalsAreOpened) {
    std::string dir = makeTempDir();
    std::string file = dir + "/ttyS9", fifo = dir + "/fifo";
    { std::ofstream(file) << "keep me\n"; }
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    struct Case {
        std::string path, why;
    };
    const Case cases[] = {
        {file, "not a character device"},
        {fifo, "not a character device"},
        {dir, "not a character device"},
        {"/dev/null", "not a terminal"},
        {dir + "/missing", "No such file or directory"},
    };
    for (const Case& c : cases) {
        brdsim::writeConfig(dir, "KX07", c.path);
        for (const Program& p : kPrograms) {
            SCOPED_TRACE(c.path + " " + p.path);
            ProgramResult r = run(p, dir);
            EXPECT_EQ(r.status, p.deviceError);
            EXPECT_EQ(r.out, "");
            EXPECT_NE(
                r.err.find(std::string(programName(p)) + ": cannot open " + c.path + ": " + c.why),
                std::string::npos)
                << r.err;
        }
    }
    EXPECT_EQ(readFile(file), "keep me\n");
}

namespace {

// Starts `path` for KX07 with its configuration in `dir` and descriptors 0, 1 and 2 taken
// from `std` (-1: left closed).
pid_t spawn(const char* path, const std::vector<std::string>& args, const std::string& dir,
            const int (&std)[3]) {
    pid_t pid = fork();
    if (pid != 0) return pid;
    setenv("BRDCTL_PRODUCT", "KX07", 1);
    setenv("BRDCTL_CONFIG_DIR", dir.c_str(), 1);
    std::vector<char*> argv{const_cast<char*>(path)};
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    int moved[3];
    for (int i = 0; i < 3; ++i) moved[i] = std[i] >= 0 ? fcntl(std[i], F_DUPFD_CLOEXEC, 10) : -1;
    for (int i = 0; i < 3; ++i) {
        if (moved[i] < 0) {
            close(i);
        } else if (dup2(moved[i], i) < 0) {
            _exit(126);
        }
    }
    execv(path, argv.data());
    _exit(127);
}

int waitExit(pid_t pid, int timeoutMs) {
    auto end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (Clock::now() > end) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return status;
}

}  // namespace

TEST(HardeningDevice, ClosedStandardDescriptorsKeepTextOffTheLine) {
    PtyPair board;  // nobody answers: the program times out and prints its failure line
    std::string dir = makeTempDir();
    brdsim::writeConfig(dir, "KX07", board.slavePath);
    pid_t pid = spawn(BRDCTL_BIN, {"02", "01", "01"}, dir, {-1, -1, -1});
    std::vector<uint8_t> line = board.read(1500);
    int status = waitExit(pid, 10000);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    // The request frame, once per try, and no text.
    BYTE inner[] = {0x00, 0x02, 0x01, 0};
    inner[3] = Get_CRC8(inner, 3);
    std::vector<uint8_t> frame{0xF1, inner[0], inner[1], inner[2], inner[3], 0xF2};
    ASSERT_FALSE(line.empty());
    ASSERT_EQ(line.size() % frame.size(), 0u) << std::string(line.begin(), line.end());
    for (size_t at = 0; at < line.size(); at += frame.size())
        EXPECT_TRUE(std::equal(frame.begin(), frame.end(), line.begin() + at)) << at;
}

TEST(HardeningDevice, TerminationRestoresThePortSettings) {
    for (int sig : {SIGTERM, SIGHUP}) {
        SCOPED_TRACE(strsignal(sig));
        brdsim::Simulator sim("KX07");
        ASSERT_TRUE(sim.start());
        std::string dir = makeTempDir();
        brdsim::writeConfig(dir, "KX07", sim.ptyPath());
        int watcher = open(sim.ptyPath().c_str(), O_RDWR | O_NOCTTY);
        ASSERT_GE(watcher, 0);
        struct termios before;
        ASSERT_EQ(tcgetattr(watcher, &before), 0);

        // brdcmd's menu waits on its input, which the test keeps open.
        int in[2];
        ASSERT_EQ(pipe(in), 0);
        int null = open("/dev/null", O_WRONLY);
        pid_t pid = spawn(BRDCMD_BIN, {}, dir, {in[0], null, 2});
        close(in[0]);
        close(null);
        // Wait until the link has configured the port.
        struct termios during = before;
        auto end = Clock::now() + std::chrono::seconds(5);
        while (during.c_lflag == before.c_lflag && Clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            if (tcgetattr(watcher, &during) != 0) break;
        }
        ASSERT_NE(during.c_lflag, before.c_lflag);
        kill(pid, sig);
        int status = waitExit(pid, 5000);
        ASSERT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), sig);
        struct termios after;
        ASSERT_EQ(tcgetattr(watcher, &after), 0);
        EXPECT_EQ(after.c_lflag, before.c_lflag);
        EXPECT_EQ(after.c_oflag, before.c_oflag);
        EXPECT_EQ(after.c_iflag, before.c_iflag);
        EXPECT_EQ(after.c_cflag, before.c_cflag);
        close(in[1]);
        close(watcher);
    }
}

TEST(HardeningDevice, UnwritableStandardOutputFailsBrdcmd) {
    brdsim::Simulator sim("KX07");
    ASSERT_TRUE(sim.start());
    std::string dir = makeTempDir();
    brdsim::writeConfig(dir, "KX07", sim.ptyPath());
    const std::vector<std::string> runs[] = {
        {"--help"}, {"--version"}, {"--list"}, {"ST_SYSTEM_GET_0C_01_TEMPERATURE"}, {}};
    for (const auto& args : runs) {
        for (const char* out : {"/dev/null", "/dev/full"}) {
            SCOPED_TRACE((args.empty() ? "menu" : args[0]) + " > " + out);
            int errPipe[2];
            ASSERT_EQ(pipe(errPipe), 0);
            int in = open("/dev/null", O_RDONLY), outFd = open(out, O_WRONLY);
            pid_t pid = spawn(BRDCMD_BIN, args, dir, {in, outFd, errPipe[1]});
            close(in);
            close(outFd);
            close(errPipe[1]);
            std::string err;
            char buf[512];
            for (ssize_t n; (n = read(errPipe[0], buf, sizeof buf)) > 0;)
                err.append(buf, size_t(n));
            close(errPipe[0]);
            int status = waitExit(pid, 10000);
            bool full = strcmp(out, "/dev/full") == 0;
            ASSERT_TRUE(WIFEXITED(status));
            EXPECT_EQ(WEXITSTATUS(status), full ? 1 : 0);
            EXPECT_EQ(err.find("brdcmd: cannot write standard output") != std::string::npos, full)
                << err;
        }
    }
}
