// The simulated CAN bus: joins the system MCU's two channels and the NXP controllers.
// A frame sent on one port reaches every other port whose bit rate matches the sender's
// and whose filters pass it; a port at another bit rate counts an error. A generator
// can put a stream with a running counter on the bus.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace brdsim {

struct CanMessage {
    uint32_t id = 0;
    bool ext = false;
    bool rtr = false;
    uint8_t dlc = 0;
    uint8_t data[8] = {};
};

struct CanErrors {
    uint8_t code = 0;  // last error: 0 none, 1 stuff, 2 form, 3 acknowledgement, 6 CRC
    uint8_t txErrors = 0, rxErrors = 0;
    uint32_t count = 0;  // errors seen since start
};

class CanBus {
   public:
    // Bit-rate codes are those of the requests (0 10k ... 6 500k ... 8 1M).
    static constexpr int DEFAULT_RATE_CODE = 6;

    CanBus() = default;
    ~CanBus();
    CanBus(const CanBus&) = delete;
    CanBus& operator=(const CanBus&) = delete;

    // A port: `deliver` takes each frame it receives (called on the sender's thread);
    // `backlog` tells how many bytes its line still has to send (the generator waits
    // while any port is behind). Returns the port number.
    int attach(std::function<void(const CanMessage&)> deliver,
               std::function<size_t()> backlog = nullptr);

    void setBitRate(int port, int code);
    int bitRate(int port) const;
    // Acceptance filters: none means everything passes; else any one that matches.
    void addFilter(int port, uint32_t id, uint32_t mask, bool ext);
    void clearFilters(int port);
    CanErrors errors(int port) const;

    // Sends `m` from `port` (the bit rate of that port), or from outside the ports
    // (port -1) at `rateCode`. Returns how many ports received it.
    int transmit(int port, const CanMessage& m, int rateCode = DEFAULT_RATE_CODE);
    // Frames sent and received per port.
    uint64_t sent(int port) const;
    uint64_t received(int port) const;

    // The generator: `count` frames (< 0: without end) of identifier `id` at `perSecond`
    // (0: as fast as the slowest receiving line takes them), 8 data bytes: the running
    // counter (4 bytes, least significant first), then CA FE 00 01.
    void startGenerator(int perSecond, long count, uint32_t id, bool ext, int rateCode);
    void stopGenerator();
    bool generating() const { return genOn_; }
    uint32_t generated() const { return genCounter_; }

   private:
    struct Filter {
        uint32_t id, mask;
        bool ext;
    };
    struct Port {
        std::function<void(const CanMessage&)> deliver;
        std::function<size_t()> backlog;
        int rateCode = DEFAULT_RATE_CODE;
        std::vector<Filter> filters;
        CanErrors errors;
        uint64_t sent = 0, received = 0;
    };
    void generatorLoop(int perSecond, long count, uint32_t id, bool ext, int rateCode);
    bool anyPortBehind() const;

    mutable std::mutex mu_;
    std::vector<Port> ports_;
    std::thread gen_;
    std::mutex genMu_;
    std::condition_variable genCond_;
    std::atomic<bool> genOn_{false};
    std::atomic<uint32_t> genCounter_{0};
};

}  // namespace brdsim
