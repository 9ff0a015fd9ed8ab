// UART port layer: opens, locks, configures and closes a serial device; raw send and
// receive helpers.
#include "UART_LIB.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>

namespace {

std::atomic<FILE*> messageStream{stdout};
std::atomic<const char*> programName{"brdctl"};

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

// One stderr line for a port that refused a settings step; errno holds the reason.
void reportPortFailure(const char* path, const char* what) {
    int err = errno;
    syslog(LOG_ERR, "%s: %s: %s", path, what, strerror(err));
    fprintf(stderr, "%s: %s: %s: %s\n", programName.load(), path, what, strerror(err));
}

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

// The flags of the link's record. The local and output modes are ORed with the
// complement of the wanted mask rather than ANDed: the resulting values are the ones the
// controllers have always been driven with, so they are kept on purpose.
constexpr tcflag_t kLinkControl = CS8 | CREAD | CLOCAL;
constexpr tcflag_t kLinkLocal = ~static_cast<tcflag_t>(ISIG | ICANON | ECHO | ECHOE);
constexpr tcflag_t kLinkOutput = ~static_cast<tcflag_t>(OPOST);
static_assert(kLinkControl == 0x8B0, "the link's control flags");
static_assert(kLinkLocal == 0xFFFFFFE4, "the link's local flags");
static_assert(kLinkOutput == 0xFFFFFFFE, "the link's output flags");
// Where the input-speed field (CIBAUD) starts in c_cflag: the kernel's IBSHIFT.
constexpr int kInputSpeedShift = 16;
static_assert((static_cast<tcflag_t>(CBAUD) << kInputSpeedShift) == CIBAUD, "input-speed field");

struct termios makeTIO(int baudrate, UART_MODE mode) {
    struct termios t;
    memset(&t, 0, sizeof t);
    t.c_cflag = getBaudRate(baudrate) | kLinkControl;
    t.c_iflag = IGNPAR;
    t.c_lflag |= kLinkLocal;
    t.c_oflag |= kLinkOutput;
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
    // The numeric rate itself is ORed in, as the controllers' record has always had it;
    // UART_PortSettings corrects it at every rate but 115200.
    t.c_cflag = static_cast<tcflag_t>(baudrate) | kLinkControl;
    t.c_iflag = IGNPAR;
    t.c_lflag = kLinkLocal;
    t.c_oflag = kLinkOutput;
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 1;
    return t;
}

struct termios UART_PortSettings(const struct termios* newtio, int baudrate, UART_MODE mode) {
    if (!newtio) return makeTIO(baudrate, mode);
    struct termios t = *newtio;
    speed_t code = getBaudRate(baudrate);
    t.c_cflag |= code;
    // At 115200 the record stays as it always was: its stray bits fall in the input-speed
    // field, which the serial drivers ignore in favour of the output speed.
    if (baudrate == 115200) return t;
    // At any other rate the numeric rate ORed in above sets parity, stop-bit or speed
    // bits: make it 8N1 at the configured rate, both directions.
    t.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CSTOPB | CBAUD | CIBAUD);
    t.c_cflag |= CS8 | code | (static_cast<tcflag_t>(code) << kInputSpeedShift);
#ifdef _HAVE_STRUCT_TERMIOS_C_ISPEED
    t.c_ispeed = code;
    t.c_ospeed = code;
#endif
    return t;
}

namespace {

// Why the last UART_Open on this thread failed, for the caller's message.
thread_local char t_openFailure[128];

int refuseOpen(const char* path, int fd, int err, const char* why) {
    if (fd >= 0) close(fd);
    snprintf(t_openFailure, sizeof t_openFailure, "%s", why ? why : strerror(err));
    syslog(LOG_ERR, "Opening device %s failed: %s", path, t_openFailure);
    errno = err;
    return -1;
}

// BRDCTL_LOCK_TIMEOUT: seconds to wait for a port another process holds (default 10).
double lockTimeoutSeconds() {
    const char* text = getenv("BRDCTL_LOCK_TIMEOUT");
    if (!text || !*text) return 10.0;
    char* end = nullptr;
    double v = strtod(text, &end);
    return *end == '\0' && v >= 0 && v <= 86400 ? v : 10.0;
}

// Takes the exclusive lock without blocking forever: when another process holds it, says
// so once on stderr and tries again until the deadline. 1 locked, 0 the lock cannot be
// had for another reason (the port is used unlocked), -1 still held at the deadline.
int lockPort(int fd, const char* path) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point deadline;
    bool waiting = false;
    while (true) {
        if (flock(fd, LOCK_EX | LOCK_NB) == 0) return 1;
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return 0;
        if (!waiting) {
            double seconds = lockTimeoutSeconds();
            deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(seconds));
            fprintf(stderr, "%s: %s is in use by another process; waiting up to %g s\n",
                    programName.load(), path, seconds);
            fflush(stderr);
            waiting = true;
        }
        if (Clock::now() >= deadline) return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

// What SIGTERM and SIGHUP restore: the settings found on each open port. Written before
// the descriptor is published, read by the signal handler without a lock.
struct SignalRestore {
    std::atomic<int> fd{-1};
    struct termios saved = {};
};
SignalRestore g_restore[kMaxPorts];
static_assert(std::atomic<int>::is_always_lock_free, "read in a signal handler");

void publishRestore(int fd, const struct termios& saved) {
    for (auto& r : g_restore) {
        if (r.fd.load() != -1) continue;
        r.saved = saved;
        r.fd.store(fd, std::memory_order_release);
        return;
    }
}

void withdrawRestore(int fd) {
    for (auto& r : g_restore)
        if (r.fd.load() == fd) r.fd.store(-1);
}

// Async-signal-safe: tcsetattr and raise only. The handler was installed with
// SA_RESETHAND, so the re-raised signal ends the process with the usual status.
void restoreAndEnd(int sig) {
    int saved = errno;
    for (auto& r : g_restore) {
        int fd = r.fd.load(std::memory_order_acquire);
        if (fd >= 0) (void)tcsetattr(fd, TCSANOW, &r.saved);
    }
    errno = saved;
    raise(sig);
}

}  // namespace

