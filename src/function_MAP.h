// The command table: one row per command the MCUs understand (name, handler,
// request template ended by -1), and the lookups over the command pools.
#pragma once

#include <cstddef>

typedef int (*FUNC_HANDLER)(int cmdIndex, char* funName);

struct FUNCTION_MAP_ENTRY {
    const char* name;
    FUNC_HANDLER func;
    int cmd[20];
};

extern const FUNCTION_MAP_ENTRY function_map[];
extern const size_t function_map_count;

// The handler that rows not yet given a decoding handler are bound to: it sends the
// row with no data and reports through check_result in mode 2.
int FUNC_GENERIC(int cmdIndex, char* funName);
// Reserved rows; and the CONFIG_MAIN_EXIT row.
int FUNC_RESERVED(int cmdIndex, char* funName);
int FUNC_EXIT(int cmdIndex, char* funName);

// The group a row belongs to ("SYSTEM", "BKP", "FM", "NXP_CAN", ...), for listings.
const char* functionGroup(const char* name);

int INIT_CMD_POOL();
int FIND_FunName(const char* needle, char* dst);
int findCommandIndex(const char* name, int* index);
// The table row of a full name, or null.
const FUNCTION_MAP_ENTRY* findFunctionEntry(const char* name);
