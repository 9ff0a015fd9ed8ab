// Receive decoders of every controller type. Each *_DecodingResponse does one read
// from the port and hands the bytes to its *_DecodeBytes core, which reassembles,
// checks and routes the frames.
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "mcu_internal.h"

using mcu_detail::releaseWaiter;
using mcu_detail::storeAnswer;
using mcu_detail::trace;

namespace {

constexpr unsigned int kBufferLimit = RECEIVE_BUFFER_SIZE - 1;  // 2047 bytes held at most
constexpr char kDashes[] =
    "-----------------------------------------------------------------------------";

// One read of up to DECODER_READ_SIZE bytes, handed to a decoder's byte-level core; a
// failed read comes back as (unsigned)-1.
int decodePortRead(MCU_CONTENT* m, int (*core)(MCU_CONTENT*, const BYTE*, unsigned int)) {
    BYTE buf[DECODER_READ_SIZE];
    ssize_t n;
    do {
        n = read(m->fd, buf, DECODER_READ_SIZE);
    } while (n < 0 && errno == EINTR);
    if (n >= static_cast<ssize_t>(DECODER_READ_SIZE)) m->receiveDropCount++;
    // End of file or EIO: the other side has gone and the line will not come back.
    if (n == 0 || (n < 0 && errno == EIO)) m->lineHungUp = 1;
    if (n >= static_cast<ssize_t>(DECODER_READ_SIZE)) m->receiveDropCount++;
    return core(m, buf, static_cast<unsigned int>(n));
}

void dumpBytes(const MCU_CONTENT* m, int mask, const BYTE* bytes, unsigned int n) {
    if (!(m->debugLevel & mask)) return;
    syslog(LOG_DEBUG, "%s", kDashes);
    for (unsigned int i = 0; i < n; ++i) syslog(LOG_DEBUG, "%02x ", bytes[i]);
    syslog(LOG_DEBUG, "%s", kDashes);
}

// In update mode the boot loader's answer is one frame: of several well-formed ones in a
// span the last stands (a start code occurs in a well-formed frame only at its start).
unsigned int lastFrameOnly(BYTE start, BYTE* frames, unsigned int len) {
    unsigned int s = len;
    while (s > 0 && frames[s - 1] != start) --s;
    if (s <= 1) return len;
    memmove(frames, frames + s - 1, len - (s - 1));
    return len - (s - 1);
}

// ---- ST -------------------------------------------------------------------------

void stClear(MCU_CONTENT* m) {
    m->receiveDataStartIndex = 0;
    m->F1_Index = 0;
    m->catch_F1_Flag = 0;
}

int stDrop(MCU_CONTENT* m, int number) {
    stClear(m);
    m->receiveErrorCount++;
    syslog(LOG_ERR, "[ST_DecodingResponse] (fd %d) !!! receiveErrorCount %d !!!", m->fd, number);
    return MCU_RESULT_FORMAT;
}

// A CAN frame from device 6 or 7: F1 dev 04 ... length byte at 10, 13 + length bytes.
// Returns its end, or -1 when the bytes at s do not make one.
long stCanFrameEnd(const BYTE* v, unsigned int len, unsigned int s) {
    if (s + 10 >= len) return -1;
    BYTE dlc = v[s + 10];
    if (dlc > 8) return -1;
    unsigned int e = s + 12 + dlc;
    return e < len && v[e] == ST_END_CODE_F2 ? static_cast<long>(e) : -1;
}

// Any other frame ends at the first F2 followed directly by F1, or at a final F2.
long stAnswerEnd(const BYTE* v, unsigned int len, unsigned int s) {
    for (unsigned int p = s; p < len; ++p) {
        if (v[p] != ST_END_CODE_F2) continue;
        if (p + 1 == len || v[p + 1] == ST_START_CODE_F1) return p;
    }
    return -1;
}

int stWalkAP(MCU_CONTENT* m) {
    const BYTE* v = m->validData;
    unsigned int len = m->validDataLength;
    bool answered = false;
    unsigned int i = 0;
    while (i < len) {
        if (v[i] != ST_START_CODE_F1) {
            ++i;
            continue;
        }
        unsigned int s = i;
        bool can = s + 2 < len && (v[s + 1] == ST_DEVICE_CAN1 || v[s + 1] == ST_DEVICE_CAN2) &&
                   v[s + 2] == ST_COMMAND_EVENT;
        long e;
        if (can) {
            e = stCanFrameEnd(v, len, s);
            if (e < 0) {
                i += 2;
                continue;
            }
        } else {
            e = stAnswerEnd(v, len, s);
            if (e < 0) {
                ++i;
                continue;
            }
            // A long frame from device 6 that failed the CAN test is no answer.
            if (s + 1 < len && v[s + 1] == ST_DEVICE_CAN1 && e - s + 1 >= 22) {
                i += 2;
                continue;
            }
        }
        unsigned int frameLen = static_cast<unsigned int>(e) - s + 1;
        i = static_cast<unsigned int>(e) + 1;
        if (verify_CRC(m, m->validData + s, static_cast<int>(frameLen)) != MCU_RESULT_OK) {
            syslog(LOG_ERR, "[ST_DecodingResponse][ST_MODE_AP] (fd %d) CRC error !!!", m->fd);
            continue;
        }
        if (can) {
            trace(m, 1, "*** [ST_DecodingResponse] (2-1) CAN DATA ***");
            pushCANDataToCallBackFunction(m, static_cast<int>(s), 0);
            continue;
        }
        trace(m, 1, "*** [ST_DecodingResponse] (2-2) COMMAND REPONDSE DATA ***");
        storeAnswer(m, v + s, frameLen);
        answered = true;
        // Event answers also reach the callback, before the waiter is released.
        if (v[s + 2] == ST_COMMAND_EVENT)
            pushEventDataToCallBackFunction(m, static_cast<int>(s), frameLen);
    }
    // The waiter is released once, after the last answer of the span is stored.
    if (answered) {
        releaseWaiter(m);
        trace(m, 1, "[ST_DecodingResponse][ST_MODE_AP] set 0 to mcu_content->lock = %d",
              m->lock.load());
    }
    m->F1_Index = 0;
    m->catch_F1_Flag = 0;
    return MCU_RESULT_OK;
}

}  // namespace

