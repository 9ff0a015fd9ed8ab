// The system MCU's status (GET) commands: named states, values, and per-product
// decodings as rows; the handlers whose decoding is their own with a pure render each.
#include "status.h"

#include <cstdint>

#include "system_handlers.h"

using namespace shapes;

// Rows and product sets are file-local constants; the handlers below are the entry points.

// ---------------------------------------------------------------- product sets

constexpr Products SUPPLY_10MV = {.names = {"KX25", "KX60", "KX34"}};
constexpr Products PANEL_MODELS = {.names = {"KX23", "KX30"}};
constexpr Products BACKUP_TEMP_MODELS = {.names = {"KX32"}};
constexpr Products KEY_LED_MODELS = {.names = {"KX35", "KX34"}};
constexpr Products POWER_BOARD_MODELS = {.names = {"KX73"}};
constexpr Products ODOMETER_MODELS = {.names = {"KX56", "KX71"}};
constexpr Products RTC_BATTERY_MV = {.names = {"KX71"}};
constexpr Products RTC_BATTERY_MODELS = {.names = {"KX71", "KX57", "KX59"}};
constexpr Products GPS_ANTENNA = {.names = {"KX71"}};
constexpr Products MUTE_TWO = {.names = {"KX22", "KX23", "KX24", "KX36"}};
constexpr Products MUTE_ANY = {.names = {"KX32", "KX29", "KX22", "KX23", "KX24", "KX36"}};
constexpr Products CAN_POWER_ONE = {
    .names = {"KX02", "KX21", "KX24", "KX38", "KX46", "KX54", "KX70", "KX40", "KX41", "KX65"}};
constexpr Products CAN_POWER_TWO = {.names = {"KX22"}};
constexpr Products CAN_POWER_OTHERS = {.names = {"KX02", "KX21", "KX24", "KX38", "KX46", "KX54",
                                                 "KX70", "KX40", "KX41", "KX65", "KX22"},
                                       .outside = true};
constexpr Products SIM_DETECT_MODELS = {
    .names = {"KX25", "KX42", "KX13", "KX14", "KX05", "KX08", "KX10"}};

// ---------------------------------------------------------------- a named state

const GetRow GET_OS_CONTROL = {
    .lines = {{.states = {{0, "OS Contrl is None."}, {1, "OS Contrl is Auto Reboot."}}}}};
int FUNC_ST_SYSTEM_GET_OS_CONTROL(int cmdIndex, char* funName) {
    return runGet(GET_OS_CONTROL, cmdIndex, funName);
}

const GetRow GET_IGNITION_STATUS = {
    .lines = {{.states = {{0, "Ignition Off"}, {1, "Ignition On"}}}}};
int FUNC_ST_SYSTEM_GET_IGNITION_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_IGNITION_STATUS, cmdIndex, funName);
}

const GetRow GET_LAN_STATUS = {
    .lines = {{.states = {{0, "Wake on LAN Off (Default)"}, {1, "Wake on LAN On"}}}}};
int FUNC_ST_SYSTEM_GET_LAN_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_LAN_STATUS, cmdIndex, funName);
}

const GetRow GET_RTC_STATUS = {.lines = {{.states = {{0, "RTC Off (Default)"}, {1, "RTC On"}}}}};
int FUNC_ST_SYSTEM_GET_RTC_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_RTC_STATUS, cmdIndex, funName);
}

const GetRow GET_FLASH_STATUS = {
    .lines = {{.states = {{0, "Flash has stored."}, {1, "Flash is storing."}}}}};
int FUNC_ST_SYSTEM_GET_FLASH_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_FLASH_STATUS, cmdIndex, funName);
}

const GetRow GET_CAN_SWITCH_STATUS = {
    .lines = {{.states = {{0, "CAN 2.0 (Default)"}, {1, "ODBII"}}}}};
int FUNC_ST_SYSTEM_GET_CAN_SWITCH_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_CAN_SWITCH_STATUS, cmdIndex, funName);
}

const GetRow GET_AUDIO_SWITCH_STATUS = {
    .lines = {{.states = {{0, "Audio switch to Driver. (Default)"},
                          {1, "Audio switch to Vehicle."},
                          {2, "Audio switch to External."}}}}};
int FUNC_ST_SYSTEM_GET_AUDIO_SWITCH_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_AUDIO_SWITCH_STATUS, cmdIndex, funName);
}

const GetRow GET_I_BUTTON_STATUS = {
    .lines = {{.states = {{0, "I-Button Disable. (Default)"}, {1, "I-Button Enable."}}}}};
int FUNC_ST_SYSTEM_GET_I_BUTTON_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_I_BUTTON_STATUS, cmdIndex, funName);
}

const GetRow GET_RFID_STATUS = {
    .lines = {{.states = {{0, "RFID Disable. (Default)"}, {1, "RFID Enable."}}}}};
