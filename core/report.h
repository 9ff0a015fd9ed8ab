// The standard report of one exchange (check_result) and the rules and prompts that
// frame the texts handlers print.
#pragma once

#include "exchange.h"

// How check_result judges an exchange that got an answer.
enum ReportMode : int {
    REPORT_PLAIN = 0,       // success is an answer; same as REPORT_STANDARD
    REPORT_ACK_SECOND = 1,  // success also needs answer byte 1 to be 1
    REPORT_STANDARD = 2,    // success is an answer
    REPORT_ACK_FIRST = 3,   // success also needs answer byte 0 to be 1
    REPORT_NO_VERDICT = 4,  // no verdict line: returns 1 on an answer, else the code
};

// The 56-"=" rule that closes menus and frames check_result's report.
extern const char* const RULE56;
// The 26-"=" separator around decoded results.
extern const char* const SEPARATOR26;
extern const char* const SELECT_PROMPT;  // "Select which option you want to do:"

// Prints the report of one exchange: a rule, the answer bytes or the line of the
// failure code, the verdict line by `mode`, a rule. Returns the verdict: 1 success;
// otherwise the result code (plain and standard modes) or 0 (acknowledged modes).
int check_result(int fd, ReportMode mode, int result, const void* data, int length,
                 const char* funName);

namespace core {

// check_result for `answer` on `link` (fd -1 when the link is not open).
int report(const MCU_CONTENT* link, ReportMode mode, const Answer& answer, const char* funName);

}  // namespace core

namespace core {

// For a handler that decodes fixed positions of the answer: when an answer arrived
// with fewer than `needed` bytes, prints once on stderr
// "<program>: short answer to <funName>: <length> of <needed> bytes" and returns true.
// The handler then prints what it always prints (missing bytes read as 0).
bool warnShortAnswer(const Answer& answer, int needed, const char* funName);

}  // namespace core
