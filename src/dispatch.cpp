// The command pools, the raw command path, the standard result report and the
// number prompt that every handler shares.
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "function_MAP.h"
#include "launch.h"

MCU_CONTENT* mcu_content = nullptr;
int nMCUDevice = 0;
MCU_CONTENT* can_content[MAX_CAN_DEVICE] = {};
int nCANDevice = 0;
int currentCANDevice = 0;
int CAN1_fd = -1;
int CAN2_fd = -1;
char szProductName[64] = {};
BYTE data[SHARED_BUFFER_SIZE] = {};
BYTE dataOut[SHARED_BUFFER_SIZE] = {};
int dataOutLength = 0;

const char* g_progName = "brdctl";
FILE* g_input = stdin;

const char* const RULE56 = "========================================================";
const char* const SEPARATOR26 = "==========================";
const char* const SELECT_PROMPT = "Select which option you want to do:";

std::atomic<bool> EXIT_LOOP{false};
std::atomic<unsigned int> receiveCANDataCountOnAP{0};

namespace {

bool isCanRow(const char* name) {
    return strstr(name, "NXP_") != nullptr || strstr(name, "ST_CAN") != nullptr;
}

void appendToPool(MCU_CONTENT* ctx, int index, const FUNCTION_MAP_ENTRY& row) {
    if (ctx == nullptr || ctx->cmd_count >= CMD_POOL_SIZE) return;
    cmd& entry = ctx->cmd_pool[ctx->cmd_count];
    entry.cmd_index = index;
    memset(entry.funName, 0, sizeof entry.funName);
    snprintf(entry.funName, sizeof entry.funName, "%s", row.name);
    int n = 0;
    while (n < CMD_DATA_SIZE - 1 && row.cmd[n] != -1) {
        entry.cmd_data[n] = row.cmd[n];
        ++n;
    }
    // Three values are closed by -1, four or more by 255; both read as 0xFF.
    entry.cmd_data[n] = n >= 4 ? 255 : -1;
    ctx->cmd_count++;
}

MCU_CONTENT* poolFor(const char* name) {
    if (!isCanRow(name)) return mcu_content;
    if (nCANDevice < 1 || currentCANDevice < 0 || currentCANDevice >= nCANDevice) return nullptr;
    return can_content[currentCANDevice];
}

}  // namespace

int INIT_CMD_POOL() {
    int systemCount = 0;
    int canCount = 0;
    for (size_t i = 0; i < function_map_count; ++i) {
        const FUNCTION_MAP_ENTRY& row = function_map[i];
        if (row.cmd[0] == -1) continue;
        if (!isCanRow(row.name)) {
            if (nMCUDevice < 1 || mcu_content == nullptr) continue;
            appendToPool(mcu_content, ++systemCount, row);
        } else {
            ++canCount;
            for (int d = 0; d < nCANDevice; ++d) appendToPool(can_content[d], canCount, row);
        }
    }
    return 1;
}

int FIND_FunName(const char* needle, char* dst) {
    if (mcu_content == nullptr) return 0;
    for (int i = 0; i < mcu_content->cmd_count; ++i) {
        if (strstr(mcu_content->cmd_pool[i].funName, needle) != nullptr) {
            snprintf(dst, 128, "%s", mcu_content->cmd_pool[i].funName);
            return 1;
        }
    }
    return 0;
}

int findCommandIndex(const char* name, int* index) {
    MCU_CONTENT* ctx = poolFor(name);
    if (ctx == nullptr) return 1;
    for (int i = 0; i < ctx->cmd_count; ++i) {
        if (strcmp(ctx->cmd_pool[i].funName, name) == 0) {
            *index = ctx->cmd_pool[i].cmd_index;
            break;
        }
    }
    return 1;
}

const FUNCTION_MAP_ENTRY* findFunctionEntry(const char* name) {
    for (size_t i = 0; i < function_map_count; ++i)
        if (strcmp(function_map[i].name, name) == 0) return &function_map[i];
    return nullptr;
}

int LAUNCH_MCU_COMMAND(char* funName, BYTE* DataIn, int DataInLength, BYTE* DataOut,
                       int* DataOutLength) {
    int index = 0;
    findCommandIndex(funName, &index);
    if (mcu_content == nullptr) return MCU_RESULT_OPEN_FAIL;
    mcu_content->mcuType = MCU_TYPE_ST;
    mcu_content->stMode = ST_MODE_AP;
    int result = 0;
    for (int attempt = 0; attempt < 20; ++attempt) {
        result = sendCMD(mcu_content, index, DataIn, DataInLength, DataOut, DataOutLength);
        if (result == 1) break;
        usleep(1000);
    }
    // The MCU needs time to start storing its flash before anything else is sent.
    if (strcmp(funName, "ST_SYSTEM_SET_20_01_FLASH_UPDATE") == 0) usleep(500 * 1000);
    return result;
}