int FUNC_ST_SYSTEM_GET_RFID_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_RFID_STATUS, cmdIndex, funName);
}

const GetRow GET_HEATER_STATUS = {
    .lines = {{.states = {{0, "Heater Disable. (Default)"}, {1, "Heater Enable."}}}}};
int FUNC_ST_SYSTEM_GET_HEATER_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_HEATER_STATUS, cmdIndex, funName);
}

const GetRow GET_NVR_STATUS = {
    .lines = {{.states = {{0, "NVR Disable. (Default)"}, {1, "NVR Enable."}}}}};
int FUNC_ST_SYSTEM_GET_NVR_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_NVR_STATUS, cmdIndex, funName);
}

const GetRow GET_CAN_DO_STATUS = {
    .lines = {{.states = {{0, "CAN Module DO Low."}, {1, "CAN Module DO High."}}}}};
int FUNC_ST_SYSTEM_GET_CAN_DO_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_CAN_DO_STATUS, cmdIndex, funName);
}

const GetRow GET_AUTO_BACKLIGHT_STATUS = {
    .lines = {
        {.states = {{0, "Auto Backlight Disable. (Default)"}, {1, "Auto Backlight Enable."}}}}};
int FUNC_ST_SYSTEM_GET_AUTO_BACKLIGHT_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_AUTO_BACKLIGHT_STATUS, cmdIndex, funName);
}

const GetRow GET_CAN_MODULE_GPI_STATUS = {
    .lines = {{.states = {{0, "CAN Module GPI Low."}, {1, "CAN Module GPI High."}}}}};
int FUNC_ST_SYSTEM_GET_CAN_MODULE_GPI_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_CAN_MODULE_GPI_STATUS, cmdIndex, funName);
}

const GetRow GET_CAN_DI_STATUS = {
    .lines = {{.states = {{0, "CAN Module DI Low."}, {1, "CAN Module DI High."}}}}};
int FUNC_ST_SYSTEM_GET_CAN_DI_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_CAN_DI_STATUS, cmdIndex, funName);
}

const GetRow GET_HEATER_POWER_STATUS = {
    .lines = {{.states = {{0, "Heater Power Disable. (Default)"}, {1, "Heater Power Enable."}}}}};
int FUNC_ST_SYSTEM_GET_HEATER_POWER_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_HEATER_POWER_STATUS, cmdIndex, funName);
}

const GetRow GET_POE_POWER_STATUS = {
    .lines = {{.states = {{0, "POE Power Off."}, {1, "POE Power On."}}}}};
int FUNC_ST_SYSTEM_GET_POE_POWER_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_POE_POWER_STATUS, cmdIndex, funName);
}

const GetRow GET_WAKE_ON_LAN_STATUS = {
    .lines = {{.states = {{0, "Wake On LAN Disable. (Default)"}, {1, "Wake On LAN Enable."}}}}};
int FUNC_ST_SYSTEM_GET_WAKE_ON_LAN_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_WAKE_ON_LAN_STATUS, cmdIndex, funName);
}

const GetRow GET_LOW_VOLTAGE_STATUS = {
    .lines = {
        {.states = {{0, "Never Enter Low Voltage Mode."}, {1, "Once Enter Low Voltage Mode."}}}}};
int FUNC_ST_SYSTEM_GET_LOW_VOLTAGE_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_LOW_VOLTAGE_STATUS, cmdIndex, funName);
}

const GetRow GET_EXTERNAL_12V_STATUS = {
    .lines = {{.states = {{0, "External 12V Disable. (Default)"}, {1, "External 12V Enable."}}}}};
int FUNC_ST_SYSTEM_GET_EXTERNAL_12V_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_EXTERNAL_12V_STATUS, cmdIndex, funName);
}

const GetRow GET_BACKUP_BATTERY_STATUS = {
    .lines = {{.states = {{0, "Backup Battery is Not Inserted."},
                          {1, "Backup Battery Charge Finish."},
                          {2, "Backup Battery Charge Now."},
                          {3, "Backup Battery Dischange Now."},
                          {4, "Backup Battery Change Stop."}}}}};
int FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_BACKUP_BATTERY_STATUS, cmdIndex, funName);
}

const GetRow GET_VIDEO_CONTROL_STATUS = {
    .lines = {{.states = {{0, "Auto Mode. (Default)"}, {1, "Manual Mode."}}}}};
int FUNC_ST_SYSTEM_GET_VIDEO_CONTROL_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_VIDEO_CONTROL_STATUS, cmdIndex, funName);
}

const GetRow GET_VIDEO_INPUT_SOURCE = {
    .lines = {{.states = {{0, "LVDS"}, {1, "CVBS1"}, {2, "CVBS2"}, {3, "CVBS3"}}}}};
