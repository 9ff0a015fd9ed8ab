// Link lifecycle, the receive and send threads, and the request/response exchange.
#include "mcu_base.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "UART_LIB.h"
#include "mcu_internal.h"

using mcu_detail::trace;
using Clock = std::chrono::steady_clock;

std::atomic<int> stopSendFlag{1};
std::atomic<unsigned long> timerCount{0};
std::atomic<int> timeOutFlag{0};
std::atomic<unsigned long> timerErrorCount{0};
std::atomic<void (*)(CALLBACK_DATA)> callback_EventToLibrary{nullptr};

void MCU_Library_Version(BYTE* version) {
    static const char kVersion[10] = "3.3.1";
    memset(version, 0, 8);
    memcpy(version, kVersion, sizeof kVersion);
}

// ---- Hand-over between the receive thread and the waiter ------------------------

void mcu_detail::storeAnswer(MCU_CONTENT* m, const BYTE* frame, unsigned int len) {
    if (len > RESPONSE_BUFFER_SIZE) len = RESPONSE_BUFFER_SIZE;
    std::lock_guard<std::mutex> g(m->responseMutex);
    memcpy(m->CommandResponseData, frame, len);
    m->CommandResponseDataLength = static_cast<WORD>(len);
}

void mcu_detail::releaseWaiter(MCU_CONTENT* m) {
    {
        std::lock_guard<std::mutex> g(m->responseMutex);
        m->lock = 0;
    }
    m->responseCond.notify_all();
}

// ---- Threads --------------------------------------------------------------------

namespace {

// Waits on the wake descriptor alone; true when the link is closing.
bool waitForWake(MCU_CONTENT* m, int timeoutMs) {
    struct pollfd p = {m->wakeFd, POLLIN, 0};
    return poll(&p, 1, timeoutMs) > 0 || m->cancel_receive_thread;
}

// Sleeps up to `d`, cut short when the send thread is cancelled; true when cancelled.
bool sendPause(MCU_CONTENT* m, std::chrono::microseconds d) {
    std::unique_lock<std::mutex> lk(m->sendMutex);
    return m->sendCond.wait_for(lk, d, [m] { return m->cancel_send_thread != 0; });
}

// How long a waiter looks for its answer before it sleeps on the condition variable.
constexpr std::chrono::microseconds ANSWER_SPIN{100};

long long elapsedMicros(Clock::time_point since) {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - since).count();
}

// BRDCTL_TIMEOUT_SCALE, a divisor for the answer time-outs, lets the tests reach the
// time-out paths in a fraction of the real waits. Anything but a positive integer is 1.
unsigned long timeoutDivisor() {
    static const unsigned long divisor = [] {
        const char* text = getenv("BRDCTL_TIMEOUT_SCALE");
        if (!text || !*text) return 1ul;
        char* end = nullptr;
        unsigned long v = strtoul(text, &end, 10);
        return *end == '\0' && v > 0 && text[0] != '-' ? v : 1ul;
    }();
    return divisor;
}

void printLine(const char* text) {
    fputs(text, stdout);
    fflush(stdout);
}

}  // namespace

void reveive_thread_function(MCU_CONTENT* mcu_content) {
    MCU_CONTENT* m = mcu_content;
    while (!m->cancel_receive_thread) {
        struct pollfd p[2] = {{m->fd, POLLIN, 0}, {m->wakeFd, POLLIN, 0}};
        int r = poll(p, 2, -1);
        if (r < 0) {
            if (errno == EINTR) continue;
            syslog(LOG_ERR, "[reveive_thread_function] fd(%d) poll failed: %s", m->fd,
                   strerror(errno));
            break;
        }
        if (p[1].revents) break;
        short ev = p[0].revents;
        if (ev & (POLLIN | POLLHUP | POLLERR)) ReceiveMessageFromMCU(m);
        if (ev & (POLLHUP | POLLNVAL)) m->lineHungUp = 1;
        if (m->lineHungUp) {
            // A hung-up line stays readable with nothing to read: stop polling it and
            // sleep until the link is closed.
            syslog(LOG_ERR, "[reveive_thread_function] fd(%d) the line hung up", m->fd);
            while (!waitForWake(m, -1)) {
            }
            break;
        }
        // An error that is not a hang-up: look again a little later rather than spin.
        if ((ev & POLLERR) && waitForWake(m, 100)) break;
    }
}

