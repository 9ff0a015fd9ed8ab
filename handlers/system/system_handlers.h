// The handlers of the system MCU's simple status (GET) and control (SET) commands.
// Each takes the command's pool index and its full name and returns check_result's
// verdict (1 success), or 0 when the product is not served or the input ended.
#pragma once

#include "system_bespoke.h"  // the handlers with logic of their own

// Status: a named state.
int FUNC_ST_SYSTEM_GET_OS_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_IGNITION_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_LED_OUTPUT_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_LAN_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_RTC_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_FLASH_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_CAN_SWITCH_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_AUDIO_SWITCH_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_I_BUTTON_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_RFID_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_HEATER_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_NVR_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_CAN_DO_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_AUTO_BACKLIGHT_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_CAN_MODULE_GPI_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_CAN_DI_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_HEATER_POWER_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_POE_POWER_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_WAKE_ON_LAN_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_LOW_VOLTAGE_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_EXTERNAL_12V_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_VIDEO_CONTROL_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_HEALTH_LED_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_MIC_IN_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_EXTERNAL_5V_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_CAN_IMP_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_FAN_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BUZZER_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_TEMP_BEEP_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_SLOT_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BACKLIGHT_VOLUME_KEY_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BIOS_NUM(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_MODULE_ID(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_WWAN_FULLCARD_POWEROFF(int cmdIndex, char* funName);

// Status: values.
int FUNC_ST_SYSTEM_GET_HW_VERSION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_DTP_VERSION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BL_VERSION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_SUPPLY_VOLTAGE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_TEMPERATURE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_ALART_TIMER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_PANEL_BRIGHTNESS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_LS_VOLTAGE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_AUDIO_VOLUME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_INPUT_FREQUENCY(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_INPUT_VOLTAGE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_VOLTAGE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_TEMPERATURE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_WAKEUP_TIMER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_LCD_PWM_FREQUENCY(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_POWER_BOARD_VERSION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_AST(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_STARTUP_COUNT(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BOOT_TIME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_ANALOG_IN_VOLTAGE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_HEARTBEAT_STATUS(int cmdIndex, char* funName);

// Status: per product.
int FUNC_ST_SYSTEM_GET_KEY_LED_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_POWER_BOARD_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_CONVERSE_FREQUENCY_TIMER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_ODOMETER_LOCK_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_RTC_BATTERY_VOLTAGE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_GPS_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_WWAN_CN7_RESET_TIME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_WWAN_CN14_RESET_TIME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_SIM_CARD_DETECT_STATUS(int cmdIndex, char* funName);

// Control: one menu.
int FUNC_ST_SYSTEM_SET_BOOT_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_OS_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_LED_OUTPUT_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_GPS_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_LAN_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_RTC_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_I_BUTTON_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_POWER_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_CAN_SWITCH_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_AUDIO_SWITCH_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_RFID_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_NVR_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_CAN_MODULE_GPO_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_HEATER_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_POE_POWER_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_HEATER_POWER_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WAKE_ON_LAN_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_EXTERNAL_5V_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_VIDEO_CONTROL_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_HEALTH_LED_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_MIC_IN_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_CAN_IMP_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_FAN_MODE_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_BUZZER_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_TEMP_BEEP_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_POWER_BUTTON_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_KEY_LED_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_BACKLIGHT_VOLUME_KEY_SELECT(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WWAN_FULLCARD_POWEROFF(int cmdIndex, char* funName);

// Control: numbers and fixed actions.
int FUNC_ST_SYSTEM_SET_EVENT_LOG(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_BACKUP_EVENT_CLEAR(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_LOAD_DEFAULT(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_FLASH_UPDATE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_CLEAR_LOW_VOLTAGE_FLAG(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_RTC_TIMER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_ALARM_TIMER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_PANEL_BRIGHTNESS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_AUDIO_VOLUME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WAKEUP_TIMER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_LCD_PWM_FREQUENCY(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_CONVERSE_FREQUENCY_TIMER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL(int cmdIndex, char* funName);

// Control: per product.
int FUNC_ST_SYSTEM_SET_AUTO_BACKLIGHT_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_EXTERNAL_12V_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_ODOMETER_LOCK_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WWAN_CN7_RESET_TIME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WWAN_CN14_RESET_TIME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_SIM_CARD_DETECT_STATUS(int cmdIndex, char* funName);
