// The simulated system MCU: parses ST request frames from the host on a pseudo-terminal
// master, answers from a register model, and sends unsolicited CAN frames and events.
// Every write to the line happens on the serving thread; other threads hand it bytes.
#include "brdsim.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <optional>

#include "bootloader.h"
#include "defaults_peripheral.h"
#include "fm_module.h"
#include "line_pacer.h"
#include "sim_frame.h"
#include "tpms.h"

namespace brdsim {

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint8_t CMD_GET = 0x02;
constexpr uint8_t CMD_SET = 0x03;
constexpr uint8_t CMD_EVENT = 0x04;
constexpr uint8_t SET_ACK = 0x01;
constexpr uint8_t CAN_STREAM_DEVICE = 0x06;
constexpr uint8_t IAP_DEVICE = 0x03;        // the boot loader's rows
constexpr size_t MAX_REQUEST_BYTES = 4096;  // a request longer than this is junk
constexpr size_t MAX_LINE_LOG = 1 << 20;    // bytes from the host kept for tests
// Junk that holds no start, end or escape code.
const Bytes kGarbage = {0x55, 0xAA, 0x13, 0x37};

Bytes withCrc(Bytes raw, uint8_t crcXor = 0) {
    raw.push_back(crc8(raw.data(), raw.size()) ^ crcXor);
    return raw;
}

struct Fd {
    int fd = -1;
    Fd() = default;
    explicit Fd(int f) : fd(f) {}
    ~Fd() { reset(); }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    void reset(int f = -1) {
        if (fd >= 0) ::close(fd);
        fd = f;
    }
    explicit operator bool() const { return fd >= 0; }
};

}  // namespace

Bytes encodeStFrame(uint8_t device, uint8_t command, uint8_t address, const Bytes& data) {
    Bytes raw = {device, command, address};
    raw.insert(raw.end(), data.begin(), data.end());
    return stuff(withCrc(std::move(raw)));
}

Bytes encodeStCanFrame(uint8_t device, uint32_t id, uint8_t ide, uint8_t rtr, const Bytes& data) {
    Bytes raw = {device,
                 CMD_EVENT,
                 0x00,  // address byte, unused by CAN frames
                 static_cast<uint8_t>(id),
                 static_cast<uint8_t>(id >> 8),
                 static_cast<uint8_t>(id >> 16),
                 static_cast<uint8_t>(id >> 24),
                 ide,
                 rtr,
                 static_cast<uint8_t>(data.size())};
    raw.insert(raw.end(), data.begin(), data.end());
    return stuff(withCrc(std::move(raw)));
}

struct Simulator::Impl {
    std::string product;

    // Owned by the serving thread once it runs (opened and closed around it).
    Fd master;
    Fd slaveHold;  // keeps the line up while no host has the slave open
    Fd wake;       // eventfd: new work or stop
    std::thread thread;
    std::atomic<bool> stopping{false};
    std::atomic<bool> hungUp{false};
    Bytes inFrame;  // the request being received, from its start code
    bool inRequest = false;
    Bytes outBuf;               // bytes the line did not take yet, from outHead on
    AsciiCommandMatcher ascii;  // the TPMS receiver's commands between frames
    size_t outHead = 0;         // the first byte of outBuf not yet written
    LinePacer txPace, rxPace;
    Bytes rxPending;  // bytes read from the host that the line has not delivered yet
    std::atomic<size_t> backlog{0};
    // Bytes taken from and written to the line, for measurements.
    std::atomic<uint64_t> bytesIn{0}, bytesOut{0};
    // Set before start() and only read afterwards.
    std::map<uint8_t, DeviceHandler> deviceHandlers;
    Framing framing{kFrameStart, kFrameEnd, kFrameEscape};
    FrameHandler frameHandler;
    // A second framing the controller switches to while `altActive` says so (the CAN
    // MCU's boot loader).
    Framing altFraming{};
    std::function<bool()> altActive;
    std::unique_ptr<BootLoader> boot;  // answers the IAP rows

