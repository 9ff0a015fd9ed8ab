// The simulated NXP CAN controller on its own pseudo-terminal, and the system MCU's two
// CAN channels (devices 6 and 7), each joined to the simulated bus.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "brdsim.h"
#include "can_bus.h"

namespace brdsim {

class NxpController {
   public:
    // A request handler: the request data (after the command code) -> the answer bytes
    // after the start code (answer code, status, data), or empty for no answer.
    using Command = std::function<Bytes(const Bytes&)>;

    explicit NxpController(CanBus& bus);
    // Stops serving before the command handlers go.
    ~NxpController() { port_.stop(); }
    NxpController(const NxpController&) = delete;
    NxpController& operator=(const NxpController&) = delete;

    // Adds or replaces the handler of a command code (call before start()).
    void addCommand(uint8_t code, Command handler);
    void setLineRate(long baud) { port_.setLineRate(baud); }
    bool start();
    void stop() { port_.stop(); }
    const std::string& ptyPath() const { return port_.ptyPath(); }
    Simulator& port() { return port_; }
    int busPort() const { return busPort_; }
    // The controller's boot loader and flash: update codes in F1/F2 framing while it runs.
    BootLoader& bootLoader() { return boot_; }

    // Firmware facts the controller reports.
    static constexpr uint8_t FW_VERSION[3] = {1, 4, 2};
    static constexpr uint8_t BL_VERSION[3] = {1, 0, 7};
    static constexpr uint16_t INPUT_MILLIVOLTS = 12150;

   private:
    Bytes answer(const Bytes& frame);
    Bytes bootAnswer(uint8_t code, const Bytes& data, bool app);
    void deliver(const CanMessage& m);

    CanBus& bus_;
    Simulator port_;
    int busPort_ = -1;
    std::map<uint8_t, Command> commands_;
    BootLoader boot_;
};

// Answers the system MCU's CAN channel requests (devices 6 and 7) from `bus` ports, and
// hands frames the bus delivers to those channels to `sim` as CAN frames. Call before
// sim.start(). Returns the bus ports of channel 1 and 2.
std::pair<int, int> attachStChannels(Simulator& sim, CanBus& bus);

// The NXP controller's CAN frame on the line: C1 30 id(4) ide rtr dlc data C2, stuffed.
Bytes encodeNxpCanFrame(const CanMessage& m);

}  // namespace brdsim
