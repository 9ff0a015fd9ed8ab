// The rows of the system MCU's simple status and control commands: what each GET
// prints for its answer bytes, which menus or prompts each SET asks and how the
// answers pack into the request. Every FUNC_ST_SYSTEM_... here is its row's entry point.
#include "simple_rows.h"

#include "system_handlers.h"

using namespace simple;

// Rows name only the fields they need; the rest keep their defaults.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

// Binds FUNC_ST_SYSTEM_GET_<NAME> to its row.
#define SYSTEM_GET(NAME, ...)                                    \
    constexpr GetRow ROW_GET_##NAME = __VA_ARGS__;               \
    int FUNC_ST_SYSTEM_GET_##NAME(int cmdIndex, char* funName) { \
        return runGet(ROW_GET_##NAME, cmdIndex, funName);        \
    }                                                            \
    static const Registrar REGISTERED_GET_##NAME{FUNC_ST_SYSTEM_GET_##NAME, &ROW_GET_##NAME};

// Binds FUNC_ST_SYSTEM_SET_<NAME> to its row.
#define SYSTEM_SET(NAME, ...)                                    \
    constexpr SetRow ROW_SET_##NAME = __VA_ARGS__;               \
    int FUNC_ST_SYSTEM_SET_##NAME(int cmdIndex, char* funName) { \
        return runSet(ROW_SET_##NAME, cmdIndex, funName);        \
    }                                                            \
    static const Registrar REGISTERED_SET_##NAME{FUNC_ST_SYSTEM_SET_##NAME, &ROW_SET_##NAME};

namespace {

// ---------------------------------------------------------------- product sets

constexpr Models SUPPLY_10MV = {"KX25", "KX60", "KX34"};
constexpr Models PANEL_MODELS = {"KX23", "KX30"};
constexpr Models BACKUP_TEMP_MODELS = {"KX32"};
constexpr Models KEY_LED_MODELS = {"KX35", "KX34"};
constexpr Models POWER_BOARD_MODELS = {"KX73"};
constexpr Models AUTO_BACKLIGHT_MODELS = {"KX34", "KX30"};
constexpr Models EXT12V_ENABLE = {"KX42", "KX47", "KX48"};
constexpr Models EXT12V_POWER = {"KX65", "KX56", "KX57", "KX59", "KX71"};
constexpr Models ODOMETER_MODELS = {"KX56", "KX71"};
constexpr Models RTC_BATTERY_MV = {"KX71"};
constexpr Models RTC_BATTERY_MODELS = RTC_BATTERY_MV + Models{"KX57", "KX59"};
constexpr Models GPS_ANTENNA = {"KX71"};
constexpr Models MUTE_ONE = {"KX32", "KX29"};
constexpr Models MUTE_TWO = {"KX22", "KX23", "KX24", "KX36"};
constexpr Models MUTE_ONE_SET = MUTE_ONE + Models{"KX31", "KX35"};
constexpr Models CAN_POWER_ONE = {"KX02", "KX21", "KX24", "KX38", "KX46",
                                  "KX54", "KX70", "KX40", "KX41", "KX65"};
constexpr Models CAN_POWER_TWO = {"KX22"};
constexpr Models SIM_DETECT_MODELS = {"KX25", "KX42", "KX13", "KX14", "KX05", "KX08", "KX10"};

// ---------------------------------------------------------------- shapes

// A GET whose byte 0 names a state, between separators.
constexpr GetRow states(StateList texts, const char* otherwise = nullptr) {
    return {.lines = {{.states = texts, .fmt = otherwise}}};
}

// A GET printing one line per value.
constexpr Line value(Val val, const char* fmt, int at = 0) {
    return {.val = val, .at = at, .fmt = fmt};
}

// A menu whose answer is request byte 0.
constexpr Step menuStep(const char* title, FixedList<const char*, 8> options) {
    return {.title = title, .options = options, .max = options.count - 1};
}
constexpr SetRow menu(const char* title, FixedList<const char*, 8> options) {
    return {.variants = {{.steps = {menuStep(title, options)}}}};
}

// A number prompt.
constexpr Step numberStep(const char* prompt, int min, int max, int at = 0, int width = 1) {
    return {.rule = Rule::None, .prompt = prompt, .min = min, .max = max, .at = at, .width = width};
}

// A fixed action: its title, then `length` bytes of `init`.
constexpr SetRow action(const char* title, int length, FixedList<BYTE, 3> init = {}) {
    return {.title = title, .length = length, .init = init};
}

constexpr StateList ENABLE_DISABLE(const char* off, const char* on) {
    return {{0, off}, {1, on}};
}

constexpr GetRow RESET_TIME = {.lines = {{.mask = 0x07,
                                          .states = {{0, "Reset Time = 1 Seconds"},
                                                     {1, "Reset Time = 1.5 Seconds"},
                                                     {2, "Reset Time = 2 Seconds"},
                                                     {3, "Reset Time = 2.5 Seconds"},
                                                     {4, "Reset Time = 3 Seconds"},
                                                     {5, "Reset Time = 3.5 Seconds"},
                                                     {6, "Reset Time = 4.5 Seconds"},
                                                     {7, "Reset Time = 5.5 Seconds"}}}},
                               .frame = Frame::TwiceBefore};

constexpr SetRow resetTime(const char* title, const char* slotTitle) {
    return {
        .variants = {
            {.steps = {menuStep(title, {"0. 1 sec", "1. 1.5 sec", "2. 2 sec", "3. 2.5 sec",
                                        "4. 3 sec", "5. 3.5 sec", "6. 4.5 sec", "7. 5.5 sec"}),
                       {.title = slotTitle, .options = {"0. Normal", "1. Reset"}, .bits = 0x80}}}}};
}

constexpr const char* TIME_PROMPTS[] = {
    "Set hour (0-23):", "Set minute (0-59):", "Set second (0-59):"};
constexpr SetRow clockTime(const char* title) {
    return {.title = title,
            .variants = {{.steps = {numberStep(TIME_PROMPTS[0], 0, 23, 0),
                                    numberStep(TIME_PROMPTS[1], 0, 59, 1),
                                    numberStep(TIME_PROMPTS[2], 0, 59, 2)}}},
            .length = 3};
}

}  // namespace