    const Framing& activeFraming() const { return altActive && altActive() ? altFraming : framing; }

    // Shared with the callers, under `mu`.
    mutable std::mutex mu;
    mutable std::condition_variable requestCond;
    std::map<std::tuple<uint8_t, uint8_t, uint8_t>, Bytes> answers;
    std::map<std::pair<uint8_t, uint8_t>, Bytes> registers;
    std::map<Bytes, Bytes> remembered;  // peripheral registers picked by request data
    std::deque<Fault> faults;
    RecordMap records;  // the system MCU's indexed records
    std::vector<Request> log;
    Bytes lineIn;  // every byte the host wrote, up to MAX_LINE_LOG
    FmState fm;
    struct Timed {
        Clock::time_point due;
        uint64_t seq;
        Bytes bytes;
    };
    std::vector<Timed> timed;  // bytes to write at a given time, ordered by (due, seq)
    uint64_t seq = 0;
    struct Stream {
        int remaining = 0;  // < 0: without end
        Clock::duration interval{};
        Clock::time_point next{};
        uint32_t id = 0;
        uint32_t counter = 0;
        bool on = false;
    } stream;

    void notify() const {
        uint64_t one = 1;
        if (wake) (void)!::write(wake.fd, &one, sizeof one);
    }

    // Caller must hold `mu`.
    void schedule(Clock::time_point due, Bytes bytes) {
        Timed t{due, seq++, std::move(bytes)};
        auto pos =
            std::upper_bound(timed.begin(), timed.end(), t, [](const Timed& a, const Timed& b) {
                return a.due < b.due || (a.due == b.due && a.seq < b.seq);
            });
        timed.insert(pos, std::move(t));
    }

    // --- serving thread only below ---

    void send(const Bytes& bytes) {
        if (!master) return;
        outBuf.insert(outBuf.end(), bytes.begin(), bytes.end());
        flush();
    }

    size_t outLeft() const { return outBuf.size() - outHead; }

    // How many bytes are worth a write: all that is left, up to half a burst of the line.
    size_t writeChunk() const {
        size_t half = txPace.burst() / 2;
        return half == 0 ? 1 : std::min(outLeft(), half);
    }

    void flush() {
        while (master && outLeft() > 0) {
            Clock::time_point now = Clock::now();
            size_t allowed = txPace.allowed(now);
            if (allowed < writeChunk()) break;  // the line is busy: wait for its slots
            size_t n = std::min(outLeft(), allowed);
            ssize_t w = ::write(master.fd, outBuf.data() + outHead, n);
            if (w > 0) {
                txPace.book(now, static_cast<size_t>(w));
                bytesOut += static_cast<uint64_t>(w);
                outHead += static_cast<size_t>(w);
            } else if (w < 0 && errno == EINTR) {
                continue;
            } else {
                break;  // EAGAIN: wait for POLLOUT; anything else: retry on the next pass
            }
        }
        if (outHead == outBuf.size()) {
            outBuf.clear();
            outHead = 0;
        } else if (outHead > 65536) {
            outBuf.erase(outBuf.begin(), outBuf.begin() + static_cast<long>(outHead));
            outHead = 0;
        }
        backlog = outLeft();
    }

    // Hands the parser what the line has delivered of the bytes read so far.
    void takeDelivered() {
        size_t n = rxPace.delivered(Clock::now(), rxPending.size());
        if (n == 0) return;
        Bytes now(rxPending.begin(), rxPending.begin() + static_cast<long>(n));
        rxPending.erase(rxPending.begin(), rxPending.begin() + static_cast<long>(n));
        feed(now.data(), now.size());
    }

    void hangUp() {
        hungUp = true;  // before the host can see the line go
        master.reset();
        slaveHold.reset();
        outBuf.clear();
        outHead = 0;
        backlog = 0;
        rxPending.clear();
        inRequest = false;
        inFrame.clear();
        std::lock_guard<std::mutex> g(mu);
        timed.clear();
        stream.on = false;
    }