int FUNC_ST_SYSTEM_GET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName) {
    return runGet(GET_VIDEO_INPUT_SOURCE, cmdIndex, funName);
}

const GetRow GET_HEALTH_LED_STATUS = {
    .lines = {{.states = {{0, "LED Off."}, {1, "Green LED On."}, {2, "Red LED On."}}}}};
int FUNC_ST_SYSTEM_GET_HEALTH_LED_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_HEALTH_LED_STATUS, cmdIndex, funName);
}

const GetRow GET_MIC_IN_STATUS = {.lines = {{.states = {{0, "MIC In Source From IOB. (Default)"},
                                                        {1, "MIC In Source From MB."}}}}};
int FUNC_ST_SYSTEM_GET_MIC_IN_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_MIC_IN_STATUS, cmdIndex, funName);
}

const GetRow GET_EXTERNAL_5V_STATUS = {
    .lines = {{.states = {{0, "External 5V Disable. (Default)"}, {1, "External 5V Enable."}}}}};
int FUNC_ST_SYSTEM_GET_EXTERNAL_5V_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_EXTERNAL_5V_STATUS, cmdIndex, funName);
}

const GetRow GET_CAN_IMP_STATUS = {
    .lines = {{.states = {{0, "CAN Impedance Disable."}, {1, "CAN Impedance Enable. (Default)"}}}}};
int FUNC_ST_SYSTEM_GET_CAN_IMP_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_CAN_IMP_STATUS, cmdIndex, funName);
}

const GetRow GET_FAN_MODE = {.lines = {{.states = {{0, "Smart FAN Mode."}, {1, "Manual FAN Mode."}},
                                        .fmt = "Not found any FAN mode !!!"}}};
int FUNC_ST_SYSTEM_GET_FAN_MODE(int cmdIndex, char* funName) {
    return runGet(GET_FAN_MODE, cmdIndex, funName);
}

const GetRow GET_BUZZER_STATUS = {.lines = {{.states = {{0, "Buzzer Off."}, {1, "Buzzer On."}}}}};
int FUNC_ST_SYSTEM_GET_BUZZER_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_BUZZER_STATUS, cmdIndex, funName);
}

// 0 means the beep is on.
const GetRow GET_TEMP_BEEP_STATUS = {.lines = {{.states = {{0, "Beep On."}, {1, "Beep Off."}}}}};
int FUNC_ST_SYSTEM_GET_TEMP_BEEP_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_TEMP_BEEP_STATUS, cmdIndex, funName);
}

const GetRow GET_SLOT_MODE = {
    .lines = {{.states = {{1, "USB2.0."}, {2, "USB3.2."}, {4, "PCIE."}, {8, "mSATA."}}}}};
int FUNC_ST_SYSTEM_GET_SLOT_MODE(int cmdIndex, char* funName) {
    return runGet(GET_SLOT_MODE, cmdIndex, funName);
}

const GetRow GET_BACKLIGHT_VOLUME_KEY_STATUS = {
    .lines = {{.states = {{0, "Backlight Key Selected."}, {1, "Volume Key Selected."}}}}};
int FUNC_ST_SYSTEM_GET_BACKLIGHT_VOLUME_KEY_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_BACKLIGHT_VOLUME_KEY_STATUS, cmdIndex, funName);
}

const GetRow GET_BIOS_NUM = {
    .lines = {{.states = {{1, "BIOS_1. (Default)"}, {2, "BIOS_2."}}, .fmt = "Reserved."}}};
int FUNC_ST_SYSTEM_GET_BIOS_NUM(int cmdIndex, char* funName) {
    return runGet(GET_BIOS_NUM, cmdIndex, funName);
}

const GetRow GET_MODULE_ID = {.lines = {{.states = {{0, "Orin Nano."}, {1, "Orin NX."}}}}};
int FUNC_ST_SYSTEM_GET_MODULE_ID(int cmdIndex, char* funName) {
    return runGet(GET_MODULE_ID, cmdIndex, funName);
}
const GetRow GET_LED_OUTPUT_STATUS = {
    .lines = {{.mask = 0x01,
               .states = {{0, "WLAN LED output bypass."}, {1, "WLAN LED output reserve."}}}}};
int FUNC_ST_SYSTEM_GET_LED_OUTPUT_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_LED_OUTPUT_STATUS, cmdIndex, funName);
}

const GetRow GET_WWAN_FULLCARD_POWEROFF = {
    .lines = {{.mask = 0x01, .states = {{0, "LOW."}, {1, "HI.\t(Default)"}}},
              {.mask = 0x02, .states = {{0, "LOW."}, {1, "HI.\t(Default)"}}}}};
int FUNC_ST_SYSTEM_GET_WWAN_FULLCARD_POWEROFF(int cmdIndex, char* funName) {
    return runGet(GET_WWAN_FULLCARD_POWEROFF, cmdIndex, funName);
}

