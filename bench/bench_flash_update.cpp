// A whole firmware update of a 64 KiB image by brdflash against the simulated system MCU
// on a line paced at 115200 baud (both directions, 10 bits a byte). Counters:
//   line_s  the time the frames' bytes need on that line (what brdsim took in and sent)
//   wall_s  the time brdflash took, start-up included
//   ratio   wall_s / line_s, to stay at or below `bound` (1.3)
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "brdsim.h"

namespace {

constexpr long BAUD = 115200;
constexpr double BOUND = 1.3;
constexpr uint32_t APP = 0x08004000;

std::string writeImage(const std::string& dir) {
    brdsim::Bytes d(64 * 1024);
    uint32_t x = 7;
    for (auto& b : d) b = static_cast<uint8_t>((x = x * 1103515245u + 12345u) >> 16);
    const uint32_t words[2] = {0x20005000, APP + 0x201};
    for (int w = 0; w < 2; ++w)
        for (int i = 0; i < 4; ++i) d[4 * w + i] = static_cast<uint8_t>(words[w] >> (8 * i));
    const std::string tag = "KX07 9.9.9";
    std::copy(tag.begin(), tag.end(), d.begin() + (0x0800F000 - APP));
    d[0x0800F000 - APP + tag.size()] = 0;
    std::string path = dir + "/fw.bin";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(d.data()), static_cast<long>(d.size()));
    return path;
}

void BM_FlashUpdate64KiB(benchmark::State& state) {
    char tmpl[] = "/tmp/bench_flash.XXXXXX";
    if (mkdtemp(tmpl) == nullptr) {
        state.SkipWithError("cannot make a directory");
        return;
    }
    std::string dir = tmpl;
    std::string image = writeImage(dir);
    double wall = 0, line = 0;
    int failures = 0;
    for (auto _ : state) {
        brdsim::Simulator sim("KX07");
        sim.setLineRate(BAUD);
        if (!sim.start() || brdsim::writeConfig(dir, "KX07", sim.ptyPath()).empty()) {
            state.SkipWithError("cannot start the simulated board");
            break;
        }
        std::string cmd = "BRDCTL_CONFIG_DIR=" + dir + " BRDCTL_PRODUCT=KX07 " +
                          std::string(BRDFLASH_BIN) + " mcu " + image + " --quiet >/dev/null";
        auto t0 = std::chrono::steady_clock::now();
        if (std::system(cmd.c_str()) != 0) ++failures;
        auto t1 = std::chrono::steady_clock::now();
        sim.stop();
        wall += std::chrono::duration<double>(t1 - t0).count();
        line += static_cast<double>(sim.bytesReceived() + sim.bytesSent()) * 10.0 / BAUD;
        state.SetIterationTime(std::chrono::duration<double>(t1 - t0).count());
    }
    std::filesystem::remove_all(dir);
    double n = static_cast<double>(state.iterations());
    if (n > 0 && line > 0) {
        state.counters["wall_s"] = wall / n;
        state.counters["line_s"] = line / n;
        state.counters["ratio"] = wall / line;
        state.counters["bound"] = BOUND;
    }
    state.counters["failures"] = failures;
}
BENCHMARK(BM_FlashUpdate64KiB)->UseManualTime()->Iterations(2)->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();
