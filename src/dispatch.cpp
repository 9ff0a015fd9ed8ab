// The command pools filled from the table's link column, the raw command path and the
// handlers of the rows that have no decoding handler of their own.
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

#include "function_MAP.h"
#include "launch.h"

std::atomic<bool> EXIT_LOOP{false};
std::atomic<unsigned int> receiveCANDataCountOnAP{0};

namespace {

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

}  // namespace

int INIT_CMD_POOL() {
    int systemCount = 0;
    int canCount = 0;
    for (size_t i = 0; i < function_map_count; ++i) {
        const FUNCTION_MAP_ENTRY& row = function_map[i];
        if (row.cmd[0] == -1) continue;
        if (row.link == core::Link::SystemMcu) {
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
    const FUNCTION_MAP_ENTRY* row = findFunctionEntry(name);
    MCU_CONTENT* ctx = core::linkFor(row ? row->link : core::Link::SystemMcu);
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
    const core::Answer answer =
        core::exchangeRetrying(mcu_content, MCU_TYPE_ST, ST_MODE_AP, index,
                               {DataIn, static_cast<size_t>(DataInLength > 0 ? DataInLength : 0)});
    if (answer.ok()) {
        memcpy(DataOut, answer.bytes.data(), static_cast<size_t>(answer.length));
        *DataOutLength = answer.length;
    }
    // The MCU needs time to start storing its flash before anything else is sent.
    if (strcmp(funName, "ST_SYSTEM_SET_20_01_FLASH_UPDATE") == 0) usleep(500 * 1000);
    return answer.result;
}

int FUNC_GENERIC(int cmdIndex, char* funName) {
    const FUNCTION_MAP_ENTRY* row = findFunctionEntry(funName);
    const core::Link link = row ? row->link : core::Link::SystemMcu;
    const int type = row ? row->mcuType : MCU_TYPE_ST;
    MCU_CONTENT* ctx = core::linkFor(link);
    const core::Answer answer = core::exchange(ctx, type, core::apModeOf(type), cmdIndex);
    return core::report(ctx, REPORT_STANDARD, answer, funName);
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
