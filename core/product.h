// Product names and product sets. A set lists names without a line end ({"KX07",
// "KX22"}); the detected name keeps its "\n" (texts that print it print it so), and is
// compared without it.
#pragma once

#include <initializer_list>
#include <span>
#include <string_view>

namespace core {

using ProductSet = std::span<const char* const>;

// `product` without its trailing line end.
constexpr std::string_view productBase(std::string_view product) {
    while (!product.empty() && (product.back() == '\n' || product.back() == '\r'))
        product.remove_suffix(1);
    return product;
}

// Whether `product` (with or without its "\n") is one of `set`.
constexpr bool productIn(ProductSet set, std::string_view product) {
    const std::string_view base = productBase(product);
    for (const char* name : set)
        if (base == name) return true;
    return false;
}
constexpr bool productIn(std::initializer_list<const char*> set, std::string_view product) {
    return productIn(ProductSet(set.begin(), set.size()), product);
}

// The detected product name, with its trailing "\n".
const char* productName();

}  // namespace core