// ---------------------------------------------------------------- status: a named state

SYSTEM_GET(OS_CONTROL, states(ENABLE_DISABLE("OS Contrl is None.", "OS Contrl is Auto Reboot.")))
SYSTEM_GET(IGNITION_STATUS, states(ENABLE_DISABLE("Ignition Off", "Ignition On")))
SYSTEM_GET(LED_OUTPUT_STATUS, {.lines = {{.mask = 0x01,
                                          .states = ENABLE_DISABLE("WLAN LED output bypass.",
                                                                   "WLAN LED output reserve.")}}})
SYSTEM_GET(LAN_STATUS, states(ENABLE_DISABLE("Wake on LAN Off (Default)", "Wake on LAN On")))
SYSTEM_GET(RTC_STATUS, states(ENABLE_DISABLE("RTC Off (Default)", "RTC On")))
SYSTEM_GET(FLASH_STATUS, states(ENABLE_DISABLE("Flash has stored.", "Flash is storing.")))
SYSTEM_GET(CAN_SWITCH_STATUS, states(ENABLE_DISABLE("CAN 2.0 (Default)", "ODBII")))
SYSTEM_GET(AUDIO_SWITCH_STATUS, states({{0, "Audio switch to Driver. (Default)"},
                                        {1, "Audio switch to Vehicle."},
                                        {2, "Audio switch to External."}}))
SYSTEM_GET(I_BUTTON_STATUS,
           states(ENABLE_DISABLE("I-Button Disable. (Default)", "I-Button Enable.")))
SYSTEM_GET(RFID_STATUS, states(ENABLE_DISABLE("RFID Disable. (Default)", "RFID Enable.")))
SYSTEM_GET(HEATER_STATUS, states(ENABLE_DISABLE("Heater Disable. (Default)", "Heater Enable.")))
SYSTEM_GET(NVR_STATUS, states(ENABLE_DISABLE("NVR Disable. (Default)", "NVR Enable.")))
SYSTEM_GET(CAN_DO_STATUS, states(ENABLE_DISABLE("CAN Module DO Low.", "CAN Module DO High.")))
SYSTEM_GET(AUTO_BACKLIGHT_STATUS,
           states(ENABLE_DISABLE("Auto Backlight Disable. (Default)", "Auto Backlight Enable.")))
