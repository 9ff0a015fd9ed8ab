// Formatting, product sets and the system-MCU exchange shared by the handlers.
#include "handler_util.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {
std::string vformat(const char* fmt, va_list args) {
    va_list again;
    va_copy(again, args);
    char small[256];
    int n = vsnprintf(small, sizeof small, fmt, args);
    std::string out;
    if (n < 0) {
        va_end(again);
        return out;
    }
    if (static_cast<size_t>(n) < sizeof small) {
        out.assign(small, static_cast<size_t>(n));
    } else {
        out.resize(static_cast<size_t>(n) + 1);
        vsnprintf(out.data(), out.size(), fmt, again);
        out.resize(static_cast<size_t>(n));
    }
    va_end(again);
    return out;
}
}  // namespace

std::string strprintf(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string out = vformat(fmt, args);
    va_end(args);
    return out;
}

std::string rowprintf(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string out = vformat(fmt, args);
    va_end(args);
    return out;
}

bool productIn(const Models& models, const char* product) {
    for (const char* m : models)
        if (strcmp(m, product) == 0) return true;
    return false;
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

void printText(const std::string& text) {
    fwrite(text.data(), 1, text.size(), stdout);
    fflush(stdout);
}
