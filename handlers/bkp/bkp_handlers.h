// The backup/smart battery commands (device 10) and the BIOS auto-reboot commands
// (device 5): the handlers, and the pure renders of their answers for tests.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "mcu_base.h"
#include "shapes/rows.h"

int FUNC_ST_BKP_GET_BACKUP_BATTERY_STATUS(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_SMART_BATTERY_VOLTAGE(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_SMART_BATTERY_TEMPERATURE(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_BACKUP_BATTERY_TEMPERATURE(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_SMART_BATTERY_STATUS(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_SMART_BATTERY_CAPACITY(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_SMART_BATTERY_CURRENT(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_BACKUP_BATTERY_CURRENT(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_THRESHOLD_SETTING(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_DELAY_TIME_STATUS(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_DELAY_TIME_NOW(int cmdIndex, char* funName);
int FUNC_ST_BKP_GET_POWER_OFF_VALUE(int cmdIndex, char* funName);
int FUNC_ST_BKP_SET_DELAY_TIME_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_BKP_SET_POWER_OFF_VALUE(int cmdIndex, char* funName);
int FUNC_ST_BIOS_GET_AUTO_REBOOT_FUNCTION(int cmdIndex, char* funName);
int FUNC_ST_BIOS_SET_AUTO_REBOOT_FUNCTION(int cmdIndex, char* funName);

namespace bkp {

// Minutes of each delay-time code (the code is the menu option and the byte sent).
extern const int BKP_DELAY_TIME_MINUTES[20];

// What each GET prints after check_result, separators included.
using Bytes = std::span<const BYTE>;
std::string renderBackupBatteryStatus(Bytes a, std::string_view product, int fd);
std::string renderSmartBatteryVoltage(Bytes a, std::string_view product, int fd);
std::string renderSmartBatteryTemperature(Bytes a, std::string_view product, int fd);
std::string renderBackupBatteryTemperature(Bytes a, std::string_view product, int fd);
std::string renderSmartBatteryStatus(Bytes a, std::string_view product, int fd);
std::string renderSmartBatteryCapacity(Bytes a, std::string_view product, int fd);
std::string renderSmartBatteryCurrent(Bytes a, std::string_view product, int fd);
std::string renderBackupBatteryCurrent(Bytes a, std::string_view product, int fd);
std::string renderThresholdSetting(Bytes a, std::string_view product, int fd);
std::string renderDelayTimeStatus(Bytes a, std::string_view product, int fd);
std::string renderDelayTimeNow(Bytes a, std::string_view product, int fd);
std::string renderPowerOffValue(Bytes a, std::string_view product, int fd);
std::string renderAutoReboot(Bytes a, std::string_view product, int fd);
// The delay-time menu, up to the prompt (its lines are built from the minutes; the other
// menus are plain rows, swept through menuRows).
std::string renderDelayTimeMenu();

// Every handler that runs a menu row, with its row.
extern const std::span<const shapes::MenuRef> menuRows;

}  // namespace bkp
