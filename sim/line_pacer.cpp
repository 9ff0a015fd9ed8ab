// Byte timing of a simulated serial line.
#include "line_pacer.h"

#include <algorithm>

namespace brdsim {

LinePacer::LinePacer(long baud, Clock::duration quantum)
    : baud_(baud > 0 ? baud : 0), quantum_(quantum) {
    if (baud_ > 0)
        byteTime_ = std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(10)) / baud_;
}

// A sender that wakes late may use the slots of at most one quantum it slept through,
// so that wake-up delays do not lower the rate below the line's.
size_t LinePacer::allowed(Clock::time_point now) const {
    if (!paced()) return static_cast<size_t>(-1);
    Clock::time_point start = std::max(lineFree_, now - quantum_);
    Clock::time_point limit = now + quantum_;
    if (start > limit) return 0;
    // Slots starting at start, start + t, ... up to limit.
    return static_cast<size_t>((limit - start) / byteTime_) + 1;
}

void LinePacer::book(Clock::time_point now, size_t n) {
    if (!paced() || n == 0) return;
    lineFree_ = std::max(lineFree_, now - quantum_) + byteTime_ * static_cast<long>(n);
}

void LinePacer::receive(Clock::time_point now, size_t n) {
    if (!paced() || n == 0) return;
    lineFree_ = std::max(lineFree_, now) + byteTime_ * static_cast<long>(n);
}

LinePacer::Clock::time_point LinePacer::nextSlot(Clock::time_point now, size_t want) const {
    if (!paced()) return now;
    if (want == 0) want = 1;
    // allowed(t) >= want once lineFree + (want - 1) slots start within a quantum of t.
    Clock::time_point at = lineFree_ + byteTime_ * static_cast<long>(want - 1) - quantum_;
    return at > now ? at : now;
}

size_t LinePacer::delivered(Clock::time_point now, size_t pending) const {
    if (!paced() || lineFree_ <= now) return pending;
    // Byte j of the pending ones (0 first) is complete at lineFree - (pending-1-j) * t.
    auto late = lineFree_ - now;
    size_t waiting = static_cast<size_t>((late + byteTime_ - Clock::duration(1)) / byteTime_);
    return waiting >= pending ? 0 : pending - waiting;
}

LinePacer::Clock::time_point LinePacer::nextDelivery(size_t pending,
                                                     size_t alreadyDelivered) const {
    if (!paced() || alreadyDelivered >= pending) return Clock::time_point::min();
    return lineFree_ - byteTime_ * static_cast<long>(pending - 1 - alreadyDelivered);
}

}  // namespace brdsim
