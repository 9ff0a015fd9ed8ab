// The system MCU's control (SET) commands: one-menu rows, number prompts, fixed
// actions and per-product menus; each FUNC_ST_SYSTEM_SET_... is its row's entry point.
#include "control.h"

#include "system_handlers.h"

using namespace shapes;

// Rows and product sets are file-local constants; the handlers are the entry points.

// ---------------------------------------------------------------- product sets

constexpr Products AUTO_BACKLIGHT_MODELS = {.names = {"KX34", "KX30"}};
constexpr Products EXT12V_ENABLE = {.names = {"KX42", "KX47", "KX48"}};
constexpr Products EXT12V_POWER = {.names = {"KX65", "KX56", "KX57", "KX59", "KX71"}};
constexpr Products ODOMETER_MODELS = {.names = {"KX56", "KX71"}};
constexpr Products MUTE_ONE = {.names = {"KX32", "KX29", "KX31", "KX35"}};
constexpr Products MUTE_TWO = {.names = {"KX22", "KX23", "KX24", "KX36"}};
constexpr Products CAN_POWER_ONE = {
    .names = {"KX02", "KX21", "KX24", "KX38", "KX46", "KX54", "KX70", "KX40", "KX41", "KX65"}};
constexpr Products CAN_POWER_TWO = {.names = {"KX22"}};

// ---------------------------------------------------------------- one menu

const MenuRow SET_BOOT_MODE = {
    "========\t\tBoot Mode\t\t========",
    {"0. No Power.\t(All LED Off)", "1. Enter BIOS.\t(RED LED On)", "2. Enter OS.\t(BLUE LED On)"}};
int FUNC_ST_SYSTEM_SET_BOOT_MODE(int cmdIndex, char* funName) {
    return runMenu(SET_BOOT_MODE, cmdIndex, funName);
}

const MenuRow SET_OS_CONTROL = {"========\t\tOS Control\t\t========",
                                {"0. None.", "1. Auto Reboot. (Default)"}};
int FUNC_ST_SYSTEM_SET_OS_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_OS_CONTROL, cmdIndex, funName);
}

const MenuRow SET_LED_OUTPUT_CONTROL = {"========\tLED Output Control\t\t========",
                                        {"0. WLAN Output Bypass.", "1. WLAN Output Reserve."}};
int FUNC_ST_SYSTEM_SET_LED_OUTPUT_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_LED_OUTPUT_CONTROL, cmdIndex, funName);
}

const MenuRow SET_GPS_CONTROL = {"========\t\tGPS Control\t\t========",
                                 {"0. Disable", "1. Enable (Default)"}};
int FUNC_ST_SYSTEM_SET_GPS_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_GPS_CONTROL, cmdIndex, funName);
}

const MenuRow SET_LAN_CONTROL = {"========\t\tLAN Control\t\t========",
                                 {"0. LAN Wakeup Disable. (Default)", "1. LAN Wakeup Enable."}};
int FUNC_ST_SYSTEM_SET_LAN_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_LAN_CONTROL, cmdIndex, funName);
}

const MenuRow SET_RTC_CONTROL = {"========\t\tRTC Control\t\t========",
                                 {"0. RTC Wakeup Disable. (Default)", "1. RTC Wakeup Enable."}};
int FUNC_ST_SYSTEM_SET_RTC_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_RTC_CONTROL, cmdIndex, funName);
}

const MenuRow SET_I_BUTTON_CONTROL = {"========\tI Button Control \t\t========",
                                      {"0. Disable (Default)", "1. Enable"}};
int FUNC_ST_SYSTEM_SET_I_BUTTON_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_I_BUTTON_CONTROL, cmdIndex, funName);
}

const MenuRow SET_CAN_SWITCH_CONTROL = {"========\tCAN Switch Control \t\t========",
                                        {"0. CAN 2.0 B (Default)", "1. ODBII"}};
int FUNC_ST_SYSTEM_SET_CAN_SWITCH_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_CAN_SWITCH_CONTROL, cmdIndex, funName);
}