void send_thread_function(MCU_CONTENT* mcu_content) {
    MCU_CONTENT* m = mcu_content;
    CAN_SEND_INFO& info = m->canSendInfo;
    while (true) {
        {
            std::unique_lock<std::mutex> lk(m->sendMutex);
            m->sendCond.wait(
                lk, [m] { return m->cancel_send_thread != 0 || m->canSendInfo.senFlag != 0; });
        }
        if (m->cancel_send_thread) break;

        info.sendCommandSuccessCount = 0;
        info.sendCommandErrorCount = 0;
        info.sendCommandTimeCount = 0;
        stopSendFlag = 0;
        struct sigaction sa = {}, previous = {};
        sa.sa_handler = stopSend;
        sigemptyset(&sa.sa_mask);
        sigaction(SIGINT, &sa, &previous);
        unsigned int nID = info.nID;
        DWORD sendMax = info.sendMax;
        DWORD intervalTime = info.intervalTime;
        unsigned int cmdIndex = info.cmdIndex;
        Clock::time_point start = Clock::now();
        bool cancelled = sendPause(m, std::chrono::milliseconds(100));
        if (!cancelled) printLine("\n");

        DWORD sendCount = 1;
        for (; !cancelled && sendCount <= sendMax; ++sendCount) {
            if (stopSendFlag == 1) {
                info.senFlag = 0;
                break;
            }
            BYTE data[15];
            for (int k = 0; k < 4; ++k) data[k] = static_cast<BYTE>(nID >> (8 * k));
            data[4] = 4;  // IDE
            data[5] = 0;  // RTR
            data[6] = 8;  // length
            for (int k = 0; k < 4; ++k) {
                data[7 + k] = static_cast<BYTE>(sendCount >> (8 * k));
                data[11 + k] = static_cast<BYTE>(sendCount >> (8 * (3 - k)));
            }
            BYTE dataOut[RESPONSE_BUFFER_SIZE];
            int dataOutLength = 0;
            int type = m->mcuType;
            if (type == MCU_TYPE_NXP) {
                int r = sendCMD(m, static_cast<int>(cmdIndex), data, 15, dataOut, &dataOutLength);
                if (r == 1 && dataOutLength >= 2 && dataOut[0] == NXP_ACK_COMMAND &&
                    dataOut[1] == NXP_ACK_OK)
                    info.sendCommandSuccessCount++;
                else
                    info.sendCommandErrorCount++;
            } else if (type == MCU_TYPE_ST) {
                if (sendCMD(m, static_cast<int>(cmdIndex), data, 15, dataOut, &dataOutLength) == 1)
                    info.sendCommandSuccessCount++;
            }
            printf(
                "[SEND] sendCommandSuccessCount=%lu, sendCommandErrorCount=%d, "
                "sendCommandTimeCount=%d, \t\t\t\tfd(%d) => ID(0x%x), RTR(%d), IDE(%d), Len(%d), "
                "Data1~8(0x%x)(0x%x)(0x%x)(0x%x)(0x%x)(0x%x)(0x%x)(0x%x)\n",
                info.sendCommandSuccessCount.load(), info.sendCommandErrorCount.load(),
                info.sendCommandTimeCount.load(), m->fd, nID, 0, 4, 8, data[7], data[8], data[9],
                data[10], data[11], data[12], data[13], data[14]);
            fflush(stdout);
            cancelled = sendPause(m, std::chrono::microseconds(intervalTime));
        }
        sigaction(SIGINT, &previous, nullptr);
        if (cancelled) break;

        long long total = elapsedMicros(start);
        printf("\n\n\n>>> [DONE] <<<\n\n");
        printf("******************************SUMMARY*********************************\n");
        printf("**********************************************************************\n");
        printf(
            "fd(%d) sendTotalCount(%d), sendCommandSuccessCount(%lu), sendCommandErrorCount(%d), "
            "sendCommandTimeCount(%d)\n",
            m->fd, static_cast<int>(sendCount - 1), info.sendCommandSuccessCount.load(),
            info.sendCommandErrorCount.load(), info.sendCommandTimeCount.load());
        printf("interval time = %d (us)\n", static_cast<int>(intervalTime));
        printf("Total Testing Time: %lld microseconds\n", total);
        printf("Each Sending Time: %lld microseconds\n",
               sendMax ? total / static_cast<long long>(sendMax) : 0LL);
        printf("**********************************************************************\n");
        printf("**********************************************************************\n");
        fflush(stdout);
        info.senFlag = 0;
    }
}

