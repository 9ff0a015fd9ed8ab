// Request frames: CRC-8, byte stuffing, the per-type encoders and defaultWrite.
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "mcu_internal.h"

const BYTE CRC8_Table[16] = {0x00, 0x5A, 0xB4, 0xEE, 0x32, 0x68, 0x86, 0xDC,
                             0x64, 0x3E, 0xD0, 0x8A, 0x56, 0x0C, 0xE2, 0xB8};

namespace {

// One byte through the nibble table: high nibble first, then low nibble.
constexpr BYTE crcNibbleStep(const BYTE (&table)[16], BYTE crc, BYTE b) {
    BYTE t = static_cast<BYTE>(table[(b >> 4) ^ (crc >> 4)] ^ ((crc & 0x0F) << 4));
    return static_cast<BYTE>(table[(t >> 4) ^ (b & 0x0F)] ^ ((t & 0x0F) << 4));
}

// Slicing tables derived from the nibble table: slice[0][x] is the CRC of the byte x,
// slice[k][x] the CRC of x followed by k zero bytes. The CRC is linear, so eight bytes
// fold into one step: crc' = slice[7][b0 ^ crc] ^ slice[6][b1] ^ ... ^ slice[0][b7].
using SliceTables = std::array<std::array<BYTE, 256>, 8>;

constexpr SliceTables makeSliceTables() {
    constexpr BYTE nibble[16] = {0x00, 0x5A, 0xB4, 0xEE, 0x32, 0x68, 0x86, 0xDC,
                                 0x64, 0x3E, 0xD0, 0x8A, 0x56, 0x0C, 0xE2, 0xB8};
    SliceTables t{};
    for (int x = 0; x < 256; ++x) t[0][x] = crcNibbleStep(nibble, 0, static_cast<BYTE>(x));
    for (int k = 1; k < 8; ++k)
        for (int x = 0; x < 256; ++x) t[k][x] = t[0][t[k - 1][x]];
    return t;
}

constexpr SliceTables kSlice = makeSliceTables();

bool isEscaped(BYTE b, BYTE escape) {
    return b >= escape && b <= escape + ESCAPE_OFFSET_MAX;
}

}  // namespace

BYTE Get_CRC8_Nibble(const BYTE* ptr, unsigned int Length) {
    BYTE crc = 0;
    for (unsigned int i = 0; i < Length; ++i) crc = crcNibbleStep(CRC8_Table, crc, ptr[i]);
    return crc;
}

BYTE Get_CRC8(const BYTE* ptr, unsigned int Length) {
    BYTE crc = 0;
    unsigned int i = 0;
    for (; i + 8 <= Length; i += 8) {
        const BYTE* p = ptr + i;
        crc = kSlice[7][p[0] ^ crc] ^ kSlice[6][p[1]] ^ kSlice[5][p[2]] ^ kSlice[4][p[3]] ^
              kSlice[3][p[4]] ^ kSlice[2][p[5]] ^ kSlice[1][p[6]] ^ kSlice[0][p[7]];
    }
    for (; i < Length; ++i) crc = kSlice[0][ptr[i] ^ crc];
    return crc;
}

unsigned int stuffFrame(BYTE start, BYTE end, BYTE escape, const BYTE* src, unsigned int srcLen,
                        BYTE* dst, unsigned int dstCap) {
    unsigned int need = 2 + srcLen;
    for (unsigned int i = 0; i < srcLen; ++i)
        if (isEscaped(src[i], escape)) ++need;
    if (need > dstCap) return 0;
    unsigned int n = 0;
    dst[n++] = start;
    for (unsigned int i = 0; i < srcLen; ++i) {
        if (isEscaped(src[i], escape)) {
            dst[n++] = escape;
            dst[n++] = static_cast<BYTE>(src[i] - escape);
        } else {
            dst[n++] = src[i];
        }
    }
    dst[n++] = end;
    return n;
}

unsigned int unstuffFrame(BYTE escape, const BYTE* src, unsigned int srcLen, BYTE* dst) {
    if (srcLen == 0) return 0;
    unsigned int n = 0;
    dst[n++] = src[0];
    unsigned int i = 1;
    while (i < srcLen) {
        // Copy the run up to the next escape byte in one go.
        const void* hit = memchr(src + i, escape, srcLen - i);
        unsigned int run =
            hit ? static_cast<unsigned int>(static_cast<const BYTE*>(hit) - src) - i : srcLen - i;
        memcpy(dst + n, src + i, run);
        n += run;
        i += run;
        if (i >= srcLen) break;
        if (i + 1 == srcLen) {  // a final escape byte stands for itself
            dst[n++] = src[i++];
            break;
        }
        BYTE k = src[i + 1];
        // An escape followed by anything above 3 has no meaning: the position still
        // advances and holds the escape byte, which the CRC or end-code test rejects.
        dst[n++] = k <= ESCAPE_OFFSET_MAX ? static_cast<BYTE>(escape + k) : escape;
        i += 2;
    }
    return n;
}

