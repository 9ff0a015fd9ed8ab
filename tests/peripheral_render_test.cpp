// What the peripheral command groups print, from answer bytes and the product alone:
// no serial line involved.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bkp/bkp_handlers.h"
#include "dsu/dsu_handlers.h"
#include "iot/iot_handlers.h"
#include "ltc3351/ltc3351_handlers.h"
#include "odm/odm_handlers.h"
#include "poe/poe_handlers.h"
#include "shapes/exchange_steps.h"

namespace {

using Bytes = std::vector<BYTE>;
using steps::Render;

const std::string SEP = "==========================\n";
const std::string RULE = std::string(56, '=') + "\n";
const std::string SELECT = "Select which option you want to do:";

std::string framed(const std::string& lines) {
    return SEP + lines + SEP;
}

struct RenderCase {
    Render render;
    Bytes answer;
    std::string expected;
    const char* product = "KX07\n";
};

void expectRenders(const RenderCase* cases, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        const RenderCase& c = cases[i];
        EXPECT_EQ(c.render(c.answer, c.product, 7), c.expected) << "case " << i;
    }
}

// clang-format off
const RenderCase BKP_CASES[] = {
    {bkp::renderBackupBatteryStatus, {3}, framed("Backup Battery Status = 3\nfd(7) Backup Battery Discharge Now.\n")},
    {bkp::renderBackupBatteryStatus, {7}, framed("Backup Battery Status = 7\n")},
    {bkp::renderSmartBatteryVoltage, {0x44, 0x2F},
     framed("fd(7) smartVoltageLow = 68,  smartVoltageHigh = 47\nfd(7) Smart Battery Voltage = 12100 (0~65535)(unit:mV)\n")},
    {bkp::renderSmartBatteryVoltage, {0x44, 0x2F},
     framed("fd(7) VoltageLow = 68,  VoltageHigh = 47\nfd(7) Backup Battery Voltage = 12100 (0~65535)(unit:mV)\n"), "KX29\n"},
    {bkp::renderSmartBatteryTemperature, {128}, framed("fd(7) Smart Battery Temperature = -128 (-127 ~ 127)\n")},
    {bkp::renderSmartBatteryTemperature, {0xFB}, framed("fd(7) Smart Battery Temperature = -5 (-127 ~ 127)\n")},
    {bkp::renderSmartBatteryTemperature, {127}, framed("fd(7) Smart Battery Temperature = 127 (-127 ~ 127)\n")},
    {bkp::renderBackupBatteryTemperature, {0xFB}, framed("fd(7) Backup Battery Temperature = 251 (0 ~ 140)\n")},
    {bkp::renderSmartBatteryStatus, {0xC0, 0x01},
     framed("fd(7) status discharging\nfd(7) status gauge initialized\n"), "KX60\n"},
    {bkp::renderSmartBatteryStatus, {0x40, 0x01},
     framed("fd(7) smartBatteryStatusLow = 64,  smartBatteryStatusHigh = 1\nfd(7) Smart Battery Status = 0x140\n")},
    {bkp::renderSmartBatteryStatus, {0, 0},
     framed("fd(7) smartBatteryStatusLow = 0,  smartBatteryStatusHigh = 0\nfd(7) Smart Battery Status = 0\n")},
    {bkp::renderSmartBatteryCurrent, {0xE8, 0x03},
     framed("fd(7) smartBatteryCurrentLow = 232,  smartBatteryCurrentHigh = 3\nfd(7) Smart Battery Current = 1000 (0~32768)(unit:mA)\n")},
    {bkp::renderBackupBatteryCurrent, {0x10, 0x00},
     framed("fd(7) backupBatteryCurrentLow = 16,  backupBatteryCurrentHigh = 0\nfd(7) backup Battery Current = 16 (0~32768)(unit:mA)\n")},
    {bkp::renderThresholdSetting, {0x4C, 0x04, 0xB0, 0x04},
     framed("fd(7) Threshold Low  = 1100 (unit:10mV)\nfd(7) Threshold High = 1200 (unit:10mV)\n")},
    // A short answer reads zeros past its end.
    {bkp::renderThresholdSetting, {0x4C},
     framed("fd(7) Threshold Low  = 76 (unit:10mV)\nfd(7) Threshold High = 0 (unit:10mV)\n")},
    {bkp::renderDelayTimeStatus, {0}, framed("fd(7) Delay Time : 5 min\n")},
    {bkp::renderDelayTimeStatus, {7}, framed("fd(7) Delay Time : 70 min\n")},
    {bkp::renderDelayTimeStatus, {19}, framed("fd(7) Delay Time : 240 min\n")},
    {bkp::renderDelayTimeStatus, {0x14}, framed("fd(7) Delay Time : unknow time.(0x14)\n")},
    {bkp::renderDelayTimeStatus, {0x0F + 0x10}, framed("fd(7) Delay Time : unknow time.(0x1F)\n")},
    {bkp::renderDelayTimeNow, {0x2D, 0x01}, framed("fd(7) Delay Time  = 301 \n")},
    {bkp::renderPowerOffValue, {1}, framed("fd(7) 60(seconds) \n")},
    {bkp::renderPowerOffValue, {2}, framed("")},
    {bkp::renderSmartBatteryCapacity, {76}, framed("fd(7) Smart Battery Capacity = 76 (0~100)(unit:percentage)\n")},
    {bkp::renderAutoReboot, {3}, framed("fd(7) Auto reboot is enabled.  \n")},
    {bkp::renderAutoReboot, {2}, framed("fd(7) Auto reboot is disabled.\n")},
};
// clang-format on

