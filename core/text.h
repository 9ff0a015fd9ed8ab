// printf into strings, and writing finished text to stdout.
#pragma once

#include <string>

namespace core {

// printf into a std::string.
std::string strprintf(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
// The same with a format that comes from a table row; the arguments a format does not
// use are ignored.
std::string rowprintf(const char* fmt, ...);
// Writes text to stdout as it is, and flushes.
void printText(const std::string& text);

}  // namespace core