void stopSend(int signal) {
    (void)signal;
    static const char kText[] = "!!! STOP SEND !!!";
    ssize_t r = write(STDOUT_FILENO, kText, sizeof kText - 1);
    (void)r;
    stopSendFlag = 1;
}

void startCANSend(MCU_CONTENT* mcu_content) {
    MCU_CONTENT* m = mcu_content;
    {
        std::lock_guard<std::mutex> g(m->sendMutex);
        m->canSendInfo.senFlag = 1;
        // The send thread exists only for CAN series: most runs never start one, and a
        // thread start is a good part of a short run's time.
        if (!m->send_thread.joinable() && !m->cancel_send_thread) {
            try {
                m->send_thread = std::thread(send_thread_function, m);
            } catch (const std::system_error&) {
                syslog(LOG_ERR, "[init_MCU] fd(%d) The sending thread creat fail !!!", m->fd);
                m->canSendInfo.senFlag = 0;
            }
        }
    }
    m->sendCond.notify_all();
}

// ---- Lifecycle ------------------------------------------------------------------

MCU_CONTENT* init_MCU(const char* pszUARTPortName, int mcuType, int baudrate) {
    syslog(LOG_INFO, "[init_MCU] device name = %s\n", pszUARTPortName);
    syslog(LOG_INFO, "[init_MCU] baudrate = %d\n", baudrate);
    MCU_CONTENT* m = new MCU_CONTENT{};
    m->mcuType = mcuType;
    m->cmd_count = 0;
    m->result = MCU_RESULT_OK;
    m->wakeFd = -1;

    struct termios settings = UART_LinkSettings(baudrate);
    m->fd = UART_Open(pszUARTPortName, baudrate, BLKING, RS232, &settings, nullptr);
    if (m->fd < 0) {
        m->openError = errno;
        syslog(LOG_ERR, "[init_MCU] The UART can not open !!!");
        m->result = MCU_RESULT_OPEN_FAIL;
        return m;
    }

    m->cancel_receive_thread = 0;
    m->cancel_send_thread = 0;
    m->wakeFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    try {
        if (m->wakeFd < 0) throw std::system_error(errno, std::generic_category());
        m->receive_thread = std::thread(reveive_thread_function, m);
    } catch (const std::system_error&) {
        syslog(LOG_ERR, "[init_MCU] fd(%d) The receiving thread creat fail !!!", m->fd);
        m->cancel_receive_thread = 1;
        m->result = MCU_RESULT_THREAD_FAIL;
        return m;
    }
    // The send thread starts with the first CAN series (startCANSend).
    return m;
}

int exit_LIB(MCU_CONTENT* mcu_content) {
    syslog(LOG_INFO, "[exit_LIB] *** START ***");
    if (mcu_content) {
        MCU_CONTENT* m = mcu_content;
        syslog(LOG_INFO, "[exit_LIB] fd(%d) UART device is closing...", m->fd);
        m->cancel_receive_thread = 1;
        m->cancel_send_thread = 1;
        syslog(LOG_INFO, "[exit_LIB] receive pthread is %lu.",
               m->receive_thread.joinable()
                   ? static_cast<unsigned long>(m->receive_thread.native_handle())
                   : 0UL);
        syslog(LOG_INFO, "[exit_LIB] send pthread is %lu.",
               m->send_thread.joinable()
                   ? static_cast<unsigned long>(m->send_thread.native_handle())
                   : 0UL);
        // Wake every thread that may be waiting: the receive thread in poll, the send
        // thread on sendCond, and a request waiting for its answer.
        if (m->wakeFd >= 0) {
            uint64_t one = 1;
            ssize_t r = write(m->wakeFd, &one, sizeof one);
            (void)r;
        }
        { std::lock_guard<std::mutex> g(m->sendMutex); }
        m->sendCond.notify_all();
        { std::lock_guard<std::mutex> g(m->responseMutex); }
        m->responseCond.notify_all();
        if (m->receive_thread.joinable()) m->receive_thread.join();
        if (m->send_thread.joinable()) m->send_thread.join();

        if (m->fd > 0) UART_Close(m->fd);
        syslog(LOG_INFO, "[exit_LIB] Close UART device done.");
        if (m->wakeFd >= 0) close(m->wakeFd);
        delete m;
        syslog(LOG_INFO, "[exit_LIB] Free mcu_content done.");
    }
    syslog(LOG_INFO, "[exit_LIB] *** Done ***");
    return 1;
}

