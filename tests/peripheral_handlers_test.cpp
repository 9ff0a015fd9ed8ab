// The peripheral command groups end to end: the simulated board on a pseudo-terminal,
// the real link, the table's handler of each row, scripted answers at the prompts, and
// the exact requests the board received (count, order, bytes, pauses).
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "board_fixture.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;

const std::string SEP = "==========================\n";

struct Outcome {
    int result = 0;
    std::string out, err;
    std::vector<brdsim::Request> sent;
    double ms = 0;
};

Outcome call(BoardFixture& board, const std::string& name, const std::string& input) {
    board.sim.clearRequests();
    Outcome r;
    testing::internal::CaptureStderr();
    auto t0 = Clock::now();
    r.result = board.run(name, input, &r.out);
    r.ms = std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
    r.err = testing::internal::GetCapturedStderr();
    r.sent = board.sim.requests();
    return r;
}

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
    const char* input;
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
        {"KX07", "ST_NVR_SET_01_01_SHUTDOWN_FLAG", "1\n", {{9, 3, 0x01, {1}}}, "1. OS start shutdown process.\n"},
        {"KX07", "ST_NVR_GET_01_01_SHUTDOWN_STATUS", "", {{9, 2, 0x01, {}}}, "fd(%FD) OS has been shutdown.\n"},
        // End of input at the second prompt: nothing sent.
        {"KX07", "ST_ODM_SET_03_01_WIFI_LED_FLASH_TIME", "0\n", {}, "WIFI LED Flash Time", 0},
    });
}
// clang-format on

}  // namespace
