// The system MCU's handlers with logic of their own: power type, delay times, voltage
// thresholds and watchdog; MCU version, event log and identity records; I/O lines,
// G-sensor registers and keys; fans, transceivers and key lock; radios, SIM cards, GPO
// and GPI lines, AST, PCIe/SATA and the program LEDs. Each takes the row's pool index
// and full name and returns check_result's verdict (1 success), 0 when nothing was sent.
#pragma once

// Power.
int FUNC_ST_SYSTEM_GET_POWER_TYPE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_POWER_TYPE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_DELAY_TIME_OPTION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_DELAY_TIME_OPTION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_STARTUP_SHUTDOWN_OPTION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_STARTUP_SHUTDOWN_OPTION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_POWER_RANGE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_WATCHDOG_CONFIGURE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WATCHDOG_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WATCHDOG_TIMER(int cmdIndex, char* funName);

// Version and identity.
int FUNC_ST_SYSTEM_GET_MCU_VERSION(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_EVENT_LOG(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_SYSTEM_PARAMETER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_SYSTEM_PARAMETER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_MACHINE_PARAMETER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_MACHINE_PARAMETER(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_MODULE_NAME(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BOARD_ID(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_IO_BOARD_ID(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_EXPANSION_BOARD_ID(int cmdIndex, char* funName);

// I/O lines, G-sensor registers, keys.
int FUNC_ST_SYSTEM_GET_MDIO_MODE_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_MDIO_MODE_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_GPIO_MODE_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_GPIO_MODE_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_GPI_ACTIVE_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_GPI_ACTIVE_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_GPO_PULLUP_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_GPO_PULLUP_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_MDO_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_MDI_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_MDO_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_GSENSOR_DATA(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_G_SENSOR_DATA(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_I_BUTTON_KEY(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_I_BUTTON_KEY(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_RFID_KEY(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_RFID_KEY(int cmdIndex, char* funName);

// Fans, SP339A transceivers, key lock.
int FUNC_ST_SYSTEM_GET_FAN_VALUE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_FAN_VALUE_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_FAN_RPM(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_SP339A_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_SP339A_MODE(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_KEY_LOCK_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_KEY_LOCK_CONTROL(int cmdIndex, char* funName);

// Radios, SIM cards, GPO/GPI lines, AST, PCIe/SATA, program LEDs. The ODM group's GPI
// row runs FUNC_ST_SYSTEM_GET_GPI_STATUS too.
int FUNC_ST_SYSTEM_GET_WWAN_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WWAN_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_WIFI_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_WIFI_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_BT_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_BT_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_USB_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_USB_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_SIM_CARD_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_SIM_CARD_SELECT(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_GPO_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_GPO_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_GET_GPI_STATUS(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_AST(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_PCIE_SATA_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_PROGRAM_LED_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_SYSTEM_SET_PROGRAM_LED2_CONTROL(int cmdIndex, char* funName);
