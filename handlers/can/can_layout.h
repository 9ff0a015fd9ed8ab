// The one table of CAN request layouts: which command each controller takes for a bit
// rate, filter, message, stop, FIFO clear, error code, versions and input voltage, how
// its data is laid out, and how each controller marks extended and remote frames.
// Adapting to a controller's firmware is a change here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "can_frame.h"

namespace can {

using Bytes = std::vector<uint8_t>;

enum class Controller { St, Nxp };

enum class Op {
    BitRate,       // data: bit-rate code (bitRates below)
    Filter,        // data: 1, id (4, LSB first), mask (4), ide
    ClearFilters,  // data: 0
    Send,          // data: id (4), ide, rtr, dlc, data (8): 15 bytes, as the series
    Series,        // the send thread's timed series: same layout as Send
    Stop,          // no data
    ClearFifo,     // no data
    ErrorCode,     // no data; answer: code, tx errors, rx errors, error count (4)
    FwVersion,     // no data; answer: major, minor, patch
    BlVersion,     // no data; answer: major, minor, patch
    InputVoltage,  // no data; answer: millivolts (2)
};

// One request: for the ST channels the command byte (2 GET, 3 SET) and address, sent
// with device 6 (st1) or 7 (st2); for the NXP controller its command code.
struct RequestLayout {
    Op op;
    Controller controller;
    uint8_t command;  // ST: 2 or 3; NXP: the command code
    uint8_t address;  // ST only
    const char* row;  // the command-table row ("%d" stands for the ST channel number)
};

const std::vector<RequestLayout>& requestLayouts();
// The layout of `op` on `controller`, or null when that controller has no such request.
const RequestLayout* findLayout(Controller controller, Op op);
// The table row name of a layout for channel 1 or 2 (ST) or any NXP device.
std::string rowName(const RequestLayout& layout, int stChannel);

// How a controller marks the frame kinds in `ide` and `rtr`.
struct FrameCoding {
    uint16_t ideStandard, ideExtended;
    uint16_t rtrData, rtrRemote;
};
FrameCoding frameCoding(Controller controller);

// Bit rates offered, with the code sent (the same as the serial-line CAN S0-S8 codes).
struct BitRate {
    long rate;
    uint8_t code;
};
const std::vector<BitRate>& bitRates();
// "500000", "500k", "1M": the code of an offered rate, or -1.
int bitRateCode(const std::string& text);
long bitRateOfCode(int code);

// Request data.
Bytes bitRateData(uint8_t code);
Bytes filterData(Controller controller, const Filter& f);
Bytes clearFiltersData();
Bytes messageData(Controller controller, const Frame& f);

// What a controller's answer means. `answer` is what the exchange returns: for the ST
// channels the data after the address, for the NXP controller the bytes between start
// and end codes (answer code = request code + 1, then status 1 for success).
// True when the controller accepted the request; *payload gets the data after the status.
bool answerOk(Controller controller, const RequestLayout& layout, const uint8_t* answer, int length,
              Bytes* payload);

// A frame as a controller reports it (ide, rtr values of its own).
Frame frameFromController(Controller controller, uint32_t id, uint16_t ide, uint16_t rtr,
                          uint16_t dlc, const uint8_t* data);

}  // namespace can
