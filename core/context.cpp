// The process's link pointers and the handler context built from them.
#include "context.h"

MCU_CONTENT* mcu_content = nullptr;
int nMCUDevice = 0;
MCU_CONTENT* can_content[MAX_CAN_DEVICE] = {};
int nCANDevice = 0;
int currentCANDevice = 0;
int CAN1_fd = -1;
int CAN2_fd = -1;
char szProductName[64] = {};
const char* g_progName = "brdctl";
FILE* g_input = stdin;

namespace core {

MCU_CONTENT* linkFor(Link link) {
    if (link == Link::SystemMcu) return mcu_content;
    if (nCANDevice < 1 || currentCANDevice < 0 || currentCANDevice >= nCANDevice) return nullptr;
    return can_content[currentCANDevice];
}

HandlerContext handlerContext() {
    return {mcu_content, linkFor(Link::CurrentCan), szProductName, g_input, g_progName};
}

}  // namespace core
