// The simple system status and control handlers end to end: the simulated board on a
// pseudo-terminal, the real link, scripted answers at the prompts, and the exact request
// bytes the board received.
#include "system/system_handlers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "board_fixture.h"

namespace {

using Bytes = std::vector<uint8_t>;

const std::string RULE = std::string(56, '=') + "\n";
const std::string SEP = "==========================\n";

struct Outcome {
    int result = 0;
    std::string out, err;
    std::vector<brdsim::Request> sent;
};

// Calls `handler` as the row `name` with `input` typed at its prompts.
Outcome call(BoardFixture& board, FUNC_HANDLER handler, const std::string& name,
             const std::string& input) {
    board.sim.clearRequests();
    int index = 0;
    findCommandIndex(name.c_str(), &index);
    EXPECT_NE(index, 0) << name << " is not in the pool";
    std::string in = input;
    FILE* f = in.empty() ? fopen("/dev/null", "r") : fmemopen(in.data(), in.size(), "r");
    g_input = f;
    char nameBuf[128];
    snprintf(nameBuf, sizeof nameBuf, "%s", name.c_str());
    Outcome r;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    r.result = handler(index, nameBuf);
    fflush(stdout);
    r.err = testing::internal::GetCapturedStderr();
    r.out = testing::internal::GetCapturedStdout();
    g_input = stdin;
    fclose(f);
    r.sent = board.sim.requests();
    return r;
}

// The report of check_result for a successful exchange.
std::string report(int fd, const std::string& name, const Bytes& answer) {
    std::string out = RULE + "result data length = " + std::to_string(answer.size()) + "\n";
    for (size_t i = 0; i < answer.size(); ++i) {
        char line[64];
        snprintf(line, sizeof line, "result data %zu = %#x\n", i, answer[i]);
        out += line;
    }
    return out + "fd(" + std::to_string(fd) + ") " + name + " command executed successfully.\n" +
           RULE;
}

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

struct SetCase {
    const char* product;
    FUNC_HANDLER handler;
    const char* name;
    const char* input;
    uint8_t address;  // the command byte that goes out
    Bytes data;
    const char* shown;  // a text the menu shows ("" none expected)
};

// clang-format off
const SetCase SET_CASES[] = {
    {"KX07", FUNC_ST_SYSTEM_SET_POWER_MODE, "ST_SYSTEM_SET_24_01_POWER_MODE",
     "1\n", 0x24, {0xAA}, "1. Power Off (0xAA)\n"},
    {"KX07", FUNC_ST_SYSTEM_SET_WWAN_FULLCARD_POWEROFF, "ST_SYSTEM_SET_06_02_WWAN_FULLCARD_POWEROFF",
     "1\n0\n", 0x06, {0x01}, "CN14 Slot Control"},
    {"KX07", FUNC_ST_SYSTEM_SET_WWAN_FULLCARD_POWEROFF, "ST_SYSTEM_SET_06_02_WWAN_FULLCARD_POWEROFF",
     "0\n1\n", 0x06, {0x02}, "WWAN CN7 PIN Control"},
    {"KX07", FUNC_ST_SYSTEM_SET_WAKEUP_TIMER, "ST_SYSTEM_SET_33_01_WAKEUP_TIMER",
     "300\n", 0x33, {0x2C, 0x01}, "Input Wakeup Timer Time, EX: 300 (0~44640)(unit:Sec) : "},
    // Neither model set: no menu, the byte goes out as 0, under command byte 0x02.
    {"KX07", FUNC_ST_SYSTEM_SET_EXTERNAL_12V_CONTROL, "ST_SYSTEM_SET_30_01_EXTERNAL_12V_CONTROL",
     "", 0x02, {0x00}, ""},
    {"KX42", FUNC_ST_SYSTEM_SET_EXTERNAL_12V_CONTROL, "ST_SYSTEM_SET_30_01_EXTERNAL_12V_CONTROL",
     "1\n", 0x02, {0x01}, "0. Disable (Default)\n1. Enable\n"},
    {"KX71", FUNC_ST_SYSTEM_SET_EXTERNAL_12V_CONTROL, "ST_SYSTEM_SET_38_01_EXTERNAL_12V_CONTROL",
     "1\n", 0x38, {0x01}, "0. power off.\n1. power on.\n"},
    {"KX29", FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL, "ST_SYSTEM_SET_25_01_AUDIO_MUTE_CONTROL",
     "1\n", 0x25, {0x01}, "Audio Mute Control"},
    {"KX23", FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL, "ST_SYSTEM_SET_25_01_AUDIO_MUTE_CONTROL",
     "0\n1\n", 0x25, {0x02}, "External Audio Mute Control"},
    {"KX02", FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL, "ST_SYSTEM_SET_2A_01_CAN_MODULE_POWER_CONTROL",
     "1\n", 0x2A, {0x01}, "========\tCAN Module Power Control \t========\n0. Power Off.\n1. Power On. (Default)\n"},
    {"KX22", FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL, "ST_SYSTEM_SET_28_02_CAN_MODULE_POWER_CONTROL",
     "1\n1\n", 0x28, {0x03}, "1. MB CAN Module Power On. (Default)\n"},
    {"KX07", FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, "ST_SYSTEM_SET_62_01_HEARTBEAT_CONTROL",
     "1\n30\n", 0x62, {0x01, 30}, "Set Heartbeat Interval (5~255 seconds): "},
    {"KX07", FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, "ST_SYSTEM_SET_62_01_HEARTBEAT_CONTROL",
     "0\n", 0x62, {0x00, 5}, "Heartbeat Control Set Success\n"},
    {"KX07", FUNC_ST_SYSTEM_SET_WWAN_CN7_RESET_TIME, "ST_SYSTEM_SET_3E_01_WWAN_CN7_RESET_TIME",
     "6\n1\n", 0x3E, {0x86}, "CN7 Slot Control"},
    {"KX07", FUNC_ST_SYSTEM_SET_ALARM_TIMER, "ST_SYSTEM_SET_13_01_ALARM_TIMER",
     "7\n8\n9\n", 0x13, {7, 8, 9}, "Set second (0-59):"},
    {"KX07", FUNC_ST_SYSTEM_SET_LOAD_DEFAULT, "ST_SYSTEM_SET_08_01_LOAD_DEFAULT",
     "", 0x08, {}, "========\t\tLoad Default\t\t========\n"},
};
// clang-format on

void PrintTo(const SetCase& c, std::ostream* os) {
    *os << c.product << " " << c.name;
}

class SetRequests : public testing::TestWithParam<SetCase> {};

TEST_P(SetRequests, SendExactly) {
    const SetCase& c = GetParam();
    BoardFixture board(c.product);
    Outcome r = call(board, c.handler, c.name, c.input);
    EXPECT_EQ(r.result, 1) << c.name << "\n" << r.out;
    ASSERT_EQ(r.sent.size(), 1u) << c.name;
    EXPECT_EQ(r.sent[0].device, 0);
    EXPECT_EQ(r.sent[0].command, 3);
    EXPECT_EQ(r.sent[0].address, c.address) << c.name;
    EXPECT_EQ(r.sent[0].data, c.data) << c.name;
    EXPECT_NE(r.out.find(c.shown), std::string::npos) << c.name << "\n" << r.out;
}

INSTANTIATE_TEST_SUITE_P(Rows, SetRequests, testing::ValuesIn(SET_CASES));

TEST(SystemHandlers, OutOfRangeAsksAgain) {
    BoardFixture board;
    Outcome r = call(board, FUNC_ST_SYSTEM_SET_WAKEUP_TIMER, "ST_SYSTEM_SET_33_01_WAKEUP_TIMER",
                     "44641\n300\n");
    EXPECT_EQ(count(r.out, "\nSelect Error !!! Please select a option again."), 1u) << r.out;
    ASSERT_EQ(r.sent.size(), 1u);
    EXPECT_EQ(r.sent[0].data, (Bytes{0x2C, 0x01}));
}

TEST(SystemHandlers, NotANumberReadsTheNextLine) {
    BoardFixture board;
    Outcome r = call(board, FUNC_ST_SYSTEM_SET_BUZZER_CONTROL, "ST_SYSTEM_SET_4B_01_BUZZER_CONTROL",
                     "abc\n1\n");
    EXPECT_EQ(count(r.out, "\nInput Error !!! Please input a number."), 1u) << r.out;
    ASSERT_EQ(r.sent.size(), 1u);
    EXPECT_EQ(r.sent[0].data, (Bytes{0x01}));
    EXPECT_EQ(r.result, 1);
}

TEST(SystemHandlers, EndOfInputSendsNothing) {
    struct {
        FUNC_HANDLER handler;
        const char* name;
        const char* input;
    } cases[] = {
        {FUNC_ST_SYSTEM_SET_BUZZER_CONTROL, "ST_SYSTEM_SET_4B_01_BUZZER_CONTROL", ""},
        {FUNC_ST_SYSTEM_SET_BUZZER_CONTROL, "ST_SYSTEM_SET_4B_01_BUZZER_CONTROL", "7\n"},
        {FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, "ST_SYSTEM_SET_62_01_HEARTBEAT_CONTROL", "1\n"},
        {FUNC_ST_SYSTEM_SET_RTC_TIMER, "ST_SYSTEM_SET_09_01_RTC_TIMER", "1\n2\n"},
    };
    BoardFixture board;
    for (const auto& c : cases) {
        Outcome r = call(board, c.handler, c.name, c.input);
        EXPECT_EQ(r.result, 0) << c.name << " " << c.input;
        EXPECT_TRUE(r.sent.empty()) << c.name << " " << c.input;
        EXPECT_NE(r.err.find("input ended"), std::string::npos) << c.name;
    }
}

TEST(SystemHandlers, RefusedSetReportsAndReturnsZero) {
    BoardFixture board;
    board.sim.setAnswer(0, 3, 0x4B, {0x00});
    Outcome r =
        call(board, FUNC_ST_SYSTEM_SET_BUZZER_CONTROL, "ST_SYSTEM_SET_4B_01_BUZZER_CONTROL", "1\n");
    EXPECT_EQ(r.result, 0);
    EXPECT_NE(r.out.find("ST_SYSTEM_SET_4B_01_BUZZER_CONTROL command executed unsuccessfully !!!"),
              std::string::npos)
        << r.out;
}

TEST(SystemHandlers, RefusedHeartbeatPrintsNoResultLine) {
    BoardFixture board;
    board.sim.setAnswer(0, 3, 0x62, {0x00});
    Outcome r = call(board, FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL,
                     "ST_SYSTEM_SET_62_01_HEARTBEAT_CONTROL", "0\n");
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.out.find("Heartbeat Control Set"), std::string::npos) << r.out;
}

