// The simulated TPMS receiver: display-mode command, sensor records.
#include "tpms.h"

#include <chrono>

#include "brdsim.h"

namespace brdsim {

Bytes tpmsDisplayModeAnswer() {
    return {0x01};
}

bool AsciiCommandMatcher::feed(uint8_t b) {
    constexpr size_t len = sizeof TPMS_DISPLAY_MODE - 1;
    seen_.push_back(static_cast<char>(b));
    if (seen_.size() > len) seen_.erase(0, seen_.size() - len);
    if (seen_ != TPMS_DISPLAY_MODE) return false;
    seen_.clear();
    return true;
}

Bytes encodeTpmsRecord(const TpmsSensor& s) {
    return {static_cast<uint8_t>(s.id >> 24),          static_cast<uint8_t>(s.id >> 16),
            static_cast<uint8_t>(s.id >> 8),           static_cast<uint8_t>(s.id),
            static_cast<uint8_t>(s.pressureKpa >> 8),  static_cast<uint8_t>(s.pressureKpa),
            static_cast<uint8_t>(s.temperatureC + 50), s.status};
}

std::vector<TpmsSensor> tpmsDefaultSensors() {
    return {{0xABCD1234, 230, 24, 0},
            {0x00C0FFEE, 228, 25, 0},
            {0x13572468, 190, 26, 0x01},
            {0x0BADF00D, 231, 61, 0x06}};
}

Bytes tpmsStreamRecord(const std::vector<TpmsSensor>& sensors, uint32_t n) {
    if (sensors.empty()) return {};
    TpmsSensor s = sensors[n % sensors.size()];
    s.pressureKpa = static_cast<uint16_t>(s.pressureKpa + (n / sensors.size()) % 4);
    return encodeTpmsRecord(s);
}

TpmsStreamer::TpmsStreamer(Simulator& line, int perSecond, int count,
                           std::vector<TpmsSensor> sensors) {
    if (perSecond <= 0 || count == 0 || sensors.empty()) return;
    thread_ =
        std::thread(&TpmsStreamer::run, this, std::ref(line), perSecond, count, std::move(sensors));
}

TpmsStreamer::~TpmsStreamer() {
    {
        std::lock_guard<std::mutex> g(mu_);
        stopping_ = true;
    }
    stopCond_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void TpmsStreamer::run(Simulator& line, int perSecond, int count, std::vector<TpmsSensor> sensors) {
    using Clock = std::chrono::steady_clock;
    const auto interval =
        std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(1)) / perSecond;
    Clock::time_point next = Clock::now();
    std::unique_lock<std::mutex> lk(mu_);
    for (uint32_t n = 0; count < 0 || n < static_cast<uint32_t>(count); ++n) {
        if (stopCond_.wait_until(lk, next, [this] { return stopping_; })) return;
        line.injectRaw(tpmsStreamRecord(sensors, n));
        next += interval;
    }
}

}  // namespace brdsim