unsigned int keepWellFormedFrames(BYTE start, BYTE end, BYTE escape, const BYTE* src,
                                  unsigned int srcLen, BYTE* dst, unsigned int* dropped) {
    unsigned int n = 0, bad = 0, i = 0;
    while (i < srcLen) {
        if (src[i] != start) {  // bytes between frames belong to none
            ++i;
            continue;
        }
        unsigned int s = i, j = s + 1;
        bool valid = true;
        for (; j < srcLen; ++j) {
            BYTE b = src[j];
            if (b == start || b == end) break;
            // An escape stands for escape+0 to escape+3 only; anything else after it means
            // the bytes are not a frame of this protocol. The byte after it is still looked
            // at, so a start or end code there ends the frame.
            if (b != escape) continue;
            if (j + 1 < srcLen && src[j + 1] <= ESCAPE_OFFSET_MAX)
                ++j;
            else
                valid = false;
        }
        if (j < srcLen && src[j] == end && valid) {
            memcpy(dst + n, src + s, j - s + 1);
            n += j - s + 1;
            i = j + 1;
            continue;
        }
        ++bad;  // cut short by a start code, left open, or badly escaped
        i = j < srcLen && src[j] == start ? j : j + 1;
    }
    if (dropped) *dropped = bad;
    return n;
}

WORD Data_Encoding(MCU_CONTENT* mcu_content, BYTE* _Dst, unsigned int _DstSize, BYTE* _Src,
                   unsigned int _SrcSize) {
    (void)_DstSize;  // callers hand a SEND_BUFFER_SIZE array; that is the bound used
    BYTE start, end, escape;
    int type = mcu_content->mcuType;
    if (type == MCU_TYPE_ST || (type == MCU_TYPE_NXP && mcu_content->nxpMode != NXP_MODE_AP)) {
        start = ST_START_CODE_F1;
        end = ST_END_CODE_F2;
        escape = ESCAPE_CODE_F0;
    } else if (type == MCU_TYPE_NXP) {
        start = NXP_START_CODE_C1;
        end = NXP_END_CODE_C2;
        escape = ESCAPE_CODE_C0;
    } else {
        return 0;
    }
    return static_cast<WORD>(
        stuffFrame(start, end, escape, _Src, _SrcSize, _Dst, SEND_BUFFER_SIZE));
}

int verify_CRC(MCU_CONTENT* mcu_content, BYTE* pszdata, int len) {
    bool trace = mcu_content->debugLevel & 1;
    if (len < 3) {
        if (trace) syslog(LOG_ERR, "[verify_CRC] CRC error !!!");
        return MCU_RESULT_CRC;
    }
    BYTE calc = Get_CRC8(pszdata + 1, static_cast<unsigned int>(len - 3));
    BYTE read = pszdata[len - 2];
    if (trace)
        syslog(LOG_DEBUG, "[verify_CRC] checksum of calculate = %02x, checksum of read = %02x",
               calc, read);
    if (calc == read) {
        if (trace) syslog(LOG_DEBUG, "[verify_CRC] Reading MCU data is correctly.");
        return MCU_RESULT_OK;
    }
    if (trace) syslog(LOG_ERR, "[verify_CRC] CRC error !!!");
    return MCU_RESULT_CRC;
}

