// The backup/smart battery and BIOS auto-reboot commands. Every GET frames its lines
// with 26-"=" separators; every SET is one menu whose option is the byte sent.
#include "bkp_handlers.h"

#include "shapes/exchange_steps.h"
#include "shapes/rows.h"

using namespace steps;
using shapes::GetRow;
using shapes::MenuRow;

namespace bkp {

const int BKP_DELAY_TIME_MINUTES[20] = {5,   10,  15,  20,  30,  45,  60,  70,  75,  90,
                                        105, 120, 135, 150, 165, 180, 195, 210, 225, 240};

namespace {

constexpr Named BATTERY_STATES[] = {
    {0, "fd(%d) Backup Battery is Not Inserted.\n"}, {1, "fd(%d) Backup Battery Charge Finish.\n"},
    {2, "fd(%d) Backup Battery Charge Now.\n"},      {3, "fd(%d) Backup Battery Discharge Now.\n"},
    {4, "fd(%d) Backup Battery Charge Stop.\n"},     {5, "fd(%d) Backup Battery idle.\n"},
};

// The status bits of the KX60 smart battery, bit 0 first.
constexpr const char* KX60_STATUS_BITS[16] = {
    "fd(%d) error code for bit0\n",
    "fd(%d) error code for bit1\n",
    "fd(%d) error code for bit2\n",
    "fd(%d) error code for bit3\n",
    "fd(%d) status fully discharged\n",
    "fd(%d) status fully charged\n",
    "fd(%d) status discharging\n",
    "fd(%d) status gauge initialized\n",
    "fd(%d) alarm remaining time\n",
    "fd(%d) alarm remaining capacity\n",
    "fd(%d) Reversed\n",
    "fd(%d) alarm terminate discharge\n",
    "fd(%d) alarm over temperature\n",
    "fd(%d) Reversed\n",
    "fd(%d) alarm terminate charge\n",
    "fd(%d) alarm over charge\n",
};

constexpr Named POWER_OFF_VALUES[] = {
    {0, "fd(%d) 30(seconds) \n"},
    {1, "fd(%d) 60(seconds) \n"},
};

const MenuRow SET_DELAY_TIME_CONTROL = {
    "========\tDelay Time Control \t\t========",
    {
        "0.    5 Min.", "1.   10 Min.", "2.   15 Min.", "3.   20 Min.", "4.   30 Min.",
        "5.   45 Min.", "6.   60 Min.", "7.   70 Min.", "8.   75 Min.", "9.   90 Min.",
        "10. 105 Min.", "11. 120 Min.", "12. 135 Min.", "13. 150 Min.", "14. 165 Min.",
        "15. 180 Min.", "16. 195 Min.", "17. 210 Min.", "18. 225 Min.", "19. 240 Min.",
    }};

const MenuRow SET_POWER_OFF_VALUE = {"========\tPower Off Value \t\t========",
                                     {"0.   30(seconds).", "1.   60(seconds)."}};

const MenuRow SET_AUTO_REBOOT_FUNCTION = {"========\t\tAuto reboot Control\t\t========",
                                          {"0. Disable.", "1. Enable."}};

// The magnitude of a byte whose bit 7 is the sign, negative modulo 256.
int negated(BYTE b) {
    return 256 - b;
}

}  // namespace

std::string renderBackupBatteryStatus(Bytes a, std::string_view, int fd) {
    BYTE state = byteAt(a, 0);
    return framed(format("Backup Battery Status = %d\n", state) + named(BATTERY_STATES, state, fd));
}

std::string renderSmartBatteryVoltage(Bytes a, std::string_view product, int fd) {
    // KX29 carries a backup battery behind the same command.
    bool backup = isModel(product, {"KX29"});
    std::string s = format(backup ? "fd(%d) VoltageLow = %d,  VoltageHigh = %d\n"
                                  : "fd(%d) smartVoltageLow = %d,  smartVoltageHigh = %d\n",
                           fd, byteAt(a, 0), byteAt(a, 1));
    s += format(backup ? "fd(%d) Backup Battery Voltage = %d (0~65535)(unit:mV)\n"
                       : "fd(%d) Smart Battery Voltage = %d (0~65535)(unit:mV)\n",
                fd, wordAt(a, 0));
    return framed(s);
}

std::string renderSmartBatteryTemperature(Bytes a, std::string_view, int fd) {
    BYTE t = byteAt(a, 0);
    if (t & 0x80)
        return framed(
            format("fd(%d) Smart Battery Temperature = -%d (-127 ~ 127)\n", fd, negated(t)));
    return framed(format("fd(%d) Smart Battery Temperature = %d (-127 ~ 127)\n", fd, t));
}

std::string renderBackupBatteryTemperature(Bytes a, std::string_view, int fd) {
    return framed(format("fd(%d) Backup Battery Temperature = %d (0 ~ 140)\n", fd, byteAt(a, 0)));
}

std::string renderSmartBatteryStatus(Bytes a, std::string_view product, int fd) {
    std::string s;
    if (isModel(product, {"KX60"})) {
        // Only byte 0 is tested, so the alarm bits 8-15 never show: the MCU reports the
        // one-byte status here.
        unsigned status = byteAt(a, 0);
        for (unsigned bit = 0; bit < 16; ++bit)
            if (status & (1u << bit)) s += format(KX60_STATUS_BITS[bit], fd);
    } else {
        s = format("fd(%d) smartBatteryStatusLow = %d,  smartBatteryStatusHigh = %d\n", fd,
                   byteAt(a, 0), byteAt(a, 1));
        s += format("fd(%d) Smart Battery Status = %#x\n", fd, wordAt(a, 0));
    }
    return framed(s);
}

std::string renderSmartBatteryCapacity(Bytes a, std::string_view, int fd) {
    return framed(
        format("fd(%d) Smart Battery Capacity = %d (0~100)(unit:percentage)\n", fd, byteAt(a, 0)));
}

std::string renderSmartBatteryCurrent(Bytes a, std::string_view, int fd) {
    return framed(
        format("fd(%d) smartBatteryCurrentLow = %d,  smartBatteryCurrentHigh = %d\n", fd,
               byteAt(a, 0), byteAt(a, 1)) +
        format("fd(%d) Smart Battery Current = %d (0~32768)(unit:mA)\n", fd, wordAt(a, 0)));
}

std::string renderBackupBatteryCurrent(Bytes a, std::string_view, int fd) {
    return framed(
        format("fd(%d) backupBatteryCurrentLow = %d,  backupBatteryCurrentHigh = %d\n", fd,
               byteAt(a, 0), byteAt(a, 1)) +
        format("fd(%d) backup Battery Current = %d (0~32768)(unit:mA)\n", fd, wordAt(a, 0)));
}

std::string renderThresholdSetting(Bytes a, std::string_view, int fd) {
    return framed(format("fd(%d) Threshold Low  = %d (unit:10mV)\n", fd, wordAt(a, 0)) +
                  format("fd(%d) Threshold High = %d (unit:10mV)\n", fd, wordAt(a, 2)));
}

std::string renderDelayTimeStatus(Bytes a, std::string_view, int fd) {
    BYTE code = byteAt(a, 0);
    if (code < std::size(BKP_DELAY_TIME_MINUTES))
        return framed(format("fd(%d) Delay Time : %d min\n", fd, BKP_DELAY_TIME_MINUTES[code]));
    return framed(format("fd(%d) Delay Time : unknow time.(0x%2X)\n", fd, code));
}

std::string renderDelayTimeNow(Bytes a, std::string_view, int fd) {
    return framed(format("fd(%d) Delay Time  = %d \n", fd, wordAt(a, 0)));
}

std::string renderPowerOffValue(Bytes a, std::string_view, int fd) {
    return framed(named(POWER_OFF_VALUES, byteAt(a, 0), fd));
}

std::string renderAutoReboot(Bytes a, std::string_view, int fd) {
    return framed(format((byteAt(a, 0) & 1) ? "fd(%d) Auto reboot is enabled.  \n"
                                            : "fd(%d) Auto reboot is disabled.\n",
                         fd));
}

std::string renderDelayTimeMenu() {
    return shapes::renderStep(shapes::menuStep(SET_DELAY_TIME_CONTROL));
}

}  // namespace bkp