const MenuRow SET_AUDIO_SWITCH_CONTROL = {"========\tAudio Switch Control \t\t========",
                                          {"0. Driver (Default)", "1. Vehicle", "2. External"}};
int FUNC_ST_SYSTEM_SET_AUDIO_SWITCH_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_AUDIO_SWITCH_CONTROL, cmdIndex, funName);
}

const MenuRow SET_RFID_CONTROL = {"========\t\tRFID Control \t\t========",
                                  {"0. Disable (Default)", "1. Enable"}};
int FUNC_ST_SYSTEM_SET_RFID_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_RFID_CONTROL, cmdIndex, funName);
}

const MenuRow SET_NVR_CONTROL = {"========\t\tNVR Control \t\t========",
                                 {"0. Disable (Default)", "1. Enable"}};
int FUNC_ST_SYSTEM_SET_NVR_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_NVR_CONTROL, cmdIndex, funName);
}

const MenuRow SET_CAN_MODULE_GPO_CONTROL = {"========\tCAN Module GPO Control \t\t========",
                                            {"0. GPO Low. (Default)", "1. GPO High."}};
int FUNC_ST_SYSTEM_SET_CAN_MODULE_GPO_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_CAN_MODULE_GPO_CONTROL, cmdIndex, funName);
}

const MenuRow SET_HEATER_CONTROL = {"========\t\tHeater Control \t\t========",
                                    {"0. Disable", "1. Enable"}};
int FUNC_ST_SYSTEM_SET_HEATER_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_HEATER_CONTROL, cmdIndex, funName);
}

const MenuRow SET_POE_POWER_CONTROL = {"========\tPOE Power Control \t\t========",
                                       {"0. POE Power Off. (Default)", "1. POE Power On."}};
int FUNC_ST_SYSTEM_SET_POE_POWER_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_POE_POWER_CONTROL, cmdIndex, funName);
}

const MenuRow SET_HEATER_POWER_CONTROL = {"========\tHeater Power Control \t\t========",
                                          {"0. Disable", "1. Enable"}};
int FUNC_ST_SYSTEM_SET_HEATER_POWER_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_HEATER_POWER_CONTROL, cmdIndex, funName);
}

const MenuRow SET_WAKE_ON_LAN_CONTROL = {"========\tWake On LAN Control \t\t========",
                                         {"0. Disable (Default)", "1. Enable"}};
int FUNC_ST_SYSTEM_SET_WAKE_ON_LAN_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_WAKE_ON_LAN_CONTROL, cmdIndex, funName);
}

const MenuRow SET_EXTERNAL_5V_CONTROL = {"========\tExternal 5V Control \t\t========",
                                         {"0. Disable (Default)", "1. Enable"}};
int FUNC_ST_SYSTEM_SET_EXTERNAL_5V_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_EXTERNAL_5V_CONTROL, cmdIndex, funName);
}

const MenuRow SET_VIDEO_CONTROL_MODE = {"========\tVideo Mode Control \t\t========",
                                        {"0. Auto Mode.", "1. Manual."}};
int FUNC_ST_SYSTEM_SET_VIDEO_CONTROL_MODE(int cmdIndex, char* funName) {
    return runMenu(SET_VIDEO_CONTROL_MODE, cmdIndex, funName);
}

const MenuRow SET_VIDEO_INPUT_SOURCE = {"========\tVideo Input Source \t\t========",
                                        {"0. LVDS.", "1. CVBS 1.", "2. CVBS 2.", "3. CVBS 3."}};
int FUNC_ST_SYSTEM_SET_VIDEO_INPUT_SOURCE(int cmdIndex, char* funName) {
    return runMenu(SET_VIDEO_INPUT_SOURCE, cmdIndex, funName);
}

// The health LED menu carries the program LED's title.
const MenuRow SET_HEALTH_LED_CONTROL = {"========\tProgram LED Control \t\t========",
                                        {"0. LED Off.", "1. Green LED On.", "2. Red LED On."}};
int FUNC_ST_SYSTEM_SET_HEALTH_LED_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_HEALTH_LED_CONTROL, cmdIndex, funName);
}

