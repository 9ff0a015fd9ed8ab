// brdctl's argument parser, kept apart from the program so it can be tested and fuzzed.
#include "raw_args.h"

#include <ctype.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int is_valid_hex(const char* str) {
    if (str == nullptr || strlen(str) != 2) return 0;
    return isxdigit(static_cast<unsigned char>(str[0])) &&
                   isxdigit(static_cast<unsigned char>(str[1]))
               ? 1
               : 0;
}

bool parseRawArguments(int argc, const char* const* argv, unsigned char* dataIn, int* dataLen,
                       char* simpleName, size_t nameCap) {
    // A longer command line than the data buffer holds is refused before anything is sent.
    if (argc < 4 || argc - 4 > MAX_DATA_IN) return false;
    for (int i = 1; i < argc; ++i) {
        if (!is_valid_hex(argv[i])) return false;
        if (i >= 4) dataIn[i - 4] = static_cast<unsigned char>(strtol(argv[i], nullptr, 16));
    }
    const char* prefix;
    if (strcmp(argv[1], "02") == 0 && argc == 4)
        prefix = "SYSTEM_GET";
    else if (strcmp(argv[1], "03") == 0 && argc >= 5)
        prefix = "SYSTEM_SET";
    else
        return false;
    snprintf(simpleName, nameCap, "%s_%s_%s", prefix, argv[2], argv[3]);
    *dataLen = argc - 4;
    return true;
}
