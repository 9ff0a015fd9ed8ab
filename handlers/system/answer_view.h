// A read-only view of one answer with the product it came from, for the pure renders of
// the system handlers: bytes past the end read as 0 and are remembered, so a handler can
// warn about a short answer without ever reading past what arrived.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace sysrender {

using Byte = uint8_t;

// A product set as written in the tables: model names without their line end.
using ModelSet = std::initializer_list<std::string_view>;

class Answer {
   public:
    Answer(std::span<const Byte> bytes, std::string_view product, int fd)
        : bytes_(bytes), product_(product), fd_(fd) {
        while (!product_.empty() && (product_.back() == '\n' || product_.back() == ' '))
            product_.remove_suffix(1);
    }

    // Byte i of the answer, 0 past its end.
    Byte at(size_t i) const {
        needed_ = std::max(needed_, i + 1);
        return i < bytes_.size() ? bytes_[i] : 0;
    }
    // Bytes i and i+1, low byte first.
    int word(size_t i) const { return at(i) | at(i + 1) << 8; }
    size_t size() const { return bytes_.size(); }
    std::span<const Byte> bytes() const { return bytes_; }

    // The model name without its line end ("KX07").
    std::string_view model() const { return product_; }
    bool is(std::string_view model) const { return product_ == model; }
    bool in(ModelSet set) const { return std::find(set.begin(), set.end(), product_) != set.end(); }
    int fd() const { return fd_; }

    // The highest position a render read, plus one: more than size() means a short answer.
    size_t needed() const { return needed_; }

   private:
    std::span<const Byte> bytes_;
    std::string_view product_;
    int fd_;
    mutable size_t needed_ = 0;
};

// printf into a string.
std::string format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
// "fd(N) " + text + "\n".
std::string fdLine(const Answer& a, std::string_view text);

extern const std::string SEP26;  // the 26-"=" separator with its line end
extern const std::string RULE56_LINE;
extern const std::string TAB_RULE36;  // "\t" and 36 "=" framing the identity records

}  // namespace sysrender