TEST(SystemHandlers, UnsupportedProductsSendNothing) {
    struct {
        const char* product;
        FUNC_HANDLER handler;
        const char* name;
        int result;
        std::string out;
    } cases[] = {
        {"KX07", FUNC_ST_SYSTEM_GET_KEY_LED_STATUS, "ST_SYSTEM_GET_53_01_KEY_LED_STATUS", 0, ""},
        {"KX07", FUNC_ST_SYSTEM_GET_SIM_CARD_DETECT_STATUS,
         "ST_SYSTEM_GET_3D_01_SIM_CARD_DETECT_STATUS", 0, ""},
        {"KX07", FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET, "ST_SYSTEM_SET_59_01_PULSE_COUNT_RESET", 0,
         ""},
        {"KX07", FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL, "ST_SYSTEM_SET_25_01_AUDIO_MUTE_CONTROL", 1,
         "========  KX07\n does not support this function  ========\n" + std::string(54, '=') +
             "\n"},
        {"KX07", FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL,
         "ST_SYSTEM_SET_2A_01_CAN_MODULE_POWER_CONTROL", 1,
         "========\tCAN Module Power Control \t========\n"
         "========  KX07\n does not support this function  ========\n" +
             RULE},
    };
    for (const auto& c : cases) {
        BoardFixture board(c.product);
        Outcome r = call(board, c.handler, c.name, "1\n1\n");
        EXPECT_EQ(r.result, c.result) << c.name;
        EXPECT_EQ(r.out, c.out) << c.name;
        EXPECT_TRUE(r.sent.empty()) << c.name;
    }
}