TEST(PeripheralRender, BatteryAndBios) {
    expectRenders(BKP_CASES, std::size(BKP_CASES));
}

// The delay menu's lines are built from the minutes; the fixed menus are plain rows.
TEST(PeripheralRender, BatteryMenus) {
    std::string delay = bkp::renderDelayTimeMenu();
    EXPECT_EQ(delay.substr(0, delay.find('\n')), "========\tDelay Time Control \t\t========");
    EXPECT_NE(delay.find("\n0.    5 Min.\n1.   10 Min.\n"), std::string::npos);
    EXPECT_NE(delay.find("\n9.   90 Min.\n10. 105 Min.\n"), std::string::npos);
    EXPECT_NE(delay.find("\n19. 240 Min.\n" + RULE + SELECT), std::string::npos);
}

const std::string SEP46 = std::string(46, '=') + "\n";

// clang-format off
const RenderCase LTC3351_CASES[] = {
    {ltc3351::renderCapacitorCount, {4}, framed("fd(7) LTC3351 The number of capacitors = 4\n"), "KX61\n"},
    {ltc3351::renderCapacitorCount, {4}, ""},
    {ltc3351::renderSystemTemperature, {215}, framed("fd(7) Without Battery\n")},
    {ltc3351::renderSystemTemperature, {0xE5}, framed("fd(7) LTC3351 System Temperature = -27 (-27 ~ 125)\n")},
    {ltc3351::renderSystemTemperature, {125}, framed("fd(7) LTC3351 System Temperature = 125 (-27 ~ 125)\n")},
    {ltc3351::renderStandbyVoltage, {0xF0, 0x00}, SEP + "fd(7) LTC3351 24VSB output Voltage = 240 (0~650)(unit:100mV)\n"},
    {ltc3351::renderCapacitorVoltage, {0x8A, 0x02}, SEP + "fd(7) LTC3351 Capacitors output Voltage = 650 (0~650)(unit:100mV)\n"},
    {ltc3351::renderConnections, {0x05}, framed("fd(7) Enable Master connection. \nfd(7) Disable Slave1 connection. \n"
                                                 "fd(7) Enable Slave2 connection. \nfd(7) Disable Slave3 connection. \n"), "KX61\n"},
    {ltc3351::renderConnections, {0x05}, ""},
    {ltc3351::renderVoltType, {0}, SEP46 + "fd(7) LTC3351 Volt type = 2.9V (default) \n" + SEP46, "KX61\n"},
    {ltc3351::renderVoltType, {4}, SEP46 + SEP46, "KX61\n"},
    {ltc3351::renderVoltType, {0}, SEP46 + SEP46},
    {ltc3351::renderChargeState, {3}, SEP46 + "fd(7) LTC3351 Capacitors status = DISCHG_NOW \n" + SEP46, "KX61\n"},
    {ltc3351::renderChargeLevel, {0}, SEP46 + "fd(7) LTC3351 Volt percent = 0% (<6.1V) \n" + SEP46, "KX61\n"},
    {ltc3351::renderChargeLevel, {4}, SEP46 + "fd(7) LTC3351 Volt percent = 80% (<11.54V & >= 10.5V) \n" + SEP46, "KX61\n"},
    {ltc3351::renderHealth, {1}, SEP46 + "fd(7) LTC3351 Capacitors health = BAD \n" + SEP46, "KX61\n"},
    {ltc3351::renderLed, {1}, SEP46 + "fd(7) LTC3351 Capacitors LED turn on \n" + SEP46, "KX61\n"},
    {ltc3351::renderLed, {1}, SEP46 + SEP46, "KX62\n"},
};
// clang-format on

