// What the handlers share beyond the core: short fixed-capacity lists that rows hold by
// value, and the product-model sets written with them.
#pragma once

#include <initializer_list>
#include <span>

#include "context.h"
#include "exchange.h"
#include "product.h"
#include "prompt.h"
#include "report.h"
#include "text.h"

using core::printText;
using core::rowprintf;
using core::strprintf;

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
    constexpr std::span<const T> span() const { return {items, static_cast<size_t>(count)}; }
};

// A set of product models, each written without its line end.
using Models = FixedList<const char*, 16>;

inline bool productIn(const Models& models, const char* product) {
    return core::productIn(models.span(), product);
}
// Both sets in one.
constexpr Models operator+(const Models& a, const Models& b) {
    Models all = a;
    for (const char* m : b) all.items[all.count++] = m;
    return all;
}
