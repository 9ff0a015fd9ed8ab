// UART port layer: opens, locks, configures and closes a serial device; raw send and
// receive helpers.
#include "UART_LIB.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

namespace {

std::atomic<FILE*> messageStream{stdout};

constexpr int kMaxPorts = 16;
constexpr int kReceiveSize = 255;

// What the layer remembers of an open port: the settings found on it before it was
// configured (restored on close), the settings in force and whether it is locked.
// Links may be open on several ports at once, so this is kept per descriptor.
struct PortState {
    int fd = -1;
    int locked = 0;
    UART_TYPE type = RS232;
    struct termios saved = {};
    struct termios current = {};
};

std::mutex g_portMutex;
PortState g_ports[kMaxPorts];
std::unique_ptr<char[]> g_lastReceive;  // the buffer last returned by UART_Receive

PortState* findPort(int fd) {
    for (auto& p : g_ports)
        if (p.fd == fd) return &p;
    return nullptr;
}

struct BaudRow {
    int baud;
    speed_t code;
};
constexpr BaudRow kBaudTable[] = {
    {110, B110},       {300, B300},       {600, B600},         {1200, B1200},   {2400, B2400},
    {4800, B4800},     {9600, B9600},     {19200, B19200},     {38400, B38400}, {57600, B57600},
    {230400, B230400}, {460800, B460800}, {1000000, B1000000},
};

}  // namespace

speed_t getBaudRate(int baudrate) {
    syslog(LOG_DEBUG, "----------------SET UART BAUDRATE %d----------------", baudrate);
    for (const auto& row : kBaudTable)
        if (row.baud == baudrate) return row.code;
    return B115200;  // 115200 itself and every unsupported rate
}

namespace {

struct termios makeTIO(int baudrate, UART_MODE mode) {
    struct termios t;
    memset(&t, 0, sizeof t);
    t.c_cflag = getBaudRate(baudrate) | 0x8B0;  // CS8 | CREAD | CLOCAL
    t.c_iflag = IGNPAR;
    t.c_lflag |= 0xFFFFFFE4;
    t.c_oflag |= 0xFFFFFFFE;
    t.c_cc[VMIN] = mode == BLKING ? 1 : 0;
    t.c_cc[VTIME] = 0;
    return t;
}

}  // namespace

int initTIO(int baudrate, UART_MODE mode) {
    // Only builds the record: UART_Open applies it to the port it opens.
    (void)makeTIO(baudrate, mode);
    return 0;
}

struct termios UART_LinkSettings(int baudrate) {
    struct termios t;
    memset(&t, 0, sizeof t);
    t.c_cflag = static_cast<tcflag_t>(baudrate) | 0x8B0;
    t.c_iflag = IGNPAR;
    t.c_lflag = 0xFFFFFFE4;
    t.c_oflag = 0xFFFFFFFE;
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 1;
    return t;
}

int UART_Open(const char* path, int baudrate, UART_MODE mode, UART_TYPE type,
              struct termios* newtio, UART_TYPE_CALLBACK callback) {
    syslog(LOG_INFO, "----------------UART Open----------------");
    syslog(LOG_INFO, "Device : %s, Baudrate : %d", path, baudrate);
    syslog(LOG_INFO, "***** UART Open End *****");
    if (callback) callback(type);

    int flags = O_RDWR | O_NOCTTY | O_CLOEXEC | (mode == NONBLKING ? O_NONBLOCK : 0);
    int fd = open(path, flags);
    if (fd < 0) {
        int err = errno;  // the caller reports why
        syslog(LOG_ERR, "Opening device %s failed", path);
        errno = err;
        return fd;
    }
    // Waits while another process holds the device.
    int rc;
    do {
        rc = flock(fd, LOCK_EX);
    } while (rc != 0 && errno == EINTR);
    int locked = rc == 0;
    if (!locked) syslog(LOG_ERR, "Locking device %s failed", path);
    FILE* out = messageStream.load();
    fprintf(out, locked ? "Locking device %s successfully" : "Locking device %s failed", path);
    fflush(out);

    struct termios saved;
    memset(&saved, 0, sizeof saved);
    if (tcgetattr(fd, &saved) != 0) syslog(LOG_ERR, "Reading the settings of %s failed", path);
    struct termios settings;
    if (newtio) {
        settings = *newtio;
        settings.c_cflag |= getBaudRate(baudrate);
    } else {
        settings = makeTIO(baudrate, mode);
    }
    if (tcflush(fd, TCIFLUSH) != 0) syslog(LOG_ERR, "Flushing %s failed", path);
    if (tcsetattr(fd, TCSANOW, &settings) != 0) syslog(LOG_ERR, "Configuring %s failed", path);

    std::lock_guard<std::mutex> g(g_portMutex);
    PortState* p = findPort(fd);
    if (!p) p = findPort(-1);
    if (p) *p = PortState{fd, locked, type, saved, settings};
    return fd;
}

