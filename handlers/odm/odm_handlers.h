// The customer LED board commands (ODM, device 17) and the OS shutdown handshake (NVR,
// device 9): the handlers, and the pure renders of their answers for tests.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "mcu_base.h"
#include "shapes/rows.h"

int FUNC_ST_NVR_GET_SHUTDOWN_STATUS(int cmdIndex, char* funName);
int FUNC_ST_NVR_SET_SHUTDOWN_FLAG(int cmdIndex, char* funName);

int FUNC_ST_ODM_GET_FACTORY_DEFAULT_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_WIFI_LED_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_WIFI_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_WWAN_LED_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_WWAN_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_GPS_LED_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_GPS_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_VINM_FAULT_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_SIM_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_DELAY_ON_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_DELAY_OFF_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_WAKEUP_EVENT(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_GSENSOR_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_POWER_LED_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_POWER_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_WWAN_ENABLE_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_GET_WWAN_RESET_STATUS(int cmdIndex, char* funName);

int FUNC_ST_ODM_SET_FACTORY_DEFAULT_FLAG(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_WIFI_LED_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_WIFI_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_WWAN_LED_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_WWAN_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_GPS_LED_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_GPS_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_VINM_FAULT_OFF_FLAG(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_DELAY_ON_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_DELAY_OFF_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_GSENSOR_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_POWER_LED_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_POWER_LED_FLASH_TIME(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_WWAN_ENABLE_STATUS(int cmdIndex, char* funName);
int FUNC_ST_ODM_SET_WWAN_RESET_STATUS(int cmdIndex, char* funName);

namespace odm {

using Bytes = std::span<const BYTE>;

// KX25 has one WWAN slot and two SIM slots; the others two and four.
bool oneWwanSlot(std::string_view product);

std::string renderFlashTime(Bytes a, std::string_view product, int fd);  // WIFI, GPS, power
std::string renderWwanLed(Bytes a, std::string_view product, int fd);
std::string renderWwanFlashTime(Bytes a, std::string_view product, int fd);
std::string renderSimStatus(Bytes a, std::string_view product, int fd);
std::string renderDelayOnTime(Bytes a, std::string_view product, int fd);
std::string renderDelayOffTime(Bytes a, std::string_view product, int fd);
// The rows of the GETs that name a state.
extern const std::span<const shapes::GetRef> rows;
// The lines of a GET that names the state of answer byte 0 ("" for other handlers).
std::string renderStateOf(int (*handler)(int, char*), Bytes a, int fd);

// Every handler that runs a menu row, with its row.
extern const std::span<const shapes::MenuRef> menuRows;

}  // namespace odm
