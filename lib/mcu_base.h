// The MCU link library: one context per serial link, its receive and send threads,
// request frames, the decoders of every controller type and the event callbacks.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef unsigned long DWORD;

// Controller types (mcuType).
constexpr int MCU_TYPE_NXP = 0;
constexpr int MCU_TYPE_ST = 1;
constexpr int MCU_TYPE_FM = 15;
constexpr int MCU_TYPE_CUSTOMISE = 192;

// Operating modes.
constexpr int ST_MODE_AP = 1;
constexpr int ST_MODE_UPDATE = 2;
constexpr int NXP_MODE_AP = 16;
constexpr int NXP_MODE_UPDATE = 32;

// Reserved byte values of the framing.
constexpr BYTE ST_START_CODE_F1 = 0xF1;
constexpr BYTE ST_END_CODE_F2 = 0xF2;
constexpr BYTE NXP_START_CODE_F1 = 0xF1;
constexpr BYTE NXP_END_CODE_F2 = 0xF2;
constexpr BYTE NXP_START_CODE_C1 = 0xC1;
constexpr BYTE NXP_END_CODE_C2 = 0xC2;
constexpr BYTE ESCAPE_CODE_F0 = 0xF0;
constexpr BYTE ESCAPE_CODE_C0 = 0xC0;
// Escaped bytes go out as the escape code and their distance from it (00-03).
constexpr BYTE ESCAPE_OFFSET_MAX = 0x03;

// Bytes of the frames themselves.
constexpr BYTE ST_DEVICE_CAN1 = 0x06;       // CAN frames of the first ST channel
constexpr BYTE ST_DEVICE_CAN2 = 0x07;       // ... and of the second
constexpr BYTE ST_COMMAND_EVENT = 0x04;     // unsolicited reports: CAN frames and events
constexpr BYTE ST_DEVICE_NO_ANSWER = 0xFF;  // the MCU had nothing to answer
constexpr BYTE NXP_COMMAND_CAN = 0x30;      // a CAN message from the NXP controller
constexpr BYTE NXP_ACK_COMMAND = 0x21;      // the NXP controller's acknowledgement ...
constexpr BYTE NXP_ACK_OK = 0x01;           // ... of a message it took
constexpr BYTE CMD_DATA_END = 0xFF;         // ends a customised pool entry's bytes

// Result codes of the exchange.
constexpr int MCU_RESULT_OK = 1;
constexpr int MCU_RESULT_NONE = 0;
constexpr int MCU_RESULT_OPEN_FAIL = -1;
constexpr int MCU_RESULT_WRITE_FAIL = -2;
constexpr int MCU_RESULT_THREAD_FAIL = -3;
constexpr int MCU_RESULT_TIMEOUT = -4;
constexpr int MCU_RESULT_BUSY = -5;
constexpr int MCU_RESULT_FORMAT = -7;
constexpr int MCU_RESULT_CRC = -8;
constexpr int MCU_RESULT_NO_COMMAND = -20;

// Time-outs of one answer, in milliseconds.
constexpr unsigned long TIMEOUT_AP_MS = 50;
constexpr unsigned long TIMEOUT_FM_MS = 10000;
constexpr unsigned long TIMEOUT_UPDATE_MS = 20000;
// A time-out as waited for: divided by BRDCTL_TIMEOUT_SCALE, which only tests set (at
// least 1 ms).
unsigned long MCU_ScaledTimeout(unsigned long ms);

constexpr int CMD_POOL_SIZE = 2000;
constexpr int CMD_DATA_SIZE = 16;
constexpr int RECEIVE_BUFFER_SIZE = 2048;
constexpr int RESPONSE_BUFFER_SIZE = 1024;
constexpr int SEND_BUFFER_SIZE = 1024;
constexpr int EVENT_DATA_SIZE = 128;

// One command-pool entry.
struct cmd {
    int cmd_index;
    char funName[128];
    int cmd_data[CMD_DATA_SIZE];
};

struct can_msg_t {
    uint16_t ide;
    uint32_t id;
    uint16_t dlc;
    BYTE data[8];
    uint16_t rtr;
};

