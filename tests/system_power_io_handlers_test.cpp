// The power, version, identity, I/O, fan and radio handlers end to end: the simulated
// board on a pseudo-terminal, the real link, the table's handler of each row, scripted
// answers at the prompts, and the exact requests the board received.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "board_fixture.h"
#include "run_program.h"
#include "system/system_bespoke.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Outcome {
    int result = 0;
    std::string out, err;
    std::vector<brdsim::Request> sent;
};

Outcome call(BoardFixture& board, const std::string& name, const std::string& input) {
    board.sim.clearRequests();
    Outcome r;
    testing::internal::CaptureStderr();
    r.result = board.run(name, input, &r.out);
    r.err = testing::internal::GetCapturedStderr();
    r.sent = board.sim.requests();
    return r;
}

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

Bytes dataOf(const std::vector<brdsim::Request>& sent, size_t i) {
    return i < sent.size() ? sent[i].data : Bytes{99};
}

// One guided SET: what is typed, the one request that goes out.
struct SetCase {
    const char* product;
    const char* name;
    const char* input;
    Bytes data;
    const char* shown;  // a text the dialogue shows exactly once
};

// clang-format off
const SetCase SET_CASES[] = {
    // Power.
    {"KX07", "ST_SYSTEM_SET_10_01_POWER_TYPE", "1\n", {0x01}, "1. Reserved (9~36V)\n"},
    {"KX70", "ST_SYSTEM_SET_10_01_POWER_TYPE", "4\n2\n", {0x02}, "0. 9 ~ 48V (Default)\n"},
    {"KX07", "ST_SYSTEM_SET_11_01_DELAY_TIME_OPTION", "1\n3\n0\n", {0x43}, "3. 10 minute\n"},
    {"KX07", "ST_SYSTEM_SET_11_01_DELAY_TIME_OPTION", "0\n1\n2\n", {0x90}, "1. Delay On Enable \n"},
    {"KX07", "ST_SYSTEM_SET_11_01_DELAY_TIME_OPTION", "0\n0\n", {0x00}, "Delay on Control"},
    {"KX07", "ST_SYSTEM_SET_12_01_STARTUP_SHUTDOWN_OPTION", "3\n", {0x03},
     "3.  12.5V  11.5V            25.0V   23.0V\n"},
    {"KX12", "ST_SYSTEM_SET_1C_01_WATCHDOG_CONTROL", "1\n1\n", {0x81},
     "0. Seconds (Default)\n1. Minutes\n=======================================================      =\n"},
    {"KX02", "ST_SYSTEM_SET_1C_01_WATCHDOG_CONTROL", "1\n", {0x80}, "1. Watchdog Enable.\n"},
    {"KX07", "ST_SYSTEM_SET_1D_01_WATCHDOG_TIMER", "2\n3\n", {0x03},
     "\nSelect Error !!! Please select a option again."},
    {"KX71", "ST_SYSTEM_SET_1D_01_WATCHDOG_TIMER", "255\n", {0xFF}, "otherwise, use seconds(Sec)"},
    // I/O lines.
    {"KX07", "ST_SYSTEM_SET_26_01_MDIO_MODE_CONTROL", "3\n1\n0\n2\n", {0x01}, "MDIO 3 Control"},
    {"KX07", "ST_SYSTEM_SET_2E_01_GPIO_MODE_CONTROL", "1\n1\n1\n1\n1\n1\n1\n1\n", {0xFF}, "GPIO 8 Control"},
    {"KX07", "ST_SYSTEM_SET_3A_01_GPI_ACTIVE_MODE", "0\n1\n", {0x02}, "GPI34 Active mode Control"},
    {"KX07", "ST_SYSTEM_SET_3B_01_GPO_PULLUP_MODE", "1\n0\n", {0x01}, "GPO12 Pull up Control \t\t========\n0. Internal pull high (default)\n"},
    {"KX02", "ST_SYSTEM_SET_3B_01_GPO_PULLUP_MODE", "1\n1\n", {0x03}, "GPO34 Pull up Control \t\t========\n0. Internal pull high\n1."},
    {"KX21", "ST_SYSTEM_SET_21_01_MDO_CONTROL", "1\n0\n0\n1\n", {0x09}, "1. MDO4 Pin to High\n"},
    {"KX07", "ST_SYSTEM_SET_21_01_MDO_CONTROL", "2\n1\n1\n", {0x03}, "Set GPO or MDO Count (1-7):"},
    // Fans, transceivers, key lock.
    {"KX64", "ST_SYSTEM_SET_41_01_FAN_VALUE", "40\n60\n", {0, 40, 60}, "Set GRAPHICS FAN Value      ===="},
    {"KX07", "ST_SYSTEM_SET_41_01_FAN_VALUE", "101\n10\n20\n30\n", {10, 20, 30}, "Select Error"},
    {"KX07", "ST_SYSTEM_SET_46_01_SP339A_MODE", "2\n1\n1\n0\n", {0x16}, "Set SP339A-2 terminal Control"},
    {"KX35", "ST_SYSTEM_SET_48_01_KEY_LOCK_CONTROL", "1\n0\n1\n1\n", {0x0D}, "========                Function Key Lock                ========\n"},
    {"KX30", "ST_SYSTEM_SET_48_01_KEY_LOCK_CONTROL", "0\n1\n1\n", {0x06}, "1. MUTE Key Lock On\n"},
    {"KX07", "ST_SYSTEM_SET_48_01_KEY_LOCK_CONTROL", "3\n1\n", {0x01}, "(Unusable)\n3."},
    // Radios and the rest of the system rows.
    {"KX07", "ST_SYSTEM_SET_15_01_WWAN_CONTROL", "0\n", {0x00}, "1. WWAN Power On.\n"},
    {"KX07", "ST_SYSTEM_SET_2D_01_SIM_CARD_SELECT", "1\n", {0x01}, "1. SIM Card 2.\n"},
    {"KX07", "ST_SYSTEM_SET_21_02_GPO_CONTROL", "1\n0\n0\n1\n", {0x09}, "GPO Control - GPO4"},
    {"KX07", "ST_SYSTEM_SET_40_01_PCIE_SATA_CONTROL", "1\n", {0x01}, "1. SATA.\n"},
    {"KX07", "ST_SYSTEM_SET_34_02_PROGRAM_LED2_CONTROL", "2\n", {0x02}, "Program LED2 Control"},
    {"KX07", "ST_SYSTEM_SET_45_01_AST", "AST-1 rest\n", {'A', 'S', 'T', '-', '1', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
     "Input AST (at most 16 characters) : "},
};
// clang-format on

TEST(SystemPowerIoHandlers, GuidedSetsSendExactly) {
    for (const SetCase& c : SET_CASES) {
        BoardFixture board(c.product);
        Outcome r = call(board, c.name, c.input);
        SCOPED_TRACE(std::string(c.product) + " " + c.name + "\n" + r.out + r.err);
        EXPECT_EQ(r.result, 1);
        EXPECT_EQ(count(r.out, c.shown), 1u);
        ASSERT_EQ(r.sent.size(), 1u);
        EXPECT_EQ(std::tuple(r.sent[0].command, r.sent[0].data), std::tuple(3, c.data));
    }
}

// A SET is remembered by the board: the matching GET shows it.
TEST(SystemPowerIoHandlers, GetAfterSetShowsTheChange) {
    struct {
        const char* product;
        const char* set;
        const char* input;
        const char* get;
        const char* getInput;
        std::string line;
    } cases[] = {
        {"KX07", "ST_SYSTEM_SET_11_01_DELAY_TIME_OPTION", "1\n3\n0\n",
         "ST_SYSTEM_GET_11_01_DELAY_TIME_OPTION", "", "Delay Off Time = 10 Minutes"},
        // Minutes and enabled: the status compares the whole byte and says "Sec".
        {"KX07", "ST_SYSTEM_SET_1C_01_WATCHDOG_CONTROL", "1\n1\n",
         "ST_SYSTEM_GET_1C_01_WATCHDOG_CONFIGURE", "", "Watchdog Timer Enable.\n"},
        {"KX07", "ST_SYSTEM_SET_1D_01_WATCHDOG_TIMER", "200\n",
         "ST_SYSTEM_GET_1C_01_WATCHDOG_CONFIGURE", "", "Watchdog Time = 200 Min (3~255)"},
        {"KX07", "ST_SYSTEM_SET_15_01_WWAN_CONTROL", "0\n", "ST_SYSTEM_GET_15_01_WWAN_STATUS", "",
         "WWAN Power Off\n"},
        {"KX07", "ST_SYSTEM_SET_21_02_GPO_CONTROL", "0\n1\n0\n0\n",
         "ST_SYSTEM_GET_21_03_GPO_STATUS", "", "GPO2 High.\n"},
        {"KX07", "ST_SYSTEM_SET_45_01_AST", "NEW-AST\n", "ST_SYSTEM_GET_45_01_AST", "",
         "Read AST = NEW-AST\n"},
        {"KX07", "ST_SYSTEM_SET_06_01_SYSTEM_PARAMETER", "0\n0A0B0C0D0E0F\n",
         "ST_SYSTEM_GET_06_01_SYSTEM_PARAMETER", "", "System Parameter MAC:0A0B0C0D0E0F\n"},
        {"KX12", "ST_SYSTEM_SET_06_01_SYSTEM_PARAMETER", "2\nASSY-0123456789ABCDEF\n",
         "ST_SYSTEM_GET_06_01_SYSTEM_PARAMETER", "", "SOM ASSY:ASSY-0123456789A\n"},
        {"KX07", "ST_SYSTEM_SET_5D_01_MACHINE_PARAMETER", "7\nA1B2\n",
         "ST_SYSTEM_GET_5D_01_MACHINE_PARAMETER", "7\n", "Parameter 0:0xA1 0xB2 0x00 "},
        {"KX07", "ST_SYSTEM_SET_23_01_G_SENSOR_DATA", "2C\n5a\n",
         "ST_SYSTEM_GET_25_04_GSENSOR_DATA", "2c\n", "Data 0x2c = 0x5a\n"},
        {"KX07", "ST_SYSTEM_SET_27_01_I_BUTTON_KEY", "3\n1\n11\n12\n13\n14\n15\n16\nAA\n",
         "ST_SYSTEM_GET_27_02_I_BUTTON_KEY", "3\n", "Key Data [0] = 0x1\n"},
        {"KX07", "ST_SYSTEM_SET_29_01_RFID_KEY", "4\n12345\n", "ST_SYSTEM_GET_29_01_RFID_KEY",
         "4\n", "Key Data [4] = 0x35\n"},
    };
    for (const auto& c : cases) {
        BoardFixture board(c.product);
        Outcome s = call(board, c.set, c.input);
        Outcome g = call(board, c.get, c.getInput);
        SCOPED_TRACE(std::string(c.set) + "\n" + s.out + s.err + g.out + g.err);
        EXPECT_EQ(s.result, 1);
        EXPECT_EQ(g.result, 1);
        EXPECT_EQ(count(g.out, c.line), 1u);
    }
}

// The multi-exchange reads: one request per record in order, and a failed exchange in
// the middle is reported while the run goes on.
TEST(SystemPowerIoHandlers, RecordLoopsGoOnAfterAFailure) {
    struct {
        const char* name;
        const char* input;
        size_t records;
        std::string failedRecord;  // what the failed record prints
    } cases[] = {
        {"ST_SYSTEM_GET_06_01_SYSTEM_PARAMETER", "", 3, "System Parameter SOM S/N:is Empty\n"},
        {"ST_SYSTEM_GET_5D_01_MACHINE_PARAMETER", "16\n", 16, "Parameter 1:0x00 0x00 0x00 "},
    };
    for (const auto& c : cases) {
        BoardFixture board("KX07");
        board.sim.queueFault({brdsim::FaultKind::NoAnswer, 0, 1, 1});  // the second exchange
        auto start = std::chrono::steady_clock::now();
        Outcome r = call(board, c.name, c.input);
        auto elapsed = std::chrono::steady_clock::now() - start;
        SCOPED_TRACE(std::string(c.name) + "\n" + r.out + r.err);
        ASSERT_EQ(r.sent.size(), c.records);
        for (size_t i = 0; i < c.records; ++i) EXPECT_EQ(dataOf(r.sent, i), Bytes{uint8_t(i)});
        EXPECT_EQ(count(r.out, "Request Timeout !!!"), 1u);
        EXPECT_EQ(count(r.out, " command executed successfully.\n"), c.records - 1);
        EXPECT_EQ(count(r.out, c.failedRecord), 1u);
        EXPECT_EQ(r.result, 1);  // the last record's verdict
        // The MCU is given 100 ms after each record.
        EXPECT_GE(elapsed, std::chrono::milliseconds(100 * (c.records - 1)));
    }
    // A single machine-parameter record shows 0 in its header, whatever the index.
    BoardFixture board("KX07");
    Outcome r = call(board, "ST_SYSTEM_GET_5D_01_MACHINE_PARAMETER", "5\n");
    ASSERT_EQ(r.sent.size(), 1u);
    EXPECT_EQ(r.sent[0].data, Bytes{5});
    EXPECT_EQ(count(r.out, "\tfd(" + std::to_string(board.fd()) + ") Parameter 0:0x50 0x51 "), 1u);
    // ... and, outside "Show All", nothing of its own after a failed exchange.
    board.sim.queueFault({brdsim::FaultKind::NoAnswer});
    r = call(board, "ST_SYSTEM_GET_5D_01_MACHINE_PARAMETER", "5\n");
    EXPECT_EQ(r.result, MCU_RESULT_TIMEOUT);
    EXPECT_EQ(r.out.find(") Parameter"), std::string::npos) << r.out;
}

// Text and hexadecimal entry: padding, cut-off and each handler's own rules.
TEST(SystemPowerIoHandlers, TextAndHexEntry) {
    Bytes mac = {0, 0x00, 0x1B, 0x00, 0x0C};  // "zz" is no hex pair: 0
    mac.resize(17, 0);
    Bytes serial = {1, 'S', 'N', '1'};
    serial.resize(17, 0);
    Bytes machine = {3, 0x01, 0x02};
    machine.resize(65, 0);
    Bytes rfid = {2, 1, '1', '2', '3', '4', '5', 0, 0, 0, 0, 0, 0x0D, 0x0A, ','};
    Bytes ibutton = {9, 1, 0xAA, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11, 0x01, ','};
    struct {
        const char* product;
        const char* name;
        const char* input;
        int result;
        Bytes data;  // empty: nothing sent
        const char* shown;
    } cases[] = {
        {"KX07", "ST_SYSTEM_SET_06_01_SYSTEM_PARAMETER", "0\n001Bzz0C\n", 1, mac,
         "Enter Ethernet MAC: "},
        {"KX07", "ST_SYSTEM_SET_06_01_SYSTEM_PARAMETER", "1\n\nSN1 trailing words\n", 1, serial,
         "Enter SoM Board Serial Number:"},
        {"KX02", "ST_SYSTEM_SET_06_01_SYSTEM_PARAMETER", "1\nSN1\n", 1, {}, ""},
        {"KX07",
         "ST_SYSTEM_SET_5D_01_MACHINE_PARAMETER",
         "3\n123\n",
         -1,
         {},
         "Error: Input length must be even (2 hex digits per       byte).\n"},
        {"KX07", "ST_SYSTEM_SET_5D_01_MACHINE_PARAMETER", "3\n0102\n", 1, machine, "0xFF):"},
        {"KX22", "ST_SYSTEM_SET_5D_01_MACHINE_PARAMETER", "3\n0102\n", 1, {}, ""},
        {"KX07", "ST_SYSTEM_SET_29_01_RFID_KEY", "2\n12345\n", 1, rfid, "data[14] = 0x2c\n"},
        {"KX07", "ST_SYSTEM_SET_24_04_I_BUTTON_KEY", "A\nzz\n9\n01\n11\n12\n13\n14\n15\n16\nAA\n",
         1, ibutton,
         "Input I-Button Key error !!! Please input again.\nInput I-Button Key Index is"},
        {"KX07",
         "ST_SYSTEM_SET_22_01_G_SENSOR_DATA",
         "2B\nzz\n0x2C\n1FF\n",
         1,
         {0x2C, 1, 0xFF},
         "Input G-Sensor Register Index error !!! Please input again.\n"},
        {"KX07",
         "ST_SYSTEM_SET_22_01_G_SENSOR_DATA",
         "zz\n38\n7\n",
         1,
         {0x38, 1, 7},
         "Input Error !!! Please input a number.\n"},
        // A GET takes an index that is not hexadecimal as 0, and refuses one too large.
        {"KX07", "ST_SYSTEM_GET_23_01_GSENSOR_DATA", "zz\n", 1, {0, 1}, "Register Index = 0\n"},
        {"KX07",
         "ST_SYSTEM_GET_23_01_GSENSOR_DATA",
         "3A\n39\n",
         1,
         {0x39, 1},
         "Input Register Index error !!! Please try again.\n\nInput Register Index 0x(00-39) : "},
        {"KX07",
         "ST_SYSTEM_GET_27_02_I_BUTTON_KEY",
         "32\n31\n",
         1,
         {0x31, 1},
         "Key Index = 0x31\n"},
        {"KX07",
         "ST_SYSTEM_GET_29_01_RFID_KEY",
         "0A\n9\n",
         1,
         {9, 1},
         "Input RFID Key Index error"},
        // End of input sends nothing.
        {"KX07", "ST_SYSTEM_SET_23_01_G_SENSOR_DATA", "2C\n", 0, {}, "Register Index = 0x2c\n"},
        {"KX07", "ST_SYSTEM_SET_29_01_RFID_KEY", "1\n", 0, {}, "RFID Key Index = 0x1\n"},
    };
    for (const auto& c : cases) {
        BoardFixture board(c.product);
        Outcome r = call(board, c.name, c.input);
        SCOPED_TRACE(std::string(c.product) + " " + c.name + " <" + c.input + ">\n" + r.out +
                     r.err);
        EXPECT_EQ(r.result, c.result);
        if (*c.shown) {
            EXPECT_EQ(count(r.out, c.shown), 1u);
        } else {
            EXPECT_EQ(r.out, "");
        }
        if (c.data.empty()) {
            EXPECT_TRUE(r.sent.empty());
        } else {
            ASSERT_EQ(r.sent.size(), 1u);
            EXPECT_EQ(r.sent[0].data, c.data);
        }
    }
}

TEST(SystemPowerIoHandlers, RefusalsAndShortAnswers) {
    // Power type on a product without a menu: the banner, nothing sent, reported as done.
    BoardFixture board("KX66");
    Outcome r = call(board, "ST_SYSTEM_SET_10_01_POWER_TYPE", "");
    EXPECT_EQ(r.result, 1);
    EXPECT_TRUE(r.sent.empty());
    EXPECT_EQ(r.out, "========  KX66\n does not support this function  ========\n" +
                         std::string(56, '=') + "\n");

    // The board id serves one product; others send nothing and print nothing.
    r = call(board, "ST_SYSTEM_GET_50_01_BOARD_ID", "");
    EXPECT_EQ(std::tuple(r.result, r.out, r.sent.size()), std::tuple(0, "", 0u));

    // A short answer: one stderr line, stdout as the handler prints it.
    board.sim.setAnswer(0, 2, 0x1C, {0x80});
    r = call(board, "ST_SYSTEM_GET_1C_01_WATCHDOG_CONFIGURE", "");
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(
        count(r.err, ": short answer to ST_SYSTEM_GET_1C_01_WATCHDOG_CONFIGURE: 1 of 2 bytes\n"),
        1u);
    EXPECT_EQ(count(r.out, "Watchdog Time = 0 (3~255 Sec)\n"), 1u);
    // Fan speeds are read whatever the length: no warning.
    board.sim.setAnswer(0, 2, 0x42, {0xB8, 0x0B});
    r = call(board, "ST_SYSTEM_GET_42_01_FAN_RPM", "");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(count(r.out, "CPU FAN RPM = 3000\n"), 1u);

    // A refused SET is reported as such and prints nothing of its own.
    board.sim.setAnswer(0, 3, 0x46, {0x00});
    r = call(board, "ST_SYSTEM_SET_46_01_SP339A_MODE", "0\n0\n0\n0\n");
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(count(r.out, "command executed unsuccessfully !!!"), 1u);
}

// The ODM group's GPI row runs the system GPI handler: device 17, one line per input.
TEST(SystemPowerIoHandlers, GpiStatusOnTheOdmRow) {
    BoardFixture board("KX07");
    Outcome r = call(board, "ST_ODM_GET_30_01_GPI_STATUS", "");
    EXPECT_EQ(r.result, 1);
    const std::string fd = "fd(" + std::to_string(board.fd()) + ") ";
    EXPECT_EQ(
        count(r.out, "==========================\n" + fd + "GPI1 Low.\n" + fd + "GPI2 High.\n" +
                         fd + "GPI3 High.\n" + fd + "GPI4 Low.\n==========================\n"),
        1u)
        << r.out;
    ASSERT_EQ(r.sent.size(), 1u);
    EXPECT_EQ(std::tuple(r.sent[0].device, r.sent[0].command, r.sent[0].address),
              std::tuple(17, 2, 0x30));
}

// The program itself: brdcmd stores a MAC through its prompts, and a later run reads the
// three identity records back from the board, one exchange each.
TEST(SystemPowerIoHandlers, BrdcmdSetsAndReadsTheIdentityRecords) {
    char dir[] = "/tmp/system_power_io.XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    brdsim::Simulator sim("KX12");
    ASSERT_TRUE(sim.start());
    brdsim::writeConfig(dir, "KX12", sim.ptyPath());
    const std::vector<std::pair<std::string, std::string>> env = {{"BRDCTL_CONFIG_DIR", dir},
                                                                  {"BRDCTL_PRODUCT", "KX12"}};
    ProgramResult set = runProgram(BRDCMD_BIN, {"ST_SYSTEM_SET_06_01_SYSTEM_PARAMETER"},
                                   "0\n0a1b2c3d4e5f\n", env, 20000);
    EXPECT_EQ(set.status, 0) << set.out << set.err;
    ProgramResult get =
        runProgram(BRDCMD_BIN, {"ST_SYSTEM_GET_06_01_SYSTEM_PARAMETER"}, "", env, 20000);
    EXPECT_EQ(get.status, 0) << get.err;
    EXPECT_EQ(count(get.out, ") System Parameter MAC:0A1B2C3D4E5F\n"), 1u) << get.out;
    EXPECT_EQ(count(get.out, ") System Parameter SOM S/N:1423419012345\n"), 1u) << get.out;
    EXPECT_EQ(count(get.out, ") System Parameter SOM ASSY:CB24A0001\n"), 1u) << get.out;
    std::vector<brdsim::Request> sent = sim.requests();
    ASSERT_EQ(sent.size(), 4u);
    EXPECT_EQ(std::tuple(sent[0].command, sent[0].data.size()), std::tuple(3, 17u));
    for (size_t i = 1; i < 4; ++i) EXPECT_EQ(sent[i].data, Bytes{uint8_t(i - 1)});
    std::filesystem::remove_all(dir);
}

}  // namespace
