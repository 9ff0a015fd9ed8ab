// The UART port layer: baud-rate codes, UTF-8 test, raw send and receive, and opening,
// locking, configuring and closing a pseudo-terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "UART_LIB.h"
#include "pty_pair.h"

namespace {

// Waits (bounded) until `n` bytes written on the master side can be read from `fd`.
void waitPending(int fd, int n) {
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    int pending = 0;
    while (ioctl(fd, FIONREAD, &pending) == 0 && pending < n &&
           std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace

TEST(Uart, BaudRateCodes) {
    struct Row {
        int baud;
        speed_t code;
    } rows[] = {
        {110, B110},         {300, B300},       {600, B600},       {1200, B1200},
        {2400, B2400},       {4800, B4800},     {9600, B9600},     {19200, B19200},
        {38400, B38400},     {57600, B57600},   {230400, B230400}, {460800, B460800},
        {1000000, B1000000}, {115200, B115200}, {0, B115200},      {250000, B115200},
        {-1, B115200},
    };
    for (const auto& r : rows) EXPECT_EQ(getBaudRate(r.baud), r.code) << r.baud;
}

TEST(Uart, Utf8) {
    struct Row {
        std::vector<uint8_t> bytes;
        int valid;
    } rows[] = {
        {{'a', 'b', 'c'}, 1},
        {{0xC3, 0xA9}, 1},
        {{0xA9}, 0},
        {{0xF0, 0x9F, 0x98, 0x80}, 0},
        {{'x', 0xC3}, 1},         // cut off by the end of the buffer
        {{0xE2, 0x82, 0xAC}, 1},  // three bytes
        {{0xE2, 0x41, 0xAC}, 0},  // lead without its continuation
        {{0xC3, 0xA9, 0x80}, 0},  // stray continuation
        {{}, 1},
    };
    for (const auto& r : rows)
        EXPECT_EQ(IsUTF8(reinterpret_cast<const char*>(r.bytes.data()), r.bytes.size()), r.valid);
}

TEST(Uart, SendHexAndText) {
    int p[2];
    ASSERT_EQ(pipe(p), 0);
    char hex[] = "F1 00 02 01 AC F2", text[] = "F1 00 02 01 AC F2";
    EXPECT_EQ(UART_Send(p[1], hex, 1), 0);
    EXPECT_EQ(UART_Send(p[1], text, 0), 0);
    close(p[1]);
    std::vector<uint8_t> expect = {0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}, got;
    expect.insert(expect.end(), text, text + 17);
    uint8_t buf[512];
    for (ssize_t n; (n = read(p[0], buf, sizeof buf)) > 0;) got.insert(got.end(), buf, buf + n);
    EXPECT_EQ(got, expect);
    close(p[0]);
    EXPECT_EQ(UART_Send(0, text, 0), -1);
    // A write that fails is reported.
    ASSERT_EQ(pipe(p), 0);
    close(p[0]);
    signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(UART_Send(p[1], text, 0), -1);
    close(p[1]);
}

TEST(Uart, LinkSettingsAreTheExactValues) {
    struct termios t = UART_LinkSettings(115200);
    EXPECT_EQ(t.c_cflag, tcflag_t(115200 | 0x8B0));
    EXPECT_EQ(t.c_iflag, tcflag_t(IGNPAR));
    EXPECT_EQ(t.c_lflag, tcflag_t(0xFFFFFFE4));
    EXPECT_EQ(t.c_oflag, tcflag_t(0xFFFFFFFE));
    EXPECT_EQ(t.c_cc[VMIN], 1);
    EXPECT_EQ(t.c_cc[VTIME], 1);
}

TEST(Uart, OpenConfiguresAndCloseRestores) {
    PtyPair pty;
    int watcher = open(pty.slavePath.c_str(), O_RDWR | O_NOCTTY);
    ASSERT_GE(watcher, 0);
    struct termios before;
    tcgetattr(watcher, &before);

    struct termios settings = UART_LinkSettings(115200);
    testing::internal::CaptureStdout();
    int fd = UART_Open(pty.slavePath.c_str(), 115200, BLKING, RS232, &settings, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Locking device " + pty.slavePath + " successfully");
    ASSERT_GT(fd, 0);
    struct termios now;
    tcgetattr(fd, &now);
    EXPECT_EQ(now.c_lflag & (ICANON | ECHO | ISIG), 0u);
    EXPECT_EQ(now.c_oflag & OPOST, 0u);
    EXPECT_EQ(now.c_cc[VMIN], 1);
    EXPECT_EQ(now.c_cc[VTIME], 1);

    // Receiving hands out UTF-8 text only.
    pty.write({'h', 0xC3, 0xA9, 'l', 'l', 'o'});
    waitPending(fd, 6);
    const char* text = UART_Receive(fd);
    EXPECT_STREQ(text ? text : "(null)", "h\xC3\xA9llo");
    pty.write({0xA9, 'x'});
    waitPending(fd, 2);
    EXPECT_EQ(UART_Receive(fd), nullptr);
    EXPECT_EQ(UART_Receive(0), nullptr);

    EXPECT_EQ(UART_Close(fd), 0);
    struct termios after;
    tcgetattr(watcher, &after);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_EQ(after.c_oflag, before.c_oflag);
    close(watcher);

    testing::internal::CaptureStdout();
    EXPECT_LT(UART_Open("/nonexistent/tty", 9600, BLKING, RS232, nullptr, nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(Uart, OpenWaitsForTheLockHolder) {
    PtyPair pty;
    int holder = open(pty.slavePath.c_str(), O_RDWR | O_NOCTTY);
    ASSERT_GE(holder, 0);
    ASSERT_EQ(flock(holder, LOCK_EX), 0);
    std::atomic<int> opened{-2};
    testing::internal::CaptureStdout();
    std::thread t([&] {
        opened = UART_Open(pty.slavePath.c_str(), 115200, BLKING, RS232, nullptr, nullptr);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(opened, -2);  // still waiting
    flock(holder, LOCK_UN);
    t.join();
    testing::internal::GetCapturedStdout();
    EXPECT_GT(opened, 0);
    EXPECT_EQ(UART_Close(opened), 0);
    close(holder);
}
