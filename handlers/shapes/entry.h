// Text and hexadecimal entry at a prompt, one whole line per answer: a word cut to a
// width (serial numbers, MAC and key strings), or a hexadecimal number (register and key
// indices and bytes) that the caller may refuse or take as 0 when it is not one.
#pragma once

#include <cstdio>
#include <string>

namespace shapes {

// Reads lines from `in` until one holds a word, and gives its first word cut to `width`
// characters (the rest of the line is dropped). False when the input ended.
bool readWord(FILE* in, size_t width, std::string* word);

// One line read as a hexadecimal number, with or without "0x"; blank lines are skipped.
// A number too long for the value saturates.
enum class Hex { Value, NotHex, Ended };
Hex readHex(FILE* in, unsigned long* value);

}  // namespace shapes
