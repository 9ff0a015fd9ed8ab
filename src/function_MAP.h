// The command table: one row per command the MCUs understand (name, handler, request
// template ended by -1, the link it travels on and the controller type it is sent as),
// and the lookups over the command pools.
#pragma once

#include <cstddef>

#include "context.h"

struct FUNCTION_MAP_ENTRY {
    const char* name;
    FUNC_HANDLER func;
    int cmd[20];
    core::Link link;  // the system-MCU link or the current CAN link
    int mcuType;      // MCU_TYPE_ST, _NXP, _FM or _CUSTOMISE
};

extern const FUNCTION_MAP_ENTRY function_map[];
extern const size_t function_map_count;

// The handler that rows not yet given a decoding handler are bound to: it sends the
// row with no data on its link, as its type, and reports through check_result in the
// standard mode.
int FUNC_GENERIC(int cmdIndex, char* funName);
// Reserved rows; and the CONFIG_MAIN_EXIT row.
int FUNC_RESERVED(int cmdIndex, char* funName);
int FUNC_EXIT(int cmdIndex, char* funName);

// The group a row belongs to ("SYSTEM", "BKP", "FM", "NXP_CAN", ...), for listings.
const char* functionGroup(const char* name);

// Copies every row with a request into the pool of its link: system-MCU rows into
// mcu_content (numbered 1, 2, ... among themselves), CAN rows into every CAN link
// (numbered among the CAN rows).
int INIT_CMD_POOL();
int FIND_FunName(const char* needle, char* dst);
// The pool index of the row named `name` on its link; *index is left alone when the
// row is not pooled. Always returns 1.
int findCommandIndex(const char* name, int* index);
// The table row of a full name, or null.
const FUNCTION_MAP_ENTRY* findFunctionEntry(const char* name);
