// Helpers shared by the files of the link library; not part of its interface.
#pragma once

#include <syslog.h>

#include <cstdarg>

#include "mcu_base.h"

namespace mcu_detail {

// A syslog record at LOG_DEBUG when any bit of `mask` is set in the link's debugLevel.
__attribute__((format(printf, 3, 4))) inline void trace(const MCU_CONTENT* m, int mask,
                                                        const char* fmt, ...) {
    if (!(m->debugLevel.load(std::memory_order_relaxed) & mask)) return;
    va_list ap;
    va_start(ap, fmt);
    vsyslog(LOG_DEBUG, fmt, ap);
    va_end(ap);
}

// Copies an answer into CommandResponseData under the hand-over lock (clipped to the
// buffer). The waiter is released separately, once per decoded span.
void storeAnswer(MCU_CONTENT* m, const BYTE* frame, unsigned int len);
// Clears `lock` and wakes the waiter in WaitForRecevData.
void releaseWaiter(MCU_CONTENT* m);

// Writes the request of `index`; *attempted tells whether a write was tried (and so
// whether `lock` was set).
int writeRequest(MCU_CONTENT* m, int index, const BYTE* data, int dataLen, bool* attempted);

}  // namespace mcu_detail