const MenuRow SET_MIC_IN_CONTROL = {
    "========\t\tMIC IN Control \t\t========",
    {"0. MIC In Source From IOB. (Default)", "1. MIC In Source From MB."}};
int FUNC_ST_SYSTEM_SET_MIC_IN_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_MIC_IN_CONTROL, cmdIndex, funName);
}

const MenuRow SET_CAN_IMP_CONTROL = {
    "========\t\tCAN IMP Control \t\t========",
    {"0. CAN Impedance Disable", "1. CAN Impedance Enable (Default)"}};
int FUNC_ST_SYSTEM_SET_CAN_IMP_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_CAN_IMP_CONTROL, cmdIndex, funName);
}

const MenuRow SET_FAN_MODE_CONTROL = {"======== Set FAN Mode Control ========",
                                      {"0. Smart (Default).", "1. Manual."}};
int FUNC_ST_SYSTEM_SET_FAN_MODE_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_FAN_MODE_CONTROL, cmdIndex, funName);
}

const MenuRow SET_BUZZER_CONTROL = {"========\t\tBuzzer Control\t\t========",
                                    {"0. Buzzer Off.", "1. Buzzer On."}};
int FUNC_ST_SYSTEM_SET_BUZZER_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_BUZZER_CONTROL, cmdIndex, funName);
}

const MenuRow SET_TEMP_BEEP_CONTROL = {"========\t\tBeep Control\t\t========",
                                       {"0. Beep On.", "1. Beep Off."}};
int FUNC_ST_SYSTEM_SET_TEMP_BEEP_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_TEMP_BEEP_CONTROL, cmdIndex, funName);
}

const MenuRow SET_POWER_BUTTON_CONTROL = {"======== Power Button Control ========",
                                          {"0. No Action", "1. Power ON/OFF"}};
int FUNC_ST_SYSTEM_SET_POWER_BUTTON_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_POWER_BUTTON_CONTROL, cmdIndex, funName);
}

const MenuRow SET_KEY_LED_CONTROL = {"======== Key Led Control ========",
                                     {"0. LED OFF", "1. LED WHITE", "2. LED BLUE"}};
int FUNC_ST_SYSTEM_SET_KEY_LED_CONTROL(int cmdIndex, char* funName) {
    return runMenu(SET_KEY_LED_CONTROL, cmdIndex, funName);
}

const MenuRow SET_BACKLIGHT_VOLUME_KEY_SELECT = {
    "======== Set Backlight Volume Key ========",
    {"0. Backlight Key Selected.", "1. Volume Key Selected."}};
int FUNC_ST_SYSTEM_SET_BACKLIGHT_VOLUME_KEY_SELECT(int cmdIndex, char* funName) {
    return runMenu(SET_BACKLIGHT_VOLUME_KEY_SELECT, cmdIndex, funName);
}
const SetRow SET_POWER_MODE = {
    .variants = {{.steps = {{.title = "========\t\tPower Mode\t\t========",
                             .options = {"0. Power On (0x00)", "1. Power Off (0xAA)",
                                         "2. Idle Mode (0xFF) (Default)"},
                             .max = 2,
                             .map = {0x00, 0xAA, 0xFF}}}}}};
int FUNC_ST_SYSTEM_SET_POWER_MODE(int cmdIndex, char* funName) {
    return runSet(SET_POWER_MODE, cmdIndex, funName);
}

const SetRow SET_WWAN_FULLCARD_POWEROFF = {
    .variants = {{.steps = {{.title = "========\t\tWWAN CN7 PIN Control \t\t========",
                             .options = {"0. LOW", "1. HIGH (default)"},
                             .bits = 0x01},
                            {.title = "========\t\tCN14 Slot Control \t\t========",
                             .options = {"0. LOW", "1. HIGH (default)"},
                             .bits = 0x02}}}}};
int FUNC_ST_SYSTEM_SET_WWAN_FULLCARD_POWEROFF(int cmdIndex, char* funName) {
    return runSet(SET_WWAN_FULLCARD_POWEROFF, cmdIndex, funName);
}

// ---------------------------------------------------------------- fixed actions

