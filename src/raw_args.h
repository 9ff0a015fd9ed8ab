// brdctl's command line: "02 AA SS" (GET) or "03 AA SS DD..." (SET), every argument
// exactly two hexadecimal digits.
#pragma once

#include <cstddef>

constexpr int MAX_DATA_IN = 128;  // data bytes a SET may carry

int is_valid_hex(const char* str);

// Checks argv[1..argc-1] and, when they make a request, fills `dataIn` (MAX_DATA_IN bytes)
// with the data bytes, *dataLen with their count and `simpleName` with the short row name
// ("SYSTEM_GET_AA_SS"). False means the usage text: nothing is to be sent.
bool parseRawArguments(int argc, const char* const* argv, unsigned char* dataIn, int* dataLen,
                       char* simpleName, size_t nameCap);
