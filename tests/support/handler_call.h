// Runs one table row's handler against the simulated board and keeps what came of it:
// the result, stdout, stderr, the requests and raw bytes the board received, the time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "board_fixture.h"

struct HandlerCall {
    int result = 0;
    std::string out, err;
    std::vector<brdsim::Request> sent;  // every request the board decoded
    std::vector<uint8_t> line;          // every byte the board received
    double ms = 0;
};

inline HandlerCall callHandler(BoardFixture& board, const std::string& name,
                               const std::string& input) {
    board.sim.clearRequests();
    HandlerCall r;
    testing::internal::CaptureStderr();
    auto t0 = std::chrono::steady_clock::now();
    r.result = board.run(name, input, &r.out);
    r.ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
    r.err = testing::internal::GetCapturedStderr();
    r.sent = board.sim.requests();
    r.line = board.sim.lineBytes();
    return r;
}