const SetRow SET_EVENT_LOG = {.title = "========\tClear System Event Log\t\t========", .init = {0}};
int FUNC_ST_SYSTEM_SET_EVENT_LOG(int cmdIndex, char* funName) {
    return runSet(SET_EVENT_LOG, cmdIndex, funName);
}

const SetRow SET_BACKUP_EVENT_CLEAR = {.title = "========\tClear Backup Event Log\t\t========",
                                       .init = {0}};
int FUNC_ST_SYSTEM_SET_BACKUP_EVENT_CLEAR(int cmdIndex, char* funName) {
    return runSet(SET_BACKUP_EVENT_CLEAR, cmdIndex, funName);
}

const SetRow SET_LOAD_DEFAULT = {.title = "========\t\tLoad Default\t\t========", .length = 0};
int FUNC_ST_SYSTEM_SET_LOAD_DEFAULT(int cmdIndex, char* funName) {
    return runSet(SET_LOAD_DEFAULT, cmdIndex, funName);
}

const SetRow SET_FLASH_UPDATE = {.title = "========\t\tFlash Update\t\t========", .init = {1}};
int FUNC_ST_SYSTEM_SET_FLASH_UPDATE(int cmdIndex, char* funName) {
    return runSet(SET_FLASH_UPDATE, cmdIndex, funName);
}

const SetRow SET_CLEAR_LOW_VOLTAGE_FLAG = {.title = "========\tClear Low Voltage Flag\t\t========",
                                           .length = 0};
int FUNC_ST_SYSTEM_SET_CLEAR_LOW_VOLTAGE_FLAG(int cmdIndex, char* funName) {
    return runSet(SET_CLEAR_LOW_VOLTAGE_FLAG, cmdIndex, funName);
}

// ---------------------------------------------------------------- number prompts

const SetRow SET_RTC_TIMER = {
    .title = "========\t\tRTC Timer\t\t========",
    .variants =
        {{.steps = {{.rule = Rule::None, .prompt = "Set hour (0-23):", .max = 23},
                    {.rule = Rule::None, .prompt = "Set minute (0-59):", .max = 59, .at = 1},
                    {.rule = Rule::None, .prompt = "Set second (0-59):", .max = 59, .at = 2}}}},
    .length = 3};
int FUNC_ST_SYSTEM_SET_RTC_TIMER(int cmdIndex, char* funName) {
    return runSet(SET_RTC_TIMER, cmdIndex, funName);
}

const SetRow SET_ALARM_TIMER = {
    .title = "========\t\tAlarm Timer\t\t========",
    .variants =
        {{.steps = {{.rule = Rule::None, .prompt = "Set hour (0-23):", .max = 23},
                    {.rule = Rule::None, .prompt = "Set minute (0-59):", .max = 59, .at = 1},
                    {.rule = Rule::None, .prompt = "Set second (0-59):", .max = 59, .at = 2}}}},
    .length = 3};
int FUNC_ST_SYSTEM_SET_ALARM_TIMER(int cmdIndex, char* funName) {
    return runSet(SET_ALARM_TIMER, cmdIndex, funName);
}

const SetRow SET_PANEL_BRIGHTNESS = {
    .title = "========\tPanel Brightness\t\t========",
    .variants = {{.steps = {{.rule = Rule::None,
                             .prompt = "Set Panel Brightness (0-10)(Default:8):",
                             .max = 10}}}}};
int FUNC_ST_SYSTEM_SET_PANEL_BRIGHTNESS(int cmdIndex, char* funName) {
    return runSet(SET_PANEL_BRIGHTNESS, cmdIndex, funName);
}

const SetRow SET_AUDIO_VOLUME = {
    .title = "========\t\tAudio Volume\t\t========",
    .variants = {
        {.steps = {{.rule = Rule::None, .prompt = "Set Audio Volume Level (0-10):", .max = 10}}}}};
int FUNC_ST_SYSTEM_SET_AUDIO_VOLUME(int cmdIndex, char* funName) {
    return runSet(SET_AUDIO_VOLUME, cmdIndex, funName);
}