unsigned long MCU_ScaledTimeout(unsigned long ms) {
    unsigned long scaled = ms / timeoutDivisor();
    return scaled > 0 ? scaled : 1;
}

// ---- Exchange -------------------------------------------------------------------

void Register_MCU_EventCallBack(BYTE byByte1, BYTE byByte2, void (*callback)(CALLBACK_DATA)) {
    (void)byByte1;
    (void)byByte2;
    callback_EventToLibrary = callback;
}

void ReceiveMessageFromMCU(MCU_CONTENT* mcu_content) {
    MCU_CONTENT* m = mcu_content;
    if (m->fd <= 0 && m->mcuType == MCU_TYPE_ST) {
        ST_DecodingResponse(m);  // logs and counts the lost port
        return;
    }
    BYTE buf[DECODER_READ_SIZE];
    ssize_t n;
    do {
        n = read(m->fd, buf, DECODER_READ_SIZE);
    } while (n < 0 && errno == EINTR);
    const auto length = static_cast<unsigned int>(n);  // a failed read as (unsigned)-1
    // The type is read once the bytes are in, not before the read: a request changes it
    // only while no answer is outstanding and before it is written, so bytes answering
    // it always meet its decoder.
    switch (m->mcuType.load()) {
        case MCU_TYPE_NXP:
            NXP_DecodeBytes(m, buf, length);
            break;
        case MCU_TYPE_ST:
            ST_DecodeBytes(m, buf, length);
            break;
        case MCU_TYPE_FM:
            FM_DecodeBytes(m, buf, length);
            break;
        case MCU_TYPE_CUSTOMISE:
            Customise_DecodeBytes(m, buf, length);
            break;
        default:
            break;
    }
}

int WaitForRecevData(MCU_CONTENT* mcu_content, unsigned long timeout) {
    MCU_CONTENT* m = mcu_content;
    if (m->lock != 1) return 1;
    timerCount = 0;
    timeOutFlag = 1;
    trace(m, 9, "[WaitForRecevData] timerCount = %ld timeout = %ld\n", 0L,
          static_cast<long>(timeout));
    Clock::time_point start = Clock::now();
    // An answer usually comes within tens of microseconds: look for it briefly before
    // going to sleep, which saves a thread wake-up on the common path.
    for (Clock::time_point spinEnd = start + ANSWER_SPIN; m->lock != 0 && Clock::now() < spinEnd;) {
    }
    std::unique_lock<std::mutex> lk(m->responseMutex);
    m->responseCond.wait_until(lk, start + std::chrono::milliseconds(timeout),
                               [m] { return m->lock == 0 || m->cancel_receive_thread != 0; });
    timerCount = static_cast<unsigned long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
    if (m->lock == 0) {
        trace(m, 1, "[WaitForRecevData] mcu_content.lock is set 0 by ReceiveMessageFromMCU");
        return 1;
    }
    if (m->cancel_receive_thread) return MCU_RESULT_NONE;  // the link is closing
    timerErrorCount++;
    m->canSendInfo.sendCommandTimeCount++;
    trace(m, 1, "[WaitForRecevData] mcu_content.lock TIME OUT !!!");
    trace(m, 1, "[WaitForRecevData] timerErrorCount = %ld", timerErrorCount.load());
    m->lock = 0;
    return MCU_RESULT_TIMEOUT;
}