int UART_Close(int fd) {
    syslog(LOG_INFO, "----------------UART Close----------------");
    if (fd > 0) {
        std::lock_guard<std::mutex> g(g_portMutex);
        PortState* p = findPort(fd);
        if (p && tcsetattr(fd, TCSANOW, &p->saved) != 0)
            syslog(LOG_ERR, "Restoring the device settings failed");
        // Unlock before closing: once closed, the number may already belong to another
        // thread's descriptor.
        if (p && p->locked) {
            if (flock(fd, LOCK_UN) == 0)
                p->locked = 0;
            else
                syslog(LOG_ERR, "UnLocking device failed");
        }
        if (close(fd) != 0) {
            syslog(LOG_ERR, "Closing the specified device failed");
            return -1;
        }
        if (p) *p = PortState{};
        g_lastReceive.reset();
    }
    return 0;
}

int UART_Send(int fd, char* data, int hex) {
    if (fd <= 0 || !data) return -1;
    ssize_t want, written;
    if (hex) {
        unsigned char bytes[255];
        size_t n = 0;
        char* save = nullptr;
        std::unique_ptr<char, decltype(&free)> copy(strdup(data), &free);
        if (!copy) return -1;
        for (char* tok = strtok_r(copy.get(), " ", &save); tok && n < sizeof bytes;
             tok = strtok_r(nullptr, " ", &save))
            bytes[n++] = static_cast<unsigned char>(strtol(tok, nullptr, 16));
        want = static_cast<ssize_t>(n);
        written = write(fd, bytes, n);
    } else {
        want = static_cast<ssize_t>(strlen(data));
        written = write(fd, data, want);
    }
    if (written != want) {
        syslog(LOG_ERR, "Writing data to the specified device failed");
        return -1;
    }
    return 0;
}

char* UART_Receive(int fd) {
    if (fd < 1) {
        syslog(LOG_ERR, "Reading data to the specified device failed, no descriptor");
        return nullptr;
    }
    // One byte more than a read can fill, so the text is always terminated.
    std::unique_ptr<char[]> buf(new char[kReceiveSize + 1]());
    ssize_t n = read(fd, buf.get(), kReceiveSize);
    if (n < 0) {
        syslog(LOG_ERR, "Reading data to the specified device failed");
        return nullptr;
    }
    if (!IsUTF8(buf.get(), static_cast<size_t>(n))) return nullptr;
    std::lock_guard<std::mutex> g(g_portMutex);
    g_lastReceive = std::move(buf);
    return g_lastReceive.get();
}

int IsUTF8(const char* str, size_t len) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(str);
    size_t i = 0;
    while (i < len) {
        unsigned char c = s[i];
        size_t follow;
        if (c < 0x80)
            follow = 0;
        else if (c >= 0xC0 && c <= 0xDF)
            follow = 1;
        else if (c >= 0xE0 && c <= 0xEF)
            follow = 2;
        else
            return 0;  // a stray continuation byte, or a lead of four bytes or more
        ++i;
        // A sequence cut off by the end of the buffer counts as valid.
        for (size_t k = 0; k < follow && i < len; ++k, ++i)
            if ((s[i] & 0xC0) != 0x80) return 0;
    }
    return 1;
}

long long getCurrentMiliSecs() {
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    return static_cast<long long>(tv.tv_sec) * 1000 + tv.tv_usec / 1000;
}

void UART_SetMessageStream(FILE* stream) {
    messageStream = stream != nullptr ? stream : stdout;
}
