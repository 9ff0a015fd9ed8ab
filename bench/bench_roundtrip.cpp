// One sendCMD round trip, in-process, against the simulated board over a pseudo-terminal:
// request frame out, the simulator's answer decoded by the receive thread, waiter woken.
// The counter median_us is the median of the single round trips of a run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "brdsim.h"
#include "mcu_base.h"

namespace {

constexpr int IDX_TEMPERATURE = 1;
constexpr int IDX_SET_IGNITION = 2;

void roundTrip(benchmark::State& state, int index, int dataLen, BYTE expect) {
    brdsim::Simulator sim("KX07");
    if (!sim.start()) {
        state.SkipWithError("cannot open a pseudo-terminal");
        return;
    }
    MCU_CONTENT* m = init_MCU(sim.ptyPath().c_str(), MCU_TYPE_ST, 115200);
    if (m->result != MCU_RESULT_OK) {
        exit_LIB(m);
        state.SkipWithError("cannot open the link");
        return;
    }
    m->stMode = ST_MODE_AP;
    pushCommandToPool(m, IDX_TEMPERATURE, 0x00, 0x02, 0x0C);
    pushCommandToPool(m, IDX_SET_IGNITION, 0x00, 0x03, 0x0A);
    BYTE data[16] = {1, 0xF1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    BYTE out[RESPONSE_BUFFER_SIZE];
    int outLen = 0;
    std::vector<double> us;
    us.reserve(1 << 16);
    int failures = 0;
    for (auto _ : state) {
        auto t0 = std::chrono::steady_clock::now();
        int r = sendCMD(m, index, data, dataLen, out, &outLen);
        auto t1 = std::chrono::steady_clock::now();
        // A wrong answer (say, one left over from an earlier request) counts as a failure.
        if (r != MCU_RESULT_OK || outLen != 1 || out[0] != expect) ++failures;
        us.push_back(std::chrono::duration<double, std::micro>(t1 - t0).count());
    }
    exit_LIB(m);
    if (!us.empty()) {
        std::nth_element(us.begin(), us.begin() + us.size() / 2, us.end());
        state.counters["median_us"] = us[us.size() / 2];
        std::nth_element(us.begin(), us.begin() + us.size() * 99 / 100, us.end());
        state.counters["p99_us"] = us[us.size() * 99 / 100];
    }
    state.counters["failures"] = failures;
}

void BM_RoundTripGet(benchmark::State& state) {
    roundTrip(state, IDX_TEMPERATURE, 0, 40);
}
void BM_RoundTripSet16(benchmark::State& state) {
    roundTrip(state, IDX_SET_IGNITION, 16, 1);
}

BENCHMARK(BM_RoundTripGet)->UseRealTime()->MinTime(1.0);
BENCHMARK(BM_RoundTripSet16)->UseRealTime()->MinTime(1.0);

}  // namespace

BENCHMARK_MAIN();
