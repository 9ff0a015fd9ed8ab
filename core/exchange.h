// The one request/answer exchange every handler uses: the link, the controller type
// and mode the row is sent as, the row's pool index and the request bytes go in; the
// result code and the answer bytes come back as a value.
#pragma once

#include <array>
#include <span>

#include "mcu_base.h"

namespace core {

// What one exchange gave back. `result` is the link's code (MCU_RESULT_OK, _TIMEOUT,
// ...); `length` the answer bytes received, meaningful when result is MCU_RESULT_OK.
struct Answer {
    int result = MCU_RESULT_NONE;
    int length = 0;
    std::array<BYTE, RESPONSE_BUFFER_SIZE> bytes{};

    bool ok() const { return result == MCU_RESULT_OK; }
    // Byte i of the answer, or 0 beyond its length.
    BYTE at(int i) const { return i >= 0 && i < length ? bytes[static_cast<size_t>(i)] : 0; }
    std::span<const BYTE> view() const { return {bytes.data(), static_cast<size_t>(length)}; }
};

// The mode a type is sent in when the caller has no reason to pick another.
int apModeOf(int mcuType);

// Sends pool entry `cmdIndex` of `link` as controller type `mcuType` in `mode` (stMode
// for ST, nxpMode for NXP; FM and customised have no mode) with `request` as its data,
// and waits for the answer. A null link gives MCU_RESULT_OPEN_FAIL, nothing sent. The
// type and mode are changed only while no answer is outstanding on the link, so an
// answer is always decoded as the type its request was sent as.
Answer exchange(MCU_CONTENT* link, int mcuType, int mode, int cmdIndex,
                std::span<const BYTE> request = {});

// The same, tried up to `tries` times 1 ms apart until one gets an answer; the answer
// of the last try is returned.
Answer exchangeRetrying(MCU_CONTENT* link, int mcuType, int mode, int cmdIndex,
                        std::span<const BYTE> request, int tries = 20);

}  // namespace core
