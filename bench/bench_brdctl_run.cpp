// A whole `brdctl 02 01 01` run against the simulated board: process start to exit,
// with the peak resident memory of the child.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "brdsim.h"

extern char** environ;

namespace {

void BM_BrdctlGetRun(benchmark::State& state) {
    brdsim::Simulator sim("KX07");
    if (!sim.start()) {
        state.SkipWithError("cannot start the simulator");
        return;
    }
    char tmpl[] = "/tmp/brdctl-bench-XXXXXX";
    std::string dir = mkdtemp(tmpl);
    brdsim::writeConfig(dir, "KX07", sim.ptyPath());
    setenv("BRDCTL_PRODUCT", "KX07", 1);
    setenv("BRDCTL_CONFIG_DIR", dir.c_str(), 1);

    const char* argv[] = {BRDCTL_BIN, "02", "01", "01", nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    long maxRssKb = 0;
    for (auto _ : state) {
        pid_t pid;
        if (posix_spawn(&pid, BRDCTL_BIN, &actions, nullptr, const_cast<char**>(argv), environ) !=
            0) {
            state.SkipWithError("cannot start brdctl");
            break;
        }
        int status = 0;
        struct rusage usage;
        wait4(pid, &status, 0, &usage);
        maxRssKb = std::max(maxRssKb, usage.ru_maxrss);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            state.SkipWithError("brdctl failed");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
    state.counters["peak_rss_kB"] = static_cast<double>(maxRssKb);
    state.counters["requests"] = static_cast<double>(sim.requestCount());
}
BENCHMARK(BM_BrdctlGetRun)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
