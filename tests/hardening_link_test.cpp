// A link whose line hangs up: it is no longer polled, requests fail at their time-out,
// and the process stays idle.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "UART_LIB.h"
#include "mcu_base.h"
#include "pty_pair.h"

namespace {

long cpuMicros() {
    struct rusage u;
    getrusage(RUSAGE_SELF, &u);
    return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1000000L + u.ru_utime.tv_usec +
           u.ru_stime.tv_usec;
}

}  // namespace

TEST(HardeningLink, HungUpLineIsNotPolled) {
    PtyPair pty;
    UART_SetMessageStream(stderr);
    MCU_CONTENT* m = init_MCU(pty.slavePath.c_str(), MCU_TYPE_ST, 115200);
    ASSERT_EQ(m->result, 1);
    m->stMode = ST_MODE_AP;
    pushCommandToPool(m, 1, 0x00, 0x02, 0x01);
    close(pty.master);  // the other side goes away
    pty.master = -1;
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!m->lineHungUp && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(m->lineHungUp, 1);

    long before = cpuMicros();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(cpuMicros() - before, 50000);  // idle, not polling a dead line

    BYTE out[RESPONSE_BUFFER_SIZE];
    int outLen = 0;
    auto start = std::chrono::steady_clock::now();
    EXPECT_NE(sendCMD(m, 1, nullptr, 0, out, &outLen), MCU_RESULT_OK);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    exit_LIB(m);  // and it still closes promptly
}