TEST(PeripheralRender, SupercapacitorCharger) {
    expectRenders(LTC3351_CASES, std::size(LTC3351_CASES));
    const Bytes five = {'2', '4', '.', '0', '5'};
    EXPECT_EQ(ltc3351::renderTextValue(0x01, five, "KX61\n", 7),
              framed("fd(7) LTC3351 Input Voltage = 24.05\n"));
    EXPECT_EQ(ltc3351::renderTextValue(0x0B, five, "KX61\n", 7),
              framed("fd(7) LTC3351 CAP4 value = 24.05\n"));
    EXPECT_EQ(ltc3351::renderTextValue(0x01, Bytes(five.begin(), five.end() - 1), "KX61\n", 7), "");
    EXPECT_EQ(ltc3351::renderTextValue(0x01, Bytes{'1', '2', '.', '0', '0', '0'}, "KX61\n", 7), "");
    EXPECT_EQ(ltc3351::renderTextValue(0x01, five, "KX07\n", 7), "");
    EXPECT_EQ(ltc3351::renderVoltTypeMenu(),
              "========\t\tLTC3351 Volt Type\t\t========\nSet Volt type:\n0. 2.9V (Default)\n"
              "1. 2.7V \n2. 2.5V \n3. 2.4V \n" +
                  RULE + SELECT);
    EXPECT_EQ(ltc3351::renderLedMenu(),
              "========\t\tLTC3351 CAP LED\t\t\t========\nSet CAP LED:\n0. Turn off\n"
              "1. Turn on \n" +
                  RULE + SELECT);
}

TEST(PeripheralRender, DisplayUnit) {
    // Raw bytes in decimal, no mapping onto the menu texts.
    EXPECT_EQ(dsu::renderDeviceType(Bytes{200}, "KX07\n", 7), framed("fd(7) Device Type = 200\n"));
    EXPECT_EQ(dsu::renderVideoInputSource(Bytes{4}, "KX07\n", 7),
              framed("fd(7) Video Input Source = 4\n"));
    EXPECT_EQ(dsu::renderAutoBacklightStatus(Bytes{1}, "KX07\n", 7),
              framed("fd(7) Get Auto Backlight Status = 1\n"));
    EXPECT_EQ(dsu::renderPanelMode(Bytes{}, "KX07\n", 7), framed("fd(7) Get Panel Mode = 0\n"));
    const std::string video = "========              Video Input Source        ========\n";
    EXPECT_EQ(dsu::renderMenuOf(FUNC_ST_DSU_SET_VIDEO_CONTROL_MODE),
              video + "0. Auto Mode\n1. Menu Mode\n" + RULE + SELECT);
    EXPECT_EQ(dsu::renderMenuOf(FUNC_ST_DSU_SET_PANEL_CONTROL),
              video + "0. Panel Backlight Disable\n1. Panel Backlight Enable\n" + RULE + SELECT);
    EXPECT_EQ(dsu::renderMenuOf(FUNC_ST_DSU_SET_KEY_SIMULATION),
              "========                Key Simulation          ========\n1. Power\n2. Menu\n3. "
              "Volume Up\n"
              "4. Volume Down\n5. Backlight Up\n6. Backlight Down Key\n7. Auto Key\n" +
                  RULE + SELECT);
    EXPECT_EQ(dsu::renderMenuOf(FUNC_ST_DSU_SET_MUTE_CONTROL),
              "========                Mute Control           ========\n0. Audio Mute Disable\n1. "
              "Audio Mute Enable\n" +
                  RULE + SELECT);
}

