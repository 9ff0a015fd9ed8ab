// The front end's shared pieces: pools, the result report, the number prompt,
// product detection and the configuration file.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <string>
#include <tuple>

#include "board_fixture.h"
#include "function_MAP.h"
#include "init.h"
#include "launch.h"

namespace {

std::string report(int mode, int result, std::vector<BYTE> bytes, int* verdict) {
    char name[] = "ST_SYSTEM_GET_0A_01_IGNITION_STATUS";
    testing::internal::CaptureStdout();
    *verdict = check_result(7, static_cast<ReportMode>(mode), result, bytes.data(),
                            static_cast<int>(bytes.size()), name);
    return testing::internal::GetCapturedStdout();
}

const std::string kRule = "========================================================\n";

struct ReportCase {
    int mode, result;
    std::vector<BYTE> bytes;
    int verdict;
    std::string middle;  // between the two rules
};

TEST(CheckResult, ModesAndCodes) {
    const std::string ok =
        "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS command executed successfully.\n";
    const std::string bad =
        "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS command executed unsuccessfully !!!\n";
    const std::string dump2 = "result data length = 2\nresult data 0 = 0x1\nresult data 1 = 0\n";
    const ReportCase cases[] = {
        {2, 1, {1, 0}, 1, dump2 + ok},
        {0, 1, {1, 0}, 1, dump2 + ok},
        {1, 1, {1, 0}, 0, dump2 + bad},  // mode 1 wants byte 1 == 1
        {1, 1, {0, 1}, 1, "result data length = 2\nresult data 0 = 0\nresult data 1 = 0x1\n" + ok},
        {3, 1, {1, 0}, 1, dump2 + ok},  // mode 3 wants byte 0 == 1
        {3, 1, {0}, 0, "result data length = 1\nresult data 0 = 0\n" + bad},
        {2,
         -4,
         {},
         -4,
         "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : Request Timeout !!!\n\n" + bad},
        {3, -4, {}, 0, "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : Request Timeout !!!\n\n" + bad},
        {2, 0, {}, 0, "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : Failure !!!\n\n" + bad},
        {2,
         -1,
         {},
         -1,
         "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : Fail to open serial port !!!\n\n" + bad},
        {2,
         -2,
         {},
         -2,
         "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : Fail to write data to MCU !!!\n\n" + bad},
        {2,
         -7,
         {},
         -7,
         "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : Data Format Error !!!\n\n" + bad},
        {2, -8, {}, -8, "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : CRC Error !!!\n\n" + bad},
        {2, -20, {}, -20, "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : No Command !!!\n\n" + bad},
        {2, -5, {}, -5, bad},  // busy has no line of its own
        {9, 1, {}, 1, "result data length = 0\n"},
        {9, -4, {}, -4, "fd(7) ST_SYSTEM_GET_0A_01_IGNITION_STATUS : Request Timeout !!!\n\n"},
    };
    for (const ReportCase& c : cases) {
        int verdict = 99;
        std::string out = report(c.mode, c.result, c.bytes, &verdict);
        EXPECT_EQ(out, kRule + c.middle + kRule) << "mode " << c.mode << " result " << c.result;
        EXPECT_EQ(verdict, c.verdict) << "mode " << c.mode << " result " << c.result;
    }
}

struct SelectCase {
    std::string input;
    int min, max;
    int ret, value;
    std::string out;
};

TEST(CheckSelect, ParsesWholeLines) {
    const std::string inputErr = "\nInput Error !!! Please input a number.\n";
    const std::string selectErr = "\nSelect Error !!! Please select a option again.\n";
    const SelectCase cases[] = {
        {"1\n", 0, 1, 1, 1, ""},
        {"  2 \n", 0, 3, 1, 2, ""},
        {"abc\n1\n", 0, 1, 1, 1, inputErr},
        {"1x\n0\n", 0, 1, 1, 0, inputErr},  // no left-overs: the whole line must be a number
        {"\n5\n", 0, 9, 1, 5, inputErr},
        {"44641\n300\n", 0, 44640, 1, 300, selectErr},
        {"-1\n2\n7\n", 0, 2, 1, 2, selectErr},
        {"9", 0, 9, 1, 9, ""},  // last line without its line end
        {"", 0, 1, 0, -77, ""},
        {"abc\n", 0, 1, 0, -77, inputErr},
    };
    for (const SelectCase& c : cases) {
        std::string in = c.input;
        FILE* input = in.empty() ? fopen("/dev/null", "r") : fmemopen(in.data(), in.size(), "r");
        int value = -77;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        int r = checkSelect(input, &value, c.min, c.max);
        std::string out = testing::internal::GetCapturedStdout();
        std::string err = testing::internal::GetCapturedStderr();
        fclose(input);
        EXPECT_EQ(r, c.ret) << c.input;
        EXPECT_EQ(value, c.value) << c.input;
        EXPECT_EQ(out, c.out) << c.input;
        EXPECT_EQ(err.find("input ended") != std::string::npos, c.ret == 0) << c.input;
    }
}

// Hex numbers and text lines are read as whole lines too; end of input ends asking.
TEST(Prompt, HexAndTextLines) {
    const std::string inputErr = "\nInput Error !!! Please input a number.\n";
    const std::string selectErr = "\nSelect Error !!! Please select a option again.\n";
    struct HexCase {
        std::string input;
        unsigned long max;
        int ret;
        unsigned long value;
        std::string out;
    };
    const HexCase hexCases[] = {
        {"1f\n", 0xFF, 1, 0x1F, ""},
        {"0x7FF\n", 0xFFFF, 1, 0x7FF, ""},
        {"g1\n10\n", 0xFF, 1, 0x10, inputErr},
        {"1 2\nAB\n", 0xFF, 1, 0xAB, inputErr},
        {"100\nff\n", 0xFF, 1, 0xFF, selectErr},
        {"-1\n", 0xFF, 0, 77, inputErr},
        {"", 0xFF, 0, 77, ""},
    };
    for (const HexCase& c : hexCases) {
        std::string in = c.input;
        FILE* f = in.empty() ? fopen("/dev/null", "r") : fmemopen(in.data(), in.size(), "r");
        unsigned long value = 77;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int r = core::readHexLine(f, &value, 0, c.max);
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string err = testing::internal::GetCapturedStderr();
        fclose(f);
        EXPECT_EQ(std::tuple(r, value, out), std::tuple(c.ret, c.value, c.out)) << c.input;
        EXPECT_EQ(err.find("input ended") != std::string::npos, c.ret == 0) << c.input;
    }
    const std::pair<std::string, std::string> textCases[] = {
        {"apn.example\r\n", "apn.example"},
        {"\n", ""},
        {"much too long\nshort\n", "short"},
    };
    for (const auto& [input, want] : textCases) {
        std::string in = input;
        FILE* f = fmemopen(in.data(), in.size(), "r");
        std::string text = "?";
        testing::internal::CaptureStdout();
        EXPECT_EQ(core::readTextLine(f, &text, 12), 1) << input;
        testing::internal::GetCapturedStdout();
        fclose(f);
        EXPECT_EQ(text, want) << input;
    }
}

TEST(Pool, TerminatorsAndLookups) {
    BoardFixture board;
    ASSERT_GT(mcu_content->cmd_count, 0);
    for (int i = 0; i < mcu_content->cmd_count; ++i) {
        const cmd& e = mcu_content->cmd_pool[i];
        EXPECT_EQ(e.cmd_index, i + 1);
        int n = 0;
        while (e.cmd_data[n] != -1 && e.cmd_data[n] != 255) ++n;
        EXPECT_EQ(e.cmd_data[n], n >= 4 ? 255 : -1) << e.funName;
        EXPECT_EQ(strstr(e.funName, "NXP_"), nullptr);
        EXPECT_EQ(strstr(e.funName, "ST_CAN"), nullptr);
    }
    char found[128] = {};
    ASSERT_EQ(FIND_FunName("SYSTEM_GET_01_01", found), 1);
    EXPECT_STREQ(found, "ST_SYSTEM_GET_01_01_MCU_VERSION");
    EXPECT_EQ(FIND_FunName("SYSTEM_GET_0a_01", found), 0);
    int index = -3;
    findCommandIndex("NO_SUCH_ROW", &index);
    EXPECT_EQ(index, -3);
    findCommandIndex("ST_SYSTEM_GET_01_01_MCU_VERSION", &index);
    EXPECT_STREQ(mcu_content->cmd_pool[index - 1].funName, "ST_SYSTEM_GET_01_01_MCU_VERSION");
}

TEST(Pool, NoMcuDeviceLeavesItEmpty) {
    BoardFixture board;
    mcu_content->cmd_count = 0;
    nMCUDevice = 0;
    INIT_CMD_POOL();
    EXPECT_EQ(mcu_content->cmd_count, 0);
    char found[128] = {};
    EXPECT_EQ(FIND_FunName("SYSTEM_GET_01_01", found), 0);
}

TEST(LaunchCommand, FlashUpdatePausesHalfASecond) {
    BoardFixture board;
    char flash[] = "ST_SYSTEM_SET_20_01_FLASH_UPDATE";
    char other[] = "ST_SYSTEM_SET_4B_01_BUZZER_CONTROL";
    BYTE in[1] = {1};
    BYTE out[RESPONSE_BUFFER_SIZE];
    int outLen = 0;
    auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(LAUNCH_MCU_COMMAND(flash, in, 1, out, &outLen), 1);
    auto flashTime = std::chrono::steady_clock::now() - t0;
    EXPECT_GE(flashTime, std::chrono::milliseconds(500));
    // Also after twenty failed tries.
    board.sim.queueFault({brdsim::FaultKind::NoAnswer, 0, 20});
    t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(LAUNCH_MCU_COMMAND(flash, in, 1, out, &outLen), -4);
    EXPECT_GE(std::chrono::steady_clock::now() - t0, std::chrono::milliseconds(500 + 20 * 50));
    // Other rows do not pause.
    t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(LAUNCH_MCU_COMMAND(other, in, 1, out, &outLen), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::milliseconds(400));
}

struct ParseCase {
    std::string text;
    std::string error;  // empty: parses
};

TEST(ConfigFile, Parsing) {
    const ParseCase cases[] = {
        {"# only a comment\n\n", ""},
        {"<MCU_INFO>\nMCU_DEVICE = /dev/ttyS4 , 9600 , 0   # trailing\nDEBUG_LEVEL=0x9\n", ""},
        {"<CAN_INFO>\nCAN_DEVICE=/dev/a,115200,1\nCAN_DEVICE=/dev/b,1000000,0\n", ""},
        {"MCU_DEVICE=/dev/ttyS4,115200,1\n", "f.conf:1: 'MCU_DEVICE' outside any section"},
        {"<MCU_INFO>\n<BOGUS>\n", "f.conf:2: unknown section '<BOGUS>'"},
        {"<MCU_INFO>\nMCU_DEVICE=/dev/ttyS4,115200\n", "f.conf:2: expected PATH,BAUDRATE,ENABLED"},
        {"<MCU_INFO>\nMCU_DEVICE=/dev/ttyS4,115200,2\n",
         "f.conf:2: enabled must be 0 or 1, not '2'"},
        {"<MCU_INFO>\nMCU_DEVICE=/dev/ttyS4,-9600,1\n", "f.conf:2: bad baud rate '-9600'"},
        {"<MCU_UPDATE_INFO>\nWRITE_SIZE=12k\n", "f.conf:2: bad number '12k' for WRITE_SIZE"},
        {"<CAN_UPDATE_INFO>\nFW_MODEL=KX07\nPAGE_SIZE=256\n", "f.conf:3: unknown key 'PAGE_SIZE'"},
        {"<MCU_INFO>\n=5\n", "f.conf:2: expected KEY=VALUE"},
    };
    for (const ParseCase& c : cases) {
        std::string text = c.text;
        FILE* f = fmemopen(text.data(), text.size(), "r");
        BrdConfig cfg;
        std::string error;
        bool ok = parseConfigFile(f, "f.conf", &cfg, &error);
        fclose(f);
        EXPECT_EQ(ok, c.error.empty()) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
    }
}

TEST(ConfigFile, Values) {
    std::string text =
        "<MCU_INFO>\nMCU_DEVICE=/dev/ttyS4,57600,1\nDEBUG_LEVEL=0x9\n<MCU_UPDATE_INFO>\n"
        "FILE_PATH=/lib/fw/mcu.bin\nMCU_startAddress=0x08000000\nWRITE_SIZE=128\nFW_MODEL=KX07\n"
        "<CAN_INFO>\nCAN_DEVICE=/dev/ttyACM0,115200,1\n"
        "<CAN_UPDATE_INFO>\nMCU_endAddress=0x40000\nRAM_startAddress=0x10000000\nVERIFY_SIZE=64\n";
    FILE* f = fmemopen(text.data(), text.size(), "r");
    BrdConfig cfg;
    std::string error;
    ASSERT_TRUE(parseConfigFile(f, "x", &cfg, &error)) << error;
    fclose(f);
    EXPECT_EQ(cfg.mcu.path, "/dev/ttyS4");
    EXPECT_EQ(cfg.mcu.baudrate, 57600);
    EXPECT_EQ(cfg.mcu.enabled, 1);
    EXPECT_EQ(cfg.debugLevel, 9);
    EXPECT_EQ(cfg.mcuUpdate.mcuStartAddress, 0x08000000ul);
    EXPECT_EQ(cfg.mcuUpdate.writeSize, 128);
    EXPECT_EQ(cfg.mcuUpdate.fwModel, "KX07");
    EXPECT_FALSE(cfg.mcuUpdate.mcuEndAddress.has_value());  // left to the type's default
    EXPECT_TRUE(cfg.canUpdate.present);
    EXPECT_EQ(cfg.canUpdate.mcuEndAddress, 0x40000ul);
    EXPECT_EQ(cfg.canUpdate.ramStartAddress, 0x10000000ul);
    EXPECT_EQ(cfg.canUpdate.verifySize, 64);
    EXPECT_FALSE(cfg.canUpdate.writeSize.has_value());
    ASSERT_EQ(cfg.can.size(), 1u);
    EXPECT_EQ(cfg.can[0].path, "/dev/ttyACM0");
}

TEST(Product, EnvironmentNameIsTrimmedAndEndsInOneNewline) {
    const std::pair<const char*, const char*> cases[] = {{"KX07", "KX07\n"},
                                                         {"KX07\n", "KX07\n"},
                                                         {"KX07 \t\r\n\n", "KX07\n"},
                                                         {"  KX 7", "  KX 7\n"}};
    for (auto [env, want] : cases) {
        setenv("BRDCTL_PRODUCT", env, 1);
        EXPECT_EQ(detectProductName(), want);
    }
    unsetenv("BRDCTL_PRODUCT");
}

}  // namespace