    // The data the MCU answers to a request, from the overrides, the registers and the
    // product's defaults. Caller holds `mu`.
    Bytes answerData(const Request& r) {
        auto a = answers.find({r.device, r.command, r.address});
        if (a != answers.end()) return a->second;
        if (Bytes d; systemRecordAnswer(product, r, records, registers, &d)) return d;
        Bytes picked;
        if (peripheralAnswer(product, remembered, r, &picked)) return picked;
        if (r.command == CMD_SET) {
            registers[{r.device, r.address}] = r.data;
            return {SET_ACK};
        }
        if (r.command == CMD_GET) {
            auto reg = registers.find({r.device, r.address});
            if (reg != registers.end()) return reg->second;
            Bytes d;
            if (defaultAnswer(product, r.device, r.address, &d)) return d;
            return {0x00};
        }
        return {SET_ACK};
    }

    // Sends `reply` as the fault asks (those that make sense for any kind of answer).
    void deliver(Bytes reply, const std::optional<Fault>& fault) {
        FaultKind kind = fault ? fault->kind : FaultKind::WrongCommand;  // no fault: as it is
        if (kind == FaultKind::NoAnswer || kind == FaultKind::HangUp) {
            if (kind == FaultKind::HangUp) hangUp();
            return;
        }
        if (kind == FaultKind::LateAnswer || kind == FaultKind::SplitAnswer) {
            size_t keep = kind == FaultKind::SplitAnswer ? reply.size() / 2 : 0;
            {
                std::lock_guard<std::mutex> g(mu);
                schedule(Clock::now() + std::chrono::milliseconds(fault->delayMs),
                         Bytes(reply.begin() + static_cast<long>(keep), reply.end()));
            }
            reply.resize(keep);
        } else if (kind == FaultKind::GarbageBefore) {
            reply.insert(reply.begin(), kGarbage.begin(), kGarbage.end());
        }
        if (!reply.empty()) send(reply);
    }

    // Takes the next fault for a request. Caller holds `mu`.
    std::optional<Fault> nextFault() {
        if (faults.empty()) return std::nullopt;
        Fault f = faults.front();
        if (--faults.front().count <= 0) faults.pop_front();
        return f;
    }

    // A frame for the FM module: answered from its state, never by the system MCU.
    void handleFm(Bytes raw) {
        Request r;
        r.kind = RequestKind::Fm;
        r.raw = std::move(raw);
        Bytes frame = fmUnescape(r.raw);
        r.command = frame[1];
        if (frame.size() > 3) r.data.assign(frame.begin() + 2, frame.end() - 1);
        Bytes reply;
        std::optional<Fault> fault;
        {
            std::lock_guard<std::mutex> g(mu);
            fault = nextFault();
            bool wrong = fault && fault->kind == FaultKind::WrongCommand;
            reply = encodeFmFrame(fmAnswer(fm, frame, wrong));
            log.push_back(std::move(r));
        }
        requestCond.notify_all();
        deliver(std::move(reply), fault);
    }

    // The TPMS receiver's display-mode command, sent as plain ASCII.
    void handleAscii() {
        Request r;
        r.kind = RequestKind::Ascii;
        r.raw.assign(TPMS_DISPLAY_MODE, TPMS_DISPLAY_MODE + sizeof TPMS_DISPLAY_MODE - 1);
        std::optional<Fault> fault;
        {
            std::lock_guard<std::mutex> g(mu);
            fault = nextFault();
            log.push_back(std::move(r));
        }
        requestCond.notify_all();
        deliver(tpmsDisplayModeAnswer(), fault);
    }

    // A frame of another controller type: its handler answers.
    void handleForeignFrame(Bytes raw) {
        Bytes plain;
        unstuffWith(activeFraming().escape, raw, &plain);
        Bytes reply = frameHandler(plain);
        Request r;
        r.raw = std::move(raw);
        if (plain.size() >= 2) r.command = plain[1];
        if (plain.size() > 3) r.data.assign(plain.begin() + 2, plain.end() - 1);
        r.crcOk = true;
        {
            std::lock_guard<std::mutex> g(mu);
            log.push_back(std::move(r));
        }
        requestCond.notify_all();
        if (!reply.empty()) send(reply);
    }

