// libFuzzer target: arbitrary bytes, cut into reads, through the decoder of every
// controller type and mode.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "fuzz_common.h"
#include "mcu_base.h"

namespace {

void sink(CALLBACK_DATA d) {
    // Touch what a real callback would read.
    volatile BYTE b = d.szData[d.szDataLength ? d.szDataLength - 1 : 0];
    volatile BYTE c = d.canData.data[d.canData.dlc < 8 ? d.canData.dlc : 7];
    (void)b;
    (void)c;
}

struct Target {
    int type, stMode, nxpMode;
    int (*core)(MCU_CONTENT*, const BYTE*, unsigned int);
};

const Target kTargets[] = {
    {MCU_TYPE_ST, ST_MODE_AP, 0, ST_DecodeBytes},
    {MCU_TYPE_ST, ST_MODE_UPDATE, 0, ST_DecodeBytes},
    {MCU_TYPE_NXP, 0, NXP_MODE_AP, NXP_DecodeBytes},
    {MCU_TYPE_NXP, 0, NXP_MODE_UPDATE, NXP_DecodeBytes},
    {MCU_TYPE_FM, 0, 0, FM_DecodeBytes},
    {MCU_TYPE_CUSTOMISE, 0, 0, Customise_DecodeBytes},
};

}  // namespace

// Layout: one byte picks the decoder; then, repeatedly, one byte gives the length of
// the next read (times 5, so reads of 1024 and more occur; 0xFF stands for a failed
// read) followed by that many bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    static bool registered = (Register_MCU_EventCallBack(0, 0, sink), true);
    (void)registered;
    const Target& t = kTargets[data[0] % (sizeof kTargets / sizeof kTargets[0])];
    // One context for every input (a fresh one is mostly a 400 KB command pool to clear):
    // what the decoders keep between reads is reset.
    static MCU_CONTENT* const m = new MCU_CONTENT{};
    m->receiveDataStartIndex = 0;
    m->F1_Index = 0;
    m->catch_F1_Flag = 0;
    m->validDataLength = 0;
    m->CommandResponseDataLength = 0;
    m->receiveErrorCount = 0;
    m->fd = 3;
    m->mcuType = t.type;
    m->stMode = t.stMode;
    m->nxpMode = t.nxpMode;
    size_t i = 1;
    while (i < size) {
        uint8_t lenByte = data[i++];
        m->lock = 1;
        if (lenByte == 0xFF) {
            t.core(m, nullptr, static_cast<unsigned int>(-1));
            continue;
        }
        size_t n = static_cast<size_t>(lenByte) * 5;
        if (n > size - i) n = size - i;
        t.core(m, data + i, static_cast<unsigned int>(n));
        i += n;
        // Whatever the input, the decoder's bookkeeping stays inside its buffers.
        if (m->receiveDataStartIndex >= RECEIVE_BUFFER_SIZE) __builtin_trap();
        if (m->CommandResponseDataLength > RESPONSE_BUFFER_SIZE) __builtin_trap();
        if (m->validDataLength > RECEIVE_BUFFER_SIZE) __builtin_trap();
    }
    return 0;
}