SYSTEM_GET(CAN_MODULE_GPI_STATUS,
           states(ENABLE_DISABLE("CAN Module GPI Low.", "CAN Module GPI High.")))
SYSTEM_GET(CAN_DI_STATUS, states(ENABLE_DISABLE("CAN Module DI Low.", "CAN Module DI High.")))
SYSTEM_GET(HEATER_POWER_STATUS,
           states(ENABLE_DISABLE("Heater Power Disable. (Default)", "Heater Power Enable.")))
SYSTEM_GET(POE_POWER_STATUS, states(ENABLE_DISABLE("POE Power Off.", "POE Power On.")))
SYSTEM_GET(WAKE_ON_LAN_STATUS,
           states(ENABLE_DISABLE("Wake On LAN Disable. (Default)", "Wake On LAN Enable.")))
SYSTEM_GET(LOW_VOLTAGE_STATUS,
           states(ENABLE_DISABLE("Never Enter Low Voltage Mode.", "Once Enter Low Voltage Mode.")))
SYSTEM_GET(EXTERNAL_12V_STATUS,
           states(ENABLE_DISABLE("External 12V Disable. (Default)", "External 12V Enable.")))
SYSTEM_GET(BACKUP_BATTERY_STATUS, states({{0, "Backup Battery is Not Inserted."},
                                          {1, "Backup Battery Charge Finish."},
                                          {2, "Backup Battery Charge Now."},
                                          {3, "Backup Battery Dischange Now."},
                                          {4, "Backup Battery Change Stop."}}))
SYSTEM_GET(VIDEO_CONTROL_STATUS, states(ENABLE_DISABLE("Auto Mode. (Default)", "Manual Mode.")))
SYSTEM_GET(VIDEO_INPUT_SOURCE, states({{0, "LVDS"}, {1, "CVBS1"}, {2, "CVBS2"}, {3, "CVBS3"}}))
SYSTEM_GET(HEALTH_LED_STATUS, states({{0, "LED Off."}, {1, "Green LED On."}, {2, "Red LED On."}}))
SYSTEM_GET(MIC_IN_STATUS,
           states(ENABLE_DISABLE("MIC In Source From IOB. (Default)", "MIC In Source From MB.")))
SYSTEM_GET(EXTERNAL_5V_STATUS,
           states(ENABLE_DISABLE("External 5V Disable. (Default)", "External 5V Enable.")))
SYSTEM_GET(CAN_IMP_STATUS,
           states(ENABLE_DISABLE("CAN Impedance Disable.", "CAN Impedance Enable. (Default)")))
SYSTEM_GET(FAN_MODE, states(ENABLE_DISABLE("Smart FAN Mode.", "Manual FAN Mode."),
                            "Not found any FAN mode !!!"))
SYSTEM_GET(BUZZER_STATUS, states(ENABLE_DISABLE("Buzzer Off.", "Buzzer On.")))
// 0 means the beep is on.
SYSTEM_GET(TEMP_BEEP_STATUS, states(ENABLE_DISABLE("Beep On.", "Beep Off.")))
SYSTEM_GET(SLOT_MODE, states({{1, "USB2.0."}, {2, "USB3.2."}, {4, "PCIE."}, {8, "mSATA."}}))
SYSTEM_GET(BACKLIGHT_VOLUME_KEY_STATUS,
           states(ENABLE_DISABLE("Backlight Key Selected.", "Volume Key Selected.")))
SYSTEM_GET(BIOS_NUM, states({{1, "BIOS_1. (Default)"}, {2, "BIOS_2."}}, "Reserved."))
SYSTEM_GET(MODULE_ID, states(ENABLE_DISABLE("Orin Nano.", "Orin NX.")))
SYSTEM_GET(WWAN_FULLCARD_POWEROFF,
           {.lines = {{.mask = 0x01, .states = ENABLE_DISABLE("LOW.", "HI.\t(Default)")},
                      {.mask = 0x02, .states = ENABLE_DISABLE("LOW.", "HI.\t(Default)")}}})

// ---------------------------------------------------------------- status: values