namespace {

// The FM module's commands whose parameter bytes 2 and 3 are escaped.
bool isFmEscapedCommand(BYTE b) {
    constexpr BYTE kCommands[] = {0x88, 0x94, 0x96};
    for (BYTE c : kCommands)
        if (c == b) return true;
    return false;
}

// The unescaped request for the link's type; returns its length, or -1 when the
// request cannot fit the send buffer.
int buildRawFrame(MCU_CONTENT* m, const cmd* entry, const BYTE* data, int dataLen, BYTE* raw) {
    int type = m->mcuType;
    if (type == MCU_TYPE_ST) {
        if (dataLen + 6 > SEND_BUFFER_SIZE) return -1;
        raw[1] = static_cast<BYTE>(entry->cmd_data[0]);
        raw[2] = static_cast<BYTE>(entry->cmd_data[1]);
        raw[3] = static_cast<BYTE>(entry->cmd_data[2]);
        if (dataLen > 0) memcpy(raw + 4, data, dataLen);
        raw[4 + dataLen] = Get_CRC8(raw + 1, static_cast<unsigned int>(3 + dataLen));
        raw[5 + dataLen] = ST_END_CODE_F2;
        raw[0] = ST_START_CODE_F1;
        return 6 + dataLen;
    }
    if (type == MCU_TYPE_NXP) {
        if (dataLen + 3 > SEND_BUFFER_SIZE) return -1;
        bool ap = m->nxpMode == NXP_MODE_AP;
        raw[0] = ap ? NXP_START_CODE_C1 : NXP_START_CODE_F1;
        raw[1] = static_cast<BYTE>(entry->cmd_data[0]);
        if (dataLen > 0) memcpy(raw + 2, data, dataLen);
        raw[2 + dataLen] = ap ? NXP_END_CODE_C2 : NXP_END_CODE_F2;
        return 3 + dataLen;
    }
    if (type == MCU_TYPE_FM || type == MCU_TYPE_CUSTOMISE) {
        int n = 0;
        bool escapeFM = false;
        for (int i = 0; i < CMD_DATA_SIZE; ++i) {
            BYTE b = static_cast<BYTE>(entry->cmd_data[i]);
            if (b == CMD_DATA_END) break;
            if (type == MCU_TYPE_FM) {
                if (i == 1) escapeFM = isFmEscapedCommand(b);
                // The FM module escapes only F1 and F2 at positions 2 and 3 of a few commands.
                if (escapeFM && (i == 2 || i == 3) &&
                    (b == ST_START_CODE_F1 || b == ST_END_CODE_F2)) {
                    raw[n++] = ESCAPE_CODE_F0;
                    raw[n++] = static_cast<BYTE>(b - ESCAPE_CODE_F0);
                    continue;
                }
            }
            raw[n++] = b;
        }
        return n;
    }
    return 0;
}

}  // namespace

int mcu_detail::writeRequest(MCU_CONTENT* mcu_content, int index, const BYTE* data, int dataLen,
                             bool* attempted) {
    *attempted = false;
    int debug = mcu_content->debugLevel;
    int type = mcu_content->mcuType;
    if (debug & 9) syslog(LOG_DEBUG, "[defaultWrite] MCU TYPE = %#x", type);
    const cmd* entry = getCommandByIndex(mcu_content, index);
    if (!entry) {
        syslog(LOG_ERR, "[defaultWrite] Not found command index !!!");
        return MCU_RESULT_NO_COMMAND;
    }
    if (dataLen < 0 || (dataLen > 0 && !data)) dataLen = 0;

    BYTE raw[SEND_BUFFER_SIZE] = {};
    int rawLen = buildRawFrame(mcu_content, entry, data, dataLen, raw);
    BYTE encoded[SEND_BUFFER_SIZE];
    const BYTE* out = raw;
    int outLen = rawLen;
    if (rawLen > 0 && (type == MCU_TYPE_ST || type == MCU_TYPE_NXP)) {
        // Start and end codes are added again by the encoder.
        outLen = Data_Encoding(mcu_content, encoded, sizeof encoded, raw + 1,
                               static_cast<unsigned int>(rawLen - 2));
        out = encoded;
        if (outLen == 0) rawLen = -1;
    }
    if (rawLen < 0) {
        // Refused before anything is written: the escaped frame would not fit.
        syslog(LOG_ERR, "[defaultWrite] Write Data Failure !!!");
        return MCU_RESULT_WRITE_FAIL;
    }

    if (debug & 1) {
        syslog(LOG_DEBUG, "********************************");
        syslog(LOG_DEBUG, "[defaultWrite] raw write data count = %d", rawLen);
        for (int i = 0; i < rawLen; ++i)
            syslog(LOG_DEBUG, "[defaultWrite] raw write data [%d] = %02x\n", i, raw[i]);
        syslog(LOG_DEBUG, "********************************");
    }
    *attempted = true;
    mcu_content->lock = 1;
    if (debug & 1)
        syslog(LOG_DEBUG, "[defaultWrite] set 1 to mcu_content->lock = %d\n",
               mcu_content->lock.load());
    if (debug & 9) {
        syslog(LOG_DEBUG, "[defaultWrite] encode write data count = %d\n", outLen);
        // The listing runs over as many bytes as the raw frame has.
        for (int i = 0; i < rawLen; ++i)
            syslog(LOG_DEBUG, "[defaultWrite] encode write data [%d] = %02x\n", i,
                   i < outLen ? out[i] : 0);
    }
    ssize_t written = outLen > 0 ? write(mcu_content->fd, out, outLen) : 0;
    if (written != outLen) {
        syslog(LOG_ERR, "[defaultWrite] Write Data Failure !!!");
        return MCU_RESULT_WRITE_FAIL;
    }
    return MCU_RESULT_OK;
}

int defaultWrite(MCU_CONTENT* mcu_content, int index, BYTE* data, int dataLen) {
    bool attempted;
    return mcu_detail::writeRequest(mcu_content, index, data, dataLen, &attempted);
}
