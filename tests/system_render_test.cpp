// What the simple system status and control commands print, from answer bytes and the
// product alone: no serial line involved.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "system/control.h"
#include "system/status.h"
#include "system/system_handlers.h"

using namespace shapes;

namespace {

const std::string SEP = "==========================\n";
const std::string RULE = std::string(56, '=') + "\n";
const std::string SELECT = "Select which option you want to do:";

std::string framed(const std::string& lines) {
    return SEP + lines + SEP;
}

struct GetCase {
    FUNC_HANDLER handler;
    std::vector<BYTE> answer;
    std::string expected;
    const char* product = "KX07\n";
};

// clang-format off
const GetCase GET_CASES[] = {
    {FUNC_ST_SYSTEM_GET_IGNITION_STATUS, {1}, framed("fd(7) Ignition On\n")},
    {FUNC_ST_SYSTEM_GET_IGNITION_STATUS, {2}, framed("")},
    {FUNC_ST_SYSTEM_GET_FAN_MODE, {5}, framed("fd(7) Not found any FAN mode !!!\n")},
    {FUNC_ST_SYSTEM_GET_SLOT_MODE, {3}, framed("")},
    {FUNC_ST_SYSTEM_GET_WWAN_FULLCARD_POWEROFF, {2}, framed("fd(7) LOW.\nfd(7) HI.\t(Default)\n")},
    {FUNC_ST_SYSTEM_GET_TEMPERATURE, {127}, framed("fd(7) System Temperature = 127 (-27 ~ 125)\n")},
    {FUNC_ST_SYSTEM_GET_TEMPERATURE, {246}, framed("fd(7) System Temperature = -10 (-27 ~ 125)\n")},
    {FUNC_ST_SYSTEM_GET_TEMPERATURE, {128}, framed("fd(7) System Temperature = -128 (-27 ~ 125)\n")},
    {FUNC_ST_SYSTEM_GET_SUPPLY_VOLTAGE, {0x2C, 0x01},
     framed("fd(7) supplyVoltageLow = 44,  supplyVoltageHigh = 1\nfd(7) Supply Voltage = 300 (unit:100mV)\n")},
    {FUNC_ST_SYSTEM_GET_SUPPLY_VOLTAGE, {0x2C, 0x01},
     framed("fd(7) supplyVoltageLow = 44,  supplyVoltageHigh = 1\nfd(7) Supply Voltage = 300 (unit:10mV)\n"), "KX34\n"},
    {FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS, {0xFF, 0xFF, 0xFF, 0xFF}, framed("fd(7) pulse count = 4294967295. (Odometer)\n")},
    {FUNC_ST_SYSTEM_GET_PULSE_COUNT_STATUS, {1, 2, 3}, framed("fd(7) Can't get pulse count. (Odometer)\n")},
    {FUNC_ST_SYSTEM_GET_STARTUP_COUNT, {0x40, 0x42, 0x0F}, framed("fd(7) The count of start up = 1000000\n")},
    {FUNC_ST_SYSTEM_GET_BOOT_TIME, {5, 4, 3}, framed("fd(7) The boot time = 03:04:05\n")},
    {FUNC_ST_SYSTEM_GET_BOOT_TIME, {5, 4}, framed("fd(7) The boot time = 00:04:05\n")},
    {FUNC_ST_SYSTEM_GET_AST, {'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L', 'M', 'N', 'O', 'P', 'Q'},
     framed("fd(7) Read AST = ABCDEFGHIJKLMNOP\n")},
    {FUNC_ST_SYSTEM_GET_HEARTBEAT_STATUS, {1}, ""},
    {FUNC_ST_SYSTEM_GET_HEARTBEAT_STATUS, {3, 30},
     "======== Current Heartbeat Status ========\nHeartbeat : Enabled\nInterval  : 30 seconds\n"},
    {FUNC_ST_SYSTEM_GET_KEY_LED_STATUS, {1}, ""},
    {FUNC_ST_SYSTEM_GET_KEY_LED_STATUS, {2}, "fd(7) Key Led status is blue\n", "KX34\n"},
    {FUNC_ST_SYSTEM_GET_ODOMETER_LOCK_STATUS, {0}, framed(" Unlock Sending Odometer Event\n"), "KX56\n"},
    {FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS, {2}, framed("fd(7) Audio Mute Disable.\nfd(7) External Audio Mute Enable.\n"), "KX23\n"},
    {FUNC_ST_SYSTEM_GET_AUDIO_MUTE_STATUS, {3}, SEP},
    {FUNC_ST_SYSTEM_GET_CAN_MODULE_POWER_STATUS, {5}, framed("fd(7) CAN Power Status : 0x05\n"), "KX02\n"},
    {FUNC_ST_SYSTEM_GET_WWAN_CN7_RESET_TIME, {0xF6}, SEP + SEP + "fd(7) Reset Time = 4.5 Seconds\n"},
    {FUNC_ST_SYSTEM_GET_SIM_CARD_DETECT_STATUS, {2}, "fd(7) Auto Mode.(Default)\nfd(7) SIM Insert On.\n", "KX25\n"},
};
// clang-format on

// What the status handler `handler` prints after check_result: its row's lines, or
// its own render.
std::string renderStatus(FUNC_HANDLER handler, std::span<const BYTE> answer, const char* product) {
    if (const GetRow* row = rowOf(system_status::rows, handler))
        return renderGet(*row, 7, answer, product);
    for (const RenderRef& r : system_status::renders)
        if (r.handler == handler) return r.render(answer, 7, product);
    ADD_FAILURE() << "no row or render for the handler";
    return {};
}

const SetRow& setRowOf(FUNC_HANDLER handler) {
    const SetRow* row = rowOf(system_control::rows, handler);
    EXPECT_NE(row, nullptr);
    return *row;
}

TEST(SystemRender, GetLinesExactly) {
    for (size_t i = 0; i < std::size(GET_CASES); ++i) {
        const GetCase& c = GET_CASES[i];
        EXPECT_EQ(renderStatus(c.handler, c.answer, c.product), c.expected) << "case " << i;
    }
}

struct StepCase {
    FUNC_HANDLER handler;
    int step;
    std::string expected;
    const char* product = "KX07\n";
};

// clang-format off
const StepCase STEP_CASES[] = {
    {FUNC_ST_SYSTEM_SET_BUZZER_CONTROL, 0,
     "========\t\tBuzzer Control\t\t========\n0. Buzzer Off.\n1. Buzzer On.\n" + RULE + SELECT},
    {FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, 0,
     "0. Heartbeat Disable\n1. Heartbeat Enable\nSelect which option you want to do: "},
    {FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, 1, "Set Heartbeat Interval (5~255 seconds): "},
    {FUNC_ST_SYSTEM_SET_ODOMETER_LOCK_CONTROL, 0,
     "========         Odometer Lock Control         ========\n"
     "0. Unlock Sending Odometer Event\n1. Lock Sending Odometer Event\n", "KX56\n"},
    {FUNC_ST_SYSTEM_SET_SIM_CARD_DETECT_STATUS, 1,
     "\n========    Select SIM card Control of WWAN1    ========\n0. SIM Insert Off.(Default)\n"
     "1. SIM Insert On.\n" + std::string(54, '=') + "\n" + SELECT, "KX25\n"},
    {FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET, 0,
     "========         Pulse Count Reset         ========\n0. Not Reset Pulse Count\n"
     "1. Reset Pulse Count\n" + RULE, "KX56\n"},
    {FUNC_ST_SYSTEM_SET_CAN_MODULE_POWER_CONTROL, 1,
     "0. MB CAN Module Power Off.\n1. MB CAN Module Power On. (Default)\n" + RULE + SELECT, "KX22\n"},
    {FUNC_ST_SYSTEM_SET_LCD_PWM_FREQUENCY, 0, "Input LCD PWM Frequency, EX: 200 (200~2000) : "},
};
// clang-format on

TEST(SystemRender, MenusAndPromptsExactly) {
    for (size_t i = 0; i < std::size(STEP_CASES); ++i) {
        const StepCase& c = STEP_CASES[i];
        Step step;
        if (const MenuRow* menu = rowOf(system_control::menus, c.handler)) {
            step = menuStep(*menu);
        } else {
            const Variant* variant = pickVariant(setRowOf(c.handler), c.product);
            ASSERT_NE(variant, nullptr) << "case " << i;
            step = variant->steps.begin()[c.step];
        }
        EXPECT_EQ(renderStep(step), c.expected) << "case " << i;
    }
    // The product name keeps its line end in the "not supported" line.
    EXPECT_EQ(renderNotSupported(setRowOf(FUNC_ST_SYSTEM_SET_AUDIO_MUTE_CONTROL), "KX07\n"),
              "========  KX07\n does not support this function  ========\n" + std::string(54, '=') +
                  "\n");
}

// The result lines some SET rows print of their own after a successful exchange.
TEST(SystemRender, OwnResultLines) {
    const BYTE one[] = {1}, three[] = {3};
    const auto result = [](FUNC_HANDLER handler, const BYTE* bytes, int length) {
        return renderSetResult(setRowOf(handler), 7, {bytes, static_cast<size_t>(length)});
    };
    EXPECT_EQ(result(FUNC_ST_SYSTEM_SET_HEARTBEAT_CONTROL, three, 1),
              "fd(7) Heartbeat Control Set Fail\n");
    EXPECT_EQ(result(FUNC_ST_SYSTEM_SET_PULSE_COUNT_RESET, three, 0), SEP + "Setting Fail\n" + SEP);
    EXPECT_EQ(result(FUNC_ST_SYSTEM_SET_ODOMETER_LOCK_CONTROL, one, 1), "Setting Success\n");
}

}  // namespace