SYSTEM_GET(HW_VERSION, {.lines = {value(Val::Field, "HW Version = %c")}})
SYSTEM_GET(DTP_VERSION, {.lines = {value(Val::Field, "DTP Version = %d")}})
SYSTEM_GET(BL_VERSION, {.lines = {value(Val::Field, "BL Version = %d")}})
SYSTEM_GET(SUPPLY_VOLTAGE,
           {.lines = {value(Val::LoHi, "supplyVoltageLow = %d,  supplyVoltageHigh = %d"),
                      {.val = Val::Word,
                       .fmt = "Supply Voltage = %d (unit:100mV)",
                       .alt = "Supply Voltage = %d (unit:10mV)",
                       .altModels = SUPPLY_10MV}}})
SYSTEM_GET(TEMPERATURE, {.lines = {{.val = Val::Signed,
                                    .fmt = "System Temperature = %d (-27 ~ 125)",
                                    .alt = "System Temperature = -%d (-27 ~ 125)"}}})
SYSTEM_GET(ALART_TIMER, {.lines = {value(Val::Field, "Alarm Hour = %d", 0),
                                   value(Val::Field, "Alarm Minute = %d", 1),
                                   value(Val::Field, "Alarm Second = %d", 2)}})
SYSTEM_GET(PANEL_BRIGHTNESS,
           {.lines = {value(Val::Field, "Panel Brightness = %d (0~10)(Default:8)")},
            .gate = PANEL_MODELS})
SYSTEM_GET(LS_VOLTAGE, {.lines = {value(Val::LoHi, "LS VoltageLow = %d, LS VoltageHigh = %d"),
                                  value(Val::Word, "LS Voltage = %d (10mV) ")}})
SYSTEM_GET(AUDIO_VOLUME, {.lines = {value(Val::Field, "Audio Volume = %d (0~10)(Default:5)")}})
SYSTEM_GET(INPUT_FREQUENCY, {.lines = {value(Val::Word, "Input Frequency = %d (0~65535)")}})
SYSTEM_GET(INPUT_VOLTAGE, {.lines = {value(Val::Word, "Input Voltage = %d (0~380)(unit:100mV)")}})
SYSTEM_GET(BACKUP_BATTERY_VOLTAGE,
           {.lines = {
                value(Val::LoHi, "backupBatteryVoltageLow = %d,  backupBatteryVoltageHigh = %d"),
                value(Val::Word, "Backup Battery Voltage = %d (0~130)(unit:100mV)")}})
SYSTEM_GET(BACKUP_BATTERY_TEMPERATURE,
           {.lines = {value(Val::Field, "System Temperature = %d (0 ~ 145)")},
            .gate = BACKUP_TEMP_MODELS})
SYSTEM_GET(PULSE_COUNT_STATUS, {.lines = {{.val = Val::Exact4,
                                           .fmt = "pulse count = %u. (Odometer)",
                                           .alt = "Can't get pulse count. (Odometer)"}}})
SYSTEM_GET(WAKEUP_TIMER, {.lines = {value(Val::LoHi, "wakeupTimerLow = %d,  wakeupTimerHigh = %d"),
                                    value(Val::Word, "Wakeup Timer = %d (1~44640)(unit:Minutes)")}})
SYSTEM_GET(LCD_PWM_FREQUENCY,
           {.lines = {value(Val::LoHi, "lcdPWMFrequencyLow = %d,  lcdPWMFrequencyHigh = %d"),
                      value(Val::Word, "LCD PWM Frequency = %d (200~2000)(unit:Hz)")}})
SYSTEM_GET(POWER_BOARD_VERSION, {.lines = {value(Val::Field, "Power Board Version = %c.")}})
SYSTEM_GET(AST, {.lines = {value(Val::Chars, "Read AST = %s")}})
SYSTEM_GET(STARTUP_COUNT, {.lines = {value(Val::Counter, "The count of start up = %d")}})
SYSTEM_GET(BOOT_TIME, {.lines = {value(Val::BootTime, "The boot time = %02d:%02d:%02d")}})
SYSTEM_GET(ANALOG_IN_VOLTAGE, {.lines = {value(Val::Word, "Analog In Voltage = %d (unit:10mV)")}})
SYSTEM_GET(
    HEARTBEAT_STATUS,
    {.lines = {{.val = Val::Text, .fmt = "======== Current Heartbeat Status ========", .fd = false},
               {.mask = 0x01,
                .states = ENABLE_DISABLE("Heartbeat : Disabled", "Heartbeat : Enabled"),
                .fd = false},
               {.at = 1, .fmt = "Interval  : %d seconds", .fd = false}},
     .frame = Frame::None,
     .minLength = 2})

