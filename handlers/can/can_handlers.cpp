// brdcmd's CAN rows: menus and prompts for the settings, decoded answers, the timed
// series and the real-time dump.
#include "can/can_handlers.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "can/can_dump.h"
#include "can/can_frame.h"
#include "can/can_link.h"
#include "context.h"
#include "prompt.h"
#include "report.h"
#include "text.h"

using namespace can;

namespace {

// The channel a row is for: ST_CAN1_/ST_CAN2_ on the system MCU link, NXP_ rows on the
// current CAN device.
bool rowChannel(const char* funName, Channel* c) {
    core::HandlerContext ctx = core::handlerContext();
    if (strncmp(funName, "NXP_", 4) == 0) {
        c->controller = Controller::Nxp;
        c->link = ctx.canLink;
        c->name = "nxp" + std::to_string(currentCANDevice);
    } else {
        c->controller = Controller::St;
        c->stChannel = strncmp(funName, "ST_CAN2", 7) == 0 ? 2 : 1;
        c->link = ctx.systemLink;
        c->name = "st" + std::to_string(c->stChannel);
    }
    if (c->link == nullptr) {
        fprintf(stderr, "%s: %s: the %s is not configured\n", ctx.progName, funName,
                c->controller == Controller::Nxp ? "CAN device" : "system MCU");
        return false;
    }
    prepareLink(c->link, c->controller);
    return true;
}

ReportMode ackMode(const Channel& c, Op op) {
    const RequestLayout* l = findLayout(c.controller, op);
    if (c.controller == Controller::Nxp) return REPORT_ACK_SECOND;
    return l != nullptr && l->command == 0x02 ? REPORT_STANDARD : REPORT_ACK_FIRST;
}

// Sends `op` with `data`, prints the standard report and, on success, `render` of the
// answer's data between separators.
int sendAndReport(const Channel& c, Op op, const Bytes& data, const char* funName,
                  std::string (*render)(int, const Bytes&) = nullptr) {
    Bytes payload;
    core::Answer raw;
    int r = canExchange(c, op, data, &payload, &raw);
    if (r < 0 && raw.result == MCU_RESULT_NONE) raw.result = r;
    int verdict = core::report(c.link, ackMode(c, op), raw, funName);
    if (r == CAN_OK && render != nullptr)
        printf("%s\n%s%s\n", SEPARATOR26, render(c.link->fd, payload).c_str(), SEPARATOR26);
    return verdict;
}

int runSimple(Op op, const char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    Bytes data = op == Op::ClearFilters ? clearFiltersData() : Bytes{};
    return sendAndReport(c, op, data, funName);
}

int runSpeed(const char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    fputs(speedMenu().c_str(), stdout);
    int choice = 0;
    if (!checkSelect(core::handlerContext().input, &choice, 1, static_cast<int>(bitRates().size())))
        return 0;
    return sendAndReport(c, Op::BitRate,
                         bitRateData(bitRates()[static_cast<size_t>(choice - 1)].code), funName);
}

int runFilter(const char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    FILE* in = core::handlerContext().input;
    std::string text;
    printf(
        "Input the filter as ID:MASK in hexadecimal (for example 123:7FF; 8 digits for an "
        "extended identifier):\n");
    Filter f;
    while (true) {
        if (!core::readTextLine(in, &text, 32)) return 0;
        std::string why;
        if (parseFilter(text, &f, &why) && !f.inverted) break;
        printf("\nInput Error !!! %s\n",
               f.inverted ? "ID~MASK cannot be set in the controller" : why.c_str());
    }
    return sendAndReport(c, Op::Filter, filterData(c.controller, f), funName);
}

int runMessage(const char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    FILE* in = core::handlerContext().input;
    printf("Input the message as ID#DATA (for example 123#DEADBEEF, 1F334455#11.22, 123#R):\n");
    Frame f;
    std::string text;
    while (true) {
        if (!core::readTextLine(in, &text, 64)) return 0;
        std::string why;
        if (parseFrame(text, &f, &why)) break;
        printf("\nInput Error !!! %s\n", why.c_str());
    }
    return sendAndReport(c, Op::Send, messageData(c.controller, f), funName);
}

int runSeries(const char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    FILE* in = core::handlerContext().input;
    unsigned long id = 0;
    int count = 0, gapMs = 0;
    printf("Input the CAN ID (hexadecimal):\n");
    if (!core::readHexLine(in, &id, 0, EFF_MASK)) return 0;
    printf("Input the number of messages:\n");
    if (!checkSelect(in, &count, 0, 1000000)) return 0;
    printf("Input the time between messages (ms):\n");
    if (!checkSelect(in, &gapMs, 0, 60000)) return 0;
    CAN_SEND_INFO& info = c.link->canSendInfo;
    info.nID = static_cast<unsigned int>(id);
    info.sendMax = static_cast<DWORD>(count);
    info.intervalTime = static_cast<DWORD>(gapMs) * 1000;
    info.cmdIndex = static_cast<unsigned int>(requestIndex(c, Op::Series));
    startCANSend(c.link);
    while (info.senFlag != 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return info.sendCommandSuccessCount == static_cast<unsigned long>(count) ? 1 : 0;
}

// ---- real-time data ----------------------------------------------------------

std::atomic<bool> g_realtimeStop{false};
std::atomic<Dump*> g_realtimeDump{nullptr};
std::atomic<void (*)(CALLBACK_DATA)> g_previousCallback{nullptr};

void onRealtimeSignal(int) {
    g_realtimeStop = true;
}

int64_t epochMicros() {
    struct timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000000 + ts.tv_nsec / 1000;
}

// Prints the frame as a candump line, then lets the front end's callback count it.
void realtimeCallback(CALLBACK_DATA d) {
    Dump* dump = g_realtimeDump.load();
    if (d.type == CALLBACK_TYPE_CAN && dump != nullptr) {
        MCU_CONTENT* link = nullptr;
        if (mcu_content != nullptr && mcu_content->fd == d.fd) link = mcu_content;
        for (int i = 0; link == nullptr && i < nCANDevice; ++i)
            if (can_content[i] != nullptr && can_content[i]->fd == d.fd) link = can_content[i];
        if (link != nullptr) dump->onFrame(link, link->Device, d.canData, epochMicros());
    }
    if (auto previous = g_previousCallback.load()) previous(d);
}

int runRealtime(const char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    std::vector<Channel> channels;
    std::vector<ChannelSpec> specs;
    if (c.controller == Controller::St) {
        for (int ch = 1; ch <= 2; ++ch) {
            Channel s = c;
            s.stChannel = ch;
            s.name = "st" + std::to_string(ch);
            channels.push_back(s);
        }
    } else {
        channels.push_back(c);
    }
    for (const Channel& ch : channels) {
        ChannelSpec s;
        s.name = ch.name;
        specs.push_back(s);
    }
    DumpOptions o;
    o.lineBuffered = true;
    fflush(stdout);
    Dump dump(o, specs, channels);
    unsigned long received0 = c.link->receiveCANDataCount, errors0 = c.link->receiveErrorCount,
                  drops0 = c.link->receiveDropCount;
    struct sigaction sa = {}, previous = {};
    sa.sa_handler = onRealtimeSignal;
    sigemptyset(&sa.sa_mask);
    g_realtimeStop = false;
    sigaction(SIGINT, &sa, &previous);
    g_previousCallback = callback_EventToLibrary.load();
    g_realtimeDump = &dump;
    Register_MCU_EventCallBack(0, 0, realtimeCallback);
    printf("fd(%d) Receiving CAN data on %s; press Ctrl-C to stop.\n", c.link->fd,
           c.controller == Controller::St ? "st1 and st2" : c.name.c_str());
    fflush(stdout);
    while (!g_realtimeStop) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    Register_MCU_EventCallBack(0, 0, g_previousCallback.load());
    // A callback already running finishes with the dump still in place.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    g_realtimeDump = nullptr;
    sigaction(SIGINT, &previous, nullptr);
    printf("\nfd(%d) received %lu CAN frames, %lu receive errors, %lu dropped reads\n", c.link->fd,
           c.link->receiveCANDataCount - received0,
           static_cast<unsigned long>(c.link->receiveErrorCount - errors0),
           c.link->receiveDropCount - drops0);
    return 1;
}

std::string renderFw(int fd, const Bytes& p) {
    return renderVersion(fd, "Firmware version", p);
}
std::string renderBl(int fd, const Bytes& p) {
    return renderVersion(fd, "Boot loader version", p);
}

}  // namespace

namespace can {

std::string speedMenu() {
    std::string s;
    int n = 1;
    for (const BitRate& r : bitRates())
        s += core::strprintf("%d. %ld kbit/s\n", n++, r.rate / 1000);
    return s + RULE56 + "\n" + SELECT_PROMPT + "\n";
}

std::string renderErrorCode(int fd, const Bytes& p) {
    static const char* const kNames[] = {"no error",
                                         "stuff error",
                                         "form error",
                                         "acknowledgement error",
                                         "bit recessive error",
                                         "bit dominant error",
                                         "CRC error"};
    if (p.size() < 7) return core::strprintf("fd(%d) Short answer.\n", fd);
    unsigned long count = p[3] | p[4] << 8 | p[5] << 16 | static_cast<unsigned long>(p[6]) << 24;
    return core::strprintf(
        "fd(%d) Last error: %s (%d)\nfd(%d) Transmit error count: %d\nfd(%d) Receive error "
        "count: %d\nfd(%d) Errors seen: %lu\n",
        fd, p[0] < 7 ? kNames[p[0]] : "unknown", p[0], fd, p[1], fd, p[2], fd, count);
}

std::string renderVersion(int fd, const char* what, const Bytes& p) {
    if (p.size() < 3) return core::strprintf("fd(%d) Short answer.\n", fd);
    return core::strprintf("fd(%d) %s: %d.%d.%d\n", fd, what, p[0], p[1], p[2]);
}

std::string renderInputVoltage(int fd, const Bytes& p) {
    if (p.size() < 2) return core::strprintf("fd(%d) Short answer.\n", fd);
    unsigned mv = p[0] | p[1] << 8;
    return core::strprintf("fd(%d) Input voltage: %u.%03u V\n", fd, mv / 1000, mv % 1000);
}

}  // namespace can

int FUNC_ST_CAN_GET_ERROR_CODE(int, char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    return sendAndReport(c, Op::ErrorCode, {}, funName, renderErrorCode);
}
int FUNC_ST_CAN_SET_SPEED(int, char* funName) {
    return runSpeed(funName);
}
int FUNC_ST_CAN_SET_DISABLE_AND_CLEAR_ALL_FILTER(int, char* funName) {
    return runSimple(Op::ClearFilters, funName);
}
int FUNC_ST_CAN_SET_FILTER(int, char* funName) {
    return runFilter(funName);
}
int FUNC_ST_CAN_SET_SEND_MESSAGE(int, char* funName) {
    return runMessage(funName);
}
int FUNC_ST_CAN_SET_AUTO_SEND(int, char* funName) {
    return runSeries(funName);
}
int FUNC_ST_CAN_SET_STOP_TRANSMIT(int, char* funName) {
    return runSimple(Op::Stop, funName);
}
int FUNC_ST_CAN_SET_CLEAR_RECEIVE_FIFO(int, char* funName) {
    return runSimple(Op::ClearFifo, funName);
}
int FUNC_ST_CAN_GET_REALTIME_DATA(int, char* funName) {
    return runRealtime(funName);
}

int FUNC_NXP_CAN_AP_SELECT_DEVICE(int, char* funName) {
    if (nCANDevice < 1) {
        fprintf(stderr, "%s: %s: no CAN device is configured\n", g_progName, funName);
        return 0;
    }
    for (int i = 0; i < nCANDevice; ++i)
        printf("%d. nxp%d fd(%d)%s\n", i + 1, i, can_content[i] ? can_content[i]->fd : -1,
               i == currentCANDevice ? " (current)" : "");
    printf("%s\n%s\n", RULE56, SELECT_PROMPT);
    int choice = 0;
    if (!checkSelect(core::handlerContext().input, &choice, 1, nCANDevice)) return 0;
    currentCANDevice = choice - 1;
    printf("nxp%d selected.\n", currentCANDevice);
    return 1;
}
int FUNC_NXP_CAN_AP_02_READ_FW_VERSION(int, char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    return sendAndReport(c, Op::FwVersion, {}, funName, renderFw);
}
int FUNC_NXP_CAN_AP_04_READ_BL_VERSION(int, char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    return sendAndReport(c, Op::BlVersion, {}, funName, renderBl);
}
int FUNC_NXP_CAN_AP_10_SET_SPEED(int, char* funName) {
    return runSpeed(funName);
}
int FUNC_NXP_CAN_AP_12_DISABLE_AND_CLEAR_ALL_FILTER(int, char* funName) {
    return runSimple(Op::ClearFilters, funName);
}
int FUNC_NXP_CAN_AP_12_SET_FILTER(int, char* funName) {
    return runFilter(funName);
}
int FUNC_NXP_CAN_AP_20_EDIT_MESSAGE_TO_SENDING(int, char* funName) {
    return runMessage(funName);
}
int FUNC_NXP_CAN_AP_22_STOP_TRANSMIT(int, char* funName) {
    return runSimple(Op::Stop, funName);
}
int FUNC_NXP_CAN_AP_34_GET_ERROR_CODE(int, char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    return sendAndReport(c, Op::ErrorCode, {}, funName, renderErrorCode);
}
int FUNC_NXP_CAN_AP_50_READ_INPUT_VOLTAGE(int, char* funName) {
    Channel c;
    if (!rowChannel(funName, &c)) return 0;
    return sendAndReport(c, Op::InputVoltage, {}, funName, renderInputVoltage);
}
int FUNC_NXP_CAN_AP_AUTO_SEND(int, char* funName) {
    return runSeries(funName);
}
int FUNC_NXP_CAN_AP_GET_REALTIME_DATA(int, char* funName) {
    return runRealtime(funName);
}
