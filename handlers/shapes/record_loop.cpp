// The record run: one exchange per index, reported, with its pause.
#include "record_loop.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace shapes {

int runRecords(
    const RecordRun& run,
    const std::function<void(int index, std::span<const BYTE> answer, int verdict)>& each) {
    int verdict = 0;
    for (int i = run.first; i < run.first + run.count; ++i) {
        const BYTE request[] = {static_cast<BYTE>(i)};
        const core::Answer answer =
            core::exchange(run.link, MCU_TYPE_ST, ST_MODE_AP, run.cmdIndex, request);
        verdict = core::report(run.link, run.mode, answer, run.funName);
        each(i, answer.ok() ? answer.view() : std::span<const BYTE>(), verdict);
        fflush(stdout);
        std::this_thread::sleep_for(std::chrono::milliseconds(run.pauseMs));
    }
    return verdict;
}

}  // namespace shapes