// clang-format off
const RenderCase ODM_CASES[] = {
    {odm::renderWwanLed, {0xF6}, framed("fd(7) Signal LED is Yellow.\nfd(7) Service LED is Green.\nfd(7) Command Failure !!!\n")},
    {odm::renderWwanLed, {0x0F}, framed("fd(7) Reserve.\nfd(7) Reserve.\nfd(7) Command OK.\n")},
    {odm::renderWwanLed, {0x50}, framed("fd(7) Signal LED is Off.\nfd(7) Service LED is Off.\n")},
    {odm::renderFlashTime, {11}, framed("fd(7) Unknown.\n")},
    {odm::renderFlashTime, {0}, framed("fd(7) Always Light\n")},
    {odm::renderFlashTime, {10}, framed("fd(7) Flash Time = 1000 (unit:ms)\n")},
    {odm::renderFlashTime, {255}, framed("fd(7) Command error !!!\n")},
    // The service line takes its time from the signal LED's byte.
    {odm::renderWwanFlashTime, {3, 7}, framed("fd(7) Signal LED Flash Time = 300 (unit:ms)\nfd(7) Service LED Flash Time = 300 (unit:ms)\n")},
    {odm::renderWwanFlashTime, {255, 0}, framed("fd(7) Signal LED Command error !!!\nfd(7) Service LED Always Light\n")},
    {odm::renderWwanFlashTime, {0, 12}, framed("fd(7) Signal LED Always Light\nfd(7) Service LED Unknown.\n")},
    {odm::renderSimStatus, {0x05}, framed("fd(7) SIM 1 has plugged in.\nfd(7) SIM 2 has plugged out.\nfd(7) SIM 3 has plugged in.\nfd(7) SIM 4 has plugged out.\n")},
    {odm::renderSimStatus, {0x0E}, framed("fd(7) SIM 1 has plugged out.\nfd(7) SIM 2 has plugged in.\n"), "KX25\n"},
    {odm::renderDelayOnTime, {0x20, 0xFD}, framed("fd(7) Delay On Time = 64800 (0~64800)(unit:Sec)\n")},
    {odm::renderDelayOffTime, {0x3C}, framed("fd(7) Delay Off Time = 60 (0~64800)(unit:Sec)\n")},
};
// clang-format on

TEST(PeripheralRender, OdmBoard) {
    expectRenders(ODM_CASES, std::size(ODM_CASES));
    struct StateCase {
        int (*handler)(int, char*);
        BYTE value;
        std::string line;  // "" : none
    };
    const StateCase states[] = {
        {FUNC_ST_ODM_GET_FACTORY_DEFAULT_STATUS, 255, "fd(7) Keep current setting.\n"},
        {FUNC_ST_ODM_GET_FACTORY_DEFAULT_STATUS, 1, ""},
        {FUNC_ST_ODM_GET_WIFI_LED_STATUS, 255, "fd(7) Out of slot range.\n"},
        {FUNC_ST_ODM_GET_GPS_LED_STATUS, 255, "fd(7) Out of Slot Range.\n"},
        {FUNC_ST_ODM_GET_WAKEUP_EVENT, 6, "fd(7) G-Sensor.\n"},
        {FUNC_ST_ODM_GET_WAKEUP_EVENT, 7, ""},
        {FUNC_ST_ODM_GET_POWER_LED_STATUS, 1, "fd(7) LED On. (Green)(Default)\n"},
        {FUNC_ST_ODM_GET_VINM_FAULT_STATUS, 0, "fd(7) Take Place VINM FAULT.\n"},
        {FUNC_ST_NVR_GET_SHUTDOWN_STATUS, 1, "fd(7) OS has been shutdown.\n"},
        {FUNC_ST_ODM_GET_WWAN_RESET_STATUS, 1, "fd(7) WWAN Reset On\n"},
    };
    for (const StateCase& c : states)
        EXPECT_EQ(odm::renderStateOf(c.handler, Bytes{c.value}, 7), framed(c.line)) << c.line;
}

const std::string SEPT = "\t====================================\n";
const std::string SEPT46 = "\t==============================================\n";
const std::string NUL(1, '\0');

