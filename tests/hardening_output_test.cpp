// brdcmd with a standard output that cannot be written: exit status 1 and a message,
// whatever it was asked to print.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "brdsim.h"

namespace {

struct Outcome {
    int status = -1;
    std::string err;
};

// Runs brdcmd with standard output on `outPath` and collects standard error.
Outcome runTo(const char* outPath, const std::vector<std::string>& args, const std::string& dir) {
    int errPipe[2];
    if (pipe(errPipe) != 0) return {};
    pid_t pid = fork();
    if (pid == 0) {
        int out = open(outPath, O_WRONLY);
        dup2(out, 1);
        dup2(errPipe[1], 2);
        close(errPipe[0]);
        int in = open("/dev/null", O_RDONLY);
        dup2(in, 0);
        setenv("BRDCTL_PRODUCT", "KX07", 1);
        setenv("BRDCTL_CONFIG_DIR", dir.c_str(), 1);
        std::vector<char*> argv{const_cast<char*>(BRDCMD_BIN)};
        for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(BRDCMD_BIN, argv.data());
        _exit(127);
    }
    close(errPipe[1]);
    Outcome o;
    char buf[512];
    for (ssize_t n; (n = read(errPipe[0], buf, sizeof buf)) > 0;) o.err.append(buf, size_t(n));
    close(errPipe[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    o.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return o;
}

}  // namespace

TEST(HardeningOutput, UnwritableStandardOutputFails) {
    brdsim::Simulator sim("KX07");
    ASSERT_TRUE(sim.start());
    char tmpl[] = "/tmp/brdctl-out-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    brdsim::writeConfig(tmpl, "KX07", sim.ptyPath());
    const std::vector<std::string> runs[] = {
        {"--help"}, {"--version"}, {"--list"}, {"ST_SYSTEM_GET_0C_01_TEMPERATURE"}, {}};
    for (const auto& args : runs) {
        SCOPED_TRACE(args.empty() ? "menu" : args[0]);
        Outcome ok = runTo("/dev/null", args, tmpl);
        EXPECT_EQ(ok.err.find("cannot write"), std::string::npos) << ok.err;
        Outcome full = runTo("/dev/full", args, tmpl);
        EXPECT_EQ(ok.status, 0);
        EXPECT_EQ(full.status, 1);
        EXPECT_NE(full.err.find("brdcmd: cannot write standard output"), std::string::npos)
            << full.err;
    }
}
