// libFuzzer target with properties for the ST and NXP framings:
//  - a request encoded by the link and read back by the decoder is the request again;
//  - a stream of valid frames cut into reads at arbitrary points decodes to those frames;
//  - noise yields no answer that is not a well-formed frame on the line.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz_common.h"
#include "mcu_base.h"

namespace {

using Bytes = std::vector<BYTE>;

struct Framing {
    int type, stMode, nxpMode;
    BYTE start, end, escape;
    bool crc;
};
const Framing kFramings[] = {
    {MCU_TYPE_ST, ST_MODE_AP, 0, ST_START_CODE_F1, ST_END_CODE_F2, ESCAPE_CODE_F0, true},
    {MCU_TYPE_NXP, 0, NXP_MODE_AP, NXP_START_CODE_C1, NXP_END_CODE_C2, ESCAPE_CODE_C0, false},
};

// Reads the fuzzer's bytes one at a time; zeros once they run out.
struct Input {
    const uint8_t* p;
    size_t left;
    BYTE next() {
        if (!left) return 0;
        --left;
        return *p++;
    }
};

// One context for every input (a fresh one is mostly a 400 KB command pool to clear):
// what the decoders keep between reads is reset.
MCU_CONTENT* context(const Framing& f) {
    static MCU_CONTENT* m = new MCU_CONTENT{};
    m->receiveDataStartIndex = 0;
    m->F1_Index = 0;
    m->catch_F1_Flag = 0;
    m->validDataLength = 0;
    m->CommandResponseDataLength = 0;
    m->cmd_count = 0;
    m->lock = 0;
    m->fd = -1;
    m->mcuType = f.type;
    m->stMode = f.stMode;
    m->nxpMode = f.nxpMode;
    return m;
}

int decode(MCU_CONTENT* m, const BYTE* b, size_t n) {
    return m->mcuType == MCU_TYPE_NXP ? NXP_DecodeBytes(m, b, unsigned(n))
                                      : ST_DecodeBytes(m, b, unsigned(n));
}

Bytes answerOf(const MCU_CONTENT* m) {
    return Bytes(m->CommandResponseData, m->CommandResponseData + m->CommandResponseDataLength);
}

// The decoders take an answer that holds its end code followed by its start code, an ST
// answer from a CAN device, and an NXP answer with the CAN command byte for something
// else on purpose: such contents are not generated for the round-trip properties.
bool answerShaped(const Framing& f, const Bytes& plain) {
    for (size_t i = 1; i + 1 < plain.size(); ++i)
        if (plain[i] == f.end || plain[i] == f.start) return false;
    if (f.type == MCU_TYPE_ST) return plain[1] != ST_DEVICE_CAN1 && plain[1] != ST_DEVICE_CAN2;
    return plain[1] != NXP_COMMAND_CAN;
}

// One request through the link's own encoder (written to a pipe) and back through the
// decoder: the answer the waiter gets is the request, unescaped.
void requestRoundTrip(const Framing& f, Input& in, int pipeFd[2]) {
    auto m = context(f);
    m->fd = pipeFd[1];
    BYTE dev = in.next(), cmdByte = in.next(), addr = in.next();
    Bytes data(in.next() % 24);
    for (BYTE& b : data) b = in.next();
    pushCommandToPool(m, 1, dev, cmdByte, addr);
    if (defaultWrite(m, 1, data.data(), int(data.size())) != MCU_RESULT_OK) return;
    BYTE wire[SEND_BUFFER_SIZE];
    ssize_t n = read(pipeFd[0], wire, sizeof wire);
    FUZZ_CHECK(n > 0);
    Bytes plain{f.start, dev};
    if (f.type == MCU_TYPE_ST) plain.insert(plain.end(), {cmdByte, addr});
    plain.insert(plain.end(), data.begin(), data.end());
    if (f.crc) plain.push_back(Get_CRC8(plain.data() + 1, unsigned(plain.size() - 1)));
    plain.push_back(f.end);
    m->lock = 1;
    decode(m, wire, size_t(n));
    if (!answerShaped(f, plain)) return;
    FUZZ_CHECK(m->lock == 0);
    FUZZ_CHECK(answerOf(m) == plain);
}

// Several valid answers, stuffed, sent as one stream cut at arbitrary points: each read
// that completes frames delivers the last of them.
void streamOfFrames(const Framing& f, Input& in) {
    std::vector<Bytes> plains;
    std::vector<size_t> ends;  // where each frame ends on the line
    Bytes line;
    int count = 1 + in.next() % 6;
    for (int k = 0; k < count; ++k) {
        Bytes inner(1 + in.next() % 20);
        for (BYTE& b : inner) b = in.next();
        if (f.crc) inner.push_back(Get_CRC8(inner.data(), unsigned(inner.size())));
        Bytes plain{f.start};
        plain.insert(plain.end(), inner.begin(), inner.end());
        plain.push_back(f.end);
        if (plain.size() < 4 || !answerShaped(f, plain)) continue;
        BYTE stuffed[64];
        unsigned n = stuffFrame(f.start, f.end, f.escape, inner.data(), unsigned(inner.size()),
                                stuffed, sizeof stuffed);
        FUZZ_CHECK(n > 0);
        line.insert(line.end(), stuffed, stuffed + n);
        ends.push_back(line.size());
        plains.push_back(plain);
    }
    if (plains.empty()) return;
    auto m = context(f);
    size_t at = 0, done = 0;
    while (at < line.size()) {
        size_t cut = std::min(line.size() - at, size_t(1 + in.next() % 40));
        m->lock = 1;
        decode(m, line.data() + at, cut);
        at += cut;
        // A read that completes frames leaves the last of them as the answer; any other
        // read leaves the waiter waiting.
        size_t complete = done;
        while (complete < ends.size() && ends[complete] <= at) ++complete;
        if (complete == done) {
            FUZZ_CHECK(m->lock == 1);
            continue;
        }
        FUZZ_CHECK(m->lock == 0);
        FUZZ_CHECK(answerOf(m) == plains[complete - 1]);
        done = complete;
    }
    FUZZ_CHECK(done == plains.size());
}

// The test's own reading of the line: frames from a start code to the next end code with
// no start code between and every escape followed by 00-03, unescaped.
bool insideWellFormedFrame(const Framing& f, const Bytes& line, const Bytes& answer) {
    for (size_t s = 0; s < line.size(); ++s) {
        if (line[s] != f.start) continue;
        Bytes frame{f.start};
        bool ok = true;
        size_t j = s + 1;
        for (; j < line.size() && line[j] != f.end; ++j) {
            if (line[j] == f.start) ok = false;
            if (line[j] != f.escape) {
                frame.push_back(line[j]);
            } else if (j + 1 < line.size() && line[j + 1] <= ESCAPE_OFFSET_MAX) {
                frame.push_back(BYTE(f.escape + line[++j]));
            } else {
                ok = false;
            }
        }
        if (!ok || j >= line.size()) continue;
        frame.push_back(f.end);
        if (std::search(frame.begin(), frame.end(), answer.begin(), answer.end()) != frame.end())
            return true;
    }
    return false;
}

void noise(const Framing& f, Input& in) {
    Bytes line;
    while (in.left) line.push_back(in.next());
    auto m = context(f);
    size_t at = 0;
    while (at < line.size()) {
        size_t cut = std::min(line.size() - at, size_t(1 + line[at] % 64));
        m->lock = 1;
        decode(m, line.data() + at, cut);
        at += cut;
        if (m->lock != 0) continue;
        Bytes got = answerOf(m);
        FUZZ_CHECK(insideWellFormedFrame(f, line, got));
        if (f.crc)
            FUZZ_CHECK(Get_CRC8(got.data() + 1, unsigned(got.size() - 3)) == got[got.size() - 2]);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    static int pipeFd[2] = {-1, -1};
    if (pipeFd[0] < 0 && pipe(pipeFd) != 0) abort();
    Input in{data + 1, size - 1};
    const Framing& f = kFramings[data[0] & 1];
    switch ((data[0] >> 1) % 3) {
        case 0:
            requestRoundTrip(f, in, pipeFd);
            break;
        case 1:
            streamOfFrames(f, in);
            break;
        default:
            noise(f, in);
            break;
    }
    return 0;
}