// What a link hands to the registered callback, by value.
struct CALLBACK_DATA {
    int fd;
    int type;  // 16 CAN message, 1 event
    WORD szDataLength;
    BYTE szData[EVENT_DATA_SIZE];
    can_msg_t canData;
    unsigned long receiveCANDataCount;
    unsigned int receiveErrorCount;
    unsigned long sendCommandSuccessCount;
    unsigned int sendCommandErrorCount;
    unsigned int sendCommandTimeCount;
};
constexpr int CALLBACK_TYPE_EVENT = 1;
constexpr int CALLBACK_TYPE_CAN = 16;

// Settings and counters of a timed CAN series run by the send thread.
struct CAN_SEND_INFO {
    unsigned int nID;
    DWORD sendMax;
    DWORD intervalTime;  // microseconds after each message
    std::atomic<int> senFlag;
    unsigned int cmdIndex;
    std::atomic<unsigned long> sendCommandSuccessCount;
    std::atomic<unsigned int> sendCommandErrorCount;
    std::atomic<unsigned int> sendCommandTimeCount;
};

// What the configuration says about one device.
struct MCU_INFO {
    char devicePath[256];
    int baudrate;
    int enabled;
    int debugLevel;
};

struct MCU_CONTENT {
    char szProductName[64];
    int result;
    // Read by the receive thread while the front end may still be setting it.
    std::atomic<int> debugLevel;
    std::thread receive_thread;
    std::atomic<int> cancel_receive_thread;
    std::thread send_thread;
    std::atomic<int> cancel_send_thread;
    int fd;
    int openError;  // errno of a port that could not be opened (result -1)
    std::atomic<int> mcuType;
    std::atomic<int> stMode;
    std::atomic<int> nxpMode;
    WORD cmd_count;
    cmd cmd_pool[CMD_POOL_SIZE];
    // Receive side, touched by the receive thread only.
    BYTE receiveDataBuffer[RECEIVE_BUFFER_SIZE];
    unsigned int receiveDataStartIndex;
    unsigned int F1_Index;
    int catch_F1_Flag;
    BYTE Device;
    BYTE Command;
    BYTE Address;
    BYTE validData[RECEIVE_BUFFER_SIZE];
    WORD validDataLength;
    // 1 while a request awaits its answer.
    std::atomic<BYTE> lock;
    can_msg_t canData;
    // The last answer; written and read under responseMutex.
    BYTE CommandResponseData[RESPONSE_BUFFER_SIZE];
    WORD CommandResponseDataLength;
    CAN_SEND_INFO canSendInfo;
    std::atomic<unsigned long> receiveCANDataCount;
    std::atomic<unsigned int> receiveErrorCount;
    // Whole reads of DECODER_READ_SIZE bytes that a decoder threw away: traffic lost
    // because the receive thread fell behind.
    std::atomic<unsigned long> receiveDropCount;
    MCU_INFO mcuInfo;

    // Hand-over between the receive thread and the waiter.
    std::mutex responseMutex;
    std::condition_variable responseCond;
    // Wakes the send thread (senFlag or cancel).
    std::mutex sendMutex;
    std::condition_variable sendCond;
    // eventfd that wakes the receive thread out of poll().
    int wakeFd;
    // Set by the receive thread when the line hung up (end of file, EIO, POLLHUP): the
    // port is no longer polled and waiting requests run into their time-out.
    std::atomic<int> lineHungUp;
};

// Lifecycle.
void MCU_Library_Version(BYTE* version);
MCU_CONTENT* init_MCU(const char* pszUARTPortName, int mcuType, int baudrate);
int exit_LIB(MCU_CONTENT* mcu_content);
void stopSend(int signal);
// Starts a CAN series on the send thread (sets senFlag and wakes it; the thread itself is
// started by the first series).
void startCANSend(MCU_CONTENT* mcu_content);

// Frames.
int defaultWrite(MCU_CONTENT* mcu_content, int index, BYTE* data, int dataLen);
WORD Data_Encoding(MCU_CONTENT* mcu_content, BYTE* _Dst, unsigned int _DstSize, BYTE* _Src,
                   unsigned int _SrcSize);
