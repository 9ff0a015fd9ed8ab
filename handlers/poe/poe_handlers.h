// The PoE power-sourcing controllers of device 11, the IP808 front and rear boards and
// the IP8008 controller of device 13, and the LAN switch: the handlers, and the pure
// renders of their answers and prompts for tests.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "mcu_base.h"

// Device 11.
int FUNC_PSE_FW_VERSION(int cmdIndex, char* funName);
int FUNC_PSE_TEMPERATURE(int cmdIndex, char* funName);
int FUNC_TOTAL_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_POWER_BUDGET(int cmdIndex, char* funName);
int FUNC_PORT1_STATUS(int cmdIndex, char* funName);
int FUNC_PORT2_STATUS(int cmdIndex, char* funName);
int FUNC_POE_STATUS(int cmdIndex, char* funName);
int FUNC_PORT_POWER_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_PORT_1_POWER_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_PORT_2_POWER_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_ALL_PORT_LINK_STATUS(int cmdIndex, char* funName);
int FUNC_POE_CARD_DETECT(int cmdIndex, char* funName);
int FUNC_POE_GET_POWER_BUDGET(int cmdIndex, char* funName);
int FUNC_PORT_POWER_CONTROL(int cmdIndex, char* funName);
int FUNC_POE_SET_POWER_BUDGET(int cmdIndex, char* funName);

// Device 13, IP808 boards (KX73).
int FUNC_808_PSE_FW_VERSION(int cmdIndex, char* funName);
int FUNC_808_PSE_TEMPERATURE(int cmdIndex, char* funName);
int FUNC_808_TOTAL_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_808_PORT_STATUS(int cmdIndex, char* funName);
int FUNC_808_PORT_POWER_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_808_ALL_PORT_LINK_STATUS(int cmdIndex, char* funName);
int FUNC_808_PORT_POWER_CONTROL(int cmdIndex, char* funName);

// Device 13, IP8008 (KX57 with 4 ports, KX59 with 5).
int FUNC_IP8008_GET_FW_VERSION(int cmdIndex, char* funName);
int FUNC_IP8008_GET_TOTAL_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_IP8008_GET_PORT_STATUS(int cmdIndex, char* funName);
int FUNC_IP8008_GET_PORT_POWER_CONSUMPTION(int cmdIndex, char* funName);
int FUNC_IP8008_GET_ALL_PORT_LINK_STATUS(int cmdIndex, char* funName);
int FUNC_IP8008_SET_PORT_POWER_CONTROL(int cmdIndex, char* funName);

// Device 13, LAN switch.
int FUNC_GET_CHIPID(int cmdIndex, char* funName);
int FUNC_GET_PORT_LINK_STATUS(int cmdIndex, char* funName);
int FUNC_GET_PORT_LINK_SPEED(int cmdIndex, char* funName);

namespace poe {

using Bytes = std::span<const BYTE>;

// PoE ports of device 11 by model (PoePortCount); 0 for a model in no list. KX73 has
// its own main-board path and counts 4.
int PoePortCount(std::string_view product);
// The port count the port power control knows (KX26 has 2; KX40 and KX41 are unknown).
int controlPortCount(std::string_view product);
// IP8008 ports: 4 on KX57, 5 on KX59, else 0.
int ip8008PortCount(std::string_view product);

// The name of a PSE state (never read past its table's end).
std::string ip8008StateName(int value);
std::string ip808StateName(int value);
// The KX19 state line ("" with no line end for values without a name).
std::string kx19State(int value);
// Detection and classification of one port byte (KX73 wording when kx73).
std::string detectionClass(BYTE b, bool kx73);

// Device 11.
std::string renderFwVersion(Bytes a, std::string_view product, int fd);
std::string renderTemperature(Bytes a, std::string_view product, int fd);
std::string renderKx19Temperature(int index, Bytes a, int fd);
std::string renderTotalConsumption(Bytes a, std::string_view product, int fd);
std::string renderPoeStatus(Bytes a, std::string_view product, int fd);
std::string renderPortConsumption(int port, Bytes a, std::string_view product, int fd);
std::string renderAllPortLink(Bytes a, std::string_view product, int fd);
std::string renderPowerBudgetStatus(Bytes a, std::string_view product, int fd);
std::string renderNotSupported(std::string_view product);
// Device 13, IP808: board 0 front, 1 rear.
std::string render808Temperature(int board, int port, Bytes a, int fd);
std::string render808PortStatus(int board, Bytes a, int fd);
std::string render808Link(int board, int index, Bytes a, int fd);
// Device 13, IP8008 and the LAN switch.
std::string renderIp8008PortStatus(Bytes a, std::string_view product, int fd);
std::string renderIp8008Link(int index, Bytes a);
std::string renderLinkStatus(Bytes a, std::string_view product, int fd);
std::string renderLinkSpeed(Bytes a, std::string_view product, int fd);

}  // namespace poe