TEST(SystemHandlers, GetPrintsReportThenState) {
    BoardFixture board;
    const std::string name = "ST_SYSTEM_GET_0A_01_IGNITION_STATUS";
    board.sim.setAnswer(0, 2, 0x0A, {0x01});
    Outcome r = call(board, FUNC_ST_SYSTEM_GET_IGNITION_STATUS, name, "");
    EXPECT_EQ(r.result, 1);
    const std::string fd = "fd(" + std::to_string(board.fd()) + ") ";
    EXPECT_EQ(r.out, report(board.fd(), name, {0x01}) + SEP + fd + "Ignition On\n" + SEP);
    ASSERT_EQ(r.sent.size(), 1u);
    EXPECT_EQ(r.sent[0].command, 2);
    EXPECT_EQ(r.sent[0].address, 0x0A);
    EXPECT_TRUE(r.sent[0].data.empty());
}

TEST(SystemHandlers, ShortAnswerShowsNoStaleBytes) {
    BoardFixture board;
    const std::string name = "ST_SYSTEM_GET_1D_01_LS_VOLTAGE";
    board.sim.setAnswer(0, 2, 0x1D, {0x01, 0x02});
    call(board, FUNC_ST_SYSTEM_GET_LS_VOLTAGE, name, "");
    board.sim.setAnswer(0, 2, 0x1D, {0x03});
    Outcome r = call(board, FUNC_ST_SYSTEM_GET_LS_VOLTAGE, name, "");
    const std::string fd = "fd(" + std::to_string(board.fd()) + ") ";
    EXPECT_EQ(r.out, report(board.fd(), name, {0x03}) + SEP + fd +
                         "LS VoltageLow = 3, LS VoltageHigh = 0\n" + fd +
                         "LS Voltage = 3 (10mV) \n" + SEP);
}