// ---------------------------------------------------------------- status: per product

SYSTEM_GET(KEY_LED_STATUS, {.lines = {{.states = {{0, "Key Led status is off"},
                                                  {1, "Key Led status is white"},
                                                  {2, "Key Led status is blue"}}}},
                            .gate = KEY_LED_MODELS,
                            .frame = Frame::None})
SYSTEM_GET(POWER_BOARD_STATUS, {.lines = {{.states = ENABLE_DISABLE("Power Board not connect",
                                                                    "Power Board connected")}},
                                .gate = POWER_BOARD_MODELS})
SYSTEM_GET(CONVERSE_FREQUENCY_TIMER,
           {.lines = {value(Val::Field, "The Converse Timer is = %d(ms)")},
            .gate = ODOMETER_MODELS})
SYSTEM_GET(ODOMETER_LOCK_STATUS,
           {.lines = {{.mask = 0x01,
                       .states = ENABLE_DISABLE(" Unlock Sending Odometer Event",
                                                "Lock Sending Odometer Event"),
                       .fd = false}},
            .gate = ODOMETER_MODELS})
SYSTEM_GET(RTC_BATTERY_VOLTAGE,
           {.lines = {value(Val::Word, "The RTC Battery Voltage is = %d (10mV units)"),
                      {.val = Val::Word,
                       .fmt = "Voltage in mV = %d mV",
                       .only = RTC_BATTERY_MV,
                       .fd = false,
                       .scale = 10}},
            .gate = RTC_BATTERY_MODELS})
SYSTEM_GET(GPS_STATUS, {.lines = {{.states = ENABLE_DISABLE("GPS Off.", "GPS On. (Default)")},
                                  {.at = 1,
                                   .states = {{0, "Antenna is not connected."},
                                              {1, "Antenna is connected."},
                                              {2, "Antenna is short."}},
                                   .only = GPS_ANTENNA}}})
SYSTEM_GET(AUDIO_MUTE_STATUS,
           {.lines = {{.mask = 0x01,
                       .states = ENABLE_DISABLE("Audio Mute Disable.", "Audio Mute Enable.")},
                      {.mask = 0x02,
                       .states = ENABLE_DISABLE("External Audio Mute Disable.",
                                                "External Audio Mute Enable."),
                       .only = MUTE_TWO}},
            .gate = MUTE_ONE + MUTE_TWO,
            .off = OffProduct::AfterOpening})
SYSTEM_GET(CAN_MODULE_POWER_STATUS,
           {.lines = {
                {.states = ENABLE_DISABLE("CAN Module Power Off.", "CAN Module Power On."),
                 .fmt = "CAN Power Status : 0x%02X",
                 .only = CAN_POWER_ONE},
                {.mask = 0x01,
                 .states = ENABLE_DISABLE("IOB CAN Module Power Off.", "IOB CAN Module Power On."),
                 .only = CAN_POWER_TWO},
                {.mask = 0x02,
                 .states = ENABLE_DISABLE("MB CAN Module Power Off.", "MB CAN Module Power On."),
                 .only = CAN_POWER_TWO},
                {.fmt = "CAN Power Status : 0x%02X",
                 .only = CAN_POWER_ONE + CAN_POWER_TWO,
                 .notIn = true}}})
SYSTEM_GET(WWAN_CN7_RESET_TIME, RESET_TIME)
SYSTEM_GET(WWAN_CN14_RESET_TIME, RESET_TIME)
SYSTEM_GET(SIM_CARD_DETECT_STATUS,
           {.lines = {{.mask = 0x01,
                       .states = ENABLE_DISABLE("Auto Mode.(Default)", "Manual Mode.")},
                      {.mask = 0x02,
                       .states = ENABLE_DISABLE("SIM Insert Off.(Default)", "SIM Insert On.")}},
            .gate = SIM_DETECT_MODELS,
            .frame = Frame::None,
            .request = {0}})

// ---------------------------------------------------------------- control: one menu

SYSTEM_SET(BOOT_MODE, menu("========\t\tBoot Mode\t\t========",
                           {"0. No Power.\t(All LED Off)", "1. Enter BIOS.\t(RED LED On)",
                            "2. Enter OS.\t(BLUE LED On)"}))
