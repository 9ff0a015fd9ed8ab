// A run of exchanges of one row, one per record index, with a pause after each: every
// exchange is reported through check_result, and a failed one does not stop the run.
#pragma once

#include <functional>
#include <span>

#include "exchange.h"
#include "report.h"

namespace shapes {

struct RecordRun {
    MCU_CONTENT* link;  // the link the row travels on
    int cmdIndex;       // the row's pool index
    const char* funName;
    int first = 0;      // the first index, sent as request byte 0
    int count = 1;      // how many records
    int pauseMs = 100;  // after each exchange
    ReportMode mode = REPORT_STANDARD;
};

// Calls `each` with the index, the answer bytes (none after a failed exchange) and the
// verdict, once per record in order. Returns the verdict of the last exchange.
int runRecords(
    const RecordRun& run,
    const std::function<void(int index, std::span<const BYTE> answer, int verdict)>& each);

}  // namespace shapes
