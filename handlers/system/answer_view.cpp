// Formatting helpers of the system handlers' pure renders.
#include "answer_view.h"

#include <cstdarg>
#include <cstdio>

#include "text.h"

namespace sysrender {

const std::string SEP26 = std::string(26, '=') + "\n";
const std::string RULE56_LINE = std::string(56, '=') + "\n";
const std::string TAB_RULE36 = "\t" + std::string(36, '=');

std::string format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string out = core::vstrprintf(fmt, args);
    va_end(args);
    return out;
}

std::string fdLine(const Answer& a, std::string_view text) {
    return format("fd(%d) ", a.fd()) + std::string(text) + "\n";
}

}  // namespace sysrender