// clang-format off
const RenderCase POE_CASES[] = {
    {poe::renderFwVersion, {0x15, 0x16}, SEPT + "\tfd(7) PSE 1 FW Version = 21\n\tfd(7) PSE 2 FW Version = 22\n" + SEPT},
    {poe::renderFwVersion, {0x16}, SEPT + "\tfd(7) PSE Main Board FW Version = 22\n" + SEPT, "KX73\n"},
    // Signed bytes print their magnitude; KX73 shows the sign, or a NUL byte.
    {poe::renderTemperature, {45, 0xD3}, SEPT + "\tfd(7) PSE 1 Temperature = 45\n\tfd(7) PSE 2 Temperature = 45\n" + SEPT},
    {poe::renderTemperature, {0xF6}, SEPT + "\tfd(7) PSE Main Board Temperature = -10\n" + SEPT, "KX73\n"},
    {poe::renderTemperature, {0x0A}, SEPT + "\tfd(7) PSE Main Board Temperature = " + NUL + "10\n" + SEPT, "KX73\n"},
    {poe::renderTotalConsumption, {18}, SEPT + "\tfd(7) Main Board Total Consumption = 18(W)\n" + SEPT, "KX73\n"},
    {poe::renderTotalConsumption, {12}, SEPT + "\tfd(7) Total Consumption = 12 W\n" + SEPT},
    {poe::renderPoeStatus, {0x01}, SEPT + "\tfd(7) Lan Port 1 Status : Power On \n\tfd(7) Lan Port 2 Status : Power Off \n" + SEPT},
    {poe::renderPoeStatus, {0x45},
     SEPT + "\tfd(7) Lan Port 1 Status : Power On \n\tfd(7) Lan Port 2 Status : Power Off \n"
            "\tfd(7) Lan Port 3 Status : Power On \n\tfd(7) Lan Port 4 Status : Power Off \n"
            "\tfd(7) PoE Port Amount : 4 ports \n\tfd(7) PoE Pok Status : Power not OK \n" + SEPT, "KX08\n"},
    {poe::renderPoeStatus, {0x09},
     SEPT + "\tfd(7) Main Board PSE Lan \t\n\tPort1 Power on\t\n\tPort2 Power off\t\n\tPort3 Power off\t\n\tPort4 Power on\n"
            "\t====================================", "KX73\n"},
    {poe::renderAllPortLink, {0x44, 0x71},
     SEPT46 + "\tfd(7) Port 1 Status : Good , Class 4\n\tfd(7) Port 2 Status : Short , Over Current\n" + SEPT46},
    {poe::renderAllPortLink, {0x44, 0x06, 0x34, 0x71},
     SEPT46 + "\tfd(7) Main board \n\t\tPort1 Good, Class 4\n\t\tPort2 Open Circuit, Unknow\n\t\tPort3 Good, Class 3"
              "\n\t\tPort4 Short, Over-Current.\n\t==============================================", "KX73\n"},
    {poe::renderAllPortLink, {0x44}, "", "KX99\n"},
    {poe::renderPowerBudgetStatus, {60}, framed("fd(7) PoePowerBudget = 60\nfd(7) Poe Power Budget = 60 (0~255)(unit: W)\n"), "KX05\n"},
    {poe::renderPowerBudgetStatus, {60}, framed("fd(7) PoePowerBudget = 60\n"), "KX19\n"},
    {poe::renderIp8008PortStatus, {0x15},
     framed("fd(7) Lan Port 1 POE power on.\nfd(7) Lan Port 2 POE power off.\nfd(7) Lan Port 3 POE power on.\n"
            "fd(7) Lan Port 4 POE power off.\nfd(7) Lan Port 5 POE power on.\n"), "KX59\n"},
    {poe::renderIp8008PortStatus, {0x0F}, framed(""), "KX07\n"},
    {poe::renderLinkStatus, {0x0B},
     SEPT + "\tfd(7) Lan Port 1 Status : Connected \n\tfd(7) Lan Port 2 Status : Connected \n"
            "\tfd(7) Lan Port 3 Status : Not Connected \n\tfd(7) Lan Port 4 Status : Connected \n" + SEPT, "KX39\n"},
    {poe::renderLinkStatus, {0x0B}, ""},
    {poe::renderLinkSpeed, {0xE4},
     SEPT + "\tfd(7) Lan Port 1 Speed : Not connected \n\tfd(7) Lan Port 2 Speed : 10 Mbps \n"
            "\tfd(7) Lan Port 3 Speed : 100 Mbps \n\tfd(7) Lan Port 4 Speed : 1000 Mbps \n" + SEPT, "KX39\n"},
    {poe::renderLinkSpeed, {0xE4}, SEPT + SEPT},
};
// clang-format on

