// The process's links and what a handler may reach besides its row: the system-MCU
// link, the current CAN link, the product name, the input stream and the program name.
// Nothing here carries a request or an answer; those pass through core::exchange.
#pragma once

#include <cstdio>

#include "mcu_base.h"

constexpr int MAX_CAN_DEVICE = 8;

// Every command handler: the row's index in its link's pool and the row's full name.
// It returns 1 on success, 0 when nothing was sent or the answer said no, or the
// link's negative result code.
typedef int (*FUNC_HANDLER)(int cmdIndex, char* funName);

// The link contexts opened at start-up (names as the system has always used them).
extern MCU_CONTENT* mcu_content;  // the system MCU
extern int nMCUDevice;
extern MCU_CONTENT* can_content[MAX_CAN_DEVICE];
extern int nCANDevice;
extern int currentCANDevice;  // index into can_content of the CAN device in use
extern int CAN1_fd;
extern int CAN2_fd;
// The detected product name, always with one trailing "\n".
extern char szProductName[64];
// Program name for "<program>: <what>: <why>" messages on stderr.
extern const char* g_progName;
// Where prompts read their answers (stdin unless a test or the menu swaps it).
extern FILE* g_input;

namespace core {

// Which link a command row travels on.
enum class Link : unsigned char {
    SystemMcu,   // mcu_content; also FM and customised rows, with their own type
    CurrentCan,  // can_content[currentCANDevice]
};

// The link `link` stands for now, or null when it is not open.
MCU_CONTENT* linkFor(Link link);

// What a handler may reach besides its row's index and name.
struct HandlerContext {
    MCU_CONTENT* systemLink;  // null when no system MCU is configured
    MCU_CONTENT* canLink;     // the current CAN link, or null
    const char* product;      // with its trailing "\n"
    FILE* input;              // where prompts read
    const char* progName;     // for stderr messages
};

// The context as the front end has set it up.
HandlerContext handlerContext();

}  // namespace core
