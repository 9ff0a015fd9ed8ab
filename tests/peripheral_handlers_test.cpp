// The peripheral command groups end to end: the simulated board on a pseudo-terminal,
// the real link, the table's handler of each row, scripted answers at the prompts, and
// the exact requests the board received (count, order, bytes, pauses).
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "board_fixture.h"
#include "handler_call.h"

namespace {

using Bytes = std::vector<uint8_t>;

const std::string SEP = "==========================\n";

using Outcome = HandlerCall;
constexpr auto call = callHandler;

// One request as the board saw it.
struct Sent {
    uint8_t device, command, address;
    Bytes data;
};

std::string describe(const std::vector<brdsim::Request>& got) {
    std::string s;
    char buf[16];
    for (const auto& r : got) {
        snprintf(buf, sizeof buf, "[%02X %02X %02X:", r.device, r.command, r.address);
        s += buf;
        for (uint8_t b : r.data) {
            snprintf(buf, sizeof buf, " %02X", b);
            s += buf;
        }
        s += "] ";
    }
    return s;
}

void expectSent(const Outcome& o, const std::vector<Sent>& want, const std::string& what) {
    ASSERT_EQ(o.sent.size(), want.size()) << what << ": " << describe(o.sent);
    for (size_t i = 0; i < want.size(); ++i) {
        EXPECT_EQ(o.sent[i].device, want[i].device) << what << " #" << i;
        EXPECT_EQ(o.sent[i].command, want[i].command) << what << " #" << i;
        EXPECT_EQ(o.sent[i].address, want[i].address) << what << " #" << i;
        EXPECT_EQ(o.sent[i].data, want[i].data) << what << " #" << i << ": " << describe(o.sent);
    }
}

struct Case {
    const char* product;
    const char* name;
    std::string input;
    std::vector<Sent> sent;
    std::string shown;  // a text the output holds ("": no check); %FD is the descriptor
    int result = 1;
};

void runCases(const std::vector<Case>& cases) {
    std::string product;
    std::unique_ptr<BoardFixture> board;
    for (const Case& c : cases) {
        if (!board || product != c.product) {
            board.reset();
            board = std::make_unique<BoardFixture>(c.product);
            product = c.product;
        }
        std::string what = std::string(c.product) + " " + c.name;
        Outcome o = call(*board, c.name, c.input);
        EXPECT_EQ(o.result, c.result) << what << "\n" << o.out;
        expectSent(o, c.sent, what);
        std::string shown = c.shown;
        for (size_t at = shown.find("%FD"); at != std::string::npos; at = shown.find("%FD"))
            shown.replace(at, 3, std::to_string(board->fd()));
        if (!shown.empty()) {
            EXPECT_NE(o.out.find(shown), std::string::npos) << what << "\n" << o.out;
        }
    }
}

// clang-format off
TEST(PeripheralHandlers, BatteryAndBios) {
    runCases({
        {"KX07", "ST_BKP_GET_01_01_BACKUP_BATTERY_STATUS", "", {{10, 2, 0x01, {}}},
         "Backup Battery Status = 3\nfd(%FD) Backup Battery Discharge Now.\n"},
        {"KX07", "ST_BKP_SET_0B_01_DELAY_TIME_CONTROL", "20\n7\n", {{10, 3, 0x0B, {7}}},
         "\nSelect Error !!! Please select a option again."},
        {"KX07", "ST_BKP_GET_0B_01_DELAY_TIME_STATUS", "", {{10, 2, 0x0B, {}}}, "Delay Time : 70 min\n"},
        // Set with the GET command code, and read back.
        {"KX07", "ST_BKP_SET_0E_01_POWER_OFF_VALUE", "1\n", {{10, 2, 0x0E, {1}}}, "executed successfully"},
        {"KX07", "ST_BKP_GET_0E_01_POWER_OFF_VALUE", "", {{10, 2, 0x0E, {}}}, "60(seconds) \n"},
        {"KX07", "ST_BIOS_SET_16_01_AUTO_REBOOT_FUNCTION", "", {}, "Auto reboot Control", 0},
        {"KX07", "ST_BIOS_SET_16_01_AUTO_REBOOT_FUNCTION", "0\n", {{5, 3, 0x16, {0}}}, ""},
        {"KX07", "ST_BIOS_GET_16_01_AUTO_REBOOT_FUNCTION", "", {{5, 2, 0x16, {}}}, "Auto reboot is disabled.\n"},
        {"KX29", "ST_BKP_GET_02_02_BACKUP_BATTERY_VOLTAGE", "", {{10, 2, 0x02, {}}}, "Backup Battery Voltage = 12100"},
        {"KX60", "ST_BKP_GET_04_01_SMART_BATTERY_STATUS", "", {{10, 2, 0x04, {}}}, "status discharging\nfd(%FD) status gauge initialized\n" + SEP},
        {"KX07", "ST_BKP_GET_03_01_SMART_BATTERY_TEMPERATURE", "", {{10, 2, 0x03, {}}}, "Smart Battery Temperature = -5 (-127 ~ 127)\n"},
    });
}

TEST(PeripheralHandlers, SupercapacitorCharger) {
    runCases({
        {"KX61", "ST_LTC3351_GET_01_01_INPUT_VOLTAGE", "", {{2, 2, 0x01, {}}}, "fd(%FD) LTC3351 Input Voltage = 24.05\n"},
        // 0xF0 in the answer travels stuffed.
        {"KX61", "ST_LTC3351_GET_0D_01_ADV_VOUT", "", {{2, 2, 0x0D, {}}}, "24VSB output Voltage = 240 (0~650)"},
        {"KX61", "ST_LTC3351_SET_11_01_VOLT_TYPE", "4\n2\n", {{2, 3, 0x11, {2}}}, "Select Error !!!"},
        {"KX61", "ST_LTC3351_GET_11_01_VOLT_TYPE", "", {{2, 2, 0x11, {}}}, "Volt type = 2.5V \n"},
        {"KX61", "ST_LTC3351_GET_14_01_CAP_HEALTH", "", {{2, 2, 0x14, {}}}, "cmdIndex = "},
        // Not fitted: the exchange is made and reported, no lines of its own.
        {"KX07", "ST_LTC3351_GET_12_01_CAP_STATUS", "", {{2, 2, 0x12, {}}}, "successfully.\n" + std::string(56, '=') + "\n" + std::string(46, '=') + "\n" + std::string(46, '=') + "\n"},
    });
}

TEST(PeripheralHandlers, DisplayUnit) {
    runCases({
        {"KX07", "ST_DSU_SET_0C_11_KEY_SIMULATION", "0\n8\n3\n", {{12, 3, 0x11, {3}}}, "Select Error !!! Please select a option again.\n\nSelect Error"},
        {"KX07", "ST_DSU_SET_0C_02_VIDEO_INPUT_SOURCE", "4\n", {{12, 3, 0x02, {4}}}, "4. CVBS4\n"},
        {"KX07", "ST_DSU_GET_0C_02_VIDEO_INPUT_SOURCE", "", {{12, 2, 0x02, {}}}, "fd(%FD) Video Input Source = 4\n"},
        {"KX07", "ST_DSU_GET_0C_01_DEVICE_TYPE", "", {{12, 2, 0x01, {}}}, "fd(%FD) Device Type = 2\n"},
    });
}

TEST(PeripheralHandlers, OdmBoardAndShutdown) {
    runCases({
        // KX25 has one WWAN slot: nothing asked, slot 0 sent.
        {"KX25", "ST_ODM_GET_04_01_WWAN_LED_STATUS", "", {{17, 2, 0x04, {0}}}, "Signal LED is Yellow.\n"},
        {"KX25", "ST_ODM_SET_04_01_WWAN_LED_CONTROL", "1\n2\n", {{17, 3, 0x04, {0, 0x09}}}, "WWAN Service LED Control"},
        {"KX25", "ST_ODM_GET_09_01_SIM_STATUS", "", {{17, 2, 0x09, {}}}, "SIM 2 has plugged out.\n" + SEP},
        {"KX07", "ST_ODM_GET_04_01_WWAN_LED_STATUS", "1\n", {{17, 2, 0x04, {1}}}, "Select WWAN Slot: "},
        {"KX07", "ST_ODM_SET_05_01_WWAN_LED_FLASH_TIME", "1\n11\n3\n0\n", {{17, 3, 0x05, {1, 3, 0}}}, "WWAN Service LED Flash Time"},
        {"KX07", "ST_ODM_GET_05_01_WWAN_LED_FLASH_TIME", "1\n", {{17, 2, 0x05, {1}}}, "Service LED Always Light\n"},
        // Slots remember their own setting.
        {"KX07", "ST_ODM_SET_02_01_WIFI_LED_CONTROL", "1\n1\n", {{17, 3, 0x02, {1, 1}}}, "WIFI LED Control"},
        {"KX07", "ST_ODM_GET_02_01_WIFI_LED_STATUS", "1\n", {{17, 2, 0x02, {1}}}, "fd(%FD) LED On.\n"},
        {"KX07", "ST_ODM_SET_02_01_WIFI_LED_CONTROL", "0\n0\n", {{17, 3, 0x02, {0, 0}}}, ""},
        {"KX07", "ST_ODM_GET_02_01_WIFI_LED_STATUS", "1\n", {{17, 2, 0x02, {1}}}, "fd(%FD) LED On.\n"},
        {"KX07", "ST_ODM_GET_02_01_WIFI_LED_STATUS", "0\n", {{17, 2, 0x02, {0}}}, "fd(%FD) LED Off.\n"},
        {"KX07", "ST_ODM_SET_0A_01_DELAY_ON_TIME", "64801\n64800\n", {{17, 3, 0x0A, {0x20, 0xFD}}}, "Set Delay On Time, EX: 300 (0~64800 Sec) :"},
        {"KX07", "ST_ODM_GET_0A_01_DELAY_ON_TIME", "", {{17, 2, 0x0A, {}}}, "Delay On Time = 64800 (0~64800)(unit:Sec)\n"},
        {"KX07", "ST_ODM_SET_10_01_WWAN_ENABLE_STATUS", "0\n", {{17, 3, 0x10, {0, 0}}}, ""},
        {"KX07", "ST_ODM_GET_10_01_WWAN_ENABLE_STATUS", "", {{17, 2, 0x10, {0}}}, "fd(%FD) WWAN Disable\n"},
        {"KX07", "ST_ODM_SET_01_01_FACTORY_DEFAULT_FLAG", "", {{17, 3, 0x01, {}}}, "executed successfully"},
        {"KX07", "ST_ODM_SET_0F_01_POWER_LED_FLASH_TIME", "11\n10\n", {{17, 3, 0x0F, {10}}},
         "========\tPower LED Flash Time \t\t========\nInput Flash Time (0 ~ 10, 0 is always light, default is 0)(unit:100ms) :"},
        {"KX07", "ST_ODM_GET_0F_01_POWER_LED_FLASH_TIME", "", {{17, 2, 0x0F, {}}}, "fd(%FD) Flash Time = 1000 (unit:ms)\n"},
        {"KX07", "ST_NVR_SET_01_01_SHUTDOWN_FLAG", "1\n", {{9, 3, 0x01, {1}}}, "1. OS start shutdown process.\n"},
        {"KX07", "ST_NVR_GET_01_01_SHUTDOWN_STATUS", "", {{9, 2, 0x01, {}}}, "fd(%FD) OS has been shutdown.\n"},
        // End of input at the second prompt: nothing sent.
        {"KX07", "ST_ODM_SET_03_01_WIFI_LED_FLASH_TIME", "0\n", {}, "WIFI LED Flash Time", 0},
    });
}

Bytes counted(const std::string& text) {
    Bytes b = {static_cast<uint8_t>(text.size())};
    for (char c : text) b.push_back(static_cast<uint8_t>(c));
    return b;
}

TEST(PeripheralHandlers, IotTracker) {
    const std::string apn70(70, 'a');
    const std::string sms130 = "x" + std::string(129, 'y');
    const std::string emoji = "net\xF0\x9F\x98\x80";  // 0xF0 inside the text
    runCases({
        {"KX07", "ST_IOT_SET_04_01_3G_SERVER_PORT", "65536\n5050\n", {{8, 3, 0x04, {0xBA, 0x13}}}, "Select Error"},
        {"KX07", "ST_IOT_GET_04_01_3G_SERVER_PORT", "", {{8, 2, 0x04, {}}}, "Server Port = 5050 (0~65535)\n"},
        {"KX07", "ST_IOT_SET_0B_01_TRACKER_DELAY_TIME", "3\n", {{8, 3, 0x0B, {0xF0, 0x00}}}, "3. 5 minutes.\n"},
        {"KX07", "ST_IOT_GET_0B_01_TRACKER_DELAY_TIME", "", {{8, 2, 0x0B, {}}}, "Tracker Delay Time = 4 (unit:Minute)\n"},
        {"KX07", "ST_IOT_SET_0D_01_TRACKER_THRESHTAP", "2\n", {{8, 3, 0x0D, {192}}}, ""},
        {"KX07", "ST_IOT_GET_0D_01_TRACKER_THRESHTAP", "", {{8, 2, 0x0D, {}}}, "Tracker Threshtap = 12g\n"},
        {"KX07", "ST_IOT_SET_0C_01_TRACKER_RESPONSE_TIME", "5\n", {{8, 3, 0x0C, {0xC0, 0xA8}}}, ""},
        {"KX07", "ST_IOT_SET_08_01_PHONE_NUMBER", "4\n+12\n", {{8, 3, 0x08, {0x04, 0x01, 0x2B, 0x31, 0x32, 0x00, 0x2C}}},
         "Input Phone Number, EX: +886988123456 : "},
        {"KX07", "ST_IOT_GET_08_01_PHONE_NUMBER", "4\n", {{8, 2, 0x08, {4, 1}}}, "fd(%FD) Phone Number = +12 \n"},
        {"KX07", "ST_IOT_GET_08_01_PHONE_NUMBER", "3\n", {{8, 2, 0x08, {3, 1}}}, "fd(%FD) Phone Number = +886988123456 \n"},
        {"KX07", "ST_IOT_SET_08_01_PHONE_NUMBER", "1\n+123456789012345678901234\n",
         {{8, 3, 0x08, {1, 1, '+', '1', '2', '3', '4', '5', '6', '7', '8', '9', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 0, ','}}}, ""},
        // Blank lines and leading blanks are skipped; the first word is cut to the width.
        {"KX07", "ST_IOT_SET_01_01_3G_APN", "\n   internet.apn extra words\n", {{8, 3, 0x01, counted("internet.apn")}},
         "Input APN, EX: internet (maximum 64 character) : " + std::string(56, '=') + "\n"},
        {"KX07", "ST_IOT_SET_01_01_3G_APN", apn70 + "\n", {{8, 3, 0x01, counted(std::string(64, 'a'))}}, ""},
        {"KX07", "ST_IOT_SET_01_01_3G_APN", emoji + "\n", {{8, 3, 0x01, counted(emoji)}}, ""},
        {"KX07", "ST_IOT_GET_01_01_3G_APN", "", {{8, 2, 0x01, {}}}, "fd(%FD) APN = " + emoji + " \n"},
        {"KX07", "ST_IOT_SET_01_01_3G_APN", "\n  \n", {}, "Input Error !!! Please input again.\n", 0},
        {"KX07", "ST_IOT_SET_02_01_3G_DNS", "1\n1.1.1.1\n", {{8, 3, 0x02, {1, 7, '1', '.', '1', '.', '1', '.', '1'}}}, "DNS Index"},
        {"KX07", "ST_IOT_GET_02_01_3G_DNS", "1\n", {{8, 2, 0x02, {1}}}, "fd(%FD) DNS = 1.1.1.1 \n"},
        {"KX07", "ST_IOT_GET_02_01_3G_DNS", "0\n", {{8, 2, 0x02, {0}}}, "fd(%FD) DNS = 8.8.8.8 \n"},
        {"KX07", "ST_IOT_SET_06_01_MACHINE_NAME", "Machine-Name-Too-Long\n", {{8, 3, 0x06, counted("Machine-Name-Too")}}, ""},
        {"KX07", "ST_IOT_GET_05_01_IMEI", "", {{8, 2, 0x05, {}}}, "fd(%FD) IMEI = 356938035643809 \n" + SEP},
        {"KX07", "ST_IOT_SET_12_01_SMS_RESPONSE_TIME", "x\n65535\n", {{8, 3, 0x12, {0xFF, 0xFF}}}, "\nInput Error !!! Please input a number."},
        {"KX07", "ST_IOT_GET_12_01_SMS_RESPONSE_TIME", "", {{8, 2, 0x12, {}}},
         "successfully.\n" + std::string(56, '=') + "\nfd(%FD) SMS Response Time = 65535 (0~65535)(unit:Sec)\n"},
        // The SMS text keeps its inner blanks, is cut at 128, and carries one byte more.
        {"KX07", "ST_IOT_SET_11_01_SMS_CONTENT", "\n   Hello there, world  \n", {{8, 3, 0x11, [] { Bytes b = counted("Hello there, world  "); b.push_back(0); return b; }()}}, ""},
        {"KX07", "ST_IOT_GET_11_01_SMS_CONTENT", "", {{8, 2, 0x11, {}}}, "fd(%FD) SMS Message [ Hello there, world   ] \n"},
        {"KX07", "ST_IOT_SET_11_01_SMS_CONTENT", sms130 + "\n", {{8, 3, 0x11, [&] { Bytes b = counted(sms130.substr(0, 128)); b.push_back(0); return b; }()}}, ""},
    });
}

// A length byte above what the field holds is refused, not copied.
TEST(PeripheralHandlers, IotLongTextRefused) {
    BoardFixture board("KX07");
    Bytes answer = {70};
    answer.resize(71, 'x');
    board.sim.setAnswer(8, 2, 0x03, answer);
    Outcome o = call(board, "ST_IOT_GET_03_01_3G_SERVER_IP", "");
    EXPECT_EQ(o.result, 1);
    EXPECT_EQ(o.out.find("Server IP ="), std::string::npos);
    EXPECT_NE(o.out.find("successfully.\n" + std::string(56, '=') + "\n" + SEP + SEP), std::string::npos) << o.out;
    EXPECT_NE(o.err.find("text of 70 bytes refused"), std::string::npos) << o.err;
    // The stuffed byte travels escaped on the line.
    o = call(board, "ST_IOT_SET_0B_01_TRACKER_DELAY_TIME", "3\n");
    ASSERT_EQ(o.sent.size(), 1u);
    const Bytes& raw = o.sent[0].raw;
    EXPECT_EQ(raw.size(), 1 + 5 + 1 + 1 + 1u);  // start, 08 03 0B F0 00 as F0 00 00, crc, end
}

// A short answer is never read past: zeros are shown and stderr says so, once per answer.
TEST(PeripheralHandlers, ShortAnswersWarn) {
    BoardFixture board("KX07");
    board.sim.setAnswer(10, 2, 0x0A, {0x4C});
    Outcome o = call(board, "ST_BKP_GET_0A_01_THRESHOLD_SETTING", "");
    EXPECT_EQ(o.result, 1);
    EXPECT_NE(o.out.find("Threshold Low  = 76 (unit:10mV)\nfd(" + std::to_string(board.fd()) +
                         ") Threshold High = 0 (unit:10mV)\n"),
              std::string::npos);
    EXPECT_EQ(o.err, "brdctl: short answer to ST_BKP_GET_0A_01_THRESHOLD_SETTING: 1 of 4 bytes\n");

    board.sim.setAnswer(11, 2, 0x0C, {});
    o = call(board, "ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION", "");
    EXPECT_EQ(o.sent.size(), 2u);
    EXPECT_NE(o.out.find("Port 2 Power Consumption = 0 W\n"), std::string::npos);
    EXPECT_EQ(o.err, "brdctl: short answer to ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION: 0 of 1 bytes\n"
                     "brdctl: short answer to ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION: 0 of 1 bytes\n");
}

TEST(PeripheralHandlers, PoeOneExchange) {
    runCases({
        {"KX07", "ST_POE_GET_04_01_PSE_FW_VERSION", "", {{11, 2, 0x04, {}}}, "***\tPSE_FW_VERSION\t***\n"},
        {"KX73", "ST_POE_GET_04_01_PSE_FW_VERSION", "", {{11, 2, 0x04, {0}}}, "PSE Main Board FW Version = 22\n"},
        {"KX73", "ST_POE_GET_10_01_ALL_PORT_LINK_STATUS", "", {{11, 2, 0x10, {0}}}, "\t\tPort4 Short, Over-Current."},
        // A model without PoE: the link status still goes out, the others stay silent.
        {"KX99", "ST_POE_GET_10_01_ALL_PORT_LINK_STATUS", "", {{11, 2, 0x10, {}}}, ""},
        {"KX99", "ST_POE_GET_08_02_POE_STATUS", "", {}, ""},
        {"KX99", "ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION", "", {}, ""},
        {"KX40", "ST_POE_SET_08_01_PORT_POWER_CONTROL", "1\n1\n", {}, ""},
        {"KX07", "ST_POE_SET_2F_01_POE_POWER_BUDGET", "60\n", {}, "========  KX07\n does not support this function  ========\n"},
        {"KX05", "ST_POE_SET_2F_01_POE_POWER_BUDGET", "256\n45\n", {{11, 3, 0x2F, {45}}}, "Set POE POWER BUDGET (0-255)(Unit: W):"},
        {"KX05", "ST_POE_GET_2F_01_POE_POWER_BUDGET", "", {{11, 2, 0x2F, {}}}, "fd(%FD) Poe Power Budget = 45 (0~255)(unit: W)\n"},
        // Port control, then the status bits show it.
        {"KX07", "ST_POE_SET_08_01_PORT_POWER_CONTROL", "3\n2\n1\n", {{11, 3, 0x08, {2, 1}}}, "=====          Port 2 control          =====\n0. Power Off\n1. Power On\n" + std::string(44, '=') +
             "\nSelect which option you want to do:"},
        {"KX07", "ST_POE_GET_08_02_POE_STATUS", "", {{11, 2, 0x08, {}}}, "Lan Port 2 Status : Power On \n"},
        {"KX73", "ST_POE_SET_08_01_PORT_POWER_CONTROL", "4\n0\n", {{11, 3, 0x08, {0, 4, 0}}}, "Control Board\nSelect which port to control(1~4):"},
        {"KX73", "ST_POE_GET_08_02_POE_STATUS", "", {{11, 2, 0x08, {0}}}, "\tPort1 Power on\t\n\tPort2 Power off\t\n\tPort3 Power off\t\n\tPort4 Power off\n"},
        {"KX73", "ST_POE_SET_07_01_808_PORT_POWER_CONTROL", "1\n8\n0\n", {{13, 3, 0x07, {1, 8, 0}}}, "1. Power On\nSelect which option you wnat to do:" + std::string(44, '=') + "\n"},
        {"KX07", "ST_POE_SET_07_01_808_PORT_POWER_CONTROL", "1\n8\n0\n", {}, "", 0},
        {"KX39", "ST_LANSWCH_GET_03_01_PORT_LINK_SPEED", "", {{13, 2, 0x03, {}}}, "Lan Port 4 Speed : 1000 Mbps \n"},
        {"KX39", "ST_LANSWCH_GET_01_01_CHIP_ID", "", {{13, 2, 0x01, {}}}, "\tfd(%FD) MSB Chip ID = 97\n"},
        {"KX57", "ST_IP8008_SET_07_01_PORT_POWER_CONTROL", "2\n1\n", {{13, 3, 0x07, {1, 2, 1}}}, "executed successfully"},
        {"KX57", "ST_IP8008_GET_07_01_PORT_STATUS", "", {{13, 2, 0x07, {0}}}, "fd(%FD) Lan Port 3 POE power off.\n"},
        {"KX59", "ST_IP8008_SET_07_01_PORT_POWER_CONTROL", "5\n0\n", {{13, 3, 0x07, {0, 5, 0}}}, ""},
        {"KX59", "ST_IP8008_GET_02_01_FW_VERSION", "", {{13, 2, 0x02, {0}}}, "fd(%FD) IP8008 FW Version = 49\n"},
        {"KX07", "ST_IP8008_GET_02_01_FW_VERSION", "", {{13, 2, 0x02, {0}}}, "successfully.\n" + std::string(56, '=') + "\n"},
        {"KX59", "ST_IP8008_GET_04_01_TOTAL_CONSUMPTION", "", {{13, 2, 0x04, {0}}},
         "fd(%FD) Total Integer Power Consumption = 15. (Unit: W)\nfd(%FD) Total Fract Power Consumption = 25. (Unit: W)\n"},
        {"KX19", "ST_POE_GET_08_02_POE_STATUS", "", {{11, 2, 0x08, {}}}, "Lan Port 6 Status : Power Off \n\t===="},
        {"KX73", "ST_POE_GET_04_01_808_TOTAL_CONSUMPTION", "", {{13, 2, 0x04, {0}}, {13, 2, 0x04, {1}}}, "Rear Board Total Consumption = 30(W)\n"},
        {"KX07", "ST_LANSWCH_GET_02_01_PORT_LINK_STATUS", "", {{13, 2, 0x02, {}}}, "***\tGET_PORT_LINK_STATUS\t***\n"},
        // On other models no port is ever accepted: asked again until the input ends.
        {"KX07", "ST_IP8008_SET_07_01_PORT_POWER_CONTROL", "1\n0\n", {}, "Select which port to control(1~0):\nSelect Error", 0},
    });
}

// One request per port or board, in order, with the pause after each.
struct LoopCase {
    const char* product;
    const char* name;
    std::vector<Sent> sent;
    int pauseMs;  // after every request
    const char* shown;
};

Sent s2(uint8_t dev, uint8_t addr, Bytes data) {
    return {dev, 2, addr, std::move(data)};
}

std::vector<Sent> perBoardPort(uint8_t addr, int first) {
    std::vector<Sent> v;
    for (int b = 0; b < 2; ++b)
        for (int p = 0; p < 8; ++p) v.push_back(s2(13, addr, {uint8_t(b), uint8_t(p + first)}));
    return v;
}

TEST(PeripheralHandlers, PoePerPortLoops) {
    const LoopCase cases[] = {
        {"KX07", "ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION", {s2(11, 0x0C, {1}), s2(11, 0x0C, {2})}, 100,
         "Port 2 Power Consumption = 5 W\n"},
        {"KX19", "ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION",
         {s2(11, 0x0C, {1}), s2(11, 0x0C, {2}), s2(11, 0x0C, {3}), s2(11, 0x0C, {4}), s2(11, 0x0C, {5}), s2(11, 0x0C, {6})}, 100,
         "Port 6 Power Consumption = 12.5 W\n"},
        {"KX73", "ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION",
         {s2(11, 0x0C, {0, 1}), s2(11, 0x0C, {0, 2}), s2(11, 0x0C, {0, 3}), s2(11, 0x0C, {0, 4})}, 10,
         "Main Board Port4 Power Consumption = 12 W\n\t===================================="},
        {"KX19", "ST_POE_GET_05_01_PSE_TEMPERATURE",
         {s2(11, 0x05, {0}), s2(11, 0x05, {1}), s2(11, 0x05, {2}), s2(11, 0x05, {3}), s2(11, 0x05, {4}), s2(11, 0x05, {5})}, 0,
         "PSE 6 Temperature = 45.5\n"},
        {"KX19", "ST_POE_GET_10_01_ALL_PORT_LINK_STATUS",
         {s2(11, 0x10, {0}), s2(11, 0x10, {1}), s2(11, 0x10, {2}), s2(11, 0x10, {3}), s2(11, 0x10, {4}), s2(11, 0x10, {5})}, 0,
         "Port 3 Status : ========================================================\n"},
        {"KX73", "ST_POE_GET_02_01_808_PSE_FW_VERSION", {s2(13, 0x02, {0}), s2(13, 0x02, {1})}, 10,
         "PSE Rear  Board FW Version = 22\n"},
        {"KX73", "ST_POE_GET_07_01_808_PORT_STATUS", {s2(13, 0x07, {0}), s2(13, 0x07, {1})}, 10, "Rear Board PSE Lan "},
        {"KX73", "ST_POE_GET_03_01_808_PSE_TEMPERATURE", perBoardPort(0x03, 0), 10, "PSE Rear Board Port8 Temperature = -5.0\n"},
        {"KX73", "ST_POE_GET_0C_01_808_PORT_POWER_CONSUMPTION", perBoardPort(0x0C, 1), 10, "Rear Board Port8 Power Consumption = 16 W\n"},
        {"KX73", "ST_POE_GET_10_01_808_ALL_PORT_LINK_STATUS", perBoardPort(0x10, 0), 10,
         "Front board Port8 Port State:IDLE ,Start Power Up ,Step State Machine ,Power Up Suspended."},
        {"KX57", "ST_IP8008_GET_0C_01_PORT_POWER_CONSUMPTION",
         {s2(13, 0x0C, {0, 1}), s2(13, 0x0C, {0, 2}), s2(13, 0x0C, {0, 3}), s2(13, 0x0C, {0, 4})}, 200,
         "fd(%FD) Port 4 Fract Power Consumption = 40. (Unit: W)\n"},
        {"KX59", "ST_IP8008_GET_10_01_ALL_PORT_LINK_STATUS",
         {s2(13, 0x10, {0, 0}), s2(13, 0x10, {0, 1}), s2(13, 0x10, {0, 2}), s2(13, 0x10, {0, 3}), s2(13, 0x10, {0, 4})}, 200,
         "Port5 Port State:CASC SUSPEND.\n"},
        // Other models: nothing sent.
        {"KX07", "ST_POE_GET_03_01_808_PSE_TEMPERATURE", {}, 0, ""},
        {"KX07", "ST_IP8008_GET_10_01_ALL_PORT_LINK_STATUS", {}, 0, ""},
    };
    for (const LoopCase& c : cases) {
        BoardFixture board(c.product);
        std::string what = std::string(c.product) + " " + c.name;
        Outcome o = call(board, c.name, "");
        expectSent(o, c.sent, what);
        EXPECT_GE(o.ms, 0.9 * c.pauseMs * static_cast<double>(c.sent.size())) << what;
        std::string shown = c.shown;
        if (size_t at = shown.find("%FD"); at != std::string::npos) shown.replace(at, 3, std::to_string(board.fd()));
        EXPECT_NE(o.out.find(shown), std::string::npos) << what << "\n" << o.out;
    }
}

// A request that gets no answer is reported and the loop goes on; the result is the
// last request's.
TEST(PeripheralHandlers, PoeLoopGoesOnAfterAFailure) {
    BoardFixture board("KX57");
    board.sim.queueFault({brdsim::FaultKind::NoAnswer});
    board.sim.queueFault({brdsim::FaultKind::NoAnswer});
    Outcome o = call(board, "ST_IP8008_GET_0C_01_PORT_POWER_CONSUMPTION", "");
    EXPECT_EQ(o.sent.size(), 4u);
    EXPECT_EQ(o.result, 1);
    EXPECT_NE(o.out.find("Request Timeout"), std::string::npos);
    EXPECT_EQ(o.out.find("Port 1 Integer"), std::string::npos);
    EXPECT_NE(o.out.find("Port 3 Integer Power Consumption = 6. (Unit: W)"), std::string::npos);


    // The last port unanswered: the handler ends with its failure.
    board.sim.queueFault({brdsim::FaultKind::LateAnswer, 0, 3});
    board.sim.queueFault({brdsim::FaultKind::NoAnswer});
    o = call(board, "ST_IP8008_GET_0C_01_PORT_POWER_CONSUMPTION", "");
    EXPECT_EQ(o.sent.size(), 4u);
    EXPECT_EQ(o.result, MCU_RESULT_TIMEOUT);
    EXPECT_NE(o.out.find("Port 3 Integer"), std::string::npos);
}
// clang-format on

}  // namespace
