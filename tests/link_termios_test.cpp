// The termios record the port layer hands to tcsetattr at each configurable rate: 8N1 at
// the rate in both directions, except at 115200 where the record stays exactly as built.
// (A pseudo-terminal clears parity by itself, so the record is checked, not the port.)
#include <gtest/gtest.h>
#include <termios.h>

#include <cstring>

#include "UART_LIB.h"

namespace {

struct Rate {
    int baud;
    speed_t code;
};
// Every rate a configuration file may name.
constexpr Rate kRates[] = {
    {110, B110},       {300, B300},       {600, B600},       {1200, B1200},       {2400, B2400},
    {4800, B4800},     {9600, B9600},     {19200, B19200},   {38400, B38400},     {57600, B57600},
    {115200, B115200}, {230400, B230400}, {460800, B460800}, {1000000, B1000000},
};

constexpr tcflag_t kCorrected = CSIZE | PARENB | PARODD | CSTOPB | CBAUD | CIBAUD;

}  // namespace

TEST(LinkTermios, RecordHandedToThePortAtEveryRate) {
    for (const Rate& r : kRates) {
        SCOPED_TRACE(r.baud);
        struct termios built = UART_LinkSettings(r.baud);
        struct termios t = UART_PortSettings(&built, r.baud, BLKING);
        // Only the control flags may change; everything else is the built record.
        EXPECT_EQ(t.c_iflag, tcflag_t(IGNPAR));
        EXPECT_EQ(t.c_lflag, tcflag_t(0xFFFFFFE4));
        EXPECT_EQ(t.c_oflag, tcflag_t(0xFFFFFFFE));
        EXPECT_EQ(t.c_cc[VMIN], 1);
        EXPECT_EQ(t.c_cc[VTIME], 1);
        tcflag_t asBuilt = tcflag_t(r.baud) | 0x8B0 | r.code;
        if (r.baud == 115200) {
            EXPECT_EQ(t.c_cflag, asBuilt);
            EXPECT_EQ(memcmp(t.c_cc, built.c_cc, sizeof t.c_cc), 0);
            continue;
        }
        EXPECT_EQ(t.c_cflag & CSIZE, tcflag_t(CS8));
        EXPECT_EQ(t.c_cflag & (PARENB | PARODD | CSTOPB), 0u);
        EXPECT_EQ(t.c_cflag & (CREAD | CLOCAL), tcflag_t(CREAD | CLOCAL));
        EXPECT_EQ(t.c_cflag & CBAUD, r.code);
        EXPECT_EQ((t.c_cflag & CIBAUD) >> 16, r.code);
        EXPECT_EQ(cfgetospeed(&t), r.code);
        EXPECT_EQ(cfgetispeed(&t), r.code);
        // Bits outside the corrected fields are left as built.
        EXPECT_EQ(t.c_cflag & ~kCorrected, asBuilt & ~kCorrected);
    }
}