// ---------------------------------------------------------------- values

const GetRow GET_HW_VERSION = {.lines = {field("HW Version = %c")}};
int FUNC_ST_SYSTEM_GET_HW_VERSION(int cmdIndex, char* funName) {
    return runGet(GET_HW_VERSION, cmdIndex, funName);
}

const GetRow GET_DTP_VERSION = {.lines = {field("DTP Version = %d")}};
int FUNC_ST_SYSTEM_GET_DTP_VERSION(int cmdIndex, char* funName) {
    return runGet(GET_DTP_VERSION, cmdIndex, funName);
}

const GetRow GET_BL_VERSION = {.lines = {field("BL Version = %d")}};
int FUNC_ST_SYSTEM_GET_BL_VERSION(int cmdIndex, char* funName) {
    return runGet(GET_BL_VERSION, cmdIndex, funName);
}

const GetRow GET_SUPPLY_VOLTAGE = {
    .lines = {
        loHi("supplyVoltageLow = %d,  supplyVoltageHigh = %d"),
        {.value = Value::Word,
         .fmt = "Supply Voltage = %d (unit:100mV)",
         .only = {.names = SUPPLY_10MV.names, .outside = true}},
        {.value = Value::Word, .fmt = "Supply Voltage = %d (unit:10mV)", .only = SUPPLY_10MV}}};
int FUNC_ST_SYSTEM_GET_SUPPLY_VOLTAGE(int cmdIndex, char* funName) {
    return runGet(GET_SUPPLY_VOLTAGE, cmdIndex, funName);
}

const GetRow GET_ALART_TIMER = {.lines = {field("Alarm Hour = %d", 0),
                                          field("Alarm Minute = %d", 1),
                                          field("Alarm Second = %d", 2)}};
int FUNC_ST_SYSTEM_GET_ALART_TIMER(int cmdIndex, char* funName) {
    return runGet(GET_ALART_TIMER, cmdIndex, funName);
}

const GetRow GET_PANEL_BRIGHTNESS = {.lines = {field("Panel Brightness = %d (0~10)(Default:8)")},
                                     .gate = PANEL_MODELS};
int FUNC_ST_SYSTEM_GET_PANEL_BRIGHTNESS(int cmdIndex, char* funName) {
    return runGet(GET_PANEL_BRIGHTNESS, cmdIndex, funName);
}

const GetRow GET_LS_VOLTAGE = {
    .lines = {loHi("LS VoltageLow = %d, LS VoltageHigh = %d"), word("LS Voltage = %d (10mV) ")}};
int FUNC_ST_SYSTEM_GET_LS_VOLTAGE(int cmdIndex, char* funName) {
    return runGet(GET_LS_VOLTAGE, cmdIndex, funName);
}

const GetRow GET_AUDIO_VOLUME = {.lines = {field("Audio Volume = %d (0~10)(Default:5)")}};
int FUNC_ST_SYSTEM_GET_AUDIO_VOLUME(int cmdIndex, char* funName) {
    return runGet(GET_AUDIO_VOLUME, cmdIndex, funName);
}

const GetRow GET_INPUT_FREQUENCY = {.lines = {word("Input Frequency = %d (0~65535)")}};
int FUNC_ST_SYSTEM_GET_INPUT_FREQUENCY(int cmdIndex, char* funName) {
    return runGet(GET_INPUT_FREQUENCY, cmdIndex, funName);
}

const GetRow GET_INPUT_VOLTAGE = {.lines = {word("Input Voltage = %d (0~380)(unit:100mV)")}};
int FUNC_ST_SYSTEM_GET_INPUT_VOLTAGE(int cmdIndex, char* funName) {
    return runGet(GET_INPUT_VOLTAGE, cmdIndex, funName);
}

const GetRow GET_BACKUP_BATTERY_VOLTAGE = {
    .lines = {loHi("backupBatteryVoltageLow = %d,  backupBatteryVoltageHigh = %d"),
              word("Backup Battery Voltage = %d (0~130)(unit:100mV)")}};
int FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_VOLTAGE(int cmdIndex, char* funName) {
    return runGet(GET_BACKUP_BATTERY_VOLTAGE, cmdIndex, funName);
}

const GetRow GET_BACKUP_BATTERY_TEMPERATURE = {
    .lines = {field("System Temperature = %d (0 ~ 145)")}, .gate = BACKUP_TEMP_MODELS};
int FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_TEMPERATURE(int cmdIndex, char* funName) {
    return runGet(GET_BACKUP_BATTERY_TEMPERATURE, cmdIndex, funName);
}

const GetRow GET_WAKEUP_TIMER = {.lines = {loHi("wakeupTimerLow = %d,  wakeupTimerHigh = %d"),
                                           word("Wakeup Timer = %d (1~44640)(unit:Minutes)")}};
