// brdcmd's update rows: the single steps of a firmware update, one at a time, with the
// answers decoded.
#pragma once

#include <string>

#include "update_rows.h"

// Every IAP and NXP update row: asks for the row's request fields, sends it in the mode
// the row needs and prints the standard report and the decoded answer. NXP_UPDATE_START
// sends the update request and switches the link to the boot loader's framing;
// NXP_UPDATE_CANCEL switches it back. Returns check_result's verdict.
int FUNC_UPDATE_STEP(int cmdIndex, char* funName);

namespace update {

// The decoded text of a row's answer data (for the CAN MCU after its answer code, and for
// rows without a status after the status), one or more lines each ending in "\n".
std::string renderUpdateAnswer(const UpdateRow& row, const Bytes& answer);

}  // namespace update
