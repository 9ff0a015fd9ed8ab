// printf into strings, and writing finished text to stdout.
#pragma once

#include <cstdarg>
#include <string>

namespace core {

// printf into a std::string.
std::string strprintf(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
// The same with a format that comes from a table row; the arguments a format does not
// use are ignored.
std::string rowprintf(const char* fmt, ...);
// The same over a va_list, for helpers of their own that take printf arguments.
std::string vstrprintf(const char* fmt, va_list args);
// Writes text to stdout as it is, and flushes.
void printText(const std::string& text);

}  // namespace core
