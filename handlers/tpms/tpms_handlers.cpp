// The TPMS handlers: the sensor list as typed, the "ATB01" display-mode row sent as the
// customised device, and the real-time wait that shows each record as it arrives.
#include "tpms_handlers.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string>

#include "context.h"
#include "exchange.h"
#include "prompt.h"
#include "report.h"
#include "text.h"

tpms::SensorTable TPMS_Data{};
int nWheelNumber = 0;
std::atomic<int> stopTPMSReadFlag{0};

namespace {

// The write end of the pipe that wakes the real-time wait; -1 outside it.
std::atomic<int> g_wakeFd{-1};
static_assert(std::atomic<int>::is_always_lock_free, "read in a signal handler");

constexpr size_t MAX_TYPED_LINE = 4096;
const char* const INPUT_ERROR = "\nInput Error !!! Please input a number.\n";

// Asks with `prompt` until `parse` takes the line. False at end of input.
template <class T, class Parse>
bool ask(FILE* in, const std::string& prompt, Parse parse, T* value) {
    for (;;) {
        core::printText(prompt);
        std::string line;
        if (!core::readTextLine(in, &line, MAX_TYPED_LINE)) return false;
        if (auto v = parse(line)) {
            *value = *v;
            return true;
        }
        core::printText(INPUT_ERROR);
    }
}

// What the receive thread needs while records are shown.
struct Watch {
    std::mutex mu;
    bool active = false;
    int fd = -1;
    tpms::SensorTable sensors{};
    int count = 0;
};
Watch g_watch;

long millisOfDayNow() {
    struct timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    struct tm local;
    localtime_r(&ts.tv_sec, &local);
    return ((local.tm_hour * 60L + local.tm_min) * 60 + local.tm_sec) * 1000 + ts.tv_nsec / 1000000;
}

// Runs on the CAN link's receive thread: the customised decoder hands over each read.
void showRecord(CALLBACK_DATA record) {
    std::lock_guard<std::mutex> g(g_watch.mu);
    if (!g_watch.active || record.type != CALLBACK_TYPE_EVENT || record.fd != g_watch.fd) return;
    size_t n = std::min<size_t>(record.szDataLength, sizeof record.szData);
    std::string line =
        tpms::renderRecord(millisOfDayNow(), {record.szData, n}, g_watch.sensors, g_watch.count);
    core::printText(line);
}

struct Pipe {
    int fds[2] = {-1, -1};
    Pipe() {
        if (pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0) fds[0] = fds[1] = -1;
    }
    ~Pipe() {
        for (int fd : fds)
            if (fd >= 0) close(fd);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
};

// Sleeps until the interrupt sets the flag.
void waitForInterrupt(int wakeFd) {
    while (!stopTPMSReadFlag) {
        struct pollfd p = {wakeFd, POLLIN, 0};
        // The interrupt writes to the pipe after setting the flag. Without a pipe (out of
        // descriptors) or when poll fails, the flag is looked at every 10 ms.
        int woken = wakeFd >= 0 ? poll(&p, 1, 1000) : -1;
        if (woken < 0) usleep(10000);
    }
}

}  // namespace

void STOP_TPMS_READ(int signo) {
    stopTPMSReadFlag = 1;
    int fd = g_wakeFd.load();
    if (fd >= 0) {
        char c = 1;
        ssize_t ignored = write(fd, &c, 1);
        (void)ignored;
    }
}

int FUNC_TPMS_SET_SENSOR_ID(int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    for (auto& record : TPMS_Data) record.fill(0);
    nWheelNumber = 0;
    core::printText("========    Set Total Number of TPMS sensor     ========\n");
    int count = 0;
    if (!ask(ctx.input, "Total Number(1~24) : ", tpms::parseSensorCount, &count)) return 0;
    core::printText("========\t\tSet Sensor ID\t\t========\n");
    for (int n = 1; n <= count; ++n) {
        uint32_t id = 0;
        if (!ask(ctx.input, core::strprintf("Sensor ID %d : ", n), tpms::parseSensorId, &id))
            return 0;  // the IDs entered so far stay
        tpms::storeSensorId(TPMS_Data[n - 1], id);
        nWheelNumber = n;
    }
    core::printText(std::string(RULE56) + "\n");
    return 1;
}

int FUNC_TPMS_DISPLAY_MODE(int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    core::Answer answer = core::exchange(ctx.systemLink, MCU_TYPE_CUSTOMISE,
                                         core::apModeOf(MCU_TYPE_CUSTOMISE), cmdIndex);
    return core::report(ctx.systemLink, REPORT_ACK_FIRST, answer, funName);
}

int FUNC_TPMS_GET_REALTIME_CALLBACK_DATA_FROM_MCU(int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    MCU_CONTENT* link = ctx.canLink;
    if (link == nullptr) {
        fprintf(stderr,
                "%s: %s: no CAN device configured (no enabled CAN_DEVICE line under "
                "<CAN_INFO>)\n",
                ctx.progName, funName);
        return MCU_RESULT_OPEN_FAIL;
    }

    Pipe wake;
    stopTPMSReadFlag = 0;
    g_wakeFd = wake.fds[1];
    struct sigaction sa = {}, previous = {};
    sa.sa_handler = STOP_TPMS_READ;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, &previous);
    {
        std::lock_guard<std::mutex> g(g_watch.mu);
        g_watch.active = true;
        g_watch.fd = link->fd;
        g_watch.sensors = TPMS_Data;
        g_watch.count = nWheelNumber;
    }
    auto previousCallback = callback_EventToLibrary.exchange(showRecord);
    // The wait sends nothing, so it sets the type itself rather than through an exchange;
    // no request is outstanding on the CAN link while a handler runs.
    int previousType = link->mcuType.exchange(MCU_TYPE_CUSTOMISE);

    core::printText(core::strprintf("mcuType = %d\n", MCU_TYPE_CUSTOMISE));
    core::printText("Wait for getting CAN message ...\nPlease press CTRL+C to exit.\n");
    waitForInterrupt(wake.fds[0]);

    link->mcuType = previousType;
    callback_EventToLibrary = previousCallback;
    {
        // A record being shown finishes before "Exit."; none is shown after it.
        std::lock_guard<std::mutex> g(g_watch.mu);
        g_watch.active = false;
    }
    sigaction(SIGINT, &previous, nullptr);
    g_wakeFd = -1;

    link->receiveCANDataCount = 0;
    link->receiveErrorCount = 0;
    link->canSendInfo.sendCommandSuccessCount = 0;
    link->canSendInfo.sendCommandErrorCount = 0;
    link->canSendInfo.sendCommandTimeCount = 0;
    core::printText("\nExit.\n");
    return 1;
}
