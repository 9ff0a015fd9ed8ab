// CAN channels over the links: st1/st2 (the system MCU's channels, devices 6 and 7) and
// nxp0... (the NXP controllers), and the one routine every CAN request goes through.
#pragma once

#include <string>
#include <vector>

#include "can/can_layout.h"
#include "exchange.h"
#include "mcu_base.h"

namespace can {

struct Channel {
    std::string name;  // st1, st2, nxp0, ...
    Controller controller = Controller::St;
    MCU_CONTENT* link = nullptr;  // null when the device is disabled
    int stChannel = 0;            // 1 or 2 on the system MCU
    std::string device;           // the serial device it is reached through
    bool enabled = true;          // its device is enabled in the configuration
};

// The ST device byte of a channel (6 or 7).
inline int stDevice(const Channel& c) {
    return 5 + c.stChannel;
}

// Puts the CAN requests of `controller` into the link's pool (once per link) and sets
// its mode; before the link's first CAN request.
void prepareLink(MCU_CONTENT* link, Controller controller);

// The pool index of a request on a channel (for the send thread's series).
int requestIndex(const Channel& c, Op op);

// Results of canExchange.
constexpr int CAN_OK = 1;
constexpr int CAN_REFUSED = 0;       // the controller answered, but not with success
constexpr int CAN_NO_ANSWER = -100;  // an answer that could not be used
// Negative: the link's result (-2 write failed, -4 time-out, -5 busy, ...).

// Sends request `op` with `data` on the channel and checks the answer; *payload gets
// the answer's data after its status. Every CAN request of brdcan goes through here.
// `raw`, when given, gets the exchange's answer as the link returned it (for reports).
int canExchange(const Channel& c, Op op, const Bytes& data, Bytes* payload,
                core::Answer* raw = nullptr);

// What a link result means, for messages.
const char* linkResultText(int result);

}  // namespace can
