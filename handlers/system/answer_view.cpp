// Formatting helpers of the system handlers' pure renders.
#include "answer_view.h"

#include <cstdarg>
#include <cstdio>

namespace sysrender {

const std::string SEP26 = std::string(26, '=') + "\n";
const std::string RULE56_LINE = std::string(56, '=') + "\n";
const std::string TAB_RULE36 = "\t" + std::string(36, '=');

std::string format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    va_list again;
    va_copy(again, args);
    int n = vsnprintf(nullptr, 0, fmt, args);
    va_end(args);
    std::string out;
    if (n > 0) {
        out.resize(static_cast<size_t>(n) + 1);
        vsnprintf(out.data(), out.size(), fmt, again);
        out.resize(static_cast<size_t>(n));
    }
    va_end(again);
    return out;
}

std::string fdLine(const Answer& a, std::string_view text) {
    return format("fd(%d) ", a.fd()) + std::string(text) + "\n";
}

}  // namespace sysrender
