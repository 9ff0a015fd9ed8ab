// The simulated CAN bus and its generator.
#include "can_bus.h"

#include <chrono>

namespace brdsim {

namespace {

using Clock = std::chrono::steady_clock;
// A receiving line with more than this many bytes queued holds the generator back.
constexpr size_t BEHIND_BYTES = 1024;

}  // namespace

CanBus::~CanBus() {
    stopGenerator();
}

int CanBus::attach(std::function<void(const CanMessage&)> deliver,
                   std::function<size_t()> backlog) {
    std::lock_guard<std::mutex> g(mu_);
    Port p;
    p.deliver = std::move(deliver);
    p.backlog = std::move(backlog);
    ports_.push_back(std::move(p));
    return static_cast<int>(ports_.size()) - 1;
}

void CanBus::setBitRate(int port, int code) {
    std::lock_guard<std::mutex> g(mu_);
    if (port >= 0 && port < static_cast<int>(ports_.size())) ports_[port].rateCode = code;
}

int CanBus::bitRate(int port) const {
    std::lock_guard<std::mutex> g(mu_);
    return port >= 0 && port < static_cast<int>(ports_.size()) ? ports_[port].rateCode : -1;
}

void CanBus::addFilter(int port, uint32_t id, uint32_t mask, bool ext) {
    std::lock_guard<std::mutex> g(mu_);
    if (port >= 0 && port < static_cast<int>(ports_.size()))
        ports_[port].filters.push_back({id, mask, ext});
}

void CanBus::clearFilters(int port) {
    std::lock_guard<std::mutex> g(mu_);
    if (port >= 0 && port < static_cast<int>(ports_.size())) ports_[port].filters.clear();
}

CanErrors CanBus::errors(int port) const {
    std::lock_guard<std::mutex> g(mu_);
    return port >= 0 && port < static_cast<int>(ports_.size()) ? ports_[port].errors : CanErrors{};
}

uint64_t CanBus::sent(int port) const {
    std::lock_guard<std::mutex> g(mu_);
    return port >= 0 && port < static_cast<int>(ports_.size()) ? ports_[port].sent : 0;
}

uint64_t CanBus::received(int port) const {
    std::lock_guard<std::mutex> g(mu_);
    return port >= 0 && port < static_cast<int>(ports_.size()) ? ports_[port].received : 0;
}

int CanBus::transmit(int port, const CanMessage& m, int rateCode) {
    std::lock_guard<std::mutex> g(mu_);
    bool fromPort = port >= 0 && port < static_cast<int>(ports_.size());
    if (fromPort) {
        rateCode = ports_[port].rateCode;
        ports_[port].sent++;
    }
    int got = 0;
    bool mismatch = false;
    for (int i = 0; i < static_cast<int>(ports_.size()); ++i) {
        if (i == port) continue;
        Port& p = ports_[i];
        if (p.rateCode != rateCode) {
            // The port sees only noise: a form error on its side.
            mismatch = true;
            p.errors.code = 2;
            p.errors.count++;
            if (p.errors.rxErrors < 255) p.errors.rxErrors++;
            continue;
        }
        bool pass = p.filters.empty();
        for (const Filter& f : p.filters)
            if (f.ext == m.ext && (m.id & f.mask) == (f.id & f.mask)) pass = true;
        if (!pass) continue;
        p.received++;
        ++got;
        if (p.deliver) p.deliver(m);
    }
    if (fromPort && mismatch && got == 0) {
        // Nobody acknowledged the frame.
        CanErrors& e = ports_[port].errors;
        e.code = 3;
        e.count++;
        if (e.txErrors < 248) e.txErrors += 8;
    }
    return got;
}

bool CanBus::anyPortBehind() const {
    std::lock_guard<std::mutex> g(mu_);
    for (const Port& p : ports_)
        if (p.backlog && p.backlog() > BEHIND_BYTES) return true;
    return false;
}

void CanBus::startGenerator(int perSecond, long count, uint32_t id, bool ext, int rateCode) {
    stopGenerator();
    genOn_ = true;
    genCounter_ = 0;
    gen_ = std::thread([=, this] { generatorLoop(perSecond, count, id, ext, rateCode); });
}

void CanBus::stopGenerator() {
    {
        std::lock_guard<std::mutex> g(genMu_);
        genOn_ = false;
    }
    genCond_.notify_all();
    if (gen_.joinable()) gen_.join();
}

void CanBus::generatorLoop(int perSecond, long count, uint32_t id, bool ext, int rateCode) {
    Clock::duration interval =
        perSecond > 0
            ? std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(1)) / perSecond
            : Clock::duration::zero();
    Clock::time_point next = Clock::now();
    for (long sentCount = 0; genOn_ && (count < 0 || sentCount < count); ++sentCount) {
        // Wait for the frame's time, and for the lines to take what they have.
        while (genOn_) {
            Clock::time_point now = Clock::now();
            Clock::time_point wakeAt = next;
            if (now >= next) {
                if (!anyPortBehind()) break;
                wakeAt = now + std::chrono::microseconds(200);
            }
            std::unique_lock<std::mutex> lk(genMu_);
            genCond_.wait_until(lk, wakeAt, [this] { return !genOn_; });
        }
        if (!genOn_) break;
        CanMessage m;
        m.id = id;
        m.ext = ext;
        m.dlc = 8;
        uint32_t c = genCounter_;
        for (int k = 0; k < 4; ++k) m.data[k] = static_cast<uint8_t>(c >> (8 * k));
        m.data[4] = 0xCA;
        m.data[5] = 0xFE;
        m.data[6] = 0x00;
        m.data[7] = 0x01;
        transmit(-1, m, rateCode);
        genCounter_ = c + 1;
        next += interval;
        // A generator that fell far behind does not burst to catch up.
        if (Clock::now() - next > std::chrono::milliseconds(100)) next = Clock::now();
    }
    genOn_ = false;
}

}  // namespace brdsim