int FUNC_ST_SYSTEM_GET_WAKEUP_TIMER(int cmdIndex, char* funName) {
    return runGet(GET_WAKEUP_TIMER, cmdIndex, funName);
}

const GetRow GET_LCD_PWM_FREQUENCY = {
    .lines = {loHi("lcdPWMFrequencyLow = %d,  lcdPWMFrequencyHigh = %d"),
              word("LCD PWM Frequency = %d (200~2000)(unit:Hz)")}};
int FUNC_ST_SYSTEM_GET_LCD_PWM_FREQUENCY(int cmdIndex, char* funName) {
    return runGet(GET_LCD_PWM_FREQUENCY, cmdIndex, funName);
}

const GetRow GET_POWER_BOARD_VERSION = {.lines = {field("Power Board Version = %c.")}};
int FUNC_ST_SYSTEM_GET_POWER_BOARD_VERSION(int cmdIndex, char* funName) {
    return runGet(GET_POWER_BOARD_VERSION, cmdIndex, funName);
}

const GetRow GET_ANALOG_IN_VOLTAGE = {.lines = {word("Analog In Voltage = %d (unit:10mV)")}};
int FUNC_ST_SYSTEM_GET_ANALOG_IN_VOLTAGE(int cmdIndex, char* funName) {
    return runGet(GET_ANALOG_IN_VOLTAGE, cmdIndex, funName);
}

// ---------------------------------------------------------------- per product

const GetRow GET_KEY_LED_STATUS = {.lines = {{.states = {{0, "Key Led status is off"},
                                                         {1, "Key Led status is white"},
                                                         {2, "Key Led status is blue"}}}},
                                   .gate = KEY_LED_MODELS,
                                   .frame = Frame::None};
int FUNC_ST_SYSTEM_GET_KEY_LED_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_KEY_LED_STATUS, cmdIndex, funName);
}

const GetRow GET_POWER_BOARD_STATUS = {
    .lines = {{.states = {{0, "Power Board not connect"}, {1, "Power Board connected"}}}},
    .gate = POWER_BOARD_MODELS};
int FUNC_ST_SYSTEM_GET_POWER_BOARD_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_POWER_BOARD_STATUS, cmdIndex, funName);
}

const GetRow GET_CONVERSE_FREQUENCY_TIMER = {.lines = {field("The Converse Timer is = %d(ms)")},
                                             .gate = ODOMETER_MODELS};
int FUNC_ST_SYSTEM_GET_CONVERSE_FREQUENCY_TIMER(int cmdIndex, char* funName) {
    return runGet(GET_CONVERSE_FREQUENCY_TIMER, cmdIndex, funName);
}

const GetRow GET_ODOMETER_LOCK_STATUS = {
    .lines = {{.mask = 0x01,
               .states = {{0, " Unlock Sending Odometer Event"},
                          {1, "Lock Sending Odometer Event"}},
               .fd = false}},
    .gate = ODOMETER_MODELS};
int FUNC_ST_SYSTEM_GET_ODOMETER_LOCK_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_ODOMETER_LOCK_STATUS, cmdIndex, funName);
}

const GetRow GET_RTC_BATTERY_VOLTAGE = {
    .lines = {word("The RTC Battery Voltage is = %d (10mV units)"),
              {.value = Value::Word,
               .fmt = "Voltage in mV = %d mV",
               .scale = 10,
               .only = RTC_BATTERY_MV,
               .fd = false}},
    .gate = RTC_BATTERY_MODELS};
int FUNC_ST_SYSTEM_GET_RTC_BATTERY_VOLTAGE(int cmdIndex, char* funName) {
    return runGet(GET_RTC_BATTERY_VOLTAGE, cmdIndex, funName);
}

const GetRow GET_GPS_STATUS = {.lines = {{.states = {{0, "GPS Off."}, {1, "GPS On. (Default)"}}},
                                         {.at = 1,
                                          .states = {{0, "Antenna is not connected."},
                                                     {1, "Antenna is connected."},
                                                     {2, "Antenna is short."}},
                                          .only = GPS_ANTENNA}}};
int FUNC_ST_SYSTEM_GET_GPS_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_GPS_STATUS, cmdIndex, funName);
}

const GetRow GET_AUDIO_MUTE_STATUS = {
    .lines = {{.mask = 0x01, .states = {{0, "Audio Mute Disable."}, {1, "Audio Mute Enable."}}},
              {.mask = 0x02,
               .states = {{0, "External Audio Mute Disable."}, {1, "External Audio Mute Enable."}},
               .only = MUTE_TWO}},
    .gate = MUTE_ANY,
    .off = OffProduct::AfterOpening};
int FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_AUDIO_MUTE_STATUS, cmdIndex, funName);
}