int ST_DecodeBytes(MCU_CONTENT* m, const BYTE* bytes, unsigned int receiveDataLength) {
    int fd = m->fd;
    if (receiveDataLength >= DECODER_READ_SIZE) {
        syslog(LOG_ERR, "[ST_DecodingResponse](fd %d) !!! receiveDataLength %d >= %d !!!", fd,
               static_cast<int>(receiveDataLength), DECODER_READ_SIZE);
        stClear(m);
        m->receiveErrorCount++;
        return MCU_RESULT_FORMAT;
    }
    trace(m, 9, "[ST_DecodingResponse] (fd %d) receiveDataLength = %d", fd, receiveDataLength);
    trace(m, 9, "[ST_DecodingResponse] ST Mode = %02x", m->nxpMode.load());
    dumpBytes(m, 9, bytes, receiveDataLength);

    unsigned int dataBufferLength = m->receiveDataStartIndex + receiveDataLength;
    if (dataBufferLength > kBufferLimit) return stDrop(m, 0);
    memcpy(m->receiveDataBuffer + m->receiveDataStartIndex, bytes, receiveDataLength);
    if (dataBufferLength == 0) return MCU_RESULT_NONE;

    // The span runs from the first start code to the last end code after it, so one
    // call takes every complete frame that has arrived.
    BYTE* buf = m->receiveDataBuffer;
    if (!m->catch_F1_Flag) {
        const void* f1 = memchr(buf, ST_START_CODE_F1, dataBufferLength);
        if (f1) {
            m->F1_Index = static_cast<unsigned int>(static_cast<const BYTE*>(f1) - buf);
            m->catch_F1_Flag = 1;
            trace(m, 1, "[ST_DecodingResponse](fd %d) Already catch F1 at %d", fd, m->F1_Index);
        }
    }
    unsigned int f2Index = 0, validDataFormatCount = 0;
    if (m->catch_F1_Flag) {
        for (unsigned int i = dataBufferLength; i-- > m->F1_Index + 1;) {
            if (buf[i] == ST_END_CODE_F2) {
                f2Index = i;
                validDataFormatCount = 1;
                break;
            }
        }
        if (m->debugLevel & 1)
            for (unsigned int i = m->F1_Index + 1; i < dataBufferLength; ++i)
                if (buf[i] == ST_END_CODE_F2)
                    syslog(LOG_DEBUG, "[ST_DecodingResponse](fd %d) Already catch F2 at %d", fd, i);
    }
    if (validDataFormatCount == 0) {
        m->receiveDataStartIndex += receiveDataLength;
        return MCU_RESULT_NONE;
    }

    unsigned int nValidDataLength = f2Index - m->F1_Index + 1;
    BYTE span[RECEIVE_BUFFER_SIZE];
    memcpy(span, buf + m->F1_Index, nValidDataLength);
    if (dataBufferLength <= nValidDataLength) {
        trace(m, 1, "[ST_DecodingResponse] *** clear data buffer ***");
        m->receiveDataStartIndex = 0;
    } else {
        // The kept bytes are counted from the end of the buffer.
        unsigned int remain = dataBufferLength - nValidDataLength;
        trace(m, 1, "[ST_DecodingResponse] *** There are remain data in data buffer ***");
        trace(m, 1, "[ST_DecodingResponse] remainDataLength=%d", remain);
        memmove(buf, buf + nValidDataLength, remain);
        m->receiveDataStartIndex = remain;
    }

    if (nValidDataLength == 0) {
        syslog(LOG_ERR, "[ST_DecodingResponse](fd %d) nValidDataLength = %d error !!!", fd,
               nValidDataLength);
        stClear(m);
        m->receiveErrorCount++;
        return MCU_RESULT_FORMAT;
    }
    if (span[0] != ST_START_CODE_F1) {
        syslog(LOG_ERR,
               "[ST_DecodingResponse] (fd %d) Read data format error (ST_START_CODE_F1) !!!", fd);
        syslog(LOG_ERR, "[ST_DecodingResponse] (fd %d) receiveData[0] = %02x !!!", fd, span[0]);
        return stDrop(m, 1);
    }

    // Frames that cannot be frames of this protocol go before any checksum is looked at.
    BYTE wellFormed[RECEIVE_BUFFER_SIZE];
    unsigned int dropped = 0;
    unsigned int kept = keepWellFormedFrames(ST_START_CODE_F1, ST_END_CODE_F2, ESCAPE_CODE_F0, span,
                                             nValidDataLength, wellFormed, &dropped);
    if (dropped)
        syslog(LOG_ERR, "[ST_DecodingResponse] (fd %d) %u malformed frame(s) dropped !!!", fd,
               dropped);
    if (m->stMode == ST_MODE_UPDATE) kept = lastFrameOnly(ST_START_CODE_F1, wellFormed, kept);
    unsigned int n = 0;
    if (kept > 0) {
        n = unstuffFrame(ESCAPE_CODE_F0, wellFormed, kept, m->validData);
        if (m->validData[0] != ST_START_CODE_F1) {
            syslog(LOG_ERR,
                   "[ST_DecodingResponse] (fd %d) (After Decode) Read data format error "
                   "(ST_START_CODE_F1) !!!",
                   fd);
            return stDrop(m, 2);
        }
    }
    m->F1_Index = 0;
    if (kept > 0 && m->validData[n - 1] != ST_END_CODE_F2) {
        syslog(LOG_ERR,
               "[ST_DecodingResponse] (fd %d) (After Decode) Read data format error "
               "(ST_END_CODE_F2) !!!",
               fd);
        return stDrop(m, 3);
    }
    // Nothing left walks no frame in AP mode and fails the checksum in update mode.
    m->validDataLength = static_cast<WORD>(n);

    int mode = m->stMode;
    if (mode == ST_MODE_AP) return stWalkAP(m);
    if (mode == ST_MODE_UPDATE) {
        if (verify_CRC(m, m->validData, static_cast<int>(n)) != MCU_RESULT_OK) {
            syslog(LOG_ERR, "[ST_DecodingResponse][ST_MODE_UPDATE] (fd %d) CRC error !!!", fd);
            return MCU_RESULT_CRC;
        }
        trace(m, 1, "*** [ST_DecodingResponse] UPDATE REPONDSE DATA ***");
        storeAnswer(m, m->validData, n);
        releaseWaiter(m);
        trace(m, 1, "[ST_DecodingResponse][ST_MODE_UPDATE] set 0 to mcu_content->lock = %d",
              m->lock.load());
        return MCU_RESULT_OK;
    }
    return MCU_RESULT_NONE;
}

