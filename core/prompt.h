// Whole-line readers for the handlers' prompts. Each reads from the stream it is given
// and never leaves part of a line behind. At end of input each prints "input ended" on
// stderr once and returns 0: the handler then sends nothing and returns 0.
#pragma once

#include <cstdio>
#include <string>

// Reads one whole line holding a decimal number within [min, max] into *value.
// Re-asks on a non-number ("\nInput Error !!! Please input a number.") or out of range
// ("\nSelect Error !!! Please select a option again."). Returns 1 with a value, or 0
// when the input ended.
int checkSelect(FILE* in, int* value, int min, int max);

namespace core {

// Reads one whole line holding a hexadecimal number (with or without "0x") within
// [min, max]; re-asks as checkSelect does. Returns 1 with a value, or 0 at end of input.
int readHexLine(FILE* in, unsigned long* value, unsigned long min, unsigned long max);

// Reads one line of text without its line end; a line longer than `maxLength`
// characters is refused with "\nInput Error !!! The text is too long." and asked again.
// Returns 1 with the text, or 0 at end of input.
int readTextLine(FILE* in, std::string* text, size_t maxLength);

}  // namespace core
