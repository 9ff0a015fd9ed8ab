// The answers of the peripheral command groups of the simulated system MCU.
#pragma once

#include <map>
#include <string>

#include "brdsim.h"

namespace brdsim {

// What the MCU of `product` answers for the peripheral groups (devices 2, 5, 8, 9, 10, 11, 12, 13,
// 17).
bool peripheralDefaultAnswer(const std::string& product, uint8_t device, uint8_t address,
                             Bytes* out);
// The answers of the peripheral registers that the request data pick (a port, board, slot
// or index): true with *out when `r` is one of them. SETs of such registers are kept in
// `remembered`, one per pick.
bool peripheralAnswer(const std::string& product, std::map<Bytes, Bytes>& remembered,
                      const Request& r, Bytes* out);

}  // namespace brdsim