int ST_DecodingResponse(MCU_CONTENT* mcu_content) {
    if (mcu_content->fd <= 0) {
        stClear(mcu_content);
        mcu_content->receiveErrorCount++;
        syslog(LOG_ERR, "[ST_DecodingResponse] mcu_content->fd dispear !!!");
        return -1;
    }
    return decodePortRead(mcu_content, ST_DecodeBytes);
}

// ---- NXP ------------------------------------------------------------------------

namespace {

int nxpDrop(MCU_CONTENT* m, int number) {
    m->receiveDataStartIndex = 0;
    m->receiveErrorCount++;
    syslog(LOG_ERR, "[NXP_DecodingResponse] !!! receiveErrorCount %d !!!", number);
    return MCU_RESULT_FORMAT;
}

int nxpWalkAP(MCU_CONTENT* m) {
    const BYTE* v = m->validData;
    unsigned int len = m->validDataLength;
    bool answered = false;
    unsigned int i = 0;
    while (i < len) {
        if (v[i] != NXP_START_CODE_C1) {
            ++i;
            continue;
        }
        unsigned int s = i;
        if (s + 1 < len && v[s + 1] == NXP_COMMAND_CAN) {
            if (s + 8 >= len) break;  // the length byte is missing: nothing more to take
            trace(m, 1, "*** [NXP_DecodingResponse] (2-1) CAN DATA ***");
            m->receiveCANDataCount++;
            pushCANDataToCallBackFunction(m, static_cast<int>(s), 0);
            i = s + 9 + v[s + 8] + 1;
            continue;
        }
        long e = -1;
        for (unsigned int p = s; p < len; ++p) {
            if (v[p] != NXP_END_CODE_C2) continue;
            if (p + 1 == len || v[p + 1] == NXP_START_CODE_C1) {
                e = p;
                break;
            }
        }
        if (e < 0) {
            ++i;
            continue;
        }
        trace(m, 1, "*** [NXP_DecodingResponse] (2-2) COMMAND RESPONDSE DATA ***");
        storeAnswer(m, v + s, static_cast<unsigned int>(e) - s + 1);
        answered = true;
        i = static_cast<unsigned int>(e) + 1;
    }
    if (answered) releaseWaiter(m);
    return MCU_RESULT_OK;
}

}  // namespace

