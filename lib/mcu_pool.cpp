// The command pool: command index to the fixed bytes of its request.
#include <syslog.h>

#include "mcu_base.h"

void pushCommandToPool(MCU_CONTENT* mcu_content, int index, int device, int command, int address) {
    if (mcu_content->cmd_count >= CMD_POOL_SIZE) {
        syslog(LOG_ERR, "[PushCommandToPool fd(%d)] Command pool is full !!!", mcu_content->fd);
        return;
    }
    cmd& entry = mcu_content->cmd_pool[mcu_content->cmd_count];
    entry.cmd_index = index;
    entry.cmd_data[0] = device;
    entry.cmd_data[1] = command;
    entry.cmd_data[2] = address;
    entry.cmd_data[3] = -1;
    if (mcu_content->debugLevel & 1)
        syslog(LOG_DEBUG,
               "[PushCommandToPool fd(%d)] index = %d, device = %x, command = %x, address = %x",
               mcu_content->fd, index, device, command, address);
    mcu_content->cmd_count++;
}

void pushCommandToPoolCustomise(MCU_CONTENT* mcu_content, int index, BYTE* cmdData,
                                int cmdDataLen) {
    if (mcu_content->cmd_count >= CMD_POOL_SIZE) {
        syslog(LOG_ERR, "[PushCommandToPoolCustomise] Command pool is full !!!");
        return;
    }
    bool trace = mcu_content->debugLevel & 1;
    if (cmdDataLen < CMD_DATA_SIZE) {
        cmd& entry = mcu_content->cmd_pool[mcu_content->cmd_count];
        if (trace)
            syslog(LOG_DEBUG, "[PushCommandToPoolCustomise] index = %d, cmdDataLen = %d", index,
                   cmdDataLen);
        entry.cmd_index = index;
        for (int i = 0; i < cmdDataLen; ++i) {
            entry.cmd_data[i] = cmdData[i];
            if (trace) syslog(LOG_DEBUG, "[pushCommandToPoolCustomise] cmdData = %x\n", cmdData[i]);
        }
        entry.cmd_data[cmdDataLen < 0 ? 0 : cmdDataLen] = 255;
    } else {
        syslog(LOG_ERR, "[PushCommandToPoolCustomise] Command data over flow !!!");
    }
    // An over-long row still takes its slot.
    mcu_content->cmd_count++;
}

cmd* getCommandByIndex(MCU_CONTENT* mcu_content, int index) {
    int count = mcu_content->cmd_count < CMD_POOL_SIZE ? mcu_content->cmd_count : CMD_POOL_SIZE;
    for (int i = 0; i < count; ++i)
        if (mcu_content->cmd_pool[i].cmd_index == index) return &mcu_content->cmd_pool[i];
    return nullptr;
}