    void handleRequest(Bytes raw) {
        if (frameHandler) {
            handleForeignFrame(std::move(raw));
            return;
        }
        if (isFmFrame(raw)) {
            handleFm(std::move(raw));
            return;
        }
        Request r;
        r.raw = std::move(raw);
        Bytes plain;
        bool escapesOk = unstuff(r.raw, &plain);
        // plain: F1 device command address data... crc F2
        if (plain.size() >= 6) {
            r.device = plain[1];
            r.command = plain[2];
            r.address = plain[3];
            r.data.assign(plain.begin() + 4, plain.end() - 2);
            uint8_t crc = plain[plain.size() - 2];
            r.crcOk = escapesOk && crc8(plain.data() + 1, plain.size() - 3) == crc;
        }
        Bytes reply;
        std::optional<Fault> fault;
        Clock::time_point now = Clock::now();
        if (r.crcOk && r.device == IAP_DEVICE) {
            BootLoader::Reply b = boot->st(r.command, r.address, r.data);
            Bytes body = {r.device, r.command, r.address};
            body.insert(body.end(), b.data.begin(), b.data.end());
            {
                std::lock_guard<std::mutex> g(mu);
                log.push_back(std::move(r));
            }
            requestCond.notify_all();
            if (!b.lost) send(stuff(withCrc(std::move(body), b.corrupt ? 0x5A : 0)));
            return;
        }
        auto handler = deviceHandlers.find(r.device);
        if (r.crcOk && handler != deviceHandlers.end()) {
            // Another part of the board answers for this device (outside `mu`: it may
            // hand this simulator traffic of its own).
            Bytes data = handler->second(r.command, r.address, r.data);
            Bytes body = {r.device, r.command, r.address};
            body.insert(body.end(), data.begin(), data.end());
            {
                std::lock_guard<std::mutex> g(mu);
                log.push_back(std::move(r));
            }
            requestCond.notify_all();
            send(stuff(withCrc(std::move(body))));
            return;
        }
        {
            std::lock_guard<std::mutex> g(mu);
            if (r.crcOk) {
                if (!faults.empty() && faults.front().after > 0) {
                    --faults.front().after;
                } else if (!faults.empty()) {
                    fault = faults.front();
                    if (--faults.front().count <= 0) faults.pop_front();
                }
                Bytes data = answerData(r);
                uint8_t device = r.device;
                uint8_t crcXor = 0;
                if (fault && fault->kind == FaultKind::DeviceFF) device = 0xFF;
                if (fault && fault->kind == FaultKind::BadCrc) crcXor = 0x5A;
                Bytes body = {device, r.command, r.address};
                body.insert(body.end(), data.begin(), data.end());
                reply = stuff(withCrc(std::move(body), crcXor));
                if (fault && fault->kind == FaultKind::LateAnswer) {
                    schedule(now + std::chrono::milliseconds(fault->delayMs), std::move(reply));
                    reply.clear();
                } else if (fault && fault->kind == FaultKind::SplitAnswer) {
                    size_t half = reply.size() / 2;
                    schedule(now + std::chrono::milliseconds(fault->delayMs),
                             Bytes(reply.begin() + half, reply.end()));
                    reply.resize(half);
                } else if (fault && fault->kind == FaultKind::GarbageBefore) {
                    reply.insert(reply.begin(), kGarbage.begin(), kGarbage.end());
                } else if (fault && (fault->kind == FaultKind::NoAnswer ||
                                     fault->kind == FaultKind::HangUp)) {
                    reply.clear();
                }
            }
            log.push_back(std::move(r));
        }
        requestCond.notify_all();
        if (fault && fault->kind == FaultKind::HangUp) {
            hangUp();
            return;
        }
        if (!reply.empty()) send(reply);
    }