int check_result(int fd, int mode, int result, void* dataPtr, int length, char* funName) {
    const BYTE* bytes = static_cast<const BYTE*>(dataPtr);
    puts(RULE56);
    switch (result) {
        case 1:
            printf("result data length = %d\n", length);
            for (int i = 0; i < length; ++i) printf("result data %d = %#x\n", i, bytes[i]);
            break;
        case 0:
            printf("fd(%d) %s : Failure !!!\n\n", fd, funName);
            break;
        case -1:
            printf("fd(%d) %s : Fail to open serial port !!!\n\n", fd, funName);
            break;
        case -2:
            printf("fd(%d) %s : Fail to write data to MCU !!!\n\n", fd, funName);
            break;
        case -4:
            printf("fd(%d) %s : Request Timeout !!!\n\n", fd, funName);
            break;
        case -7:
            printf("fd(%d) %s : Data Format Error !!!\n\n", fd, funName);
            break;
        case -8:
            printf("fd(%d) %s : CRC Error !!!\n\n", fd, funName);
            break;
        case -20:
            printf("fd(%d) %s : No Command !!!\n\n", fd, funName);
            break;
        default:
            break;
    }
    int verdict = result;
    bool printVerdict = true;
    switch (mode) {
        case 0:
        case 2:
            verdict = result == 1 ? 1 : result;
            break;
        case 1:
            verdict = (result == 1 && length > 1 && bytes[1] == 1) ? 1 : 0;
            break;
        case 3:
            verdict = (result == 1 && length > 0 && bytes[0] == 1) ? 1 : 0;
            break;
        default:
            printVerdict = false;
            verdict = result == 1 ? 1 : result;
            break;
    }
    if (printVerdict) {
        if (verdict == 1)
            printf("fd(%d) %s command executed successfully.\n", fd, funName);
        else
            printf("fd(%d) %s command executed unsuccessfully !!!\n", fd, funName);
    }
    puts(RULE56);
    return verdict;
}

int stExchange(int cmdIndex, int dataLength, int mode, char* funName) {
    memset(dataOut, 0, sizeof dataOut);
    dataOutLength = 0;
    if (mcu_content == nullptr)
        return check_result(-1, mode, MCU_RESULT_OPEN_FAIL, dataOut, 0, funName);
    mcu_content->mcuType = MCU_TYPE_ST;
    mcu_content->stMode = ST_MODE_AP;
    int result = sendCMD(mcu_content, cmdIndex, data, dataLength, dataOut, &dataOutLength);
    return check_result(mcu_content->fd, mode, result, dataOut, dataOutLength, funName);
}

int checkSelect(int* value, int min, int max) {
    fflush(stdout);
    char* line = nullptr;
    size_t cap = 0;
    int result = 0;
    for (;;) {
        ssize_t n = getline(&line, &cap, g_input);
        if (n < 0) {
            fprintf(stderr, "%s: input ended\n", g_progName);
            break;
        }
        char* end = nullptr;
        errno = 0;
        long v = strtol(line, &end, 10);
        bool number = end != line && errno == 0;
        while (number && *end != '\0') {
            if (*end != ' ' && *end != '\t' && *end != '\n' && *end != '\r') number = false;
            ++end;
        }
        if (!number) {
            printf("\nInput Error !!! Please input a number.\n");
            fflush(stdout);
            continue;
        }
        if (v < min || v > max) {
            printf("\nSelect Error !!! Please select a option again.\n");
            fflush(stdout);
            continue;
        }
        *value = static_cast<int>(v);
        result = 1;
        break;
    }
    free(line);
    return result;
}

int FUNC_GENERIC(int cmdIndex, char* funName) {
    return stExchange(cmdIndex, 0, 2, funName);
}

int FUNC_RESERVED(int cmdIndex, char* funName) {
    printf("fd(%d) %s is reserved: nothing sent.\n", mcu_content ? mcu_content->fd : -1, funName);
    return 0;
}

int FUNC_EXIT(int cmdIndex, char* funName) {
    return 1;
}

int switchCAN(int index) {
    if (index < 0 || index >= nCANDevice) return 0;
    currentCANDevice = index;
    return 1;
}

// ---- interrupt and event callbacks shared by the front ends ----

namespace {
struct timeval start1, end1;
std::atomic<long> time_use{0};

// Appends the decimal text of v to buf; async-signal-safe.
size_t appendNumber(char* buf, size_t at, unsigned long v) {
    char digits[24];
    size_t n = 0;
    do {
        digits[n++] = static_cast<char>('0' + v % 10);
        v /= 10;
    } while (v != 0);
    while (n > 0) buf[at++] = digits[--n];
    return at;
}

size_t appendText(char* buf, size_t at, const char* text) {
    while (*text) buf[at++] = *text++;
    return at;
}
}  // namespace

void handle_signal_from_keyevent(int sign_no) {
    char buf[160];
    size_t n = appendText(buf, 0, "The total received data is ");
    n = appendNumber(buf, n, receiveCANDataCountOnAP.load());
    n = appendText(buf, n, ".\n\nReceiving signal from key event. The signal no is ");
    n = appendNumber(buf, n, static_cast<unsigned long>(sign_no));
    n = appendText(buf, n, ".\n");
    ssize_t ignored = write(STDOUT_FILENO, buf, n);
    (void)ignored;
    EXIT_LOOP = true;
}

void startReceiveTimer() {
    gettimeofday(&start1, nullptr);
}

void callback_gotEventData(CALLBACK_DATA callback_data) {
    unsigned int count = ++receiveCANDataCountOnAP;
    gettimeofday(&end1, nullptr);
    long used = (end1.tv_sec - start1.tv_sec) * 1000 + (end1.tv_usec - start1.tv_usec) / 1000;
    time_use = used;
    // Only a run whose event lands exactly on the 60000th millisecond is ended here.
    if (used == 60000) {
        printf("The total received data is %d, time used: %d ms.\n", count, 60000);
        EXIT_LOOP = true;
    }
}
