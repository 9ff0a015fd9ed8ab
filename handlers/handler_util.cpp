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

void printText(const std::string& text) {
    fwrite(text.data(), 1, text.size(), stdout);
    fflush(stdout);
}