TEST(PeripheralRender, PoeControllersAndSwitch) {
    expectRenders(POE_CASES, std::size(POE_CASES));
    const Bytes seventeen = {17};
    EXPECT_EQ(poe::kx19State(16), "POWER_ON\n");
    EXPECT_EQ(poe::kx19State(17), "");
    EXPECT_EQ(poe::kx19State(21), "");
    EXPECT_EQ(poe::kx19State(6), "SINATURE_INVALID\n");
    EXPECT_EQ(poe::renderKx19Temperature(2, Bytes{0xD3, 0xFB}, 7),
              SEPT + "\tfd(7) PSE 3 Temperature = 45.5\n" + SEPT);
    EXPECT_EQ(poe::renderPortConsumption(3, Bytes{6, 5}, "KX19\n", 7),
              SEPT + "\tfd(7) Port 3 Power Consumption = 6.5 W\n" + SEPT);
    EXPECT_EQ(poe::renderPortConsumption(3, Bytes{7}, "KX07\n", 7),
              SEPT + "\tfd(7) Port 3 Power Consumption = 7 W\n" + SEPT);
    EXPECT_EQ(poe::renderPortConsumption(4, Bytes{12}, "KX73\n", 7),
              "\tfd(7) Main Board Port4 Power Consumption = 12 W\n");
    // IP808 port byte 0xE3: state 3 and all three flags.
    EXPECT_EQ(poe::render808Link(0, 0, Bytes{0xE3}, 7),
              "\tfd(7) Front board Port1 Port State:IDLE ,Start Power Up ,Step State Machine "
              ",Power Up Suspended.");
    EXPECT_EQ(poe::render808Link(1, 7, Bytes{0x1F}, 7),
              "\tfd(7) Rear board Port8 Port State:Error Response.");
    EXPECT_EQ(poe::render808Temperature(1, 8, Bytes{0xFB, 0x03}, 7),
              "\tfd(7) PSE Rear Board Port8 Temperature = -5.253\n");
    EXPECT_EQ(poe::render808Temperature(0, 1, Bytes{41, 5}, 7),
              "\tfd(7) PSE Front Board Port1 Temperature = " + NUL + "41.5\n");
    EXPECT_EQ(
        poe::render808PortStatus(0, Bytes{0x81}, 7),
        SEPT +
            "\tfd(7) Front Board PSE Lan \t\n\tPort1 Power on\t\n\tPort2 Power off\t\n\tPort3 "
            "Power off"
            "\t\n\tPort4 Power off\t\n\tPort5 Power off\t\n\tPort6 Power off\t\n\tPort7 Power off"
            "\t\n\tPort8 Power on\n\t====================================");
    EXPECT_EQ(poe::renderIp8008Link(4, Bytes{36}), "Port5 Port State:CASC SUSPEND.\n");
    EXPECT_EQ(poe::renderIp8008Link(0, Bytes{37}), "Port1 Port State:Error Response.\n");
    EXPECT_EQ(poe::renderIp8008Link(0, seventeen), "Port1 Port State:CLASS_EV2.\n");
    EXPECT_EQ(poe::renderNotSupported("KX07\n"),
              "========  KX07\n does not support this function  ========\n" + RULE);
}

TEST(PeripheralRender, PoePortCounts) {
    struct Count {
        const char* product;
        int ports, control, ip8008;
    };
    const Count counts[] = {
        {"KX40\n", 8, 0, 0}, {"KX41\n", 4, 0, 0}, {"KX19\n", 6, 6, 0}, {"KX58\n", 4, 4, 0},
        {"KX20\n", 2, 2, 0}, {"KX26\n", 0, 2, 0}, {"KX73\n", 4, 4, 0}, {"KX57\n", 0, 0, 4},
        {"KX59\n", 0, 0, 5}, {"KX99\n", 0, 0, 0},
    };
    for (const Count& c : counts) {
        EXPECT_EQ(poe::PoePortCount(c.product), c.ports) << c.product;
        EXPECT_EQ(poe::controlPortCount(c.product), c.control) << c.product;
        EXPECT_EQ(poe::ip8008PortCount(c.product), c.ip8008) << c.product;
    }
}