int NXP_DecodeBytes(MCU_CONTENT* m, const BYTE* bytes, unsigned int receiveDataLength) {
    int mode = m->nxpMode;
    bool ap = mode == NXP_MODE_AP;
    const char* modeName = ap ? "(NXP_MODE_AP)" : "(NXP_MODE_UPDATE)";
    trace(m, 9, "[NXP_DecodingResponse] NXP Mode = %02x", mode);
    if (receiveDataLength >= RECEIVE_BUFFER_SIZE) return nxpDrop(m, 5);  // a failed read
    dumpBytes(m, 9, bytes, receiveDataLength);

    unsigned int dataBufferLength = m->receiveDataStartIndex + receiveDataLength;
    if (dataBufferLength > kBufferLimit) return nxpDrop(m, 0);
    memcpy(m->receiveDataBuffer + m->receiveDataStartIndex, bytes, receiveDataLength);
    // A full read is not decoded, and its bytes are not kept.
    if (receiveDataLength == 0 || receiveDataLength >= DECODER_READ_SIZE) return MCU_RESULT_NONE;

    BYTE startCode = ap ? NXP_START_CODE_C1 : NXP_START_CODE_F1;
    BYTE endCode = ap ? NXP_END_CODE_C2 : NXP_END_CODE_F2;
    BYTE escape = ap ? ESCAPE_CODE_C0 : ESCAPE_CODE_F0;
    BYTE* buf = m->receiveDataBuffer;
    unsigned int startIndex = 0, endIndex = 0, validDataFormatCount = 0;
    bool haveStart = ap;  // in AP mode the span always begins at position 0
    for (unsigned int i = 0; i < dataBufferLength; ++i) {
        if (!haveStart && buf[i] == startCode) {
            startIndex = i;
            haveStart = true;
        } else if (buf[i] == endCode && haveStart) {
            ++validDataFormatCount;
            endIndex = i;
        }
    }
    if (validDataFormatCount == 0) {
        m->receiveDataStartIndex += receiveDataLength;
        return MCU_RESULT_NONE;
    }

    unsigned int nValidDataLength = endIndex - startIndex + 1;
    BYTE span[RECEIVE_BUFFER_SIZE];
    memcpy(span, buf + startIndex, nValidDataLength);
    unsigned int after = dataBufferLength - endIndex - 1;
    if (after > 0 && buf[endIndex + 1] != startCode) {
        syslog(LOG_ERR, "[NXP_DecodingResponse] %s *** There are garbage data in data buffer ***",
               modeName);
        after = 0;
    }
    memmove(buf, buf + endIndex + 1, after);
    m->receiveDataStartIndex = after;

    if (span[0] != startCode) {
        syslog(LOG_ERR, "[NXP_DecodingResponse] %s Read data format error (NXP_START_CODE_%s) !!!",
               modeName, ap ? "C1" : "F1");
        return nxpDrop(m, 2);
    }
    // Frames that cannot be frames of this protocol are dropped before they are read.
    BYTE wellFormed[RECEIVE_BUFFER_SIZE];
    unsigned int dropped = 0;
    unsigned int kept = keepWellFormedFrames(startCode, endCode, escape, span, nValidDataLength,
                                             wellFormed, &dropped);
    if (dropped)
        syslog(LOG_ERR, "[NXP_DecodingResponse] %s %u malformed frame(s) dropped !!!", modeName,
               dropped);
    if (kept == 0) {
        m->validDataLength = 0;
        return ap ? MCU_RESULT_OK : MCU_RESULT_CRC;
    }
    if (!ap) kept = lastFrameOnly(startCode, wellFormed, kept);
    unsigned int n = unstuffFrame(escape, wellFormed, kept, m->validData);
    if (m->validData[0] != startCode) {
        syslog(LOG_ERR,
               "[NXP_DecodingResponse] %s (After Decode) Read data format error "
               "(NXP_START_CODE_%s) !!!",
               modeName, ap ? "C1" : "F1");
        return nxpDrop(m, 3);
    }
    if (m->validData[n - 1] != endCode) {
        syslog(LOG_ERR,
               "[NXP_DecodingResponse] %s (After Decode) Read data format error "
               "(NXP_END_CODE_%s) !!!",
               modeName, ap ? "C2" : "F2");
        return nxpDrop(m, 4);
    }
    m->validDataLength = static_cast<WORD>(n);

    if (ap) return nxpWalkAP(m);
    if (mode == NXP_MODE_UPDATE) {
        trace(m, 1,
              "*** [NXP_DecodingResponse][NXP_MODE_UPDATE] UPDATE COMMAND RESPONDSE DATA ***");
        storeAnswer(m, m->validData, n);
        releaseWaiter(m);
        return MCU_RESULT_OK;
    }
    return MCU_RESULT_NONE;
}

