// The UART port layer: opening, locking, configuring and closing a pseudo-terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "UART_LIB.h"
#include "pty_pair.h"

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