using namespace bkp;

int FUNC_ST_BKP_GET_BACKUP_BATTERY_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderBackupBatteryStatus);
}
int FUNC_ST_BKP_GET_SMART_BATTERY_VOLTAGE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderSmartBatteryVoltage);
}
int FUNC_ST_BKP_GET_SMART_BATTERY_TEMPERATURE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderSmartBatteryTemperature);
}
int FUNC_ST_BKP_GET_BACKUP_BATTERY_TEMPERATURE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderBackupBatteryTemperature);
}
int FUNC_ST_BKP_GET_SMART_BATTERY_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, isModel(productName(), {"KX60"}) ? 1 : 2,
                  renderSmartBatteryStatus);
}
int FUNC_ST_BKP_GET_SMART_BATTERY_CAPACITY(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderSmartBatteryCapacity);
}
int FUNC_ST_BKP_GET_SMART_BATTERY_CURRENT(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderSmartBatteryCurrent);
}
int FUNC_ST_BKP_GET_BACKUP_BATTERY_CURRENT(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderBackupBatteryCurrent);
}
int FUNC_ST_BKP_GET_THRESHOLD_SETTING(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 4, renderThresholdSetting);
}
int FUNC_ST_BKP_GET_DELAY_TIME_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderDelayTimeStatus);
}
int FUNC_ST_BKP_GET_DELAY_TIME_NOW(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderDelayTimeNow);
}
int FUNC_ST_BKP_GET_POWER_OFF_VALUE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderPowerOffValue);
}
int FUNC_ST_BKP_SET_DELAY_TIME_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_DELAY_TIME_CONTROL, cmdIndex, funName);
}
// Its row goes out with the GET command code, which the MCU takes as the setting.
int FUNC_ST_BKP_SET_POWER_OFF_VALUE(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_POWER_OFF_VALUE, cmdIndex, funName);
}
int FUNC_ST_BIOS_GET_AUTO_REBOOT_FUNCTION(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderAutoReboot);
}
int FUNC_ST_BIOS_SET_AUTO_REBOOT_FUNCTION(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_AUTO_REBOOT_FUNCTION, cmdIndex, funName);
}

namespace bkp {

namespace {
const shapes::MenuRef MENU_LIST[] = {
    {FUNC_ST_BKP_SET_DELAY_TIME_CONTROL, SET_DELAY_TIME_CONTROL},
    {FUNC_ST_BKP_SET_POWER_OFF_VALUE, SET_POWER_OFF_VALUE},
    {FUNC_ST_BIOS_SET_AUTO_REBOOT_FUNCTION, SET_AUTO_REBOOT_FUNCTION},
};
}  // namespace

const std::span<const shapes::MenuRef> menuRows = MENU_LIST;

}  // namespace bkp
