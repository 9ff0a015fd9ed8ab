// check_result: the standard report every handler prints after its exchange.
#include "report.h"

#include <cstdio>

#include "context.h"

const char* const RULE56 = "========================================================";
const char* const SEPARATOR26 = "==========================";
const char* const SELECT_PROMPT = "Select which option you want to do:";

namespace {

// The line each failure code prints; null for codes without one.
const char* failureText(int result) {
    switch (result) {
        case MCU_RESULT_NONE:
            return "Failure !!!";
        case MCU_RESULT_OPEN_FAIL:
            return "Fail to open serial port !!!";
        case MCU_RESULT_WRITE_FAIL:
            return "Fail to write data to MCU !!!";
        case MCU_RESULT_TIMEOUT:
            return "Request Timeout !!!";
        case MCU_RESULT_FORMAT:
            return "Data Format Error !!!";
        case MCU_RESULT_CRC:
            return "CRC Error !!!";
        case MCU_RESULT_NO_COMMAND:
            return "No Command !!!";
        default:
            return nullptr;
    }
}

}  // namespace

int check_result(int fd, ReportMode mode, int result, const void* dataPtr, int length,
                 const char* funName) {
    const BYTE* bytes = static_cast<const BYTE*>(dataPtr);
    const bool ok = result == MCU_RESULT_OK;
    puts(RULE56);
    if (ok) {
        printf("result data length = %d\n", length);
        for (int i = 0; i < length; ++i) printf("result data %d = %#x\n", i, bytes[i]);
    } else if (const char* text = failureText(result)) {
        printf("fd(%d) %s : %s\n\n", fd, funName, text);
    }
    int verdict = ok ? 1 : result;
    bool printVerdict = true;
    switch (mode) {
        case REPORT_PLAIN:
        case REPORT_STANDARD:
            break;
        case REPORT_ACK_SECOND:
            verdict = (ok && length > 1 && bytes[1] == 1) ? 1 : 0;
            break;
        case REPORT_ACK_FIRST:
            verdict = (ok && length > 0 && bytes[0] == 1) ? 1 : 0;
            break;
        default:
            printVerdict = false;
            break;
    }
    if (printVerdict) {
        if (verdict == 1)
            printf("fd(%d) %s command executed successfully.\n", fd, funName);
        else
            printf("fd(%d) %s command executed unsuccessfully !!!\n", fd, funName);
    }
    puts(RULE56);
    return verdict;
}

namespace core {

int report(const MCU_CONTENT* link, ReportMode mode, const Answer& answer, const char* funName) {
    return check_result(link ? link->fd : -1, mode, answer.result, answer.bytes.data(),
                        answer.length, funName);
}

}  // namespace core

namespace core {

bool warnShortAnswer(const Answer& answer, int needed, const char* funName) {
    if (!answer.ok() || answer.length >= needed) return false;
    fflush(stdout);
    fprintf(stderr, "%s: short answer to %s: %d of %d bytes\n", g_progName, funName, answer.length,
            needed);
    return true;
}

}  // namespace core
