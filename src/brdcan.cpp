// brdcan: the board's CAN channels in the can-utils conventions: list, dump, send, gen,
// stop, bitrate, filter, errors, info, play. Results and traffic on stdout only.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <syslog.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "UART_LIB.h"
#include "brdcan_cli.h"
#include "can/can_dump.h"
#include "can/can_frame.h"
#include "can/can_layout.h"
#include "can/can_link.h"
#include "can/slcan.h"
#include "init.h"
#include "launch.h"

using namespace can;

namespace {

constexpr int EXIT_LINK = 1;
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_DEVICE = 3;

std::atomic<bool> g_stop{false};
std::atomic<Dump*> g_dump{nullptr};

// What the serial-line bridge shares with the receive thread.
struct SlcanTarget {
    Channel channel;
    int fd = -1;  // the pseudo-terminal's master side
    std::atomic<bool> open{false};
};
std::atomic<SlcanTarget*> g_slcan{nullptr};

void onStopSignal(int) {
    g_stop = true;
}

int64_t nowEpochUs() {
    struct timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000000 + ts.tv_nsec / 1000;
}

// Hands a received frame to the serial-line client when the bridge is open.
void toSlcan(SlcanTarget* t, MCU_CONTENT* link, const can_msg_t& m) {
    const Channel& c = t->channel;
    if (!t->open || c.link != link ||
        (c.controller == Controller::St && stDevice(c) != link->Device))
        return;
    std::string line = SlcanEngine::frameLine(
        frameFromController(c.controller, m.id, m.ide, m.rtr, m.dlc, m.data));
    // A client that does not read loses frames rather than stalling the link.
    ssize_t r = ::write(t->fd, line.data(), line.size());
    (void)r;
}

// The links' callback: CAN frames go to the running dump or bridge, if any.
void brdcanCallback(CALLBACK_DATA d) {
    if (d.type != CALLBACK_TYPE_CAN) return;
    Dump* dump = g_dump.load(std::memory_order_acquire);
    SlcanTarget* slcan = g_slcan.load(std::memory_order_acquire);
    if (dump == nullptr && slcan == nullptr) return;
    MCU_CONTENT* link = nullptr;
    if (mcu_content != nullptr && mcu_content->fd == d.fd) link = mcu_content;
    for (int i = 0; link == nullptr && i < nCANDevice; ++i)
        if (can_content[i] != nullptr && can_content[i]->fd == d.fd) link = can_content[i];
    if (link == nullptr) return;
    // The receive thread set Device for this frame just before calling.
    if (dump != nullptr) dump->onFrame(link, link->Device, d.canData, nowEpochUs());
    if (slcan != nullptr) toSlcan(slcan, link, d.canData);
}

int usage(const std::string& what) {
    fprintf(stderr, "brdcan: %s\nTry 'brdcan --help'.\n", what.c_str());
    return EXIT_USAGE;
}

int fail(const std::string& what, const std::string& why, int status) {
    fprintf(stderr, "brdcan: %s: %s\n", what.c_str(), why.c_str());
    return status;
}

// The channels of the board as configured: st1, st2 on the system MCU, nxp0... for each
// enabled CAN device. `config` is the whole configuration; links are those opened.
std::vector<Channel> boardChannels(const BrdConfig& config) {
    std::vector<Channel> out;
    for (int ch = 1; ch <= 2 && config.hasMcu; ++ch) {
        Channel c;
        c.name = "st" + std::to_string(ch);
        c.controller = Controller::St;
        c.stChannel = ch;
        c.link = config.mcu.enabled && nMCUDevice > 0 ? mcu_content : nullptr;
        c.device = config.mcu.path;
        c.enabled = config.mcu.enabled != 0;
        out.push_back(c);
    }
    int n = 0;
    for (const DeviceConfig& dev : config.can) {
        if (!dev.enabled) continue;
        Channel c;
        c.name = "nxp" + std::to_string(n++);
        c.controller = Controller::Nxp;
        c.device = dev.path;
        c.enabled = true;
        for (int i = 0; i < nCANDevice; ++i)
            if (can_content[i] != nullptr && g_config.can[i].path == dev.path)
                c.link = can_content[i];
        out.push_back(c);
    }
    return out;
}

// The start-up of the other programs, except that only the devices of the channels the
// command uses are opened: a dump on one device and a send on another can then run side
// by side. Returns 0 or the exit status (the reason printed).
int startUp(const std::vector<std::string>& channelNames, BrdConfig* whole) {
    std::string product = detectProductName();
    snprintf(szProductName, sizeof szProductName, "%s", product.c_str());
    std::string searched;
    std::string path = product.empty() ? "" : findConfigFile(product, &searched);
    if (path.empty()) {
        syslog(LOG_ERR,
               "Can't find any menu configuration file, please check menu configuration file "
               "exist or not");
        syslog(LOG_INFO, "MCU AP close ...");
        std::string bare = product.empty() ? "" : product.substr(0, product.size() - 1);
        if (product.empty())
            return fail("cannot tell the product",
                        "set BRDCTL_PRODUCT (no DMI or device-tree product name)", EXIT_DEVICE);
        return fail("no configuration file " + bare + ".conf for product " + bare,
                    "looked in " + searched, EXIT_DEVICE);
    }
    FILE* f = fopen(path.c_str(), "r");
    if (f == nullptr) return fail("cannot read " + path, strerror(errno), EXIT_DEVICE);
    std::string error;
    bool ok = parseConfigFile(f, path, whole, &error);
    fclose(f);
    if (!ok) {
        fprintf(stderr, "brdcan: %s\n", error.c_str());
        return EXIT_DEVICE;
    }
    // Keep only the devices the named channels need.
    g_config = *whole;
    bool needMcu = false;
    std::vector<std::string> needCan;
    std::vector<Channel> all = boardChannels(*whole);
    for (const std::string& name : channelNames)
        for (const Channel& c : all)
            if (c.name == name) {
                if (c.controller == Controller::St)
                    needMcu = true;
                else
                    needCan.push_back(c.device);
            }
    if (!needMcu) g_config.mcu.enabled = 0;
    std::vector<DeviceConfig> keep;
    for (const DeviceConfig& dev : g_config.can) {
        bool need = false;
        for (const std::string& p : needCan) need = need || p == dev.path;
        if (dev.enabled && need) keep.push_back(dev);
    }
    g_config.can = keep;
    Register_MCU_EventCallBack(0, 0, brdcanCallback);
    if (!LAUNCH_INIT_DEV()) {
        LAUNCH_EXIT("CONFIG_MAIN_EXIT", nullptr, 1);
        return EXIT_DEVICE;  // the link said why on stderr
    }
    if (mcu_content != nullptr) prepareLink(mcu_content, Controller::St);
    for (int i = 0; i < nCANDevice; ++i) prepareLink(can_content[i], Controller::Nxp);
    // The port layer's lock text ends without a line end.
    if (mcu_content != nullptr || nCANDevice > 0) fputc('\n', stderr);
    return 0;
}

// Finds a channel; 0, or the exit status with the message printed.
int findChannel(const std::vector<Channel>& all, const std::string& name, Channel* out) {
    for (const Channel& c : all) {
        if (c.name != name) continue;
        if (!c.enabled)
            return fail(name, "the device is disabled in the configuration", EXIT_DEVICE);
        if (c.link == nullptr) return fail(name, "the device is not open", EXIT_DEVICE);
        *out = c;
        return 0;
    }
    return fail(name, "no such channel (see brdcan list)", EXIT_USAGE);
}

int exchangeOrFail(const Channel& c, Op op, const Bytes& data, Bytes* payload,
                   const std::string& what) {
    int r = canExchange(c, op, data, payload);
    if (r == CAN_OK) return 0;
    return fail(what, linkResultText(r), EXIT_LINK);
}

// ---- subcommands ----------------------------------------------------------------

int runList(const std::vector<Channel>& all) {
    for (const Channel& c : all) {
        if (!c.enabled) continue;
        std::string kind = c.controller == Controller::St
                               ? "system MCU channel " + std::to_string(c.stChannel) + " (device " +
                                     std::to_string(stDevice(c)) + ")"
                               : "NXP CAN controller";
        printf("%-5s %-32s %-20s %s\n", c.name.c_str(), kind.c_str(), c.device.c_str(), "enabled");
    }
    if (g_config.hasMcu && !g_config.mcu.enabled)
        printf("%-5s %-32s %-20s %s\n", "-", "system MCU", g_config.mcu.path.c_str(), "disabled");
    for (const DeviceConfig& dev : g_config.can)
        if (!dev.enabled)
            printf("%-5s %-32s %-20s %s\n", "-", "NXP CAN controller", dev.path.c_str(),
                   "disabled");
    return 0;
}

int runDump(const CliOptions& o, const std::vector<Channel>& all) {
    std::vector<Channel> resolved;
    for (const ChannelSpec& s : o.specs) {
        Channel c;
        if (int st = findChannel(all, s.name, &c)) return st;
        resolved.push_back(c);
    }
    DumpOptions d;
    d.stamp = o.stamp;
    d.logFormat = o.logFormat || o.logFile;
    d.maxCount = o.count;
    int logFd = -1;
    if (o.logFile) {
        std::string name = logFileName(nowEpochUs() / 1000000);
        logFd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (logFd < 0) return fail("cannot create " + name, strerror(errno), EXIT_DEVICE);
        fprintf(stderr, "brdcan: logging to %s\n", name.c_str());
        d.outFd = logFd;
    } else {
        d.lineBuffered = isatty(STDOUT_FILENO) != 0;
    }
    Dump dump(d, o.specs, resolved);
    unsigned long err0 = 0, drop0 = 0;
    std::vector<MCU_CONTENT*> links;
    for (const Channel& c : resolved) {
        bool have = false;
        for (MCU_CONTENT* l : links) have = have || l == c.link;
        if (have) continue;
        links.push_back(c.link);
        err0 += c.link->receiveErrorCount;
        drop0 += c.link->receiveDropCount;
    }
    g_dump.store(&dump, std::memory_order_release);
    int64_t startUs = nowEpochUs();
    while (!g_stop && !dump.done()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (o.idleMs > 0) {
            int64_t last = dump.lastFrameUs();
            if (nowEpochUs() - (last ? last : startUs) > o.idleMs * 1000) break;
        }
    }
    bool interrupted = g_stop;
    // Stop the receive threads before the buffers are written out.
    g_dump.store(nullptr, std::memory_order_release);
    unsigned long errs = 0, drops = 0;
    for (MCU_CONTENT* l : links) {
        errs += l->receiveErrorCount;
        drops += l->receiveDropCount;
    }
    errs -= err0;
    drops -= drop0;
    LAUNCH_EXIT("CONFIG_MAIN_EXIT", nullptr, 1);
    dump.flush();
    if (logFd >= 0) close(logFd);
    if (interrupted || drops > 0 || errs > 0)
        fprintf(stderr, "brdcan: %lu received, %lu errors, %lu dropped reads\n", dump.written(),
                errs, drops);
    if (dump.writeFailed()) return fail("write", "output failed", EXIT_LINK);
    return 0;
}

int runSend(const CliOptions& o, const Channel& c) {
    return exchangeOrFail(c, Op::Send, messageData(c.controller, o.frame), nullptr,
                          "send " + c.name);
}

int runGen(const CliOptions& o, const Channel& c) {
    CAN_SEND_INFO& info = c.link->canSendInfo;
    info.nID = o.genId;
    info.sendMax = static_cast<DWORD>(o.count);
    info.intervalTime = static_cast<DWORD>(o.gapMs) * 1000;
    info.cmdIndex = static_cast<unsigned int>(requestIndex(c, Op::Series));
    startCANSend(c.link);
    while (info.senFlag != 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    fflush(stdout);
    unsigned long ok = info.sendCommandSuccessCount;
    return ok == static_cast<unsigned long>(o.count) ? 0 : EXIT_LINK;
}

int runBitrate(const CliOptions& o, const Channel& c) {
    return exchangeOrFail(c, Op::BitRate, bitRateData(static_cast<uint8_t>(o.rateCode)), nullptr,
                          "bitrate " + c.name);
}

int runFilter(const CliOptions& o, const Channel& c) {
    if (o.clearFilters)
        return exchangeOrFail(c, Op::ClearFilters, clearFiltersData(), nullptr, "filter " + c.name);
    return exchangeOrFail(c, Op::Filter, filterData(c.controller, o.filter), nullptr,
                          "filter " + c.name);
}

const char* errorName(int code) {
    static const char* const kNames[] = {"none",          "stuff",        "form", "acknowledgement",
                                         "bit recessive", "bit dominant", "CRC"};
    return code >= 0 && code < 7 ? kNames[code] : "unknown";
}

int runErrors(const Channel& c) {
    Bytes p;
    if (int st = exchangeOrFail(c, Op::ErrorCode, {}, &p, "errors " + c.name)) return st;
    if (p.size() < 7) return fail("errors " + c.name, "short answer", EXIT_LINK);
    unsigned long count = p[3] | p[4] << 8 | p[5] << 16 | static_cast<unsigned long>(p[6]) << 24;
    printf("%s: last error %d (%s), tx errors %d, rx errors %d, errors %lu\n", c.name.c_str(), p[0],
           errorName(p[0]), p[1], p[2], count);
    return 0;
}

int runInfo(const Channel& c) {
    if (c.controller != Controller::Nxp)
        return fail("info " + c.name, "versions and input voltage are those of an NXP controller",
                    EXIT_USAGE);
    Bytes fw, bl, v;
    if (int st = exchangeOrFail(c, Op::FwVersion, {}, &fw, "info " + c.name)) return st;
    if (int st = exchangeOrFail(c, Op::BlVersion, {}, &bl, "info " + c.name)) return st;
    if (int st = exchangeOrFail(c, Op::InputVoltage, {}, &v, "info " + c.name)) return st;
    if (fw.size() < 3 || bl.size() < 3 || v.size() < 2)
        return fail("info " + c.name, "short answer", EXIT_LINK);
    unsigned mv = v[0] | v[1] << 8;
    printf("%s: firmware %d.%d.%d, boot loader %d.%d.%d, input voltage %u.%03u V\n", c.name.c_str(),
           fw[0], fw[1], fw[2], bl[0], bl[1], bl[2], mv / 1000, mv % 1000);
    return 0;
}

int runPlay(const CliOptions& o, const std::vector<Channel>& all) {
    // Which board channel each log channel goes out on.
    std::vector<std::pair<std::string, Channel>> route;
    for (const LogRecord& r : o.records) {
        bool known = false;
        for (auto& p : route) known = known || p.first == r.channel;
        if (known) continue;
        std::string out = r.channel;
        if (!o.mappings.empty()) {
            out.clear();
            for (auto& m : o.mappings)
                if (m.second == r.channel) out = m.first;
            if (out.empty()) {
                route.push_back({r.channel, Channel{}});  // not mapped: skipped
                continue;
            }
        }
        Channel c;
        if (int st = findChannel(all, out, &c)) return st;
        route.push_back({r.channel, c});
    }
    auto start = std::chrono::steady_clock::now();
    int64_t firstUs = o.records.empty() ? 0 : o.records.front().epochUs;
    size_t index = 0;
    for (const LogRecord& r : o.records) {
        if (g_stop) break;
        const Channel* c = nullptr;
        for (auto& p : route)
            if (p.first == r.channel && p.second.link != nullptr) c = &p.second;
        if (c == nullptr) continue;
        auto due = o.gapMs >= 0
                       ? start + std::chrono::milliseconds(o.gapMs * static_cast<long>(index))
                       : start + std::chrono::microseconds(r.epochUs - firstUs);
        std::this_thread::sleep_until(due);
        ++index;
        if (int st = exchangeOrFail(*c, Op::Send, messageData(c->controller, r.frame), nullptr,
                                    "play line " + std::to_string(r.line)))
            return st;
    }
    return 0;
}

// The serial-line CAN bridge: a pseudo-terminal whose client drives the channel.
int runSlcan(const Channel& c) {
    int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        return fail("slcan", std::string("cannot open a pseudo-terminal: ") + strerror(errno),
                    EXIT_DEVICE);
    struct termios t;
    if (tcgetattr(master, &t) == 0) {
        cfmakeraw(&t);
        if (tcsetattr(master, TCSANOW, &t) != 0)
            return fail("slcan", std::string("cannot set the terminal: ") + strerror(errno),
                        EXIT_DEVICE);
    }
    char name[128];
    if (ptsname_r(master, name, sizeof name) != 0)
        return fail("slcan", strerror(errno), EXIT_DEVICE);
    // Held open so that the line stays up while no client has it open.
    int hold = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    printf("%s\n", name);
    fflush(stdout);
    SlcanTarget target;
    target.channel = c;
    target.fd = master;
    g_slcan.store(&target, std::memory_order_release);
    SlcanEngine engine;
    char buf[256];
    int status = 0;
    while (!g_stop) {
        struct pollfd p = {master, POLLIN, 0};
        int r = poll(&p, 1, 100);
        if (r < 0 && errno != EINTR) break;
        if (r <= 0) continue;
        ssize_t n = ::read(master, buf, sizeof buf);
        if (n <= 0) continue;
        bool failed = false;
        for (const SlcanAction& a : engine.feed(buf, static_cast<size_t>(n))) {
            int res = CAN_OK;
            switch (a.kind) {
                case SlcanAction::Open:
                    target.open = true;
                    break;
                case SlcanAction::Close:
                    target.open = false;
                    break;
                case SlcanAction::SetBitRate:
                    res = canExchange(c, Op::BitRate, bitRateData(static_cast<uint8_t>(a.rateCode)),
                                      nullptr);
                    break;
                case SlcanAction::Send:
                    res = canExchange(c, Op::Send, messageData(c.controller, a.frame), nullptr);
                    break;
                case SlcanAction::Reply: {
                    std::string text = failed ? std::string(1, '\a') : a.text;
                    failed = false;
                    ssize_t w = ::write(master, text.data(), text.size());
                    (void)w;
                    break;
                }
            }
            if (res != CAN_OK) {
                failed = true;
                fprintf(stderr, "brdcan: slcan %s: %s\n", c.name.c_str(), linkResultText(res));
            }
        }
    }
    target.open = false;
    // The receive threads stop before the target goes away.
    LAUNCH_EXIT("CONFIG_MAIN_EXIT", nullptr, 1);
    g_slcan.store(nullptr, std::memory_order_release);
    if (hold >= 0) close(hold);
    close(master);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    g_progName = "brdcan";
    CliOptions o;
    std::string error;
    if (!parseCli(argc, argv, &o, &error)) return usage(error);
    if (o.help) {
        fputs(kBrdcanUsage, stdout);
        return 0;
    }

    struct sigaction sa;
    memset(&sa, 0, sizeof sa);
    sa.sa_handler = onStopSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);

    UART_SetMessageStream(stderr);
    std::vector<std::string> names;
    for (const ChannelSpec& s : o.specs) names.push_back(s.name);
    if (!o.channel.empty()) names.push_back(o.channel);
    for (const LogRecord& r : o.records) {
        bool mapped = false;
        for (auto& m : o.mappings)
            if (m.second == r.channel) {
                names.push_back(m.first);
                mapped = true;
            }
        if (!mapped && o.mappings.empty()) names.push_back(r.channel);
    }
    BrdConfig whole;
    if (int st = startUp(names, &whole)) return st;

    std::vector<Channel> all = boardChannels(whole);
    int status = 0;
    Channel c;
    switch (o.command) {
        case Command::List:
            g_config = whole;
            status = runList(all);
            break;
        case Command::Dump:
            return runDump(o, all);  // closes the links itself
        case Command::Slcan:
            status = findChannel(all, o.channel, &c);
            if (status != 0) break;
            return runSlcan(c);  // closes the links itself
        case Command::Play:
            status = runPlay(o, all);
            break;
        default:
            status = findChannel(all, o.channel, &c);
            if (status != 0) break;
            switch (o.command) {
                case Command::Send:
                    status = runSend(o, c);
                    break;
                case Command::Gen:
                    status = runGen(o, c);
                    break;
                case Command::Stop:
                    status = exchangeOrFail(c, Op::Stop, {}, nullptr, "stop " + c.name);
                    break;
                case Command::Bitrate:
                    status = runBitrate(o, c);
                    break;
                case Command::Filter:
                    status = runFilter(o, c);
                    break;
                case Command::Errors:
                    status = runErrors(c);
                    break;
                case Command::Info:
                    status = runInfo(c);
                    break;
                default:
                    break;
            }
    }
    fflush(stdout);
    LAUNCH_EXIT("CONFIG_MAIN_EXIT", nullptr, 1);
    return status;
}
