// Throughput of the link library's hot paths: CRC-8 and the ST receive decoder.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <random>
#include <vector>

#include "mcu_base.h"

namespace {

std::vector<BYTE> randomBytes(size_t n) {
    std::mt19937 rng(42);
    std::vector<BYTE> v(n);
    for (auto& b : v) b = static_cast<BYTE>(rng());
    return v;
}

void BM_Get_CRC8(benchmark::State& state) {
    auto data = randomBytes(static_cast<size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Get_CRC8(data.data(), static_cast<unsigned>(data.size())));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Get_CRC8)->Arg(16)->Arg(1024)->Arg(65536);

void BM_Get_CRC8_Nibble(benchmark::State& state) {
    auto data = randomBytes(static_cast<size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Get_CRC8_Nibble(data.data(), static_cast<unsigned>(data.size())));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Get_CRC8_Nibble)->Arg(1024)->Arg(65536);

// A recorded line: three CAN frames (8 data bytes) for each command answer, as a
// busy bus with an occasional request produces.
std::vector<BYTE> recordedStream(size_t frames) {
    std::vector<BYTE> line;
    std::mt19937 rng(1);
    BYTE out[128];
    for (size_t f = 0; f < frames; ++f) {
        std::vector<BYTE> inner;
        if (f % 4 == 3) {
            inner = {0x00, 0x02, 0x01, static_cast<BYTE>(rng()), static_cast<BYTE>(rng())};
        } else {
            uint32_t id = rng() & 0x1FFFFFFF;
            inner = {0x06,           0x04,           0x00, BYTE(id), BYTE(id >> 8),
                     BYTE(id >> 16), BYTE(id >> 24), 0x04, 0x00,     0x08};
            for (int k = 0; k < 8; ++k) inner.push_back(static_cast<BYTE>(rng()));
        }
        inner.push_back(Get_CRC8(inner.data(), static_cast<unsigned>(inner.size())));
        unsigned n = stuffFrame(0xF1, 0xF2, 0xF0, inner.data(), static_cast<unsigned>(inner.size()),
                                out, sizeof out);
        line.insert(line.end(), out, out + n);
    }
    return line;
}

std::atomic<unsigned long> g_canSeen{0};
void countCan(CALLBACK_DATA d) {
    if (d.type == CALLBACK_TYPE_CAN) g_canSeen.fetch_add(1, std::memory_order_relaxed);
}

// The stream is cut into reads of state.range(0) bytes, as the port would deliver it.
void BM_ST_DecodeBytes(benchmark::State& state) {
    const auto line = recordedStream(4000);
    const size_t chunk = static_cast<size_t>(state.range(0));
    std::unique_ptr<MCU_CONTENT> m(new MCU_CONTENT{});
    m->fd = 3;
    m->mcuType = MCU_TYPE_ST;
    m->stMode = ST_MODE_AP;
    Register_MCU_EventCallBack(0, 0, countCan);
    g_canSeen = 0;
    for (auto _ : state) {
        for (size_t i = 0; i < line.size(); i += chunk) {
            size_t n = std::min(chunk, line.size() - i);
            benchmark::DoNotOptimize(
                ST_DecodeBytes(m.get(), line.data() + i, static_cast<unsigned>(n)));
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(line.size()));
    state.counters["frames/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * 4000,
                                                    benchmark::Counter::kIsRate);
    if (m->receiveErrorCount != 0 || g_canSeen == 0) state.SkipWithError("stream not decoded");
    Register_MCU_EventCallBack(0, 0, nullptr);
}
BENCHMARK(BM_ST_DecodeBytes)->Arg(64)->Arg(512)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
