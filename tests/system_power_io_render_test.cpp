// What the power, version, I/O, fan and key handlers print for given answer bytes on a
// given product, and how their SETs pack the request: pure, no serial line.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "system/power_io.h"
#include "system/system_renders.h"

using namespace sysrender;

namespace {

const std::string SEP = std::string(26, '=') + "\n";
const std::string R46 = std::string(46, '=') + "\n";
const std::string T36 = "\t" + std::string(36, '=') + "\n";

std::string framed(const std::string& lines) {
    return SEP + lines + SEP;
}

using Render = std::function<std::string(const Answer&)>;

struct Case {
    const char* what;
    Render render;
    std::vector<Byte> answer;
    const char* product;
    std::string expected;
};

std::string run(const Case& c) {
    return c.render(Answer(c.answer, c.product, 7));
}

// clang-format off
const Case POWER[] = {
    {"KX74 swaps 12V and 24V", renderPowerType, {2}, "KX74\n",
     framed("Power Type = 2\nfd(7) Power Type = 12V\n")},
    {"P1 code 2", renderPowerType, {2}, "KX02\n", framed("Power Type = 2\nfd(7) Power Type = 24V\n")},
    {"P2 code 1", renderPowerType, {1}, "KX66\n", framed("Power Type = 1\nfd(7) Power Type = 9~48V (Reserved)\n")},
    {"P3 before P6", renderPowerType, {0}, "KX35\n", framed("Power Type = 0\nfd(7) Power Type = 9~60V (Default)\n")},
    {"P6 code 3", renderPowerType, {3}, "KX07\n", framed("Power Type = 3\nfd(7) Power Type = 12V\n")},
    {"KX60 has two codes", renderPowerType, {2}, "KX60\n", framed("Power Type = 2\n")},
    {"KX61 code 0", renderPowerType, {0}, "KX61\n", framed("Power Type = 0\nfd(7) Power Type = 12V(default)\n")},
    {"unlisted product", renderPowerType, {5}, "KX99\n",
     framed("Power Type = 5\nfd(7) Power Type Output Result Data: 0x05\n")},
    {"code above 3", renderPowerType, {4}, "KX25\n", framed("Power Type = 4\n")},
    {"delay both on, codes 1", renderDelayTime, {0xC9}, "KX07\n",
     framed("Delay Off Control = 1\nfd(7) Delay Off Time = 1 Minutes\n"
            "Delay On Control = 1\nfd(7) Delay On Time = 30 Seconds\n")},
    {"delay times shown while disabled", renderDelayTime, {0x3F}, "KX07\n",
     framed("Delay Off Control = 0\nfd(7) Delay Off Time = 18 hours\n"
            "Delay On Control = 0\nfd(7) Delay On Time = 1 hours\n")},
    {"thresholds row 2", renderStartupShutdown, {2}, "KX07\n",
     R46 + "         12V           /         24V\n   Startup/Shutdown        Startup/Shutdown\n"
           "    12.5V  11.0V            25.0V   22.0V\n" + R46},
    {"thresholds KX61 row 1", renderStartupShutdown, {1}, "KX61\n",
     R46 + "         12V           /         24V\n   \t  High/Low        \t\t  High/Low\n"
           "    11.5V  10.0V            24.0V   22.5V\n" + R46},
    {"thresholds KX61 has two rows", renderStartupShutdown, {2}, "KX61\n",
     R46 + "         12V           /         24V\n   \t  High/Low        \t\t  High/Low\n" + R46},
    {"power range row 0", renderPowerRange, {0}, "KX07\n",
     R46 + "      12V        /        24V\n    High/Low            High/Low\n"
           "   10.5V  9.5V         25.0V   23.0V\n" + R46},
    {"watchdog unit product, 0x81 shows Sec", renderWatchdog, {0x81, 30}, "KX07\n",
     framed("fd(7) Watchdog Timer Enable.\nfd(7) Watchdog Time = 30 Sec (3~255)\n")},
    {"watchdog unit product, byte 1 shows Min", renderWatchdog, {0x01, 5}, "KX18\n",
     framed("fd(7) Watchdog Timer Disable. (Default)\nfd(7) Watchdog Time = 5 Min (3~255)\n")},
    {"watchdog KX71 hint", renderWatchdog, {0x80, 9}, "KX71\n",
     framed("fd(7) Watchdog Timer Enable.\nfd(7) Watchdog Time = 9 (3~255).When the version is "
            "R07 or later, use Min; otherwise, use Sec.\n")},
    {"watchdog others", renderWatchdog, {0x00, 255}, "KX02\n",
     framed("fd(7) Watchdog Timer Disable. (Default)\nfd(7) Watchdog Time = 255 (3~255 Sec)\n")},
};

const Case VERSION[] = {
    {"7-byte layout", renderMcuVersion, {'S', 'T', '3', '2', 'F', 'R', 7}, "KX73\n",
     framed("fd(7) MCU Version = R07\n")},
    {"9-byte layout", renderMcuVersion, {0, 0, 0, 0, 0, 0, 0, 'T', 12}, "KX56\n",
     framed("fd(7) MCU Version = T12\n")},
    {"KX35 with 9 bytes", renderMcuVersion, {0, 0, 0, 0, 0, 0, 0, 'R', 3}, "KX35\n",
     framed("fd(7) MCU Version = R03\n")},
    {"S set without letter", renderMcuVersion, {0, 0, 0, 0, 0, 0, 0, 3, 12}, "KX61\n",
     framed("fd(7) MCU Version = 12\n")},
    {"S set with letter", renderMcuVersion, {'R', 1, 0, 0, 0, 0, 0, 'T', 4}, "KX30\n",
     framed("fd(7) MCU Version = T04\n")},
    {"letter first", renderMcuVersion, {'R', 9}, "KX07\n", framed("fd(7) MCU Version = R09\n")},
    {"'S' is no letter", renderMcuVersion, {'S', 9, 0, 0, 0, 0, 0, 0, 0}, "KX07\n",
     framed("fd(7) MCU Version = 83\n")},
    {"letter at byte 7", renderMcuVersion, {5, 0, 0, 0, 0, 0, 0, 'R', 7}, "KX07\n",
     framed("fd(7) MCU Version = R07\n")},
    {"9-byte rule", renderMcuVersion, {'R', 1, 0, 0, 0, 0, 0, 'T', 5}, "KX59\n",
     framed("fd(7) MCU Version = T05\n")},
    {"KX73 with 9 bytes takes the general rule", renderMcuVersion, {'R', 1, 0, 0, 0, 0, 0, 'T', 5}, "KX73\n",
     framed("fd(7) MCU Version = R01\n")},
    {"module name", renderModuleName, {'O', 'r', 'i', 'n', '-', 'N', 'X', '1', '6', 'G', 'Z'}, "KX07\n",
     T36 + "\tfd(7) MODULE NAME:Orin-NX16G\n" + T36},
    {"board id", renderBoardId, {4, 3}, "KX73\n", framed("fd(7) Front Board ID is KX87\n")},
    {"board id none", renderBoardId, {0, 8}, "KX73\n",
     framed("fd(7) No Front board Insert\nfd(7) Rear Board ID is KX88\n")},
    {"io board KX24", renderIoBoardId, {0x06}, "KX24\n", framed("Board C.\nKX75.\n")},
    {"io board KX22", renderIoBoardId, {0x01}, "KX22\n", framed("Board B.\nKX81.\n")},
    {"io board KX36", renderIoBoardId, {1}, "KX36\n", framed("fd(7) KX78\n")},
    {"io board other product", renderIoBoardId, {1}, "KX07\n", SEP},
    {"expansion KX21", renderExpansionBoardId, {0x10}, "KX21\n", framed("Connected KX28.\n")},
    {"expansion KX22", renderExpansionBoardId, {0x07}, "KX22\n", framed("Board D.\nKX84.\n")},
    {"expansion KX24 other kind", renderExpansionBoardId, {0x04}, "KX24\n", framed("Board A.\n")},
};

const Case IO[] = {
    {"MDIO lines", renderMdioMode, {0x05}, "KX07\n",
     framed("fd(7) MDIO1 is Output.\nfd(7) MDIO2 is Input.\nfd(7) MDIO3 is Output.\n"
            "fd(7) MDIO4 is Input.\nfd(7) MDIO5 is Input.\n")},
    {"GPIO line 8", renderGpioMode, {0x80}, "KX07\n",
     framed("fd(7) GPIO1 is Input.\nfd(7) GPIO2 is Input.\nfd(7) GPIO3 is Input.\nfd(7) GPIO4 is Input.\n"
            "fd(7) GPIO5 is Input.\nfd(7) GPIO6 is Input.\nfd(7) GPIO7 is Input.\nfd(7) GPIO8 is Output.\n")},
    {"GPI set bit is low", renderGpiActiveMode, {0x01}, "KX68\n",
     framed("fd(7) GPI12 Active Low.\nfd(7) GPI34 Active High.\n")},
    {"GPI set bit is high", renderGpiActiveMode, {0x01}, "KX04\n",
     framed("fd(7) GPI12 Active High.\nfd(7) GPI34 Active Low.\n")},
    {"GPI other product", renderGpiActiveMode, {0x03}, "KX02\n",
     framed("fd(7) GPI Active mode Result Data: 0x03\n")},
    {"GPO pull-up", renderGpoPullupMode, {0x02}, "KX74\n",
     SEP + "fd(7) GPO12 Internal pull High.\nfd(7) GPO34 External pull high.\n"},
    {"GPO pull-up other product", renderGpoPullupMode, {0x02}, "KX02\n",
     SEP + "fd(7) GPO Pull Up Mode Result Data: 0x02\n"},
    {"MDO five lines", renderMdoStatus, {0x11}, "KX69\n",
     framed("fd(7) MDO1 High.\nfd(7) MDO2 Low.\nfd(7) MDO3 Low.\nfd(7) MDO4 Low.\nfd(7) MDO5 High.\n")},
    {"MDO two lines", renderMdoStatus, {0xFE}, "KX60\n", framed("fd(7) MDO1 Low.\nfd(7) MDO2 High.\n")},
    {"MDO other product", renderMdoStatus, {0xA5}, "KX07\n", SEP + "fd(7) MDO Result Data: 0xA5\n"},
    {"MDI has no two-line products", renderMdiStatus, {0x01}, "KX60\n", SEP + "fd(7) MDI Result Data: 0x01\n"},
    {"MDI three lines", renderMdiStatus, {0x04}, "KX42\n", framed("fd(7) MDI1 Low.\nfd(7) MDI2 Low.\nfd(7) MDI3 High.\n")},
    {"iButton key reversed, last byte left out", [](const Answer& a) { return renderIButtonKey(0x1F, a); },
     {0x01, 0x11, 0x12, 0xAA}, "KX07\n",
     framed("fd(7) Key Index = 0x1f\nfd(7) Key Data [0] = 0x12\nfd(7) Key Data [1] = 0x11\n"
            "fd(7) Key Data [2] = 0x1\n")},
    {"iButton empty answer", [](const Answer& a) { return renderIButtonKey(0, a); }, {}, "KX07\n",
     framed("fd(7) Key Index = 0\n")},
    {"RFID key in order", [](const Answer& a) { return renderRfidKey(3, a); }, {'1', 0}, "KX07\n",
     framed("fd(7) Key Index = 0x3\nfd(7) Key Data [0] = 0x31\nfd(7) Key Data [1] = 0\n")},
    {"G-sensor register", [](const Answer& a) { return renderGsensor(0x2C, a); }, {0x2C, 0x80}, "KX07\n",
     framed("fd(7) Register Index = 0x2c\nfd(7) Data 0x2c = 0x80\n")},
};

const Case FANS[] = {
    {"fan values", renderFanValue, {10, 20, 30}, "KX07\n",
     framed("fd(7) CPU FAN = 10\nfd(7) TOP FAN = 20\nfd(7) FAN KIT = 30\n")},
    {"fan values KX64", renderFanValue, {10, 20, 30}, "KX64\n",
     framed("fd(7) POE FAN = 20\nfd(7) GRAPHICS FAN = 30\n")},
    {"fan speed", renderFanRpm, {0xB8, 0x0B}, "KX07\n",
     framed("fd(7) CPU FAN RPM = 3000\nfd(7) TOP FAN RPM = 0\nfd(7) FAN KIT RPM = 0\n")},
    {"fan speed KX64, no separators", renderFanRpm, {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 0x10, 0x27}, "KX64\n",
     "fd(7) SYS FAN1 RPM = 1\nfd(7) SYS FAN2 RPM = 2\nfd(7) SYS FAN3 RPM = 3\nfd(7) SYS FAN4 RPM = 4\n"
     "fd(7) POE FAN RPM = 5\nfd(7) GRAPHICS FAN RPM = 10000\n"},
    {"SP339A", renderSp339aMode, {0x73}, "KX07\n",
     "fd(7) SP339A-1 is RS422 Mode.\nfd(7) SP339A-1 is Terminal Off.\n"
     "fd(7) SP339A-2 is RS422 Mode.\nfd(7) SP339A-2 is Terminal On.\n"},
    {"SP339A loop back", renderSp339aMode, {0x04}, "KX07\n",
     "fd(7) SP339A-1 is Loop Back Mode.\nfd(7) SP339A-1 is Terminal On.\n"
     "fd(7) SP339A-2 is Loop Back Mode.\nfd(7) SP339A-2 is Terminal Off.\n"},
    {"key lock KX30 two keys", renderKeyLock, {0x06}, "KX30\n",
     framed("fd(7) Key Lock Status : 0x06\nfd(7) Volume key lock Off.\nfd(7) Backlight key lock On.\n")},
    {"key lock KX34 four keys", renderKeyLock, {0x0D}, "KX34\n",
     framed("fd(7) Key Lock Status : 0x0D\nfd(7) Volume key lock On.\nfd(7) Backlight key lock Off.\n"
            "fd(7) MUTE key lock On.\nfd(7) Function Key lock On.\n")},
    {"key lock code", renderKeyLock, {3}, "KX07\n",
     framed("fd(7) Key Lock Status : 0x03\nfd(7) Volume key and Backlight key locked.\n")},
    {"key lock unknown code", renderKeyLock, {4}, "KX07\n", framed("fd(7) Key Lock Status : 0x04\n")},
};
// clang-format on

void expectAll(const Case* cases, size_t n) {
    for (size_t i = 0; i < n; ++i) EXPECT_EQ(run(cases[i]), cases[i].expected) << cases[i].what;
}

TEST(SystemPowerIoRender, Power) {
    expectAll(POWER, std::size(POWER));
}
TEST(SystemPowerIoRender, VersionAndBoards) {
    expectAll(VERSION, std::size(VERSION));
}
TEST(SystemPowerIoRender, IoLinesAndKeys) {
    expectAll(IO, std::size(IO));
}
TEST(SystemPowerIoRender, FansTransceiversKeyLock) {
    expectAll(FANS, std::size(FANS));
}

TEST(SystemPowerIoRender, EventLogCountersAreShiftChains) {
    std::vector<Byte> log = {24, 1, 15, 8, 0, 0, 25, 12, 31, 23, 59, 58, 5, 0, 0, 0,
                             1,  8, 0,  0, 3, 1, 1,  1,  0,  0,  0,  0,  9, 0, 0, 0};
    std::string lines =
        "fd(7) First Year = 24\nfd(7) First Month = 1\nfd(7) First Day = 15\n"
        "fd(7) First Hour = 8\nfd(7) First Minute = 0\nfd(7) First Second = 0\n"
        "fd(7) Last Year = 25\nfd(7) Last Month = 12\nfd(7) Last Day = 31\n"
        "fd(7) Last Hour = 23\nfd(7) Last Minute = 59\nfd(7) Last Second = 58\n"
        "fd(7) Startup Count = 5\nfd(7) Shutdown Count = 256\n"
        "fd(7) Over Voltage Count = 24\nfd(7) Low Voltage Count = 0\n";
    EXPECT_EQ(renderEventLog(Answer(log, "KX07\n", 7)), framed(lines));
    EXPECT_EQ(renderEventLog(Answer(log, "KX58\n", 7)),
              framed(lines + "fd(7) BKP over current Count = 9\n"));
    // A shift count of 64 or more wraps, as the MCU's arithmetic does.
    std::vector<Byte> wrap(28, 0);
    wrap[12] = 1;
    wrap[13] = 65;
    Answer a(wrap, "KX07\n", 7);
    EXPECT_NE(renderEventLog(a).find("fd(7) Startup Count = 2\n"), std::string::npos);
}

TEST(SystemPowerIoRender, SystemParameterRecords) {
    const std::vector<Byte> mac = {0x00, 0x1B, 0xEB, 0x0A, 0x0B, 0x0C};
    const std::vector<Byte> empty(16, 0xFF);
    const std::vector<Byte> serial = {0, 'A', 0xFF, 'B', '1', 0};
    struct {
        int index;
        std::vector<Byte> answer;
        const char* product;
        std::string line;
    } cases[] = {
        {0, mac, "KX07\n", "\tfd(7) System Parameter MAC:001BEB0A0B0C"},
        {1, empty, "KX07\n", "\tfd(7) System Parameter SOM S/N:is Empty"},
        {1, serial, "KX07\n", "\tfd(7) System Parameter SOM S/N:AB1"},
        {2, serial, "KX12\n", "\tfd(7) System Parameter SOM ASSY:AB1"},
        {2, {}, "KX18\n", "\tfd(7) System Parameter SOM ASSY:is Empty"},
        {2, serial, "KX02\n", "\tfd(7) System Parameter Carrier Board S/N:AB1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(renderSystemParameter(c.index, Answer(c.answer, c.product, 7)),
                  T36 + c.line + "\n" + T36)
            << c.line;
}

TEST(SystemPowerIoRender, MachineParameterPrintsAll64Bytes) {
    std::vector<Byte> two = {0x01, 0xAB};
    std::string bytes = "0x01 0xAB ";
    for (int i = 2; i < 64; ++i) bytes += "0x00 ";
    EXPECT_EQ(renderMachineParameter(0, Answer(two, "KX07\n", 7), true),
              T36 + "\tfd(7) Parameter 0:" + bytes + "\n" + T36);
    EXPECT_EQ(renderMachineParameter(15, Answer(two, "KX07\n", 7), false),
              "\tfd(7) Parameter 15:" + bytes + "\n");
}

TEST(SystemPowerIoRender, RequestPacking) {
    // Delay time: off code in bits 0-2, on code in bits 3-5, enables in bits 6 and 7.
    EXPECT_EQ(delayTimeByte(true, 3, false, 0), 0x43);
    EXPECT_EQ(delayTimeByte(false, 0, true, 2), 0x90);
    EXPECT_EQ(delayTimeByte(true, 7, true, 7), 0xFF);

    // iButton key: index, 1, CRC, codes 6..1, family, ",".
    EXPECT_EQ(iButtonRequest(2, 0x01, {0x11, 0x12, 0x13, 0x14, 0x15, 0x16}, 0x1AA),
              (std::array<Byte, 11>{2, 1, 0xAA, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11, 0x01, 0x2C}));
    // RFID key: ten characters zero-padded, CR, LF, ",".
    EXPECT_EQ(rfidRequest(9, "12345"), (std::array<Byte, 15>{9, 1, '1', '2', '3', '4', '5', 0, 0, 0,
                                                             0, 0, 0x0D, 0x0A, 0x2C}));
    EXPECT_EQ(rfidRequest(0, "0123456789AB")[11], '9');

    // MAC: pairs of hex digits; a pair that is not hex gives 0, a short entry leaves zeros.
    EXPECT_EQ(systemParameterRequest(0, "001BEBzz0C"),
              (std::array<Byte, 17>{0, 0x00, 0x1B, 0xEB, 0x00, 0x0C}));
    EXPECT_EQ(systemParameterRequest(0, "0102030405060708")[6], 0x06);
    EXPECT_EQ(systemParameterRequest(0, "0102030405060708")[7], 0x00);
    // Serial numbers: 16 characters at most, zero-padded.
    auto serial = systemParameterRequest(2, "SN-0123456789ABCDEF");
    EXPECT_EQ(serial[0], 2);
    EXPECT_EQ(std::string(serial.begin() + 1, serial.end()), "SN-0123456789ABC");
    EXPECT_EQ(systemParameterRequest(1, "AB")[3], 0);

    EXPECT_FALSE(machineParameterRequest(3, "123").has_value());
    auto mp = machineParameterRequest(3, "0102");
    ASSERT_TRUE(mp.has_value());
    std::array<Byte, 65> expected{3, 0x01, 0x02};
    EXPECT_EQ(*mp, expected);
}

TEST(SystemPowerIoRender, GsensorWritableSet) {
    std::string writable;
    for (unsigned i = 0; i < 0x40; ++i)
        if (gsensorWritable(i)) writable += format("%02X ", i);
    EXPECT_EQ(writable, "1D 1E 1F 20 21 22 23 24 25 26 27 28 29 2A 2C 2D 2E 2F 31 38 ");
    EXPECT_FALSE(gsensorWritable(0x12D));  // only the index typed counts, not its low byte
}

TEST(SystemPowerIoRender, ShortAnswersAreSeenNotReadPast) {
    // A 1-byte watchdog answer: the time reads as 0 and the render knows it wanted 2.
    std::vector<Byte> one = {0x80};
    Answer a(one, "KX02\n", 7);
    EXPECT_EQ(renderWatchdog(a),
              framed("fd(7) Watchdog Timer Enable.\nfd(7) Watchdog Time = 0 (3~255 Sec)\n"));
    EXPECT_EQ(a.needed(), 2u);
    Answer none({}, "KX07\n", 7);
    renderEventLog(none);
    EXPECT_EQ(none.needed(), 28u);
}

// Every row and render of these handlers survives any answer on any product, the same
// way each time, and never reads past the answer (the sanitizer builds run this).
TEST(SystemPowerIoRender, EveryRowAndRenderTakesAnyAnswerOnAnyProduct) {
    const char* const products[] = {"KX07\n", "KX21\n", "KX22\n", "KX24\n", "KX30\n",
                                    "KX34\n", "KX35\n", "KX61\n", "KX64\n", "KX71\n",
                                    "KX73\n", "KX74\n", "KX99\n", "\n"};
    std::mt19937 random(11);
    std::vector<std::vector<Byte>> answers;
    for (size_t n = 0; n <= 70; n += (n < 12 ? 1 : 29)) {
        answers.emplace_back(n, 0x00);
        answers.emplace_back(n, 0xFF);
        std::vector<Byte> r(n);
        for (Byte& b : r) b = static_cast<Byte>(random());
        answers.push_back(r);
    }
    const auto all = [](std::span<const Byte> answer, const char* product) {
        std::string out;
        for (const shapes::GetRef& r : system_power_io::rows)
            out += shapes::renderGet(r.row, 3, answer, product);
        for (const shapes::RenderRef& r : system_power_io::renders)
            out += r.render(answer, 3, product);
        for (const shapes::SetRef& r : system_power_io::setRows) {
            if (const shapes::Variant* v = shapes::pickVariant(r.row, product))
                for (const shapes::Step& step : v->steps) out += shapes::renderStep(step);
            else
                out += shapes::renderNotSupported(r.row, product);
        }
        for (const shapes::MenuRef& r : system_power_io::menus)
            out += shapes::renderStep(shapes::menuStep(r.row));
        return out;
    };
    EXPECT_EQ(system_power_io::renders.size(), 26u);
    for (const auto& answer : answers)
        for (const char* product : products)
            EXPECT_EQ(all(answer, product), all(answer, product)) << product << answer.size();
}

// The rows these handlers share with the other groups' shapes: what the menus show.
TEST(SystemPowerIoRender, SetRowsShowTheirMenus) {
    const auto steps = [](const shapes::SetRow& row, const char* product) {
        std::string out;
        const shapes::Variant* v = shapes::pickVariant(row, product);
        if (!v) return shapes::renderNotSupported(row, product);
        for (const shapes::Step& step : v->steps) out += shapes::renderStep(step);
        return out;
    };
    const std::string select = "Select which option you want to do:";
    EXPECT_EQ(steps(system_power_io::SET_POWER_TYPE, "KX31\n"),
              "========\t\tPower Type\t\t========\n0. 9 ~ 60V (Default)\n1. Reserved (9~60V)\n"
              "2. 24V\n3. 12V\n" +
                  select);
    EXPECT_EQ(steps(system_power_io::SET_POWER_TYPE, "KX66\n"),
              "========  KX66\n does not support this function  ========\n" + std::string(56, '=') +
                  "\n");
    EXPECT_EQ(
        steps(system_power_io::SET_FAN_VALUE, "KX64\n"),
        "========            Set POE FAN Value           ========\nRange 0-100, OFF=0, ON=1-100: "
        "========            Set GRAPHICS FAN Value      ========\nRange 0-100, OFF=0, ON=1-100: ");
    const std::string pullup = steps(system_power_io::SET_GPO_PULLUP_MODE, "KX57\n");
    EXPECT_TRUE(
        pullup.starts_with("========\t\tGPO12 Pull up Control \t\t========\n"
                           "0. Internal pull high (default)\n1. External pull high\n"))
        << pullup;
}

}  // namespace
