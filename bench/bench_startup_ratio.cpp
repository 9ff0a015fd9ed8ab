// A whole `brdctl 02 01 01` run against the simulated board compared with the least a
// program on that line can do (open the device, start and join one thread, exit): both run
// alternately, and the median of the per-pair time ratios is reported (goal <= 1.5).
//   build/bench_startup_ratio [PAIRS]      (default 40)
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "brdsim.h"

extern char** environ;

namespace {

struct Run {
    double wallUs = -1, cpuUs = 0;
};

// Runs a program with stdout on /dev/null: its wall time and processor time (user and
// system, all threads) in microseconds; wallUs is -1 when it failed.
Run runOnce(const char* const* argv) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    auto start = std::chrono::steady_clock::now();
    pid_t pid;
    int rc = posix_spawn(&pid, argv[0], &actions, nullptr, const_cast<char**>(argv), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return {};
    int status = 0;
    struct rusage u;
    wait4(pid, &status, 0, &u);
    Run r;
    r.wallUs =
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
    r.cpuUs =
        (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1e6 + u.ru_utime.tv_usec + u.ru_stime.tv_usec;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) r.wallUs = -1;
    return r;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

}  // namespace

int main(int argc, char** argv) {
    int pairs = argc > 1 ? atoi(argv[1]) : 40;
    if (pairs < 1) pairs = 40;
    brdsim::Simulator sim("KX07");
    if (!sim.start()) {
        fprintf(stderr, "bench_startup_ratio: cannot start the simulator\n");
        return 1;
    }
    char tmpl[] = "/tmp/brdctl-bench-XXXXXX";
    std::string dir = mkdtemp(tmpl);
    brdsim::writeConfig(dir, "KX07", sim.ptyPath());
    setenv("BRDCTL_PRODUCT", "KX07", 1);
    setenv("BRDCTL_CONFIG_DIR", dir.c_str(), 1);
    const char* brdctl[] = {BRDCTL_BIN, "02", "01", "01", nullptr};
    const char* minimal[] = {MINIMAL_OPEN_BIN, sim.ptyPath().c_str(), nullptr};

    // One of each first, not counted: page cache and simulator warm.
    runOnce(brdctl);
    runOnce(minimal);
    std::vector<double> full, floor, ratio, fullCpu, floorCpu;
    for (int i = 0; i < pairs; ++i) {
        Run a = runOnce(brdctl), b = runOnce(minimal);
        if (a.wallUs < 0 || b.wallUs < 0) {
            fprintf(stderr, "bench_startup_ratio: a run failed\n");
            return 1;
        }
        full.push_back(a.wallUs);
        floor.push_back(b.wallUs);
        ratio.push_back(a.wallUs / b.wallUs);
        fullCpu.push_back(a.cpuUs);
        floorCpu.push_back(b.cpuUs);
    }
    printf("pairs                 %d\n", pairs);
    printf("brdctl 02 01 01       median %8.0f us wall, %6.0f us processor\n", median(full),
           median(fullCpu));
    printf("open + thread + exit  median %8.0f us wall, %6.0f us processor\n", median(floor),
           median(floorCpu));
    printf("ratio                 median %8.2f (goal <= 1.5)\n", median(ratio));
    return 0;
}