BYTE Get_CRC8(const BYTE* ptr, unsigned int Length);
// The documented nibble table (entry n: nibble n shifted through four steps of
// polynomial 0x5A) and the CRC computed a nibble at a time through it. Get_CRC8 uses
// wider tables derived from the same polynomial and gives the same result.
extern const BYTE CRC8_Table[16];
BYTE Get_CRC8_Nibble(const BYTE* ptr, unsigned int Length);
int verify_CRC(MCU_CONTENT* mcu_content, BYTE* pszdata, int len);
// Pure helpers shared by the encoder, the decoders and the simulator.
// stuffFrame writes start, escaped src, end into dst; returns the length, or 0 when it
// would not fit dstCap.
unsigned int stuffFrame(BYTE start, BYTE end, BYTE escape, const BYTE* src, unsigned int srcLen,
                        BYTE* dst, unsigned int dstCap);
// unstuffFrame copies the first byte, then undoes the escapes; returns the output length.
unsigned int unstuffFrame(BYTE escape, const BYTE* src, unsigned int srcLen, BYTE* dst);

// keepWellFormedFrames copies from a span of line bytes the frames that are well formed
// (start code, no start code inside, every escape followed by 00-03, end code) in order,
// dropping the rest; returns the bytes kept and the count of frames dropped in *dropped.
unsigned int keepWellFormedFrames(BYTE start, BYTE end, BYTE escape, const BYTE* src,
                                  unsigned int srcLen, BYTE* dst, unsigned int* dropped);

// Command pool and exchange.
void pushCommandToPool(MCU_CONTENT* mcu_content, int index, int device, int command, int address);
void pushCommandToPoolCustomise(MCU_CONTENT* mcu_content, int index, BYTE* cmdData, int cmdDataLen);
cmd* getCommandByIndex(MCU_CONTENT* mcu_content, int index);
int sendCMD(MCU_CONTENT* mcu_content, int index, BYTE* data, int dataLen, BYTE* dataOut,
            int* dataOutLen);
// sendCMD that first sets the link's controller type and mode (stMode for ST, nxpMode
// for NXP), once the link is claimed: never while another request awaits its answer.
int sendCMDAs(MCU_CONTENT* mcu_content, int mcuType, int mode, int index, const BYTE* data,
              int dataLen, BYTE* dataOut, int* dataOutLen);
int receive(MCU_CONTENT* mcu_content, BYTE* dataOut, int* dataOutLen);
int WaitForRecevData(MCU_CONTENT* mcu_content, unsigned long timeout);
void Register_MCU_EventCallBack(BYTE byByte1, BYTE byByte2, void (*callback)(CALLBACK_DATA));
void ReceiveMessageFromMCU(MCU_CONTENT* mcu_content);

// Decoders: one read from the port per call.
int ST_DecodingResponse(MCU_CONTENT* mcu_content);
int NXP_DecodingResponse(MCU_CONTENT* mcu_content);
int FM_DecodingResponse(MCU_CONTENT* mcu_content);
int Customise_DecodingResponse(MCU_CONTENT* mcu_content);
// The same decoders without the read: `receiveDataLength` is what one read returned
// (a failed read's -1 taken as unsigned), `bytes` what it delivered.
int ST_DecodeBytes(MCU_CONTENT* mcu_content, const BYTE* bytes, unsigned int receiveDataLength);
int NXP_DecodeBytes(MCU_CONTENT* mcu_content, const BYTE* bytes, unsigned int receiveDataLength);
int FM_DecodeBytes(MCU_CONTENT* mcu_content, const BYTE* bytes, unsigned int receiveDataLength);
int Customise_DecodeBytes(MCU_CONTENT* mcu_content, const BYTE* bytes,
                          unsigned int receiveDataLength);
// Bytes asked of the port by one decoder step.
constexpr unsigned int DECODER_READ_SIZE = 1024;

// The link's threads (the receive thread started by init_MCU, the send thread by the first
// startCANSend; both stopped and joined by exit_LIB).
void reveive_thread_function(MCU_CONTENT* mcu_content);
void send_thread_function(MCU_CONTENT* mcu_content);

// Callbacks.
int pushCANDataToCallBackFunction(MCU_CONTENT* mcu_content, int index, int length);
int pushEventDataToCallBackFunction(MCU_CONTENT* mcu_content, int index, int length);

// Process-wide state.
extern std::atomic<int> stopSendFlag;
extern std::atomic<unsigned long> timerCount;
extern std::atomic<int> timeOutFlag;
extern std::atomic<unsigned long> timerErrorCount;
extern std::atomic<void (*)(CALLBACK_DATA)> callback_EventToLibrary;