TEST(SystemHandlers, LinkFailurePrintsOnlyTheReport) {
    BoardFixture board;
    const std::string name = "ST_SYSTEM_GET_0C_01_TEMPERATURE";
    board.sim.queueFault({brdsim::FaultKind::NoAnswer});
    Outcome r = call(board, FUNC_ST_SYSTEM_GET_TEMPERATURE, name, "");
    EXPECT_EQ(r.result, -4);
    const std::string fd = "fd(" + std::to_string(board.fd()) + ") ";
    EXPECT_EQ(r.out, RULE + fd + name + " : Request Timeout !!!\n\n" + fd + name +
                         " command executed unsuccessfully !!!\n" + RULE);
}

TEST(SystemHandlers, SimDetectGetSendsOneZeroByte) {
    BoardFixture board("KX25");
    board.sim.setAnswer(0, 2, 0x3D, {0x01});
    Outcome r = call(board, FUNC_ST_SYSTEM_GET_SIM_CARD_DETECT_STATUS,
                     "ST_SYSTEM_GET_3D_01_SIM_CARD_DETECT_STATUS", "");
    EXPECT_EQ(r.result, 1);
    ASSERT_EQ(r.sent.size(), 1u);
    EXPECT_EQ(r.sent[0].data, (Bytes{0x00}));
    const std::string fd = "fd(" + std::to_string(board.fd()) + ") ";
    EXPECT_NE(r.out.find(fd + "Manual Mode.\n" + fd + "SIM Insert Off.(Default)\n"),
              std::string::npos)
        << r.out;
}

}  // namespace
