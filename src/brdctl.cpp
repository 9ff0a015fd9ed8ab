// brdctl: sends one raw request to the system MCU and prints the raw answer.
//   brdctl 02 AA SS          query address AA, sub-index SS
//   brdctl 03 AA SS DD ...   set, with data bytes DD
#include <ctype.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "function_MAP.h"
#include "init.h"
#include "launch.h"

namespace {
constexpr int MAX_DATA_IN = 128;
}

void printfCommand(void);

// Usage text and exit 0; the links are still closed properly (nothing was sent).
[[noreturn]] static void usageExit(FILE* fConfig) {
    printfCommand();
    fflush(stdout);
    LAUNCH_EXIT("CONFIG_MAIN_EXIT", fConfig, 1);
    exit(0);
}

int is_valid_hex(const char* str) {
    if (str == nullptr || strlen(str) != 2) return 0;
    return isxdigit(static_cast<unsigned char>(str[0])) &&
                   isxdigit(static_cast<unsigned char>(str[1]))
               ? 1
               : 0;
}

void printfCommand(void) {
    puts("[Error] Input  Error!!!");
    puts(
        "[Example] To query ST_SYSTEM_GET_01_01_MCU_VERSION : ./brdctl 02(GET) 01 01 (Enter "
        "hexadeciaml data.)");
    puts(
        "[Example] To query ST_SYSTEM_SET_13_01_ALARM_TIMER : ./brdctl 03(SET) 13 01 11 11 11 "
        "(Data In) (Enter hexadeciaml data.)");
}

int main(int argc, char** argv) {
    openStandardDescriptors();
    g_progName = "brdctl";
    signal(SIGINT, handle_signal_from_keyevent);

    FILE* fConfig = LAUNCH_INIT_CONFIG(1, callback_gotEventData);
    if (fConfig == nullptr) return -1;

    BYTE DataIn[MAX_DATA_IN] = {};
    BYTE DataOut[RESPONSE_BUFFER_SIZE] = {};
    int DataOutLength = 0;
    char simple_funName[128] = {};
    char funName[128] = {};

    putchar('\n');
    if (argc < 4) {
        usageExit(fConfig);
    }
    // DataIn holds 128 bytes: a longer command line is refused before anything is sent.
    if (argc - 4 > MAX_DATA_IN) {
        usageExit(fConfig);
    }
    for (int i = 1; i < argc; ++i) {
        if (!is_valid_hex(argv[i])) {
            usageExit(fConfig);
        }
        if (i >= 4) DataIn[i - 4] = static_cast<BYTE>(strtol(argv[i], nullptr, 16));
    }

    const char* prefix = nullptr;
    if (strcmp(argv[1], "02") == 0) {
        prefix = "SYSTEM_GET";
        if (argc != 4) {
            usageExit(fConfig);
        }
    } else if (strcmp(argv[1], "03") == 0) {
        prefix = "SYSTEM_SET";
        if (argc < 5) {
            usageExit(fConfig);
        }
    } else {
        usageExit(fConfig);
    }
    snprintf(simple_funName, sizeof simple_funName, "%s_%s_%s", prefix, argv[2], argv[3]);

    if (!FIND_FunName(simple_funName, funName)) {
        usageExit(fConfig);
    }

    int result = LAUNCH_MCU_COMMAND(funName, DataIn, argc - 4, DataOut, &DataOutLength);
    if (result < 1) {
        puts("Get MCU version failure.");
        LAUNCH_EXIT("CONFIG_MAIN_EXIT", fConfig, 1);
        exit(0);
    }
    printf("\n[Output] Data out: ");
    for (int i = 0; i < DataOutLength; ++i) printf("%02x ", DataOut[i]);
    puts("\n");
    LAUNCH_EXIT("CONFIG_MAIN_EXIT", fConfig, 1);
    exit(0);
}
