// The simulated board: a system MCU that answers ST frames on a pseudo-terminal,
// with a register model, per-product defaults, unsolicited traffic and faults.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "bootloader.h"
#include "fm_module.h"

namespace brdsim {

// What can go wrong with the answer to the next request(s).
enum class FaultKind {
    NoAnswer,       // the request is swallowed
    LateAnswer,     // the answer comes after `delayMs`
    BadCrc,         // the answer's CRC byte is wrong
    SplitAnswer,    // the answer goes out in two writes, `delayMs` apart
    GarbageBefore,  // junk bytes precede the answer frame
    DeviceFF,       // the answer's device byte is 0xFF
    HangUp,         // the simulator closes its side of the line
    WrongCommand,   // an FM answer carries another command's answer byte
};

struct Fault {
    FaultKind kind;
    int delayMs = 0;
    int count = 1;  // how many requests it applies to
};

enum class RequestKind {
    St,     // a system-MCU frame
    Fm,     // an FM module frame: `command` is its byte 1, `data` what follows up to F2
    Ascii,  // the TPMS receiver's display-mode command
};

// One request frame as the simulator received it, after unstuffing, without start
// and end codes: device, command, address, data..., crc.
struct Request {
    RequestKind kind = RequestKind::St;
    Bytes raw;  // the bytes as they came on the line, start and end codes included
    uint8_t device = 0, command = 0, address = 0;
    Bytes data;
    bool crcOk = false;
};

class Simulator {
   public:
    explicit Simulator(std::string product = "KX07");
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // Paces both directions as a serial line at `baud` would (10 bits a byte; 0: no
    // pacing). Call before start().
    void setLineRate(long baud);
    // Requests for `device` are answered by `handler` (command, address, data -> answer
    // data) instead of the register model. Call before start().
    using DeviceHandler = std::function<Bytes(uint8_t, uint8_t, const Bytes&)>;
    void setDeviceHandler(uint8_t device, DeviceHandler handler);
    // Serves another controller type instead of the system MCU: frames run from
    // `start` to `end` with `escape` stuffing, and `handler` gets each frame unstuffed
    // (start and end codes included) and returns the bytes to write back (framed, or
    // empty). Call before start().
    struct Framing {
        uint8_t start, end, escape;
    };
    using FrameHandler = std::function<Bytes(const Bytes&)>;
    void setFrameHandler(Framing framing, FrameHandler handler);
    // While `active` returns true, frames use `framing` instead (set before start()).
    void setAltFraming(Framing framing, std::function<bool()> active);
    // Bytes waiting for the line (what the MCU has queued and not yet sent).
    size_t backlog() const;

    // Opens the pseudo-terminal and starts serving it. False (with errno) on failure.
    bool start();
    void stop();
    const std::string& ptyPath() const { return ptyPath_; }
    const std::string& product() const { return product_; }

    // The answer data for a GET of device/command-byte address (overrides the register
    // model and the product's defaults). `command` is the request's command code: 2 GET, 3 SET.
    void setAnswer(uint8_t device, uint8_t command, uint8_t address, Bytes data);
    void clearAnswer(uint8_t device, uint8_t command, uint8_t address);
    // The register model: what a GET of device/address reads.
    void setRegister(uint8_t device, uint8_t address, Bytes data);
    Bytes getRegister(uint8_t device, uint8_t address) const;

    void queueFault(Fault f);
    void clearFaults();

    // Unsolicited traffic.
    void injectCanFrame(uint8_t device, uint32_t id, uint8_t ide, uint8_t rtr, const Bytes& data);
    // An answer-shaped frame from device 0 with command byte 0x04: payload[0] is the
    // address byte, the rest the data.
    void injectEvent(const Bytes& payload);
    void injectRaw(const Bytes& bytes);  // bytes written to the line as they are
    // Starts sending `count` CAN frames at `perSecond` (0 stops a running stream).
    void startCanStream(int perSecond, int count, uint32_t id = 0x123);

    // The FM module's state (what it answers from; what requests changed).
    FmState fmState() const;
    void setFmState(FmState state);

    std::vector<Request> requests() const;
    // Forgets the requests and the line bytes.
    void clearRequests();
    // Every byte the host wrote, in order (also what fell outside any frame).
    Bytes lineBytes() const;
    size_t requestCount() const;
    // Waits until at least `n` requests have come in; false when `timeoutMs` passed first.
    bool waitForRequests(size_t n, int timeoutMs) const;
    // True once a HangUp fault has closed the line.
    bool hungUp() const;
    // The system MCU's boot loader and flash (IAP rows, device 3).
    BootLoader& bootLoader();
    // Bytes the simulator took from the line and wrote to it since start.
    uint64_t bytesReceived() const;
    uint64_t bytesSent() const;

   private:
    struct Impl;
    std::string product_;
    std::string ptyPath_;
    std::unique_ptr<Impl> impl_;
};

// Builds an ST frame on the wire: F1, stuffed (device command address data crc), F2.
Bytes encodeStFrame(uint8_t device, uint8_t command, uint8_t address, const Bytes& data);
// The CAN frame an ST MCU sends unsolicited for one message: F1, device, 0x04, address
// byte 0, identifier (4 bytes, least significant first), ide, rtr, dlc, data, crc, F2.
Bytes encodeStCanFrame(uint8_t device, uint32_t id, uint8_t ide, uint8_t rtr, const Bytes& data);

// What the MCU of `product` answers to a GET of device/address when nothing was set:
// true with the bytes, or false when the product has no such register.
// `product` may carry the trailing line end of a detected product name.
bool defaultAnswer(const std::string& product, uint8_t device, uint8_t address, Bytes* out);

// Writes DIR/<product>.conf naming `ptyPath` as the MCU device; returns the file path.
// `canPtys` become enabled CAN_DEVICE lines, in order.
std::string writeConfig(const std::string& dir, const std::string& product,
                        const std::string& ptyPath, int debugLevel = 0,
                        const std::vector<std::string>& canPtys = {});

}  // namespace brdsim