const GetRow GET_CAN_MODULE_POWER_STATUS = {
    .lines = {{.states = {{0, "CAN Module Power Off."}, {1, "CAN Module Power On."}},
               .fmt = "CAN Power Status : 0x%02X",
               .only = CAN_POWER_ONE},
              {.mask = 0x01,
               .states = {{0, "IOB CAN Module Power Off."}, {1, "IOB CAN Module Power On."}},
               .only = CAN_POWER_TWO},
              {.mask = 0x02,
               .states = {{0, "MB CAN Module Power Off."}, {1, "MB CAN Module Power On."}},
               .only = CAN_POWER_TWO},
              {.fmt = "CAN Power Status : 0x%02X", .only = CAN_POWER_OTHERS}}};
int FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_CAN_MODULE_POWER_STATUS, cmdIndex, funName);
}

const GetRow GET_RESET_TIME = {.lines = {{.mask = 0x07,
                                          .states = {{0, "Reset Time = 1 Seconds"},
                                                     {1, "Reset Time = 1.5 Seconds"},
                                                     {2, "Reset Time = 2 Seconds"},
                                                     {3, "Reset Time = 2.5 Seconds"},
                                                     {4, "Reset Time = 3 Seconds"},
                                                     {5, "Reset Time = 3.5 Seconds"},
                                                     {6, "Reset Time = 4.5 Seconds"},
                                                     {7, "Reset Time = 5.5 Seconds"}}}},
                               .frame = Frame::TwiceBefore};
int FUNC_ST_SYSTEM_GET_WWAN_CN7_RESET_TIME(int cmdIndex, char* funName) {
    return runGet(GET_RESET_TIME, cmdIndex, funName);
}
int FUNC_ST_SYSTEM_GET_WWAN_CN14_RESET_TIME(int cmdIndex, char* funName) {
    return runGet(GET_RESET_TIME, cmdIndex, funName);
}

const GetRow GET_SIM_CARD_DETECT_STATUS = {
    .lines = {{.mask = 0x01, .states = {{0, "Auto Mode.(Default)"}, {1, "Manual Mode."}}},
              {.mask = 0x02, .states = {{0, "SIM Insert Off.(Default)"}, {1, "SIM Insert On."}}}},
    .gate = SIM_DETECT_MODELS,
    .frame = Frame::None,
    .request = {0}};
int FUNC_ST_SYSTEM_GET_SIM_CARD_DETECT_STATUS(int cmdIndex, char* funName) {
    return runGet(GET_SIM_CARD_DETECT_STATUS, cmdIndex, funName);
}

// ---------------------------------------------------------------- decodings of their own

namespace system_status {

std::string renderTemperature(std::span<const BYTE> answer, int fd, const char*) {
    const int b = answer.empty() ? 0 : answer[0];
    // Byte 0 carries the sign in bit 7 and the magnitude as 256 minus the byte.
    const std::string line = b & 0x80 ? strprintf("System Temperature = -%d (-27 ~ 125)", 256 - b)
                                      : strprintf("System Temperature = %d (-27 ~ 125)", b);
    return strprintf("%s\nfd(%d) %s\n%s\n", SEPARATOR26, fd, line.c_str(), SEPARATOR26);
}

std::string renderPulseCount(std::span<const BYTE> answer, int fd, const char*) {
    const std::string line = answer.size() != 4
                                 ? std::string("Can't get pulse count. (Odometer)")
                                 : strprintf("pulse count = %u. (Odometer)",
                                             static_cast<unsigned>(littleEndian(answer, 0)));
    return strprintf("%s\nfd(%d) %s\n%s\n", SEPARATOR26, fd, line.c_str(), SEPARATOR26);
}

std::string renderStartupCount(std::span<const BYTE> answer, int fd, const char*) {
    return strprintf("%s\nfd(%d) The count of start up = %d\n%s\n", SEPARATOR26, fd,
                     static_cast<int>(littleEndian(answer, 0)), SEPARATOR26);
}

std::string renderBootTime(std::span<const BYTE> answer, int fd, const char*) {
    const auto at = [&](size_t i) { return i < answer.size() ? answer[i] : 0; };
    return strprintf("%s\nfd(%d) The boot time = %02d:%02d:%02d\n%s\n", SEPARATOR26, fd,
                     static_cast<int>(littleEndian(answer, 2)), at(1), at(0), SEPARATOR26);
}

std::string renderAst(std::span<const BYTE> answer, int fd, const char*) {
    std::string text;
    for (size_t i = 0; i < answer.size() && i < 16 && answer[i] != 0; ++i)
        text += static_cast<char>(answer[i]);
    return strprintf("%s\nfd(%d) Read AST = %s\n%s\n", SEPARATOR26, fd, text.c_str(), SEPARATOR26);
}

std::string renderHeartbeat(std::span<const BYTE> answer, int, const char*) {
    if (answer.size() < 2) return {};
    return strprintf(
        "======== Current Heartbeat Status ========\nHeartbeat : %s\nInterval  : %d seconds\n",
        answer[0] & 0x01 ? "Enabled" : "Disabled", answer[1]);
}

}  // namespace system_status