int NXP_DecodingResponse(MCU_CONTENT* mcu_content) {
    return decodePortRead(mcu_content, NXP_DecodeBytes);
}

// ---- FM and customised ----------------------------------------------------------

int FM_DecodeBytes(MCU_CONTENT* m, const BYTE* bytes, unsigned int receiveDataLength) {
    trace(m, 1, "%s", kDashes);
    trace(m, 1, "[FM_DecodingResponse] receiveDataLength = %d", receiveDataLength);
    trace(m, 1, "[FM_DecodingResponse] fd = %d, receive thread = %lu", m->fd,
          static_cast<unsigned long>(pthread_self()));
    unsigned long dataBufferLength =
        static_cast<unsigned long>(m->receiveDataStartIndex) + receiveDataLength;
    if (dataBufferLength <= kBufferLimit) dumpBytes(m, 1, bytes, receiveDataLength);
    trace(m, 1, "[FM_DecodingResponse] *** dataBufferLength = %lu ***", dataBufferLength);
    if (dataBufferLength > kBufferLimit) {
        m->receiveDataStartIndex = 0;
        m->receiveErrorCount++;
        syslog(LOG_ERR, "[Customise_FM_DecodingResponse] !!! receiveErrorCount 0 !!!");
        return MCU_RESULT_FORMAT;
    }
    BYTE* buf = m->receiveDataBuffer;
    memcpy(buf + m->receiveDataStartIndex, bytes, receiveDataLength);

    // The first F1 starts the answer; the last F2 after it ends it. An F2 before the
    // first F1 is not an end: the bytes stay buffered.
    unsigned int start = 0, end = 0;
    if (m->debugLevel & 1)
        for (unsigned int i = 0; i < dataBufferLength; ++i)
            syslog(LOG_DEBUG, "[Customise_FM_DecodingResponse] (Raw) got the data [%d] = %02x", i,
                   buf[i]);
    for (unsigned int i = 0; i < dataBufferLength; ++i) {
        if (buf[i] == ST_START_CODE_F1) {
            trace(m, 1, "[Customise_FM_DecodingResponse] Already catch F1");
            start = i;
            break;
        }
    }
    for (unsigned int i = start + 1; i < dataBufferLength; ++i)
        if (buf[i] == ST_END_CODE_F2) end = i;
    if (end == 0) {
        m->receiveDataStartIndex += receiveDataLength;
        return MCU_RESULT_OK;
    }
    unsigned int n = unstuffFrame(ESCAPE_CODE_F0, buf + start, end - start + 1, m->validData);
    storeAnswer(m, m->validData, n);
    m->receiveDataStartIndex = 0;
    memset(buf, 0, RECEIVE_BUFFER_SIZE);
    releaseWaiter(m);
    return MCU_RESULT_OK;
}