const char* UART_OpenFailure() {
    return t_openFailure;
}

void UART_RestoreOnTermination() {
    for (int sig : {SIGTERM, SIGHUP}) {
        struct sigaction old = {};
        if (sigaction(sig, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;  // nohup
        struct sigaction sa = {};
        sa.sa_handler = restoreAndEnd;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = SA_RESETHAND;
        sigaction(sig, &sa, nullptr);
    }
}

int UART_Open(const char* path, int baudrate, UART_MODE mode, UART_TYPE type,
              struct termios* newtio, UART_TYPE_CALLBACK callback) {
    syslog(LOG_INFO, "----------------UART Open----------------");
    syslog(LOG_INFO, "Device : %s, Baudrate : %d", path, baudrate);
    syslog(LOG_INFO, "***** UART Open End *****");
    if (callback) callback(type);
    t_openFailure[0] = '\0';

    // Only a terminal is a link: a regular file named by mistake would be written into,
    // a FIFO would echo the request back as its answer.
    struct stat st;
    if (stat(path, &st) != 0) return refuseOpen(path, -1, errno, nullptr);
    if (!S_ISCHR(st.st_mode)) return refuseOpen(path, -1, ENOTTY, "not a character device");
    // Non-blocking so that a modem line without carrier cannot hold the open.
    int fd = open(path, O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return refuseOpen(path, -1, errno, nullptr);
    if (!isatty(fd)) return refuseOpen(path, fd, ENOTTY, "not a terminal");
    if (mode == BLKING) {
        int fl = fcntl(fd, F_GETFL);
        if (fl < 0 || fcntl(fd, F_SETFL, fl & ~O_NONBLOCK) != 0)
            return refuseOpen(path, fd, errno, nullptr);
    }

    int lockResult = lockPort(fd, path);
    if (lockResult < 0) {
        syslog(LOG_ERR, "Locking device %s failed", path);
        return refuseOpen(path, fd, EBUSY, "still in use by another process");
    }
    int locked = lockResult == 1;
    if (!locked) syslog(LOG_ERR, "Locking device %s failed", path);
    FILE* out = messageStream.load();
    fprintf(out, locked ? "Locking device %s successfully" : "Locking device %s failed", path);
    fflush(out);

    // A port that refuses a step is still used as it is; the user learns why.
    struct termios saved;
    memset(&saved, 0, sizeof saved);
    bool haveSaved = tcgetattr(fd, &saved) == 0;
    if (!haveSaved) reportPortFailure(path, "cannot read its settings");
    struct termios settings = UART_PortSettings(newtio, baudrate, mode);
    if (tcflush(fd, TCIFLUSH) != 0) reportPortFailure(path, "cannot discard pending input");
    if (tcsetattr(fd, TCSANOW, &settings) != 0) reportPortFailure(path, "cannot apply settings");

    std::lock_guard<std::mutex> g(g_portMutex);
    if (haveSaved) publishRestore(fd, saved);
    PortState* p = findPort(fd);
    if (!p) p = findPort(-1);
    if (p) *p = PortState{fd, locked, type, saved, settings};
    return fd;
}

int UART_Close(int fd) {
    syslog(LOG_INFO, "----------------UART Close----------------");
    if (fd > 0) {
        std::lock_guard<std::mutex> g(g_portMutex);
        withdrawRestore(fd);
        PortState* p = findPort(fd);
        if (p && tcsetattr(fd, TCSANOW, &p->saved) != 0)
            syslog(LOG_ERR, "Restoring the settings of the device failed");
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

void UART_SetProgramName(const char* name) {
    if (name) programName = name;
}

void UART_SetMessageStream(FILE* stream) {
    messageStream = stream != nullptr ? stream : stdout;
}
