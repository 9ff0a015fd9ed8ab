// printf into strings.
#include "text.h"

#include <cstdarg>
#include <cstdio>

namespace core {

std::string vstrprintf(const char* fmt, va_list args) {
    va_list again;
    va_copy(again, args);
    char small[256];
    int n = vsnprintf(small, sizeof small, fmt, args);
    std::string out;
    if (n >= 0 && static_cast<size_t>(n) < sizeof small) {
        out.assign(small, static_cast<size_t>(n));
    } else if (n >= 0) {
        out.resize(static_cast<size_t>(n) + 1);
        vsnprintf(out.data(), out.size(), fmt, again);
        out.resize(static_cast<size_t>(n));
    }
    va_end(again);
    return out;
}

std::string strprintf(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string out = vstrprintf(fmt, args);
    va_end(args);
    return out;
}

std::string rowprintf(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string out = vstrprintf(fmt, args);
    va_end(args);
    return out;
}

void printText(const std::string& text) {
    fwrite(text.data(), 1, text.size(), stdout);
    fflush(stdout);
}

}  // namespace core
