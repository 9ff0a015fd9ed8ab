// The test-only time-out divisor (BRDCTL_TIMEOUT_SCALE): every controller type's and
// mode's wait is shortened by it, so the time-out paths run in a fraction of a second.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>

#include "UART_LIB.h"
#include "mcu_base.h"
#include "pty_pair.h"

namespace {

struct Case {
    const char* what;
    int type;
    int stMode, nxpMode;
    long nominalMs;
};

constexpr Case kCases[] = {
    {"ST update", MCU_TYPE_ST, ST_MODE_UPDATE, 0, 20000},
    {"NXP update", MCU_TYPE_NXP, 0, NXP_MODE_UPDATE, 20000},
    {"FM", MCU_TYPE_FM, 0, 0, 10000},
    {"customised", MCU_TYPE_CUSTOMISE, 0, 0, 20000},
};

constexpr long kScale = 50;

}  // namespace

TEST(HardeningTimeout, ScaleShortensEveryWait) {
    // Read once per process, at the first wait: set before any link is used.
    ASSERT_EQ(setenv("BRDCTL_TIMEOUT_SCALE", "50", 1), 0);
    EXPECT_EQ(MCU_ScaledTimeout(TIMEOUT_AP_MS), 1u);  // never below 1 ms
    EXPECT_EQ(MCU_ScaledTimeout(TIMEOUT_UPDATE_MS), 400u);

    PtyPair pty;  // nobody answers on the master side
    UART_SetMessageStream(stderr);
    MCU_CONTENT* m = init_MCU(pty.slavePath.c_str(), MCU_TYPE_ST, 115200);
    ASSERT_EQ(m->result, 1);
    BYTE fm[] = {0xAA, 0x88, 0x01};
    int index = 0;
    for (const Case& c : kCases) {
        ++index;
        SCOPED_TRACE(c.what);
        m->mcuType = c.type;
        m->stMode = c.stMode;
        m->nxpMode = c.nxpMode;
        if (c.type == MCU_TYPE_FM || c.type == MCU_TYPE_CUSTOMISE)
            pushCommandToPoolCustomise(m, index, fm, sizeof fm);
        else
            pushCommandToPool(m, index, 0x02, 0x0C, 0x01);
        BYTE out[RESPONSE_BUFFER_SIZE];
        int outLen = 0;
        auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(sendCMD(m, index, nullptr, 0, out, &outLen), MCU_RESULT_TIMEOUT);
        long ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                      std::chrono::steady_clock::now() - start)
                      .count();
        EXPECT_GE(ms, c.nominalMs / kScale - 5);
        EXPECT_LT(ms, c.nominalMs / 4);  // far from the unscaled wait
        pty.read(50);                    // the request, not needed
    }
    exit_LIB(m);
}
