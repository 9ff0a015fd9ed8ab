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
    const char* shown;  // a text the output holds ("": no check); %FD is the descriptor
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
// clang-format on

}  // namespace