    // Takes the bytes of one read: request frames run from a start code to an end code;
    // bytes outside a frame are ignored.
    void feed(const uint8_t* p, size_t n) {
        bytesIn += n;
        {
            std::lock_guard<std::mutex> g(mu);
            lineIn.insert(lineIn.end(), p, p + std::min(n, MAX_LINE_LOG - lineIn.size()));
        }
        for (size_t i = 0; i < n && master; ++i) {
            uint8_t b = p[i];
            const Framing& framing = activeFraming();
            if (!inRequest && b != framing.start) {
                if (ascii.feed(b)) handleAscii();
            } else if (b == framing.start) {
                inRequest = true;
                inFrame.assign(1, b);
            } else if (inRequest) {
                inFrame.push_back(b);
                if (b == framing.end) {
                    inRequest = false;
                    handleRequest(std::move(inFrame));
                    inFrame.clear();
                } else if (inFrame.size() > MAX_REQUEST_BYTES) {
                    inRequest = false;
                    inFrame.clear();
                }
            }
        }
    }

    // Writes what is due; returns the time until the next due item (or -1: none).
    int runDue() {
        std::vector<Bytes> due;
        Clock::time_point now = Clock::now();
        Clock::time_point next = Clock::time_point::max();
        {
            std::lock_guard<std::mutex> g(mu);
            auto it = timed.begin();
            while (it != timed.end() && it->due <= now) {
                due.push_back(std::move(it->bytes));
                ++it;
            }
            timed.erase(timed.begin(), it);
            if (!timed.empty()) next = timed.front().due;
            Stream& s = stream;
            while (s.on && s.next <= now) {
                Bytes payload(8);
                for (int k = 0; k < 4; ++k) payload[k] = static_cast<uint8_t>(s.counter >> (8 * k));
                payload[4] = 0xCA;
                payload[5] = 0xFE;
                payload[6] = 0x00;
                payload[7] = 0x01;
                due.push_back(encodeStCanFrame(CAN_STREAM_DEVICE, s.id, 0, 0, payload));
                ++s.counter;
                s.next += s.interval;
                if (s.remaining > 0 && --s.remaining == 0) s.on = false;
            }
            if (s.on) next = std::min(next, s.next);
        }
        for (const Bytes& b : due) send(b);
        if (next == Clock::time_point::max()) return -1;
        auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
        return static_cast<int>(std::max<long long>(left, 0));
    }

    // How long serve() may sleep: until the next timed item, line slot or delivery.
    Clock::duration sleepFor(int dueMs) {
        Clock::time_point now = Clock::now();
        Clock::time_point until =
            dueMs < 0 ? Clock::time_point::max() : now + std::chrono::milliseconds(dueMs);
        if (outLeft() > 0 && txPace.allowed(now) < writeChunk())
            until = std::min(until, txPace.nextSlot(now, writeChunk()));
        if (!rxPending.empty()) until = std::min(until, rxPace.nextDelivery(rxPending.size(), 0));
        if (until == Clock::time_point::max()) return Clock::duration::max();
        return until > now ? until - now : Clock::duration::zero();
    }

    void serve() {
        uint8_t buf[1024];
        // While paced, the host's bytes wait in the terminal until the line would have
        // carried them: read only a little ahead of what the line delivered.
        const size_t readAhead = rxPace.paced() ? 64 : sizeof buf;
        while (!stopping) {
            takeDelivered();
            Clock::duration wait = sleepFor(runDue());
            struct pollfd p[2] = {{wake.fd, POLLIN, 0}, {master.fd, 0, 0}};
            nfds_t count = 1;
            if (master) {
                bool canWrite = outLeft() > 0 && txPace.allowed(Clock::now()) >= writeChunk();
                bool canRead = rxPending.size() < readAhead;
                p[1].events = static_cast<short>((canRead ? POLLIN : 0) | (canWrite ? POLLOUT : 0));
                count = 2;
            }
            struct timespec ts;
            struct timespec* tsp = nullptr;
            if (wait != Clock::duration::max()) {
                auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(wait).count();
                ts.tv_sec = static_cast<time_t>(ns / 1000000000);
                ts.tv_nsec = static_cast<long>(ns % 1000000000);
                tsp = &ts;
            }
            int r = ::ppoll(p, count, tsp, nullptr);
            if (r < 0) {
                if (errno == EINTR) continue;
                break;
            }
            if (p[0].revents & POLLIN) {
                uint64_t v;
                (void)!::read(wake.fd, &v, sizeof v);
            }
            if (count == 2 && (p[1].revents & POLLOUT)) flush();
            if (count == 2 && outLeft() > 0 && !(p[1].events & POLLOUT)) flush();
            if (count == 2 && (p[1].revents & (POLLIN | POLLHUP | POLLERR))) {
                ssize_t n = ::read(master.fd, buf, readAhead - rxPending.size());
                if (n > 0 && rxPace.paced()) {
                    rxPace.receive(Clock::now(), static_cast<size_t>(n));
                    rxPending.insert(rxPending.end(), buf, buf + n);
                } else if (n > 0) {
                    feed(buf, static_cast<size_t>(n));
                } else if (n < 0 && errno != EAGAIN && errno != EINTR && errno != EIO) {
                    hangUp();
                }
            }
        }
    }
};

