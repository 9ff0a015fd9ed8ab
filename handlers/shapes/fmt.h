// Printf formats held in rows, checked when the program is compiled: Fmt<int> accepts
// only a format whose conversions print an int ("%d", "%02X", "%c"), Fmt<const char*>
// only "%s", and so on; a format that does not fit does not build.
#pragma once

#include <cstddef>
#include <type_traits>

namespace shapes {

namespace fmt_detail {

enum class Kind { Int, Unsigned, Text, None };

// The kind of value the conversion character `c` prints, or None for one no row uses.
consteval Kind kindOf(char c) {
    switch (c) {
        case 'd':
        case 'i':
        case 'c':
            return Kind::Int;
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            return Kind::Unsigned;
        case 's':
            return Kind::Text;
        default:
            return Kind::None;
    }
}

template <class T>
consteval bool fits(Kind k) {
    // An int and an unsigned are passed alike; "%x" of an int is how the texts print bytes.
    if constexpr (std::is_same_v<T, int> || std::is_same_v<T, unsigned>)
        return k == Kind::Int || k == Kind::Unsigned;
    else if constexpr (std::is_same_v<T, const char*>)
        return k == Kind::Text;
    else
        return false;
}

// Whether argument `i` of the types A can be printed by a conversion of kind `k`.
template <class... A>
consteval bool fitsAt(std::size_t i, Kind k) {
    std::size_t at = 0;
    bool fit = false;
    ((fit = at++ == i ? fits<A>(k) : fit), ...);
    return fit;
}

// Whether the conversions of `s` print, in order, values of the types A (a format may
// leave trailing arguments unused, as printf does).
template <class... A>
consteval bool matches(const char* s) {
    constexpr std::size_t n = sizeof...(A);
    std::size_t used = 0;
    for (const char* p = s; *p != '\0'; ++p) {
        if (*p != '%') continue;
        ++p;
        if (*p == '%') continue;
        while (*p == '-' || *p == '+' || *p == ' ' || *p == '#' || *p == '0') ++p;
        while (*p >= '0' && *p <= '9') ++p;
        if (*p == '.') {
            ++p;
            while (*p >= '0' && *p <= '9') ++p;
        }
        if (*p == 'h' || *p == 'l' || *p == 'z' || *p == '*') return false;  // none used
        if (used >= n || !fitsAt<A...>(used, kindOf(*p))) return false;
        ++used;
    }
    return true;
}

}  // namespace fmt_detail

// A format for the values A..., checked at compile time. Its constructor runs only at
// compile time, so a row's format is always a checked literal.
template <class... A>
struct Fmt {
    const char* text = nullptr;

    constexpr Fmt() = default;
    consteval Fmt(const char* s) : text(s) {  // NOLINT(google-explicit-constructor)
        // Not a constant expression, so the build stops here on a mismatch.
        if (!fmt_detail::matches<A...>(s)) throw "format does not match its values";
    }
    constexpr explicit operator bool() const { return text != nullptr; }
};

}  // namespace shapes
