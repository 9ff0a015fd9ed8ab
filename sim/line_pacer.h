// Paces the bytes of one direction of a simulated serial line: at BAUD, a byte takes
// 10 bit times (start, 8 data, stop), so nothing goes faster than a real line would.
#pragma once

#include <chrono>
#include <cstddef>

namespace brdsim {

class LinePacer {
   public:
    using Clock = std::chrono::steady_clock;

    // baud 0: no pacing (every byte passes at once).
    explicit LinePacer(long baud = 0, Clock::duration quantum = std::chrono::milliseconds(1));

    bool paced() const { return baud_ > 0; }
    long baud() const { return baud_; }
    Clock::duration byteTime() const { return byteTime_; }

    // Sending side: how many bytes may be handed to the line at `now`. A byte may go
    // once its slot on the line starts within `quantum` of now, so writes come in small
    // bursts while the rate over any span longer than two quanta stays the line's.
    size_t allowed(Clock::time_point now) const;
    // Books `n` bytes written at `now`.
    void book(Clock::time_point now, size_t n);
    // Books `n` bytes read from the other end at `now`: they arrive one byte time
    // apart, after those still on the line.
    void receive(Clock::time_point now, size_t n);
    // Sending side: when `want` bytes may go (meaningful when allowed() gave fewer).
    Clock::time_point nextSlot(Clock::time_point now, size_t want = 1) const;
    // Bytes the line carries in one quantum: a sender with more to send waits for about
    // half of that before it writes, so that a busy line is written in bursts rather than
    // a byte at a time.
    size_t burst() const { return paced() ? static_cast<size_t>(quantum_ / byteTime_) : 0; }

    // Receiving side: of `pending` booked bytes not yet taken in (the last ones booked),
    // how many the line has delivered by `now`.
    size_t delivered(Clock::time_point now, size_t pending) const;
    // When the first of `pending` undelivered bytes arrives.
    Clock::time_point nextDelivery(size_t pending, size_t alreadyDelivered) const;

   private:
    long baud_;
    Clock::duration byteTime_{};
    Clock::duration quantum_;
    Clock::time_point lineFree_{};  // when the last booked byte has left the line
};

}  // namespace brdsim