// The prompt says seconds, the status line minutes; the value passes through unchanged.
const SetRow SET_WAKEUP_TIMER = {
    .variants = {{.steps = {{.rule = Rule::None,
                             .prompt = "Input Wakeup Timer Time, EX: 300 (0~44640)(unit:Sec) : ",
                             .max = 44640,
                             .width = 2}}}},
    .length = 2};
int FUNC_ST_SYSTEM_SET_WAKEUP_TIMER(int cmdIndex, char* funName) {
    return runSet(SET_WAKEUP_TIMER, cmdIndex, funName);
}

const SetRow SET_LCD_PWM_FREQUENCY = {
    .variants = {{.steps = {{.rule = Rule::None,
                             .prompt = "Input LCD PWM Frequency, EX: 200 (200~2000) : ",
                             .min = 200,
                             .max = 2000,
                             .width = 2}}}},
    .length = 2};
int FUNC_ST_SYSTEM_SET_LCD_PWM_FREQUENCY(int cmdIndex, char* funName) {
    return runSet(SET_LCD_PWM_FREQUENCY, cmdIndex, funName);
}

const SetRow SET_CONVERSE_FREQUENCY_TIMER = {
    .title = "========          Set Frequency Timer          ========",
    .variants = {{.steps = {{.rule = Rule::None,
                             .prompt = "Please input frequency timer 50~100 (ms)\n",
                             .min = 50,
                             .max = 100}}}}};
int FUNC_ST_SYSTEM_SET_CONVERSE_FREQUENCY_TIMER(int cmdIndex, char* funName) {
    return runSet(SET_CONVERSE_FREQUENCY_TIMER, cmdIndex, funName);
}

const SetRow SET_HEARTBEAT_CONTROL = {
    .title = "========    Set Heartbeat Control    ========",
    .variants = {{.steps = {{.options = {"0. Heartbeat Disable", "1. Heartbeat Enable"},
                             .rule = Rule::None,
                             .prompt = "Select which option you want to do: "},
                            {.rule = Rule::None,
                             .prompt = "Set Heartbeat Interval (5~255 seconds): ",
                             .min = 5,
                             .max = 255,
                             .at = 1,
                             .ifPrevious = true}}}},
    .length = 2,
    .init = {0, 5},
    .result = {.success = "Heartbeat Control Set Success", .fail = "Heartbeat Control Set Fail"}};
int FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL(int cmdIndex, char* funName) {
    return runSet(SET_HEARTBEAT_CONTROL, cmdIndex, funName);
}

// ---------------------------------------------------------------- per product

const SetRow SET_AUTO_BACKLIGHT_CONTROL = {
    .variants = {{.models = AUTO_BACKLIGHT_MODELS,
                  .steps = {{.title = "========\tAuto BackLight Control \t\t========",
                             .options = {"0. Disable", "1. Enable"},
                             .rule = Rule::None}}}}};
int FUNC_ST_SYSTEM_SET_AUTO_BACKLIGHT_CONTROL(int cmdIndex, char* funName) {
    return runSet(SET_AUTO_BACKLIGHT_CONTROL, cmdIndex, funName);
}

// Products in neither set get no menu; the request byte goes out as 0.
const SetRow SET_EXTERNAL_12V_CONTROL = {
    .variants = {{.models = EXT12V_ENABLE,
                  .steps = {{.title = "========\tExternal 12V Control \t\t========",
                             .options = {"0. Disable (Default)", "1. Enable"}}}},
                 {.models = EXT12V_POWER,
                  .steps = {{.title = "========\tExternal 12V Control \t\t========",
                             .options = {"0. power off.", "1. power on."}}}}},
    .off = OffModel::SendAsIs,
    .init = {0}};
int FUNC_ST_SYSTEM_SET_EXTERNAL_12V_CONTROL(int cmdIndex, char* funName) {
    return runSet(SET_EXTERNAL_12V_CONTROL, cmdIndex, funName);
}

const SetRow SET_ODOMETER_LOCK_CONTROL = {
    .variants = {{.models = ODOMETER_MODELS,
                  .steps = {{.title = "========         Odometer Lock Control         ========",
                             .options = {"0. Unlock Sending Odometer Event",
                                         "1. Lock Sending Odometer Event"},
                             .rule = Rule::None,
                             .prompt = ""}}}},
    .result = {.success = "Setting Success", .fail = "Setting Fail", .mask = 0x01, .fd = false}};