Simulator::Simulator(std::string product) : product_(std::move(product)), impl_(new Impl) {
    impl_->product = product_;
    impl_->fm = fmDefaults(product_);
    impl_->boot = std::make_unique<BootLoader>(stFlashLayout(), product_ + " 0.9.0");
}

uint64_t Simulator::bytesReceived() const {
    return impl_->bytesIn;
}

uint64_t Simulator::bytesSent() const {
    return impl_->bytesOut;
}

BootLoader& Simulator::bootLoader() {
    return *impl_->boot;
}

void Simulator::setAltFraming(Framing framing, std::function<bool()> active) {
    impl_->altFraming = framing;
    impl_->altActive = std::move(active);
}

Simulator::~Simulator() {
    stop();
}

bool Simulator::start() {
    Impl& s = *impl_;
    if (s.thread.joinable()) {
        errno = EBUSY;
        return false;
    }
    Fd master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    if (!master || grantpt(master.fd) != 0 || unlockpt(master.fd) != 0) return false;
    struct termios t;
    if (tcgetattr(master.fd, &t) != 0) return false;
    cfmakeraw(&t);
    if (tcsetattr(master.fd, TCSANOW, &t) != 0) return false;
    char name[128];
    if (ptsname_r(master.fd, name, sizeof name) != 0) return false;
    Fd hold(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    if (!hold) return false;
    Fd wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake) return false;
    ptyPath_ = name;
    s.master.reset(master.fd);
    master.fd = -1;
    s.slaveHold.reset(hold.fd);
    hold.fd = -1;
    s.wake.reset(wake.fd);
    wake.fd = -1;
    s.stopping = false;
    s.hungUp = false;
    s.inRequest = false;
    s.inFrame.clear();
    s.outBuf.clear();
    s.outHead = 0;
    s.rxPending.clear();
    try {
        s.thread = std::thread([&s] { s.serve(); });
    } catch (...) {
        s.master.reset();
        s.slaveHold.reset();
        s.wake.reset();
        errno = EAGAIN;
        return false;
    }
    return true;
}

void Simulator::stop() {
    Impl& s = *impl_;
    if (!s.thread.joinable()) return;
    s.stopping = true;
    s.notify();
    s.thread.join();
    s.master.reset();
    s.slaveHold.reset();
    s.wake.reset();
    std::lock_guard<std::mutex> g(s.mu);
    s.timed.clear();
    s.stream.on = false;
}

void Simulator::setLineRate(long baud) {
    impl_->txPace = LinePacer(baud);
    impl_->rxPace = LinePacer(baud);
}

void Simulator::setFrameHandler(Framing framing, FrameHandler handler) {
    impl_->framing = framing;
    impl_->frameHandler = std::move(handler);
}

void Simulator::setDeviceHandler(uint8_t device, DeviceHandler handler) {
    impl_->deviceHandlers[device] = std::move(handler);
}