SYSTEM_SET(OS_CONTROL,
           menu("========\t\tOS Control\t\t========", {"0. None.", "1. Auto Reboot. (Default)"}))
SYSTEM_SET(LED_OUTPUT_CONTROL, menu("========\tLED Output Control\t\t========",
                                    {"0. WLAN Output Bypass.", "1. WLAN Output Reserve."}))
SYSTEM_SET(GPS_CONTROL,
           menu("========\t\tGPS Control\t\t========", {"0. Disable", "1. Enable (Default)"}))
SYSTEM_SET(LAN_CONTROL, menu("========\t\tLAN Control\t\t========",
                             {"0. LAN Wakeup Disable. (Default)", "1. LAN Wakeup Enable."}))
SYSTEM_SET(RTC_CONTROL, menu("========\t\tRTC Control\t\t========",
                             {"0. RTC Wakeup Disable. (Default)", "1. RTC Wakeup Enable."}))
SYSTEM_SET(I_BUTTON_CONTROL,
           menu("========\tI Button Control \t\t========", {"0. Disable (Default)", "1. Enable"}))
SYSTEM_SET(POWER_MODE,
           {.variants = {{.steps = {{.title = "========\t\tPower Mode\t\t========",
                                     .options = {"0. Power On (0x00)", "1. Power Off (0xAA)",
                                                 "2. Idle Mode (0xFF) (Default)"},
                                     .max = 2,
                                     .map = {0x00, 0xAA, 0xFF}}}}}})
SYSTEM_SET(CAN_SWITCH_CONTROL, menu("========\tCAN Switch Control \t\t========",
                                    {"0. CAN 2.0 B (Default)", "1. ODBII"}))
SYSTEM_SET(AUDIO_SWITCH_CONTROL, menu("========\tAudio Switch Control \t\t========",
                                      {"0. Driver (Default)", "1. Vehicle", "2. External"}))
SYSTEM_SET(RFID_CONTROL,
           menu("========\t\tRFID Control \t\t========", {"0. Disable (Default)", "1. Enable"}))
SYSTEM_SET(NVR_CONTROL,
           menu("========\t\tNVR Control \t\t========", {"0. Disable (Default)", "1. Enable"}))
SYSTEM_SET(CAN_MODULE_GPO_CONTROL, menu("========\tCAN Module GPO Control \t\t========",
                                        {"0. GPO Low. (Default)", "1. GPO High."}))
SYSTEM_SET(HEATER_CONTROL,
           menu("========\t\tHeater Control \t\t========", {"0. Disable", "1. Enable"}))
SYSTEM_SET(POE_POWER_CONTROL, menu("========\tPOE Power Control \t\t========",
                                   {"0. POE Power Off. (Default)", "1. POE Power On."}))
SYSTEM_SET(HEATER_POWER_CONTROL,
           menu("========\tHeater Power Control \t\t========", {"0. Disable", "1. Enable"}))
SYSTEM_SET(WAKE_ON_LAN_CONTROL, menu("========\tWake On LAN Control \t\t========",
                                     {"0. Disable (Default)", "1. Enable"}))
SYSTEM_SET(EXTERNAL_5V_CONTROL, menu("========\tExternal 5V Control \t\t========",
                                     {"0. Disable (Default)", "1. Enable"}))
SYSTEM_SET(VIDEO_CONTROL_MODE,
           menu("========\tVideo Mode Control \t\t========", {"0. Auto Mode.", "1. Manual."}))
SYSTEM_SET(VIDEO_INPUT_SOURCE, menu("========\tVideo Input Source \t\t========",
                                    {"0. LVDS.", "1. CVBS 1.", "2. CVBS 2.", "3. CVBS 3."}))
// The health LED menu carries the program LED's title.
SYSTEM_SET(HEALTH_LED_CONTROL, menu("========\tProgram LED Control \t\t========",
                                    {"0. LED Off.", "1. Green LED On.", "2. Red LED On."}))
SYSTEM_SET(MIC_IN_CONTROL,
           menu("========\t\tMIC IN Control \t\t========",
                {"0. MIC In Source From IOB. (Default)", "1. MIC In Source From MB."}))
SYSTEM_SET(CAN_IMP_CONTROL, menu("========\t\tCAN IMP Control \t\t========",
                                 {"0. CAN Impedance Disable", "1. CAN Impedance Enable (Default)"}))
