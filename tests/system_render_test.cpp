// What the simple system status and control commands print, from answer bytes and the
// product alone: no serial line involved.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "system/simple_rows.h"
#include "system/system_handlers.h"

using namespace simple;

namespace {

const std::string SEP = "==========================\n";
const std::string RULE = std::string(56, '=') + "\n";
constexpr int FD = 7;

struct GetCase {
    const char* what;
    FUNC_HANDLER handler;
    std::vector<BYTE> answer;
    const char* product;
    std::string expected;
};

std::string framed(const std::string& lines) {
    return SEP + lines + SEP;
}

// clang-format off
const GetCase GET_CASES[] = {
    {"state 0", FUNC_ST_SYSTEM_GET_IGNITION_STATUS, {0}, "KX07\n", framed("fd(7) Ignition Off\n")},
    {"state 1", FUNC_ST_SYSTEM_GET_IGNITION_STATUS, {1}, "KX07\n", framed("fd(7) Ignition On\n")},
    {"state unlisted", FUNC_ST_SYSTEM_GET_IGNITION_STATUS, {2}, "KX07\n", framed("")},
    {"unlisted with its own line", FUNC_ST_SYSTEM_GET_FAN_MODE, {5}, "KX07\n",
     framed("fd(7) Not found any FAN mode !!!\n")},
    {"BIOS 0 reserved", FUNC_ST_SYSTEM_GET_BIOS_NUM, {0}, "KX07\n", framed("fd(7) Reserved.\n")},
    {"BIOS above 2 reserved", FUNC_ST_SYSTEM_GET_BIOS_NUM, {3}, "KX07\n", framed("fd(7) Reserved.\n")},
    {"one-hot slot, two bits", FUNC_ST_SYSTEM_GET_SLOT_MODE, {3}, "KX07\n", framed("")},
    {"bit 0 only", FUNC_ST_SYSTEM_GET_LED_OUTPUT_STATUS, {0xFE}, "KX07\n",
     framed("fd(7) WLAN LED output bypass.\n")},
    {"two bits", FUNC_ST_SYSTEM_GET_WWAN_FULLCARD_POWEROFF, {2}, "KX07\n",
     framed("fd(7) LOW.\nfd(7) HI.\t(Default)\n")},
    {"temperature positive", FUNC_ST_SYSTEM_GET_TEMPERATURE, {127}, "KX07\n",
     framed("fd(7) System Temperature = 127 (-27 ~ 125)\n")},
    {"temperature 246", FUNC_ST_SYSTEM_GET_TEMPERATURE, {246}, "KX07\n",
     framed("fd(7) System Temperature = -10 (-27 ~ 125)\n")},
    {"temperature 128", FUNC_ST_SYSTEM_GET_TEMPERATURE, {128}, "KX07\n",
     framed("fd(7) System Temperature = -128 (-27 ~ 125)\n")},
    {"word, 100mV product", FUNC_ST_SYSTEM_GET_SUPPLY_VOLTAGE, {0x2C, 0x01}, "KX07\n",
     framed("fd(7) supplyVoltageLow = 44,  supplyVoltageHigh = 1\nfd(7) Supply Voltage = 300 (unit:100mV)\n")},
    {"word, 10mV product", FUNC_ST_SYSTEM_GET_SUPPLY_VOLTAGE, {0x2C, 0x01}, "KX34\n",
     framed("fd(7) supplyVoltageLow = 44,  supplyVoltageHigh = 1\nfd(7) Supply Voltage = 300 (unit:10mV)\n")},
    {"three bytes", FUNC_ST_SYSTEM_GET_ALART_TIMER, {23, 59, 1}, "KX07\n",
     framed("fd(7) Alarm Hour = 23\nfd(7) Alarm Minute = 59\nfd(7) Alarm Second = 1\n")},
    {"pulse count", FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS, {1, 2, 3, 4}, "KX07\n",
     framed("fd(7) pulse count = 67305985. (Odometer)\n")},
    {"pulse count unsigned", FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS, {0xFF, 0xFF, 0xFF, 0xFF}, "KX07\n",
     framed("fd(7) pulse count = 4294967295. (Odometer)\n")},
    {"pulse count 3 bytes", FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS, {1, 2, 3}, "KX07\n",
     framed("fd(7) Can't get pulse count. (Odometer)\n")},
    {"counter 3 bytes", FUNC_ST_SYSTEM_GET_STARTUP_COUNT, {0x40, 0x42, 0x0F}, "KX07\n",
     framed("fd(7) The count of start up = 1000000\n")},
    {"boot time", FUNC_ST_SYSTEM_GET_BOOT_TIME, {5, 4, 3}, "KX07\n",
     framed("fd(7) The boot time = 03:04:05\n")},
    {"boot time without hours", FUNC_ST_SYSTEM_GET_BOOT_TIME, {5, 4}, "KX07\n",
     framed("fd(7) The boot time = 00:04:05\n")},
    {"boot time, two hour bytes", FUNC_ST_SYSTEM_GET_BOOT_TIME, {0, 1, 0x10, 0x01}, "KX07\n",
     framed("fd(7) The boot time = 272:01:00\n")},
    {"text cut at 16", FUNC_ST_SYSTEM_GET_AST,
     {'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L', 'M', 'N', 'O', 'P', 'Q', 'R'}, "KX07\n",
     framed("fd(7) Read AST = ABCDEFGHIJKLMNOP\n")},
    {"heartbeat 1 byte", FUNC_ST_SYSTEM_GET_HEARTBEAT_STATUS, {1}, "KX07\n", ""},
    {"heartbeat", FUNC_ST_SYSTEM_GET_HEARTBEAT_STATUS, {3, 30}, "KX07\n",
     "======== Current Heartbeat Status ========\nHeartbeat : Enabled\nInterval  : 30 seconds\n"},
    {"gate closed", FUNC_ST_SYSTEM_GET_KEY_LED_STATUS, {1}, "KX07\n", ""},
    {"gate open, no separators", FUNC_ST_SYSTEM_GET_KEY_LED_STATUS, {2}, "KX34\n",
     "fd(7) Key Led status is blue\n"},
    {"odometer unlock", FUNC_ST_SYSTEM_GET_ODOMETER_LOCK_STATUS, {0}, "KX56\n",
     framed(" Unlock Sending Odometer Event\n")},
    {"RTC battery with mV", FUNC_ST_SYSTEM_GET_RTC_BATTERY_VOLTAGE, {0x2C, 0x01}, "KX71\n",
     framed("fd(7) The RTC Battery Voltage is = 300 (10mV units)\nVoltage in mV = 3000 mV\n")},
    {"RTC battery without mV", FUNC_ST_SYSTEM_GET_RTC_BATTERY_VOLTAGE, {0x2C, 0x01}, "KX59\n",
     framed("fd(7) The RTC Battery Voltage is = 300 (10mV units)\n")},
    {"GPS with antenna", FUNC_ST_SYSTEM_GET_GPS_STATUS, {1, 2}, "KX71\n",
     framed("fd(7) GPS On. (Default)\nfd(7) Antenna is short.\n")},
    {"mute, one switch", FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS, {3}, "KX29\n",
     framed("fd(7) Audio Mute Enable.\n")},
    {"mute, two switches", FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS, {2}, "KX23\n",
     framed("fd(7) Audio Mute Disable.\nfd(7) External Audio Mute Enable.\n")},
    {"mute, other product", FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS, {3}, "KX07\n", SEP},
    {"CAN power unlisted value", FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS, {5}, "KX02\n",
     framed("fd(7) CAN Power Status : 0x05\n")},
    {"CAN power two modules", FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS, {2}, "KX22\n",
     framed("fd(7) IOB CAN Module Power Off.\nfd(7) MB CAN Module Power On.\n")},
    {"CAN power listed product", FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS, {1}, "KX65\n",
     framed("fd(7) CAN Module Power On.\n")},
    {"CAN power other product", FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS, {0xAB}, "KX07\n",
     framed("fd(7) CAN Power Status : 0xAB\n")},
    {"reset time low bits", FUNC_ST_SYSTEM_GET_WWAN_CN7_RESET_TIME, {0xF6}, "KX07\n",
     SEP + SEP + "fd(7) Reset Time = 4.5 Seconds\n"},
    {"SIM detect", FUNC_ST_SYSTEM_GET_SIM_CARD_DETECT_STATUS, {2}, "KX25\n",
     "fd(7) Auto Mode.(Default)\nfd(7) SIM Insert On.\n"},
};
// clang-format on

void PrintTo(const GetCase& c, std::ostream* os) {
    *os << c.what;
}

class GetRender : public testing::TestWithParam<GetCase> {};

TEST_P(GetRender, PrintsExactly) {
    const GetCase& c = GetParam();
    const GetRow* row = getRowOf(c.handler);
    ASSERT_NE(row, nullptr) << c.what;
    EXPECT_EQ(renderGet(*row, FD, c.answer.data(), static_cast<int>(c.answer.size()), c.product),
              c.expected)
        << c.what;
}

INSTANTIATE_TEST_SUITE_P(Rows, GetRender, testing::ValuesIn(GET_CASES));

TEST(GetRender, GatesDecideBeforeSending) {
    EXPECT_FALSE(getServes(*getRowOf(FUNC_ST_SYSTEM_GET_KEY_LED_STATUS), "KX07\n"));
    EXPECT_TRUE(getServes(*getRowOf(FUNC_ST_SYSTEM_GET_KEY_LED_STATUS), "KX35\n"));
    // The product name is compared with its line end.
    EXPECT_FALSE(getServes(*getRowOf(FUNC_ST_SYSTEM_GET_KEY_LED_STATUS), "KX35"));
    EXPECT_TRUE(getServes(*getRowOf(FUNC_ST_SYSTEM_GET_IGNITION_STATUS), "anything\n"));
}

TEST(SetRender, MenuEndsWithRuleAndPrompt) {
    const SetRow* row = setRowOf(FUNC_ST_SYSTEM_SET_BUZZER_CONTROL);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(renderStep(row->variants[0].steps[0]),
              "========\t\tBuzzer Control\t\t========\n0. Buzzer Off.\n1. Buzzer On.\n" + RULE +
                  "Select which option you want to do:");
}

TEST(SetRender, PromptsAsWritten) {
    const SetRow* hb = setRowOf(FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL);
    EXPECT_EQ(renderStep(hb->variants[0].steps[0]),
              "0. Heartbeat Disable\n1. Heartbeat Enable\nSelect which option you want to do: ");
    const SetRow* odo = setRowOf(FUNC_ST_SYSTEM_SET_ODOMETER_LOCK_CONTROL);
    EXPECT_EQ(renderStep(odo->variants[0].steps[0]),
              "========         Odometer Lock Control         ========\n"
              "0. Unlock Sending Odometer Event\n1. Lock Sending Odometer Event\n");
    const SetRow* sim = setRowOf(FUNC_ST_SYSTEM_SET_SIM_CARD_DETECT_STATUS);
    EXPECT_EQ(renderStep(sim->variants[0].steps[1]),
              "\n========    Select SIM card Control of WWAN1    ========\n"
              "0. SIM Insert Off.(Default)\n1. SIM Insert On.\n" +
                  std::string(54, '=') + "\nSelect which option you want to do:");
}

struct StepCase {
    const char* what;
    FUNC_HANDLER handler;
    const char* product;
    int step;
    std::string expected;
    int min, max;
};

// clang-format off
const StepCase STEP_CASES[] = {
    {"prompt without a rule", FUNC_ST_SYSTEM_SET_AUTO_BACKLIGHT_CONTROL, "KX30\n", 0,
     "========\tAuto BackLight Control \t\t========\n0. Disable\n1. Enable\n"
     "Select which option you want to do:", 0, 1},
    {"rule without a prompt", FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET, "KX56\n", 0,
     "========         Pulse Count Reset         ========\n0. Not Reset Pulse Count\n"
     "1. Reset Pulse Count\n" + RULE, 0, 1},
    {"second menu without a title", FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL, "KX22\n", 1,
     "0. MB CAN Module Power Off.\n1. MB CAN Module Power On. (Default)\n" + RULE +
     "Select which option you want to do:", 0, 1},
    {"eight time codes", FUNC_ST_SYSTEM_SET_WWAN_CN14_RESET_TIME, "KX07\n", 0,
     "========\t\tWWAN CN14 RESET \t\t========\n0. 1 sec\n1. 1.5 sec\n2. 2 sec\n3. 2.5 sec\n"
     "4. 3 sec\n5. 3.5 sec\n6. 4.5 sec\n7. 5.5 sec\n" + RULE + "Select which option you want to do:", 0, 7},
    {"number prompt", FUNC_ST_SYSTEM_SET_LCD_PWM_FREQUENCY, "KX07\n", 0,
     "Input LCD PWM Frequency, EX: 200 (200~2000) : ", 200, 2000},
    {"interval prompt", FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, "KX07\n", 1,
     "Set Heartbeat Interval (5~255 seconds): ", 5, 255},
};
// clang-format on

TEST(SetRender, StepsShowExactlyAndBoundTheAnswer) {
    for (const StepCase& c : STEP_CASES) {
        const Variant* variant = pickVariant(*setRowOf(c.handler), c.product);
        ASSERT_NE(variant, nullptr) << c.what;
        const Step& step = variant->steps[c.step];
        EXPECT_EQ(renderStep(step), c.expected) << c.what;
        EXPECT_EQ(step.min, c.min) << c.what;
        EXPECT_EQ(step.max, c.max) << c.what;
    }
}

TEST(SetRender, NotSupportedKeepsTheProductLineEnd) {
    EXPECT_EQ(renderNotSupported(*setRowOf(FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL), "KX07\n"),
              "========  KX07\n does not support this function  ========\n" + std::string(54, '=') +
                  "\n");
    EXPECT_EQ(renderNotSupported(*setRowOf(FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL), "KX07\n"),
              "========  KX07\n does not support this function  ========\n" + RULE);
}

struct AnswerCase {
    const char* what;
    FUNC_HANDLER handler;
    std::vector<int> answers;  // one per step, in order
    std::vector<BYTE> request;
};

const AnswerCase ANSWER_CASES[] = {
    {"mapped 1", FUNC_ST_SYSTEM_SET_POWER_MODE, {1}, {0xAA}},
    {"bits 1 0", FUNC_ST_SYSTEM_SET_WWAN_FULLCARD_POWEROFF, {1, 0}, {0x01}},
    {"bits 0 1", FUNC_ST_SYSTEM_SET_WWAN_FULLCARD_POWEROFF, {0, 1}, {0x02}},
    {"word low first", FUNC_ST_SYSTEM_SET_WAKEUP_TIMER, {300}, {0x2C, 0x01}},
    {"reset code and flag", FUNC_ST_SYSTEM_SET_WWAN_CN7_RESET_TIME, {5, 1}, {0x85}},
    {"SIM detect", FUNC_ST_SYSTEM_SET_SIM_CARD_DETECT_STATUS, {1, 1}, {0x00, 0x03}},
};

TEST(SetRender, AnswersPackIntoTheRequest) {
    for (const AnswerCase& c : ANSWER_CASES) {
        const SetRow& row = *setRowOf(c.handler);
        BYTE request[4] = {};
        for (int i = 0; i < row.init.count; ++i) request[i] = row.init[i];
        for (size_t i = 0; i < c.answers.size(); ++i)
            applyAnswer(row.variants[0].steps[i], c.answers[i], request);
        EXPECT_EQ(std::vector<BYTE>(request, request + c.request.size()), c.request) << c.what;
    }
}

TEST(SetRender, OwnResultLines) {
    const SetRow& hb = *setRowOf(FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL);
    const BYTE one[] = {1}, three[] = {3};
    EXPECT_EQ(renderSetResult(hb, FD, one, 1), "fd(7) Heartbeat Control Set Success\n");
    EXPECT_EQ(renderSetResult(hb, FD, three, 1), "fd(7) Heartbeat Control Set Fail\n");
    const SetRow& reset = *setRowOf(FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET);
    EXPECT_EQ(renderSetResult(reset, FD, three, 1), SEP + "Setting Success\n" + SEP);
    EXPECT_EQ(renderSetResult(reset, FD, three, 0), SEP + "Setting Fail\n" + SEP);
    const SetRow& lock = *setRowOf(FUNC_ST_SYSTEM_SET_ODOMETER_LOCK_CONTROL);
    EXPECT_EQ(renderSetResult(lock, FD, one, 1), "Setting Success\n");
    EXPECT_EQ(renderSetResult(*setRowOf(FUNC_ST_SYSTEM_SET_BUZZER_CONTROL), FD, one, 1), "");
}

}  // namespace
