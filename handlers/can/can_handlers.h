// brdcmd's handlers of the CAN rows: the system MCU's two channels (ST_CAN1_..., ST_CAN2_...)
// and the NXP controller (NXP_CAN_AP_...), in the family's menu style, on the requests and
// formats brdcan uses. The renders are pure: answer bytes in, text out.
#pragma once

#include <string>

#include "can/can_layout.h"

// ST channel rows; the channel (1 or 2) comes from the row name.
int FUNC_ST_CAN_GET_ERROR_CODE(int cmdIndex, char* funName);
int FUNC_ST_CAN_SET_SPEED(int cmdIndex, char* funName);
int FUNC_ST_CAN_SET_DISABLE_AND_CLEAR_ALL_FILTER(int cmdIndex, char* funName);
int FUNC_ST_CAN_SET_FILTER(int cmdIndex, char* funName);
int FUNC_ST_CAN_SET_SEND_MESSAGE(int cmdIndex, char* funName);
int FUNC_ST_CAN_SET_AUTO_SEND(int cmdIndex, char* funName);
int FUNC_ST_CAN_SET_STOP_TRANSMIT(int cmdIndex, char* funName);
int FUNC_ST_CAN_SET_CLEAR_RECEIVE_FIFO(int cmdIndex, char* funName);
int FUNC_ST_CAN_GET_REALTIME_DATA(int cmdIndex, char* funName);

// NXP controller rows (the current CAN device).
int FUNC_NXP_CAN_AP_SELECT_DEVICE(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_02_READ_FW_VERSION(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_04_READ_BL_VERSION(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_10_SET_SPEED(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_12_DISABLE_AND_CLEAR_ALL_FILTER(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_12_SET_FILTER(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_20_EDIT_MESSAGE_TO_SENDING(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_22_STOP_TRANSMIT(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_34_GET_ERROR_CODE(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_50_READ_INPUT_VOLTAGE(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_AUTO_SEND(int cmdIndex, char* funName);
int FUNC_NXP_CAN_AP_GET_REALTIME_DATA(int cmdIndex, char* funName);

namespace can {

// Renders of the decoded answers (`fd` as the report lines print it).
std::string renderErrorCode(int fd, const Bytes& payload);
std::string renderVersion(int fd, const char* what, const Bytes& payload);
std::string renderInputVoltage(int fd, const Bytes& payload);
// The bit-rate menu.
std::string speedMenu();

}  // namespace can
