// libFuzzer target: brdctl's argument parser. The input is split at zero bytes into
// arguments; an accepted line is exactly what the usage allows, and its data bytes and
// row name are the arguments read back.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_common.h"
#include "raw_args.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<std::string> args{"brdctl"};
    std::string cur;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0) {
            args.push_back(cur);
            cur.clear();
        } else {
            cur += static_cast<char>(data[i]);
        }
    }
    args.push_back(cur);
    std::vector<const char*> argv;
    for (const auto& a : args) argv.push_back(a.c_str());
    int argc = static_cast<int>(argv.size());

    unsigned char dataIn[MAX_DATA_IN];
    int dataLen = -1;
    char name[128] = {};
    bool ok = parseRawArguments(argc, argv.data(), dataIn, &dataLen, name, sizeof name);
    // What the usage allows, decided independently.
    bool allHex = true;
    for (int i = 1; i < argc; ++i)
        allHex = allHex && args[i].size() == 2 && isxdigit((unsigned char)args[i][0]) &&
                 isxdigit((unsigned char)args[i][1]);
    bool allowed = allHex && argc >= 4 && argc - 4 <= MAX_DATA_IN &&
                   ((args[1] == "02" && argc == 4) || (args[1] == "03" && argc >= 5));
    FUZZ_CHECK(ok == allowed);
    if (!ok) return 0;
    FUZZ_CHECK(dataLen == argc - 4);
    for (int i = 0; i < dataLen; ++i) {
        char hex[3];
        snprintf(hex, sizeof hex, "%02x", dataIn[i]);
        FUZZ_CHECK(strcasecmp(hex, args[i + 4].c_str()) == 0);
    }
    std::string expect =
        std::string(args[1] == "02" ? "SYSTEM_GET_" : "SYSTEM_SET_") + args[2] + "_" + args[3];
    FUZZ_CHECK(expect == name);
    return 0;
}