size_t Simulator::backlog() const {
    size_t n = impl_->backlog;
    std::lock_guard<std::mutex> g(impl_->mu);
    for (const Impl::Timed& t : impl_->timed) n += t.bytes.size();
    return n;
}

void Simulator::setAnswer(uint8_t device, uint8_t command, uint8_t address, Bytes data) {
    std::lock_guard<std::mutex> g(impl_->mu);
    impl_->answers[{device, command, address}] = std::move(data);
}

void Simulator::clearAnswer(uint8_t device, uint8_t command, uint8_t address) {
    std::lock_guard<std::mutex> g(impl_->mu);
    impl_->answers.erase({device, command, address});
}

void Simulator::setRegister(uint8_t device, uint8_t address, Bytes data) {
    std::lock_guard<std::mutex> g(impl_->mu);
    impl_->registers[{device, address}] = std::move(data);
}

Bytes Simulator::getRegister(uint8_t device, uint8_t address) const {
    std::lock_guard<std::mutex> g(impl_->mu);
    auto it = impl_->registers.find({device, address});
    if (it != impl_->registers.end()) return it->second;
    Bytes d;
    if (defaultAnswer(product_, device, address, &d)) return d;
    return {};
}

void Simulator::queueFault(Fault f) {
    if (f.count <= 0) return;
    std::lock_guard<std::mutex> g(impl_->mu);
    impl_->faults.push_back(f);
}

void Simulator::clearFaults() {
    std::lock_guard<std::mutex> g(impl_->mu);
    impl_->faults.clear();
}

void Simulator::injectRaw(const Bytes& bytes) {
    {
        std::lock_guard<std::mutex> g(impl_->mu);
        impl_->schedule(Clock::now(), bytes);
    }
    impl_->notify();
}

void Simulator::injectCanFrame(uint8_t device, uint32_t id, uint8_t ide, uint8_t rtr,
                               const Bytes& data) {
    injectRaw(encodeStCanFrame(device, id, ide, rtr, data));
}

void Simulator::injectEvent(const Bytes& payload) {
    uint8_t address = payload.empty() ? 0 : payload[0];
    Bytes data = payload.empty() ? Bytes{} : Bytes(payload.begin() + 1, payload.end());
    injectRaw(encodeStFrame(0x00, CMD_EVENT, address, data));
}

void Simulator::startCanStream(int perSecond, int count, uint32_t id) {
    {
        std::lock_guard<std::mutex> g(impl_->mu);
        Impl::Stream& s = impl_->stream;
        s.on = perSecond > 0 && count != 0 && !impl_->hungUp;
        if (s.on) {
            s.interval =
                std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(1)) / perSecond;
            s.remaining = count < 0 ? -1 : count;
            s.id = id;
            s.counter = 0;
            s.next = Clock::now();
        }
    }
    impl_->notify();
}

std::vector<Request> Simulator::requests() const {
    std::lock_guard<std::mutex> g(impl_->mu);
    return impl_->log;
}

void Simulator::clearRequests() {
    std::lock_guard<std::mutex> g(impl_->mu);
    impl_->log.clear();
    impl_->lineIn.clear();
}

Bytes Simulator::lineBytes() const {
    std::lock_guard<std::mutex> g(impl_->mu);
    return impl_->lineIn;
}

FmState Simulator::fmState() const {
    std::lock_guard<std::mutex> g(impl_->mu);
    return impl_->fm;
}

void Simulator::setFmState(FmState state) {
    std::lock_guard<std::mutex> g(impl_->mu);
    impl_->fm = std::move(state);
}

size_t Simulator::requestCount() const {
    std::lock_guard<std::mutex> g(impl_->mu);
    return impl_->log.size();
}

bool Simulator::waitForRequests(size_t n, int timeoutMs) const {
    std::unique_lock<std::mutex> g(impl_->mu);
    return impl_->requestCond.wait_for(g, std::chrono::milliseconds(timeoutMs),
                                       [&] { return impl_->log.size() >= n; });
}

bool Simulator::hungUp() const {
    return impl_->hungUp;
}

}  // namespace brdsim