int FM_DecodingResponse(MCU_CONTENT* mcu_content) {
    return decodePortRead(mcu_content, FM_DecodeBytes);
}

int Customise_DecodeBytes(MCU_CONTENT* m, const BYTE* bytes, unsigned int receiveDataLength) {
    trace(m, 1, "[Customise_DecodingResponse] receiveDataLength = %d", receiveDataLength);
    trace(m, 1, "[Customise_DecodingResponse] fd = %d, receive thread = %lu", m->fd,
          static_cast<unsigned long>(pthread_self()));
    unsigned long dataBufferLength =
        static_cast<unsigned long>(m->receiveDataStartIndex) + receiveDataLength;
    if (dataBufferLength >= RECEIVE_BUFFER_SIZE) {
        syslog(LOG_ERR, "[Customise_DecodingResponse] !!! receiveErrorCount 0 !!!");
        return MCU_RESULT_FORMAT;
    }
    dumpBytes(m, 1, bytes, receiveDataLength);
    trace(m, 1, "[Customise_DecodingResponse] *** dataBufferLength = %lu ***", dataBufferLength);
    if (receiveDataLength == 0) return MCU_RESULT_OK;  // a hung-up line reads nothing
    // Each read is one whole answer.
    memcpy(m->validData, bytes, receiveDataLength);
    m->validDataLength = static_cast<WORD>(receiveDataLength);
    pushEventDataToCallBackFunction(m, 0, static_cast<int>(receiveDataLength));
    storeAnswer(m, bytes, receiveDataLength);
    releaseWaiter(m);
    return MCU_RESULT_OK;
}

int Customise_DecodingResponse(MCU_CONTENT* mcu_content) {
    return decodePortRead(mcu_content, Customise_DecodeBytes);
}

// ---- Callbacks ------------------------------------------------------------------

