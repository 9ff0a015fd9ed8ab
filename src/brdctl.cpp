// brdctl: sends one raw request to the system MCU and prints the raw answer.
//   brdctl 02 AA SS          query address AA, sub-index SS
//   brdctl 03 AA SS DD ...   set, with data bytes DD
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "function_MAP.h"
#include "init.h"
#include "launch.h"
#include "raw_args.h"

void printfCommand(void);

// Usage text and exit 0; the links are still closed properly (nothing was sent).
[[noreturn]] static void usageExit(FILE* fConfig) {
    printfCommand();
    fflush(stdout);
    LAUNCH_EXIT("CONFIG_MAIN_EXIT", fConfig, 1);
    exit(0);
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
    int dataLength = 0;
    if (!parseRawArguments(argc, argv, DataIn, &dataLength, simple_funName,
                           sizeof simple_funName)) {
        usageExit(fConfig);
    }

    if (!FIND_FunName(simple_funName, funName)) {
        usageExit(fConfig);
    }

    int result = LAUNCH_MCU_COMMAND(funName, DataIn, dataLength, DataOut, &DataOutLength);
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
