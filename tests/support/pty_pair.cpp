#include "pty_pair.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>

PtyPair::PtyPair() {
    master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
        ADD_FAILURE() << "cannot open a pseudo-terminal";
        return;
    }
    struct termios t;
    tcgetattr(master, &t);
    cfmakeraw(&t);
    tcsetattr(master, TCSANOW, &t);
    slavePath = ptsname(master);
}

PtyPair::~PtyPair() {
    if (master >= 0) close(master);
}

void PtyPair::write(const std::vector<uint8_t>& bytes) const {
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(master, bytes.data() + done, bytes.size() - done);
        if (n <= 0) {
            ADD_FAILURE() << "write to pty master failed";
            return;
        }
        done += n;
    }
}

std::vector<uint8_t> PtyPair::read(int timeoutMs, size_t want) const {
    std::vector<uint8_t> out;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (out.size() < want) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                        deadline - std::chrono::steady_clock::now())
                        .count();
        if (left <= 0) break;
        struct pollfd p = {master, POLLIN, 0};
        if (poll(&p, 1, static_cast<int>(left)) <= 0) break;
        uint8_t buf[4096];
        ssize_t n = ::read(master, buf, sizeof buf);
        if (n <= 0) break;
        out.insert(out.end(), buf, buf + n);
    }
    return out;
}