int receive(MCU_CONTENT* mcu_content, BYTE* dataOut, int* dataOutLen) {
    MCU_CONTENT* m = mcu_content;
    std::lock_guard<std::mutex> g(m->responseMutex);
    const BYTE* r = m->CommandResponseData;
    int len = m->CommandResponseDataLength;
    int type = m->mcuType;
    trace(m, 9, "[receive] The function receive invoked start. CommandResponseDataLength = %d",
          len);
    if (m->debugLevel & 9)
        for (int i = 0; i < len; ++i)
            syslog(LOG_DEBUG, "[receive] got completely full data %d = %02x", i, r[i]);
    trace(m, 9, "[receive] mcu_content->mcuType = %#x", type);

    int from = 0, n = len;
    if (type == MCU_TYPE_NXP) {
        from = 1;
        n = len - 2;
    } else if (type == MCU_TYPE_ST) {
        if (r[0] == ST_START_CODE_F1 && r[1] == ST_DEVICE_NO_ANSWER) return MCU_RESULT_NONE;
        from = 4;
        n = len - 6;
    }
    if (n < 0) n = 0;
    if (dataOutLen) *dataOutLen = n;
    if (dataOut && n > 0) memcpy(dataOut, r + from, n);
    trace(m, 9, "[receive] read data length = %d", n);
    if (m->debugLevel & 9) {
        syslog(LOG_DEBUG, "======================");
        for (int i = 0; i < n; ++i)
            syslog(LOG_DEBUG, "[receive] read data %d = %02x", i, r[from + i]);
        syslog(LOG_DEBUG, "======================");
        syslog(LOG_DEBUG, "[receive] The function receive invoked end");
    }
    return MCU_RESULT_OK;
}

namespace {

// sendCMD after the link has been claimed (lock set to 1 by this caller).
int sendClaimed(MCU_CONTENT* m, int index, const BYTE* data, int dataLen, BYTE* dataOut,
                int* dataOutLen) {
    bool attempted = false;
    int result = mcu_detail::writeRequest(m, index, data, dataLen, &attempted);
    if (result <= 0) {
        // Nothing went out (unknown index, frame too long): the link stays idle. A short
        // write leaves it busy until an answer arrives.
        if (!attempted) m->lock = 0;
        syslog(LOG_ERR, "[sendCMD] defaultWrite failure !!!");
        return result;
    }

    long timeout = -1;
    int type = m->mcuType;
    if (type == MCU_TYPE_NXP) {
        int mode = m->nxpMode;
        timeout = mode == NXP_MODE_AP       ? TIMEOUT_AP_MS
                  : mode == NXP_MODE_UPDATE ? TIMEOUT_UPDATE_MS
                                            : -1;
    } else if (type == MCU_TYPE_ST) {
        int mode = m->stMode;
        timeout = mode == ST_MODE_AP       ? TIMEOUT_AP_MS
                  : mode == ST_MODE_UPDATE ? TIMEOUT_UPDATE_MS
                                           : -1;
    } else if (type == MCU_TYPE_FM) {
        timeout = TIMEOUT_FM_MS;
    } else if (type == MCU_TYPE_CUSTOMISE) {
        timeout = TIMEOUT_UPDATE_MS;
    }
    // A mode outside the table does not wait: the caller gets what the buffer holds.
    int waited = timeout < 0 ? result : WaitForRecevData(m, MCU_ScaledTimeout(timeout));
    if (waited == 1) return receive(m, dataOut, dataOutLen);
    if (waited == MCU_RESULT_TIMEOUT) return MCU_RESULT_TIMEOUT;
    return MCU_RESULT_NONE;
}

// Claims the link: the caller's thread and the send thread may both send.
bool claim(MCU_CONTENT* m) {
    BYTE idle = 0;
    if (m->lock.compare_exchange_strong(idle, 1)) return true;
    syslog(LOG_ERR, "[sendCMD] MCU BUSY !!!");
    return false;
}

}  // namespace

int sendCMD(MCU_CONTENT* mcu_content, int index, BYTE* data, int dataLen, BYTE* dataOut,
            int* dataOutLen) {
    if (!claim(mcu_content)) return MCU_RESULT_BUSY;
    return sendClaimed(mcu_content, index, data, dataLen, dataOut, dataOutLen);
}

int sendCMDAs(MCU_CONTENT* mcu_content, int mcuType, int mode, int index, const BYTE* data,
              int dataLen, BYTE* dataOut, int* dataOutLen) {
    if (!claim(mcu_content)) return MCU_RESULT_BUSY;
    // No answer is outstanding now, and none can arrive for this request before it is
    // written: the receive thread picks its decoder from these once bytes are in.
    mcu_content->mcuType = mcuType;
    if (mcuType == MCU_TYPE_NXP)
        mcu_content->nxpMode = mode;
    else if (mcuType == MCU_TYPE_ST)
        mcu_content->stMode = mode;
    return sendClaimed(mcu_content, index, data, dataLen, dataOut, dataOutLen);
}