SYSTEM_SET(FAN_MODE_CONTROL, menu("========          Set FAN Mode Control          ========",
                                  {"0. Smart (Default).", "1. Manual."}))
SYSTEM_SET(BUZZER_CONTROL,
           menu("========\t\tBuzzer Control\t\t========", {"0. Buzzer Off.", "1. Buzzer On."}))
SYSTEM_SET(TEMP_BEEP_CONTROL,
           menu("========\t\tBeep Control\t\t========", {"0. Beep On.", "1. Beep Off."}))
SYSTEM_SET(POWER_BUTTON_CONTROL, menu("========          Power Button Control          ========",
                                      {"0. No Action", "1. Power ON/OFF"}))
SYSTEM_SET(KEY_LED_CONTROL, menu("========          Key Led Control          ========",
                                 {"0. LED OFF", "1. LED WHITE", "2. LED BLUE"}))
SYSTEM_SET(BACKLIGHT_VOLUME_KEY_SELECT,
           menu("========          Set Backlight Volume Key          ========",
                {"0. Backlight Key Selected.", "1. Volume Key Selected."}))
SYSTEM_SET(WWAN_FULLCARD_POWEROFF,
           {.variants = {{.steps = {{.title = "========\t\tWWAN CN7 PIN Control \t\t========",
                                     .options = {"0. LOW", "1. HIGH (default)"},
                                     .bits = 0x01},
                                    {.title = "========\t\tCN14 Slot Control \t\t========",
                                     .options = {"0. LOW", "1. HIGH (default)"},
                                     .bits = 0x02}}}}})

// ---------------------------------------------------------------- control: numbers and actions

SYSTEM_SET(EVENT_LOG, action("========\tClear System Event Log\t\t========", 1, {0}))
SYSTEM_SET(BACKUP_EVENT_CLEAR, action("========\tClear Backup Event Log\t\t========", 1, {0}))
SYSTEM_SET(LOAD_DEFAULT, action("========\t\tLoad Default\t\t========", 0))
SYSTEM_SET(FLASH_UPDATE, action("========\t\tFlash Update\t\t========", 1, {1}))
SYSTEM_SET(CLEAR_LOW_VOLTAGE_FLAG, action("========\tClear Low Voltage Flag\t\t========", 0))
SYSTEM_SET(RTC_TIMER, clockTime("========\t\tRTC Timer\t\t========"))
SYSTEM_SET(ALARM_TIMER, clockTime("========\t\tAlarm Timer\t\t========"))
SYSTEM_SET(PANEL_BRIGHTNESS,
           {.title = "========\tPanel Brightness\t\t========",
            .variants = {
                {.steps = {numberStep("Set Panel Brightness (0-10)(Default:8):", 0, 10)}}}})
SYSTEM_SET(AUDIO_VOLUME,
           {.title = "========\t\tAudio Volume\t\t========",
            .variants = {{.steps = {numberStep("Set Audio Volume Level (0-10):", 0, 10)}}}})
// The prompt says seconds, the status line minutes; the value passes through unchanged.
SYSTEM_SET(
    WAKEUP_TIMER,
    {.variants = {{.steps = {numberStep("Input Wakeup Timer Time, EX: 300 (0~44640)(unit:Sec) : ",
                                        0, 44640, 0, 2)}}},
     .length = 2})
SYSTEM_SET(LCD_PWM_FREQUENCY,
           {.variants = {{.steps = {numberStep("Input LCD PWM Frequency, EX: 200 (200~2000) : ",
                                               200, 2000, 0, 2)}}},
            .length = 2})
SYSTEM_SET(CONVERSE_FREQUENCY_TIMER,
           {.title = "========          Set Frequency Timer          ========",
            .variants = {
                {.steps = {numberStep("Please input frequency timer 50~100 (ms)\n", 50, 100)}}}})
SYSTEM_SET(HEARTBEAT_CONTROL,
           {.title = "========    Set Heartbeat Control    ========",
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
            .result = {.success = "Heartbeat Control Set Success",
                       .fail = "Heartbeat Control Set Fail"}})

// ---------------------------------------------------------------- control: per product