int FUNC_ST_SYSTEM_SET_ODOMETER_LOCK_CONTROL(int cmdIndex, char* funName) {
    return runSet(SET_ODOMETER_LOCK_CONTROL, cmdIndex, funName);
}

const SetRow SET_PULSE_COUNT_RESET = {
    .variants = {{.models = ODOMETER_MODELS,
                  .steps = {{.title = "========         Pulse Count Reset         ========",
                             .options = {"0. Not Reset Pulse Count", "1. Reset Pulse Count"},
                             .prompt = ""}}}},
    .result = {.success = "Setting Success",
               .fail = "Setting Fail",
               .mask = 0x01,
               .fd = false,
               .framed = true}};
int FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET(int cmdIndex, char* funName) {
    return runSet(SET_PULSE_COUNT_RESET, cmdIndex, funName);
}

const SetRow SET_AUDIO_MUTE_CONTROL = {
    .variants = {{.models = MUTE_ONE,
                  .steps = {{.title = "========\tAudio Mute Control \t\t========",
                             .options = {"0. Disable", "1. Enable"}}}},
                 {.models = MUTE_TWO,
                  .steps = {{.title = "========\tAudio Mute Control \t\t========",
                             .options = {"0. Disable", "1. Enable"},
                             .bits = 0x01},
                            {.title = "========\tExternal Audio Mute Control\t========",
                             .options = {"0. Disable", "1. Enable"},
                             .bits = 0x02}}}},
    .off = OffModel::NotSupported,
    .offRule = Rule::Short};
int FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL(int cmdIndex, char* funName) {
    return runSet(SET_AUDIO_MUTE_CONTROL, cmdIndex, funName);
}

const SetRow SET_CAN_MODULE_POWER_CONTROL = {
    .title = "========\tCAN Module Power Control \t========",
    .variants = {{.models = CAN_POWER_ONE,
                  .steps = {{.options = {"0. Power Off.", "1. Power On. (Default)"}}}},
                 {.models = CAN_POWER_TWO,
                  .steps = {{.options = {"0. IOB CAN Module Power Off.",
                                         "1. IOB CAN Module Power On. (Default)"},
                             .bits = 0x01},
                            {.options = {"0. MB CAN Module Power Off.",
                                         "1. MB CAN Module Power On. (Default)"},
                             .bits = 0x02}}}},
    .off = OffModel::NotSupported};
int FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL(int cmdIndex, char* funName) {
    return runSet(SET_CAN_MODULE_POWER_CONTROL, cmdIndex, funName);
}

const SetRow SET_WWAN_CN7_RESET_TIME = {
    .variants = {{.steps = {{.title = "========\t\tWWAN CN7 RESET \t\t========",
                             .options = {"0. 1 sec", "1. 1.5 sec", "2. 2 sec", "3. 2.5 sec",
                                         "4. 3 sec", "5. 3.5 sec", "6. 4.5 sec", "7. 5.5 sec"},
                             .max = 7},
                            {.title = "========\t\tCN7 Slot Control \t\t========",
                             .options = {"0. Normal", "1. Reset"},
                             .bits = 0x80}}}}};
int FUNC_ST_SYSTEM_SET_WWAN_CN7_RESET_TIME(int cmdIndex, char* funName) {
    return runSet(SET_WWAN_CN7_RESET_TIME, cmdIndex, funName);
}

const SetRow SET_WWAN_CN14_RESET_TIME = {
    .variants = {{.steps = {{.title = "========\t\tWWAN CN14 RESET \t\t========",
                             .options = {"0. 1 sec", "1. 1.5 sec", "2. 2 sec", "3. 2.5 sec",
                                         "4. 3 sec", "5. 3.5 sec", "6. 4.5 sec", "7. 5.5 sec"},
                             .max = 7},
                            {.title = "========\t\tCN14 Slot Control \t\t========",
                             .options = {"0. Normal", "1. Reset"},
                             .bits = 0x80}}}}};