// clang-format off
const RenderCase IOT_CASES[] = {
    {iot::renderServerPort, {0xBA, 0x13}, framed("fd(7) Server Port = 5050 (0~65535)\n")},
    {iot::renderTrackerDelay, {0xF0, 0x00}, framed("fd(7) Tracker Delay Time = 4 (unit:Minute)\n")},
    {iot::renderTrackerResponse, {59, 0}, "fd(7) Tracker Response Time = 0 (unit:Minute)\n"},
    {iot::renderTrackerResponse, {0xC0, 0xA8}, "fd(7) Tracker Response Time = 720 (unit:Minute)\n"},
    {iot::renderThreshtap, {192}, framed("fd(7) Tracker Threshtap = 12g\n")},
    {iot::renderThreshtap, {100}, framed("")},
    {iot::renderAngle, {222}, framed("fd(7) Tracker Angle = 60\n")},
    {iot::renderAngle, {30}, framed("")},
    {iot::renderPhoneNumber, {'+', '1', '2', ','}, framed("fd(7) Phone Number = +12 \n")},
    {iot::renderPhoneNumber, {','}, framed("fd(7) Phone Number =  \n")},
    {iot::renderSmsContent, {3, 'H', 'i', '!', 0}, "fd(7) SMS Message [ Hi! ] \n"},
    {iot::renderSmsResponseTime, {0xFF, 0xFF}, "fd(7) SMS Response Time = 65535 (0~65535)(unit:Sec)\n"},
};
// clang-format on

TEST(PeripheralRender, IotTracker) {
    expectRenders(IOT_CASES, std::size(IOT_CASES));
    struct TextCase {
        Bytes answer;
        size_t capacity;
        bool accepted;
        std::string text;
    };
    const TextCase texts[] = {
        {{3, 'a', 'b', 'c'}, 64, true, "abc"},
        {{0}, 64, true, ""},
        {{64}, 64, true, ""},                    // the length byte alone: what came
        {{5, 'a', 'b'}, 64, true, "ab"},         // shorter than its length byte
        {{4, 'a', 0, 'c', 'd'}, 64, true, "a"},  // printed up to a NUL
        {{65, 'a'}, 64, false, ""},
        {{129}, 128, false, ""},
        {{}, 64, true, ""},
    };
    for (const TextCase& c : texts) {
        std::string text = "unchanged";
        EXPECT_EQ(iot::iotString(c.answer, c.capacity, &text), c.accepted) << c.text;
        if (c.accepted) {
            EXPECT_EQ(text, c.text);
        }
    }
    EXPECT_EQ(iot::renderText("fd(%d) APN = %s \n", 64,
                              Bytes{8, 'i', 'n', 't', 'e', 'r', 'n', 'e', 't'}, 7),
              "fd(7) APN = internet \n");
    EXPECT_EQ(iot::renderText("fd(%d) APN = %s \n", 64, Bytes{70, 'x'}, 7), "");

    struct WordCase {
        const char* line;
        size_t width;
        bool found;
        std::string word;
    };
    const WordCase words[] = {
        {"internet", 64, true, "internet"},
        {"  \tinternet.apn extra", 64, true, "internet.apn"},
        {"12345678901234567890", 16, true, "1234567890123456"},
        {"+886988123456789012345", 20, true, "+8869881234567890123"},
        {"   ", 16, false, ""},
        {"", 16, false, ""},
    };
    for (const WordCase& c : words) {
        std::string word;
        EXPECT_EQ(iot::firstWord(c.line, c.width, &word), c.found) << c.line;
        if (c.found) {
            EXPECT_EQ(word, c.word) << c.line;
        }
    }
    EXPECT_EQ(iot::iotRequest("8.8.8.8"), (Bytes{7, '8', '.', '8', '.', '8', '.', '8'}));
    EXPECT_EQ(iot::iotRequest(""), Bytes{0});
}

}  // namespace