SYSTEM_SET(AUTO_BACKLIGHT_CONTROL,
           {.variants = {{.models = AUTO_BACKLIGHT_MODELS,
                          .steps = {{.title = "========\tAuto BackLight Control \t\t========",
                                     .options = {"0. Disable", "1. Enable"},
                                     .rule = Rule::None}}}}})
// Products in neither set get no menu; the request byte goes out as 0.
SYSTEM_SET(EXTERNAL_12V_CONTROL,
           {.variants = {{.models = EXT12V_ENABLE,
                          .steps = {menuStep("========\tExternal 12V Control \t\t========",
                                             {"0. Disable (Default)", "1. Enable"})}},
                         {.models = EXT12V_POWER,
                          .steps = {menuStep("========\tExternal 12V Control \t\t========",
                                             {"0. power off.", "1. power on."})}}},
            .off = OffModel::SendAsIs,
            .init = {0}})
SYSTEM_SET(
    ODOMETER_LOCK_CONTROL,
    {.variants = {{.models = ODOMETER_MODELS,
                   .steps = {{.title = "========         Odometer Lock Control         ========",
                              .options = {"0. Unlock Sending Odometer Event",
                                          "1. Lock Sending Odometer Event"},
                              .rule = Rule::None,
                              .prompt = ""}}}},
     .result = {.success = "Setting Success", .fail = "Setting Fail", .mask = 0x01, .fd = false}})
SYSTEM_SET(
    PULSE_COUNT_RESET,
    {.variants = {{.models = ODOMETER_MODELS,
                   .steps = {{.title = "========         Pulse Count Reset         ========",
                              .options = {"0. Not Reset Pulse Count", "1. Reset Pulse Count"},
                              .prompt = ""}}}},
     .result = {.success = "Setting Success",
                .fail = "Setting Fail",
                .mask = 0x01,
                .fd = false,
                .framed = true}})
SYSTEM_SET(AUDIO_MUTE_CONTROL,
           {.variants = {{.models = MUTE_ONE_SET,
                          .steps = {menuStep("========\tAudio Mute Control \t\t========",
                                             {"0. Disable", "1. Enable"})}},
                         {.models = MUTE_TWO,
                          .steps = {{.title = "========\tAudio Mute Control \t\t========",
                                     .options = {"0. Disable", "1. Enable"},
                                     .bits = 0x01},
                                    {.title = "========\tExternal Audio Mute Control\t========",
                                     .options = {"0. Disable", "1. Enable"},
                                     .bits = 0x02}}}},
            .off = OffModel::NotSupported,
            .offRule = Rule::Short})
SYSTEM_SET(
    CAN_MODULE_POWER_CONTROL,
    {.title = "========\tCAN Module Power Control \t========",
     .variants = {{.models = CAN_POWER_ONE,
                   .steps = {menuStep(nullptr, {"0. Power Off.", "1. Power On. (Default)"})}},
                  {.models = CAN_POWER_TWO,
                   .steps = {{.options = {"0. IOB CAN Module Power Off.",
                                          "1. IOB CAN Module Power On. (Default)"},
                              .bits = 0x01},
                             {.options = {"0. MB CAN Module Power Off.",
                                          "1. MB CAN Module Power On. (Default)"},
                              .bits = 0x02}}}},
     .off = OffModel::NotSupported})
SYSTEM_SET(WWAN_CN7_RESET_TIME, resetTime("========\t\tWWAN CN7 RESET \t\t========",
                                          "========\t\tCN7 Slot Control \t\t========"))
SYSTEM_SET(WWAN_CN14_RESET_TIME, resetTime("========\t\tWWAN CN14 RESET \t\t========",
                                           "========\t\tCN14 Slot Control \t\t========"))
// The request is byte 0 = 0 and byte 1 = the mode (bit 0) and the SIM insert (bit 1).
SYSTEM_SET(
    SIM_CARD_DETECT_STATUS,
    {.variants = {{.steps = {{.title = "========    Select SIM card Mode of WWAN1    ========",
                              .options = {"0. Auto Mode.(Default)", "1. Manual Mode."},
                              .rule = Rule::Short,
                              .at = 1,
                              .bits = 0x01},
                             {.title = "\n========    Select SIM card Control of WWAN1    ========",
                              .options = {"0. SIM Insert Off.(Default)", "1. SIM Insert On."},
                              .rule = Rule::Short,
                              .at = 1,
                              .bits = 0x02}}}},
     .length = 2})
