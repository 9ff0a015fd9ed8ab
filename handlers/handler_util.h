// What every command handler shares: printf-style text into strings, product-model
// sets, and the one request/report exchange on the system-MCU link.
#pragma once

#include <initializer_list>
#include <string>

#include "launch.h"

// printf into a std::string.
std::string strprintf(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
// The same with a format that comes from a table row; the arguments a format does not
// use are ignored.
std::string rowprintf(const char* fmt, ...);

// A short fixed-capacity list that table rows can hold by value and build in constant
// expressions (a product set, the options of a menu, request bytes).
template <class T, int N>
struct FixedList {
    T items[N] = {};
    int count = 0;
    constexpr FixedList() = default;
    constexpr FixedList(std::initializer_list<T> list) {
        for (const T& v : list) items[count++] = v;  // overflows fail at compile time
    }
    constexpr bool empty() const { return count == 0; }
    constexpr const T* begin() const { return items; }
    constexpr const T* end() const { return items + count; }
    constexpr const T& operator[](int i) const { return items[i]; }
};

// A set of product models as compared with szProductName: every name keeps its "\n".
using Models = FixedList<const char*, 16>;

bool productIn(const Models& models, const char* product);
// Both sets in one.
constexpr Models operator+(const Models& a, const Models& b) {
    Models all = a;
    for (const char* m : b) all.items[all.count++] = m;
    return all;
}

// Writes text to stdout as it is.
void printText(const std::string& text);
