// Decode-and-format throughput of brdcan dump: the receive decoder takes the line's
// bytes in reads as the port delivers them, the callback turns each CAN frame into a
// candump line (or log line) in the dump's buffer, written out to /dev/null.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <vector>

#include "can/can_dump.h"
#include "mcu_base.h"
#include "nxp_controller.h"

namespace {

std::atomic<can::Dump*> g_dump{nullptr};
MCU_CONTENT* g_link = nullptr;

void onCallback(CALLBACK_DATA d) {
    if (d.type == CALLBACK_TYPE_CAN)
        g_dump.load()->onFrame(g_link, g_link->Device, d.canData, 1700000000000000);
}

// `frames` 8-byte frames with a running counter, as the line carries them.
std::vector<BYTE> line(bool nxp, size_t frames) {
    std::vector<BYTE> out;
    for (size_t i = 0; i < frames; ++i) {
        brdsim::CanMessage m;
        m.id = 0x123;
        m.dlc = 8;
        for (int k = 0; k < 4; ++k) m.data[k] = static_cast<uint8_t>(i >> (8 * k));
        m.data[4] = 0xCA;
        m.data[5] = 0xFE;
        m.data[7] = 1;
        brdsim::Bytes b =
            nxp ? brdsim::encodeNxpCanFrame(m)
                : brdsim::encodeStCanFrame(6, m.id, 0, 0, brdsim::Bytes(m.data, m.data + 8));
        out.insert(out.end(), b.begin(), b.end());
    }
    return out;
}

void BM_DecodeAndFormat(benchmark::State& state) {
    bool nxp = state.range(0) != 0;
    bool log = state.range(1) != 0;
    constexpr size_t FRAMES = 4096;
    std::vector<BYTE> bytes = line(nxp, FRAMES);
    std::unique_ptr<MCU_CONTENT> link(new MCU_CONTENT{});
    link->mcuType = nxp ? MCU_TYPE_NXP : MCU_TYPE_ST;
    link->stMode = ST_MODE_AP;
    link->nxpMode = NXP_MODE_AP;
    g_link = link.get();
    can::Channel c;
    c.name = nxp ? "nxp0" : "st1";
    c.controller = nxp ? can::Controller::Nxp : can::Controller::St;
    c.stChannel = 1;
    c.link = link.get();
    can::ChannelSpec spec;
    spec.name = c.name;
    can::DumpOptions o;
    o.logFormat = log;
    o.outFd = open("/dev/null", O_WRONLY | O_CLOEXEC);
    can::Dump dump(o, {spec}, {c});
    g_dump = &dump;
    Register_MCU_EventCallBack(0, 0, onCallback);
    // Reads of 252 bytes: whole frames most of the time, split frames now and then.
    constexpr size_t READ = 252;
    for (auto _ : state) {
        for (size_t at = 0; at < bytes.size(); at += READ) {
            unsigned n = static_cast<unsigned>(std::min(READ, bytes.size() - at));
            if (nxp)
                NXP_DecodeBytes(link.get(), bytes.data() + at, n);
            else
                ST_DecodeBytes(link.get(), bytes.data() + at, n);
        }
    }
    dump.flush();
    Register_MCU_EventCallBack(0, 0, nullptr);
    close(o.outFd);
    state.counters["frames/s"] = benchmark::Counter(
        static_cast<double>(state.iterations() * FRAMES), benchmark::Counter::kIsRate);
    state.counters["written"] = static_cast<double>(dump.written());
}
BENCHMARK(BM_DecodeAndFormat)
    ->ArgNames({"nxp", "log"})
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({0, 1})
    ->Args({1, 1})
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