int FUNC_ST_SYSTEM_SET_WWAN_CN14_RESET_TIME(int cmdIndex, char* funName) {
    return runSet(SET_WWAN_CN14_RESET_TIME, cmdIndex, funName);
}

// The request is byte 0 = 0 and byte 1 = the mode (bit 0) and the SIM insert (bit 1).
const SetRow SET_SIM_CARD_DETECT_STATUS = {
    .variants = {{.steps = {{.title = "========    Select SIM card Mode of WWAN1    ========",
                             .options = {"0. Auto Mode.(Default)", "1. Manual Mode."},
                             .rule = Rule::Short,
                             .at = 1,
                             .bits = 0x01},
                            {.title = "\n========    Select SIM card Control of WWAN1    ========",
                             .options = {"0. SIM Insert Off.(Default)", "1. SIM Insert On."},
                             .rule = Rule::Short,
                             .at = 1,
                             .bits = 0x02}}}},
    .length = 2};
int FUNC_ST_SYSTEM_SET_SIM_CARD_DETECT_STATUS(int cmdIndex, char* funName) {
    return runSet(SET_SIM_CARD_DETECT_STATUS, cmdIndex, funName);
}

// ---------------------------------------------------------------- every row of this file

namespace system_control {

const MenuRef MENUS[] = {
    {FUNC_ST_SYSTEM_SET_BOOT_MODE, SET_BOOT_MODE},
    {FUNC_ST_SYSTEM_SET_OS_CONTROL, SET_OS_CONTROL},
    {FUNC_ST_SYSTEM_SET_LED_OUTPUT_CONTROL, SET_LED_OUTPUT_CONTROL},
    {FUNC_ST_SYSTEM_SET_GPS_CONTROL, SET_GPS_CONTROL},
    {FUNC_ST_SYSTEM_SET_LAN_CONTROL, SET_LAN_CONTROL},
    {FUNC_ST_SYSTEM_SET_RTC_CONTROL, SET_RTC_CONTROL},
    {FUNC_ST_SYSTEM_SET_I_BUTTON_CONTROL, SET_I_BUTTON_CONTROL},
    {FUNC_ST_SYSTEM_SET_CAN_SWITCH_CONTROL, SET_CAN_SWITCH_CONTROL},
    {FUNC_ST_SYSTEM_SET_AUDIO_SWITCH_CONTROL, SET_AUDIO_SWITCH_CONTROL},
    {FUNC_ST_SYSTEM_SET_RFID_CONTROL, SET_RFID_CONTROL},
    {FUNC_ST_SYSTEM_SET_NVR_CONTROL, SET_NVR_CONTROL},
    {FUNC_ST_SYSTEM_SET_CAN_MODULE_GPO_CONTROL, SET_CAN_MODULE_GPO_CONTROL},
    {FUNC_ST_SYSTEM_SET_HEATER_CONTROL, SET_HEATER_CONTROL},
    {FUNC_ST_SYSTEM_SET_POE_POWER_CONTROL, SET_POE_POWER_CONTROL},
    {FUNC_ST_SYSTEM_SET_HEATER_POWER_CONTROL, SET_HEATER_POWER_CONTROL},
    {FUNC_ST_SYSTEM_SET_WAKE_ON_LAN_CONTROL, SET_WAKE_ON_LAN_CONTROL},
    {FUNC_ST_SYSTEM_SET_EXTERNAL_5V_CONTROL, SET_EXTERNAL_5V_CONTROL},
    {FUNC_ST_SYSTEM_SET_VIDEO_CONTROL_MODE, SET_VIDEO_CONTROL_MODE},
    {FUNC_ST_SYSTEM_SET_VIDEO_INPUT_SOURCE, SET_VIDEO_INPUT_SOURCE},
    {FUNC_ST_SYSTEM_SET_HEALTH_LED_CONTROL, SET_HEALTH_LED_CONTROL},
    {FUNC_ST_SYSTEM_SET_MIC_IN_CONTROL, SET_MIC_IN_CONTROL},
    {FUNC_ST_SYSTEM_SET_CAN_IMP_CONTROL, SET_CAN_IMP_CONTROL},
    {FUNC_ST_SYSTEM_SET_FAN_MODE_CONTROL, SET_FAN_MODE_CONTROL},
    {FUNC_ST_SYSTEM_SET_BUZZER_CONTROL, SET_BUZZER_CONTROL},
    {FUNC_ST_SYSTEM_SET_TEMP_BEEP_CONTROL, SET_TEMP_BEEP_CONTROL},
    {FUNC_ST_SYSTEM_SET_POWER_BUTTON_CONTROL, SET_POWER_BUTTON_CONTROL},
    {FUNC_ST_SYSTEM_SET_KEY_LED_CONTROL, SET_KEY_LED_CONTROL},
    {FUNC_ST_SYSTEM_SET_BACKLIGHT_VOLUME_KEY_SELECT, SET_BACKLIGHT_VOLUME_KEY_SELECT},
};
const std::span<const MenuRef> menus = MENUS;

const SetRef ROWS[] = {
    {FUNC_ST_SYSTEM_SET_POWER_MODE, SET_POWER_MODE},
    {FUNC_ST_SYSTEM_SET_WWAN_FULLCARD_POWEROFF, SET_WWAN_FULLCARD_POWEROFF},
    {FUNC_ST_SYSTEM_SET_EVENT_LOG, SET_EVENT_LOG},
    {FUNC_ST_SYSTEM_SET_BACKUP_EVENT_CLEAR, SET_BACKUP_EVENT_CLEAR},
    {FUNC_ST_SYSTEM_SET_LOAD_DEFAULT, SET_LOAD_DEFAULT},
    {FUNC_ST_SYSTEM_SET_FLASH_UPDATE, SET_FLASH_UPDATE},
    {FUNC_ST_SYSTEM_SET_CLEAR_LOW_VOLTAGE_FLAG, SET_CLEAR_LOW_VOLTAGE_FLAG},
    {FUNC_ST_SYSTEM_SET_RTC_TIMER, SET_RTC_TIMER},
    {FUNC_ST_SYSTEM_SET_ALARM_TIMER, SET_ALARM_TIMER},
    {FUNC_ST_SYSTEM_SET_PANEL_BRIGHTNESS, SET_PANEL_BRIGHTNESS},
    {FUNC_ST_SYSTEM_SET_AUDIO_VOLUME, SET_AUDIO_VOLUME},
    {FUNC_ST_SYSTEM_SET_WAKEUP_TIMER, SET_WAKEUP_TIMER},
    {FUNC_ST_SYSTEM_SET_LCD_PWM_FREQUENCY, SET_LCD_PWM_FREQUENCY},
    {FUNC_ST_SYSTEM_SET_CONVERSE_FREQUENCY_TIMER, SET_CONVERSE_FREQUENCY_TIMER},
    {FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, SET_HEARTBEAT_CONTROL},
    {FUNC_ST_SYSTEM_SET_AUTO_BACKLIGHT_CONTROL, SET_AUTO_BACKLIGHT_CONTROL},
    {FUNC_ST_SYSTEM_SET_EXTERNAL_12V_CONTROL, SET_EXTERNAL_12V_CONTROL},
    {FUNC_ST_SYSTEM_SET_ODOMETER_LOCK_CONTROL, SET_ODOMETER_LOCK_CONTROL},
    {FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET, SET_PULSE_COUNT_RESET},
    {FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL, SET_AUDIO_MUTE_CONTROL},
    {FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL, SET_CAN_MODULE_POWER_CONTROL},
    {FUNC_ST_SYSTEM_SET_WWAN_CN7_RESET_TIME, SET_WWAN_CN7_RESET_TIME},
    {FUNC_ST_SYSTEM_SET_WWAN_CN14_RESET_TIME, SET_WWAN_CN14_RESET_TIME},
    {FUNC_ST_SYSTEM_SET_SIM_CARD_DETECT_STATUS, SET_SIM_CARD_DETECT_STATUS},
};
const std::span<const SetRef> rows = ROWS;

}  // namespace system_control