namespace {

void fillCounters(const MCU_CONTENT* m, CALLBACK_DATA* cb) {
    cb->receiveCANDataCount = m->receiveCANDataCount;
    cb->receiveErrorCount = m->receiveErrorCount;
    cb->sendCommandSuccessCount = m->canSendInfo.sendCommandSuccessCount;
    cb->sendCommandErrorCount = m->canSendInfo.sendCommandErrorCount;
    cb->sendCommandTimeCount = m->canSendInfo.sendCommandTimeCount;
}

}  // namespace

int pushCANDataToCallBackFunction(MCU_CONTENT* mcu_content, int index, int length) {
    (void)length;
    MCU_CONTENT* m = mcu_content;
    CALLBACK_DATA cb;
    memset(&cb, 0, sizeof cb);
    cb.fd = m->fd;
    cb.type = CALLBACK_TYPE_CAN;
    // Bytes past the decoded frame read as zero.
    auto at = [m](long pos) -> BYTE {
        return pos >= 0 && pos < m->validDataLength ? m->validData[pos] : 0;
    };
    bool nxp = m->mcuType == MCU_TYPE_NXP;
    long base = index + (nxp ? 2 : 4);
    can_msg_t& c = cb.canData;
    c.id = static_cast<uint32_t>(at(base)) | static_cast<uint32_t>(at(base + 1)) << 8 |
           static_cast<uint32_t>(at(base + 2)) << 16 | static_cast<uint32_t>(at(base + 3)) << 24;
    c.ide = at(base + 4);
    c.rtr = at(base + 5);
    c.dlc = at(base + 6);
    // The two controllers mark a remote request differently.
    bool remote = c.rtr == (nxp ? 1 : 2);
    bool trace1 = m->debugLevel & 1;
    if (!remote) {
        if (c.dlc >= 1 && c.dlc <= 8) {
            for (int k = 0; k < c.dlc; ++k) c.data[k] = at(base + 7 + k);
            if (trace1) {
                syslog(LOG_DEBUG, "[pushCANDataToCallBackFunction][EVENT] *** CAN data ***");
                syslog(LOG_DEBUG, "[pushCANDataToCallBackFunction][EVENT]   id = %02x", c.id);
                syslog(LOG_DEBUG, "[pushCANDataToCallBackFunction][EVENT]  ide = %02x", c.ide);
                syslog(LOG_DEBUG, "[pushCANDataToCallBackFunction][EVENT]  rtr = %02x", c.rtr);
                syslog(LOG_DEBUG, "[pushCANDataToCallBackFunction][EVENT]  dlc = %02x", c.dlc);
                syslog(LOG_DEBUG, "[pushCANDataToCallBackFunction][EVENT] data = ");
                for (int k = 0; k < c.dlc; ++k) syslog(LOG_DEBUG, "%02x ", c.data[k]);
            }
        } else {
            c.dlc = 0;
            if (trace1) syslog(LOG_DEBUG, "[verify_CRC] Reading MCU data is correctly");
        }
    }
    m->canData = c;
    // Which channel of the MCU the frame came from (6 or 7), for the callback to read.
    if (!nxp) m->Device = at(index + 1);
    fillCounters(m, &cb);
    auto callback = callback_EventToLibrary.load();
    if (!callback) return 0;
    callback(cb);
    return 1;
}

int pushEventDataToCallBackFunction(MCU_CONTENT* mcu_content, int index, int length) {
    (void)index;  // the event is copied from the start of validData
    CALLBACK_DATA cb;
    memset(&cb, 0, sizeof cb);
    cb.type = CALLBACK_TYPE_EVENT;
    int n = length < 0 ? 0 : (length > EVENT_DATA_SIZE ? EVENT_DATA_SIZE : length);
    memcpy(cb.szData, mcu_content->validData, n);
    cb.szDataLength = static_cast<WORD>(n);
    cb.fd = mcu_content->fd;
    if (cb.szData[3] == 3) cb.szData[3] &= 3;
    auto callback = callback_EventToLibrary.load();
    if (!callback) return 0;
    callback(cb);
    return 1;
}