using namespace system_status;

int FUNC_ST_SYSTEM_GET_TEMPERATURE(int cmdIndex, char* funName) {
    return runRender(renderTemperature, 1, cmdIndex, funName);
}

// The answer's length is part of the decoding: no other count is checked.
int FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS(int cmdIndex, char* funName) {
    return runRender(renderPulseCount, 0, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_STARTUP_COUNT(int cmdIndex, char* funName) {
    return runRender(renderStartupCount, 0, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_BOOT_TIME(int cmdIndex, char* funName) {
    return runRender(renderBootTime, 2, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_AST(int cmdIndex, char* funName) {
    return runRender(renderAst, 0, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_HEARTBEAT_STATUS(int cmdIndex, char* funName) {
    return runRender(renderHeartbeat, 0, cmdIndex, funName);
}

// ---------------------------------------------------------------- every row of this file

namespace system_status {

const GetRef ROWS[] = {
    {FUNC_ST_SYSTEM_GET_OS_CONTROL, GET_OS_CONTROL},
    {FUNC_ST_SYSTEM_GET_IGNITION_STATUS, GET_IGNITION_STATUS},
    {FUNC_ST_SYSTEM_GET_LAN_STATUS, GET_LAN_STATUS},
    {FUNC_ST_SYSTEM_GET_RTC_STATUS, GET_RTC_STATUS},
    {FUNC_ST_SYSTEM_GET_FLASH_STATUS, GET_FLASH_STATUS},
    {FUNC_ST_SYSTEM_GET_CAN_SWITCH_STATUS, GET_CAN_SWITCH_STATUS},
    {FUNC_ST_SYSTEM_GET_AUDIO_SWITCH_STATUS, GET_AUDIO_SWITCH_STATUS},
    {FUNC_ST_SYSTEM_GET_I_BUTTON_STATUS, GET_I_BUTTON_STATUS},
    {FUNC_ST_SYSTEM_GET_RFID_STATUS, GET_RFID_STATUS},
    {FUNC_ST_SYSTEM_GET_HEATER_STATUS, GET_HEATER_STATUS},
    {FUNC_ST_SYSTEM_GET_NVR_STATUS, GET_NVR_STATUS},
    {FUNC_ST_SYSTEM_GET_CAN_DO_STATUS, GET_CAN_DO_STATUS},
    {FUNC_ST_SYSTEM_GET_AUTO_BACKLIGHT_STATUS, GET_AUTO_BACKLIGHT_STATUS},
    {FUNC_ST_SYSTEM_GET_CAN_MODULE_GPI_STATUS, GET_CAN_MODULE_GPI_STATUS},
    {FUNC_ST_SYSTEM_GET_CAN_DI_STATUS, GET_CAN_DI_STATUS},
    {FUNC_ST_SYSTEM_GET_HEATER_POWER_STATUS, GET_HEATER_POWER_STATUS},
    {FUNC_ST_SYSTEM_GET_POE_POWER_STATUS, GET_POE_POWER_STATUS},
    {FUNC_ST_SYSTEM_GET_WAKE_ON_LAN_STATUS, GET_WAKE_ON_LAN_STATUS},
    {FUNC_ST_SYSTEM_GET_LOW_VOLTAGE_STATUS, GET_LOW_VOLTAGE_STATUS},
    {FUNC_ST_SYSTEM_GET_EXTERNAL_12V_STATUS, GET_EXTERNAL_12V_STATUS},
    {FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_STATUS, GET_BACKUP_BATTERY_STATUS},
    {FUNC_ST_SYSTEM_GET_VIDEO_CONTROL_STATUS, GET_VIDEO_CONTROL_STATUS},
    {FUNC_ST_SYSTEM_GET_VIDEO_INPUT_SOURCE, GET_VIDEO_INPUT_SOURCE},
    {FUNC_ST_SYSTEM_GET_HEALTH_LED_STATUS, GET_HEALTH_LED_STATUS},
    {FUNC_ST_SYSTEM_GET_MIC_IN_STATUS, GET_MIC_IN_STATUS},
    {FUNC_ST_SYSTEM_GET_EXTERNAL_5V_STATUS, GET_EXTERNAL_5V_STATUS},
    {FUNC_ST_SYSTEM_GET_CAN_IMP_STATUS, GET_CAN_IMP_STATUS},
    {FUNC_ST_SYSTEM_GET_FAN_MODE, GET_FAN_MODE},
    {FUNC_ST_SYSTEM_GET_BUZZER_STATUS, GET_BUZZER_STATUS},
    {FUNC_ST_SYSTEM_GET_TEMP_BEEP_STATUS, GET_TEMP_BEEP_STATUS},
    {FUNC_ST_SYSTEM_GET_SLOT_MODE, GET_SLOT_MODE},
    {FUNC_ST_SYSTEM_GET_BACKLIGHT_VOLUME_KEY_STATUS, GET_BACKLIGHT_VOLUME_KEY_STATUS},
    {FUNC_ST_SYSTEM_GET_BIOS_NUM, GET_BIOS_NUM},
    {FUNC_ST_SYSTEM_GET_MODULE_ID, GET_MODULE_ID},
    {FUNC_ST_SYSTEM_GET_LED_OUTPUT_STATUS, GET_LED_OUTPUT_STATUS},
    {FUNC_ST_SYSTEM_GET_WWAN_FULLCARD_POWEROFF, GET_WWAN_FULLCARD_POWEROFF},
    {FUNC_ST_SYSTEM_GET_HW_VERSION, GET_HW_VERSION},
    {FUNC_ST_SYSTEM_GET_DTP_VERSION, GET_DTP_VERSION},
    {FUNC_ST_SYSTEM_GET_BL_VERSION, GET_BL_VERSION},
    {FUNC_ST_SYSTEM_GET_SUPPLY_VOLTAGE, GET_SUPPLY_VOLTAGE},
    {FUNC_ST_SYSTEM_GET_ALART_TIMER, GET_ALART_TIMER},
    {FUNC_ST_SYSTEM_GET_PANEL_BRIGHTNESS, GET_PANEL_BRIGHTNESS},
    {FUNC_ST_SYSTEM_GET_LS_VOLTAGE, GET_LS_VOLTAGE},
    {FUNC_ST_SYSTEM_GET_AUDIO_VOLUME, GET_AUDIO_VOLUME},
    {FUNC_ST_SYSTEM_GET_INPUT_FREQUENCY, GET_INPUT_FREQUENCY},
    {FUNC_ST_SYSTEM_GET_INPUT_VOLTAGE, GET_INPUT_VOLTAGE},
    {FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_VOLTAGE, GET_BACKUP_BATTERY_VOLTAGE},
    {FUNC_ST_SYSTEM_GET_BACKUP_BATTERY_TEMPERATURE, GET_BACKUP_BATTERY_TEMPERATURE},
    {FUNC_ST_SYSTEM_GET_WAKEUP_TIMER, GET_WAKEUP_TIMER},
    {FUNC_ST_SYSTEM_GET_LCD_PWM_FREQUENCY, GET_LCD_PWM_FREQUENCY},
    {FUNC_ST_SYSTEM_GET_POWER_BOARD_VERSION, GET_POWER_BOARD_VERSION},
    {FUNC_ST_SYSTEM_GET_ANALOG_IN_VOLTAGE, GET_ANALOG_IN_VOLTAGE},
    {FUNC_ST_SYSTEM_GET_KEY_LED_STATUS, GET_KEY_LED_STATUS},
    {FUNC_ST_SYSTEM_GET_POWER_BOARD_STATUS, GET_POWER_BOARD_STATUS},
    {FUNC_ST_SYSTEM_GET_CONVERSE_FREQUENCY_TIMER, GET_CONVERSE_FREQUENCY_TIMER},
    {FUNC_ST_SYSTEM_GET_ODOMETER_LOCK_STATUS, GET_ODOMETER_LOCK_STATUS},
    {FUNC_ST_SYSTEM_GET_RTC_BATTERY_VOLTAGE, GET_RTC_BATTERY_VOLTAGE},
    {FUNC_ST_SYSTEM_GET_GPS_STATUS, GET_GPS_STATUS},
    {FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS, GET_AUDIO_MUTE_STATUS},
    {FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS, GET_CAN_MODULE_POWER_STATUS},
    {FUNC_ST_SYSTEM_GET_WWAN_CN7_RESET_TIME, GET_RESET_TIME},
    {FUNC_ST_SYSTEM_GET_WWAN_CN14_RESET_TIME, GET_RESET_TIME},
    {FUNC_ST_SYSTEM_GET_SIM_CARD_DETECT_STATUS, GET_SIM_CARD_DETECT_STATUS},
};
const std::span<const GetRef> rows = ROWS;

const RenderRef RENDERS[] = {
    {FUNC_ST_SYSTEM_GET_TEMPERATURE, renderTemperature},
    {FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS, renderPulseCount},
    {FUNC_ST_SYSTEM_GET_STARTUP_COUNT, renderStartupCount},
    {FUNC_ST_SYSTEM_GET_BOOT_TIME, renderBootTime},
    {FUNC_ST_SYSTEM_GET_AST, renderAst},
    {FUNC_ST_SYSTEM_GET_HEARTBEAT_STATUS, renderHeartbeat},
};
const std::span<const RenderRef> renders = RENDERS;

}  // namespace system_status
