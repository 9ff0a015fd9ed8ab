// The FM and TPMS handlers end to end: the table's handler of each row against the
// simulated FM module and TPMS receiver, the exact bytes that reach the line, the
// frequency kept between commands, and brdcmd run from the outside for a fresh process,
// the FM time-out and the real-time wait ended by the interrupt.
#include "fm/fm_handlers.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "board_fixture.h"
#include "handler_call.h"
#include "interactive_program.h"
#include "run_program.h"
#include "tpms.h"
#include "tpms/tpms_handlers.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;

using Outcome = HandlerCall;
constexpr auto call = callHandler;

void freshFrequency() {
    data2 = 0x2E;
    data3 = 0x22;
}

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

struct RowCase {
    const char* product;
    const char* name;
    const char* input;
    Bytes line;
    const char* shown;  // a text the output holds
    int result;
    bool ended = false;  // the input ended at a prompt
};

const char* const DONE = "command executed successfully.\n";
const char* const NOT_DONE = "command executed unsuccessfully!!!\n";

// clang-format off
const RowCase ROWS[] = {
    {"KX07", "FM_POWER_ON_OFF", "1\n", {0xF1, 0x80, 0x01, 0xF2, 0xF2}, DONE, 1},
    {"KX07", "FM_POWER_ON_OFF", "2\n0\n", {0xF1, 0x80, 0x00, 0xF2, 0xF2},
     "\nSelect Error !!! Please select a option again.", 1},
    {"KX07", "FM_CONFIG", "2\n", {0xF1, 0x82, 0x02, 0xF2}, DONE, 1},
    {"KX07", "FM_SET_VOLUME", "63\n", {0xF1, 0x84, 0x3F, 0xF2}, DONE, 1},
    {"KX07", "FM_SET_VOLUME", "x\n64\n5\n", {0xF1, 0x84, 0x05, 0xF2}, "\nInput Error !!! Please input a number.", 1},
    {"KX07", "FM_SET_MUTE", "1\n", {0xF1, 0x86, 0x01, 0xF2}, DONE, 1},
    {"KX07", "FM_SET_FREQ", "10790\n", {0xF1, 0x88, 0x26, 0x2A, 0xF2}, "\n\tSet frequency : 107.90 MHz\n", 1},
    {"KX07", "FM_SET_FREQ", "7599\n10791\n8750\n", {0xF1, 0x88, 0x2E, 0x22, 0xF2}, "Set frequency : 87.50 MHz", 1},
    // The module of a USA product refuses the Japanese band the menu allows.
    {"KX07", "FM_SET_FREQ", "7600\n", {0xF1, 0x88, 0xB0, 0x1D, 0xF2}, NOT_DONE, 0},
    // Only F1 and F2 in bytes 2-3 are escaped, and only for this command and the seeks.
    {"KX56", "FM_SET_FREQ", "8688\n", {0xF1, 0x88, 0xF0, 0x21, 0xF2}, "Set frequency : 86.88 MHz", 1},
    {"KX56", "FM_SET_FREQ", "8689\n", {0xF1, 0x88, 0xF0, 0x01, 0x21, 0xF2}, "Set frequency : 86.89 MHz", 1},
    {"KX56", "FM_SET_FREQ", "8690\n", {0xF1, 0x88, 0xF0, 0x02, 0x21, 0xF2}, "Set frequency : 86.90 MHz", 1},
    {"KX56", "FM_SET_FREQ", "8691\n", {0xF1, 0x88, 0xF3, 0x21, 0xF2}, "Set frequency : 86.91 MHz", 1},
    {"KX22", "FM_AUTO_SCAN", "", {0xF1, 0x8A, 0xF2, 0xF2},
     "\tFM Station : 88.00\n\tFM Station : 93.90\n\tFM Station : 102.30\n=", 1},
    {"KX56", "FM_RDS_STATUS", "", {0xF1, 0x8C, 0xF2, 0xF2},
     "\tPID Status :\t\tTrue!!\n\tPS Status :\t\tNULL!!\n\tRDS Status :\t\tTrue!!\n", 1},
    {"KX07", "FM_GET_PID", "", {0xF1, 0x8E, 0xF2, 0xF2}, "\nPID Data : 0xC2 0x01 \n", 1},
    // Byte 2 is an end code as stored; this command's frame goes out unchanged.
    {"KX07", "FM_GET_PS", "", {0xF1, 0x90, 0xF2, 0xF2},
     "\nPS Data : 0x42 0x52 0x44 0x20 0x46 0x4D 0x20 0x20 \n", 1},
    {"KX56", "FM_GET_PS", "", {0xF1, 0x90, 0xF2, 0xF2}, "\nPS Data : \n", 1},
    {"KX07", "FM_GET_RDS", "", {0xF1, 0x92, 0xF2, 0xF2}, "\nRDS Data : 0x54 0x72 ", 1},
    {"KX56", "FM_SEEK_UP", "", {0xF1, 0x94, 0x2E, 0x22, 0xF2}, "\n\tSeek UP frequency : 89.45 MHz\n", 1},
    {"KX56", "FM_SEEK_DOWN", "", {0xF1, 0x96, 0x2E, 0x22, 0xF2}, "\n\tSeek Down frequency : 86.88 MHz\n", 1},
    {"KX07", "FM_AUDIO_SWITCH", "1\n", {0xF1, 0x98, 0x01, 0xF2}, DONE, 1},
    {"KX07", "FM_GET_VOICE", "", {0xF1, 0x9A, 0xF2, 0xF2}, "\n\tVolume Level : 20\n", 1},
    {"KX22", "FM_GET_FM_ZONE", "", {0xF1, 0x9C, 0xF2, 0xF2}, "\n\tFM Zone : EUROPE\n", 1},
    {"KX07", "FM_SET_FLASH", "", {0xF1, 0x00, 0x03, 0x20, 0x01, 0x48, 0xF2}, DONE, 1},
    {"KX07", "FM_LOAD_DEFAULT", "", {0xF1, 0x00, 0x03, 0x08, 0x44, 0xF2}, DONE, 1},
    {"KX07", "FM_GET_BREAK", "", {}, "", 0},
    // End of input: nothing goes out.
    {"KX07", "FM_SET_VOLUME", "", {}, "Which level you want to set:", 0, true},
    {"KX07", "TPMS_ATB01_DISPLAY_MODE", "", {'A', 'T', 'B', '0', '1'},
     "result data 0 = 0x1\n", 1},
};
// clang-format on

TEST(FmHandlers, EachRowSendsItsFrameAndReadsTheAnswer) {
    for (const RowCase& c : ROWS) {
        BoardFixture board(c.product);
        freshFrequency();
        Outcome r = call(board, c.name, c.input);
        const std::string what = std::string(c.product) + " " + c.name + " <" + c.input + ">\n";
        EXPECT_EQ(r.result, c.result) << what << r.out << r.err;
        EXPECT_EQ(r.line, c.line) << what;
        EXPECT_NE(r.out.find(c.shown), std::string::npos) << what << r.out;
        EXPECT_EQ(r.err, c.ended ? std::string(g_progName) + ": input ended\n" : "") << what;
    }
}

TEST(FmHandlers, WholeOutputOfASetting) {
    BoardFixture board("KX07");
    freshFrequency();
    Outcome r = call(board, "FM_SET_VOLUME", "40\n");
    const std::string fd = std::to_string(board.fd());
    EXPECT_EQ(r.out,
              "============         FM Set Volume        ==========\n"
              "\t\tSet Volume (0~63) :\n"
              "====================================================\n"
              "Which level you want to set:"
              "=========================== Result ====================================\n"
              "Receive Data >> 0xF1 0x85 0x01 0xF2 \n"
              "\tfd(" +
                  fd +
                  ") FM_SET_VOLUME command executed successfully.\n"
                  "=======================================================================\n");
    // The value is patched into the pooled frame; the table keeps its row.
    int index = 0;
    findCommandIndex("FM_SET_VOLUME", &index);
    EXPECT_EQ(getCommandByIndex(mcu_content, index)->cmd_data[2], 40);
    EXPECT_EQ(findFunctionEntry("FM_SET_VOLUME")->cmd[2], 0);
    EXPECT_EQ(board.sim.fmState().volume, 40);
    EXPECT_EQ(call(board, "FM_GET_VOICE", "").result, 1);
}

TEST(FmHandlers, FrequencyKeptBetweenCommands) {
    BoardFixture board("KX56");
    freshFrequency();
    const struct {
        const char* name;
        const char* input;
        Bytes line;
        bool wrongAnswer;  // an answer to another command moves nothing
    } steps[] = {
        {"FM_SEEK_UP", "", {0xF1, 0x94, 0x2E, 0x22, 0xF2}, false},          // to 89.45
        {"FM_SEEK_UP", "", {0xF1, 0x94, 0xF0, 0x01, 0x22, 0xF2}, false},    // wraps to 76.66
        {"FM_SEEK_DOWN", "", {0xF1, 0x96, 0xF0, 0x02, 0x1D, 0xF2}, false},  // wraps to 89.45
        {"FM_SEEK_DOWN", "", {0xF1, 0x96, 0xF0, 0x01, 0x22, 0xF2}, true},
        {"FM_SEEK_DOWN", "", {0xF1, 0x96, 0xF0, 0x01, 0x22, 0xF2}, false},  // to 86.88
        {"FM_SET_FREQ", "8179\n", {0xF1, 0x88, 0xF3, 0x1F, 0xF2}, false},
        {"FM_SEEK_UP", "", {0xF1, 0x94, 0xF3, 0x1F, 0xF2}, false},
    };
    for (const auto& s : steps) {
        if (s.wrongAnswer) board.sim.queueFault({brdsim::FaultKind::WrongCommand});
        Outcome r = call(board, s.name, s.input);
        EXPECT_EQ(r.line, s.line) << s.name << " " << r.out;
        EXPECT_EQ(r.result, 1) << s.name << r.out;
    }
    EXPECT_EQ(data2, 0xF0);  // the last seek found 86.88
    EXPECT_EQ(data3, 0x21);
}

TEST(TpmsHandlers, SensorList) {
    const std::string HEAD =
        "========    Set Total Number of TPMS sensor     ========\nTotal Number(1~24) : ";
    const std::string IDS = "========\t\tSet Sensor ID\t\t========\n";
    const std::string RULE = std::string(56, '=') + "\n";
    const std::string ERROR = "\nInput Error !!! Please input a number.\n";
    const struct {
        const char* input;
        int result;
        std::vector<uint32_t> ids;
        std::string out;  // whole output, or "" to skip
        bool ended;
    } cases[] = {
        {"0\n", 1, {}, HEAD + IDS + RULE, false},
        {"25\n2\nABCD1234\nxyz\n123456789\n00c0ffee\n",
         1,
         {0xABCD1234, 0x00C0FFEE},
         HEAD + ERROR + "Total Number(1~24) : " + IDS + "Sensor ID 1 : Sensor ID 2 : " + ERROR +
             "Sensor ID 2 : " + ERROR + "Sensor ID 2 : " + RULE,
         false},
        {"24\n", 0, {}, "", true},
        {"3\n1\n2\n", 0, {1, 2}, "", true},
        {"", 0, {}, HEAD, true},
    };
    BoardFixture board("KX07");
    for (const auto& c : cases) {
        tpms::storeSensorId(TPMS_Data[5], 0x55555555);  // cleared by every run
        Outcome r = call(board, "TPMS_SET_SENSOR_ID", c.input);
        EXPECT_EQ(r.result, c.result) << c.input;
        EXPECT_TRUE(r.line.empty()) << c.input;
        if (!c.out.empty()) {
            EXPECT_EQ(r.out, c.out) << c.input;
        }
        EXPECT_EQ(r.err.find("input ended") != std::string::npos, c.ended) << c.input << r.err;
        EXPECT_EQ(nWheelNumber, static_cast<int>(c.ids.size())) << c.input;
        for (size_t i = 0; i < c.ids.size(); ++i) {
            std::array<BYTE, tpms::SENSOR_RECORD_SIZE> want{};
            tpms::storeSensorId(want, c.ids[i]);
            EXPECT_EQ(TPMS_Data[i], want) << c.input << " sensor " << i;
        }
        EXPECT_EQ(TPMS_Data[5][0], 0) << c.input;
    }
    // The byte order on its own: ABCD1234 is AB CD 12 34.
    call(board, "TPMS_SET_SENSOR_ID", "1\nABCD1234\n");
    EXPECT_EQ(Bytes(TPMS_Data[0].begin(), TPMS_Data[0].begin() + 4),
              (Bytes{0xAB, 0xCD, 0x12, 0x34}));
}

// ---- brdcmd from the outside ----

class FmProgram : public ::testing::Test {
   protected:
    void SetUp() override {
        char tmpl[] = "/tmp/fm_handlers_test.XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
        ASSERT_TRUE(mcu_.start());
        ASSERT_TRUE(can_.start());
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    // KX56's configuration: the system MCU, and the CAN link when `withCan`.
    void configure(bool withCan) {
        std::ofstream f(dir_ + "/KX56.conf");
        f << "<MCU_INFO>\nMCU_DEVICE=" << mcu_.ptyPath() << ",115200,1\nDEBUG_LEVEL=0\n"
          << "<CAN_INFO>\nCAN_DEVICE=" << can_.ptyPath() << ",115200," << (withCan ? 1 : 0) << "\n";
    }
    std::vector<std::string> env(const char* scale = "1") {
        return {"BRDCTL_CONFIG_DIR=" + dir_, "BRDCTL_PRODUCT=KX56",
                std::string("BRDCTL_TIMEOUT_SCALE=") + scale};
    }
    ProgramResult run(const char* name, const char* scale = "1") {
        std::vector<std::pair<std::string, std::string>> vars;
        for (const std::string& e : env(scale))
            vars.emplace_back(e.substr(0, e.find('=')), e.substr(e.find('=') + 1));
        return runProgram(BRDCMD_BIN, {name}, "", vars, 20000);
    }

    std::string dir_;
    brdsim::Simulator mcu_{"KX56"};
    brdsim::Simulator can_{"KX56"};
};

TEST_F(FmProgram, FreshProcessStartsAt8750AndTimesOut) {
    configure(false);
    ProgramResult r = run("FM_SEEK_UP");
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_EQ(mcu_.lineBytes(), (Bytes{0xF1, 0x94, 0x2E, 0x22, 0xF2}));
    EXPECT_NE(r.out.find("Seek UP frequency : 89.45 MHz"), std::string::npos) << r.out;

    // The FM time-out is 10 s, shortened here: the handler prints nothing past its title.
    mcu_.queueFault({brdsim::FaultKind::NoAnswer});
    auto t0 = Clock::now();
    r = run("FM_GET_FM_ZONE", "100");
    EXPECT_LT(Clock::now() - t0, std::chrono::seconds(5));
    EXPECT_EQ(r.status, 1) << r.out << r.err;
    EXPECT_NE(r.out.find("Get FM Zone"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("Result"), std::string::npos) << r.out;

    r = run("TPMS_GET_REALTIME_DATA");
    EXPECT_EQ(r.status, 3);
    EXPECT_EQ(r.err,
              "brdcmd: TPMS_GET_REALTIME_DATA: no CAN device configured (no enabled CAN_DEVICE "
              "line under <CAN_INFO>)\n");
    EXPECT_EQ(r.out.find("Wait for"), std::string::npos) << r.out;
}

const std::string WAITING =
    "mcuType = 192\nWait for getting CAN message ...\nPlease press CTRL+C to exit.\n";

TEST_F(FmProgram, RealTimeWaitEndsOnInterrupt) {
    configure(true);
    {
        InteractiveProgram quiet(BRDCMD_BIN, {"TPMS_GET_REALTIME_DATA"}, env());
        ASSERT_TRUE(quiet.waitFor(WAITING)) << quiet.out;
        quiet.interrupt();
        EXPECT_EQ(quiet.finish(), 0) << quiet.out;
        EXPECT_EQ(quiet.out.substr(quiet.out.find("mcuType")), WAITING + "\nExit.\n");
    }
    InteractiveProgram child(BRDCMD_BIN, {"TPMS_GET_REALTIME_DATA"}, env());
    ASSERT_TRUE(child.waitFor(WAITING)) << child.out;
    auto sensors = brdsim::tpmsDefaultSensors();
    const char* const ends[] = {" 4A 00\n", " 4B 00\n", " 4C 01\n"};
    for (size_t i = 0; i < 3; ++i) {
        can_.injectRaw(brdsim::encodeTpmsRecord(sensors[i]));
        ASSERT_TRUE(child.waitFor(ends[i])) << child.out;
    }
    child.interrupt();
    EXPECT_EQ(child.finish(), 0) << child.out;
    std::string shown = child.out.substr(child.out.find(WAITING) + WAITING.size());
    EXPECT_TRUE(std::regex_match(shown, std::regex("[0-2][0-9]:[0-5][0-9]:[0-5][0-9]\\.[0-9]{3}  "
                                                   "AB CD 12 34 00 E6 4A 00\n"
                                                   ".{12}  00 C0 FF EE 00 E4 4B 00\n"
                                                   ".{12}  13 57 24 68 00 BE 4C 01\n"
                                                   "\nExit.\n")))
        << shown;
}

TEST_F(FmProgram, MenuNamesTheWheelsOfTheSensorList) {
    configure(true);
    InteractiveProgram child(BRDCMD_BIN, {}, env());
    ASSERT_TRUE(child.waitFor("Select a group: ")) << child.out;
    std::smatch m;
    ASSERT_TRUE(std::regex_search(child.out, m, std::regex(" *([0-9]+)\\. TPMS\n")));
    const std::string group = m[1].str() + "\n";
    child.type(group);
    ASSERT_TRUE(child.waitFor("Select a command: "));
    auto pick = [&](const char* name) {
        std::smatch c;
        std::string tail = child.out.substr(child.out.rfind("TPMS\n"));
        EXPECT_TRUE(std::regex_search(tail, c, std::regex(" *([0-9]+)\\. " + std::string(name))));
        return c[1].str() + "\n";
    };
    child.type(pick("TPMS_SET_SENSOR_ID") + "2\n0BADF00D\n00C0FFEE\n");
    ASSERT_TRUE(child.waitFor("Select a command: ", 2)) << child.out;
    child.type(pick("TPMS_GET_REALTIME_DATA"));
    ASSERT_TRUE(child.waitFor(WAITING)) << child.out;
    auto sensors = brdsim::tpmsDefaultSensors();
    can_.injectRaw(brdsim::encodeTpmsRecord(sensors[1]));
    ASSERT_TRUE(child.waitFor("  wheel 2\n")) << child.out;
    can_.injectRaw(brdsim::encodeTpmsRecord(sensors[0]));  // not in the list
    ASSERT_TRUE(child.waitFor(" 4A 00\n")) << child.out;
    can_.injectRaw(brdsim::encodeTpmsRecord(sensors[3]));
    ASSERT_TRUE(child.waitFor("  wheel 1\n")) << child.out;
    child.interrupt();
    ASSERT_TRUE(child.waitFor("\nExit.\n")) << child.out;
    // The menu goes on after the wait.
    ASSERT_TRUE(child.waitFor("Select a command: ", 3)) << child.out;
    child.type("q\n");
    EXPECT_EQ(child.finish(), 0) << child.out;
    EXPECT_EQ(count(child.out, "  wheel "), 2u) << child.out;
}

// brdsim itself streams the records on its NXP controller's line, the configured CAN link.
TEST(TpmsProgram, BrdsimStreamsToTheWait) {
    char tmpl[] = "/tmp/fm_tpms_sim.XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    const std::string dir = tmpl;
    {
        InteractiveProgram sim(
            BRDSIM_BIN, {"--product", "KX07", "--write-config", dir, "--tpms-rate", "50"}, {});
        ASSERT_TRUE(sim.waitFor("\n", 2)) << sim.out;  // the MCU's line, then the NXP's
        InteractiveProgram cmd(BRDCMD_BIN, {"TPMS_GET_REALTIME_DATA"},
                               {"BRDCTL_CONFIG_DIR=" + dir, "BRDCTL_PRODUCT=KX07"});
        EXPECT_TRUE(cmd.waitFor("  AB CD 12 34 ")) << cmd.out;
        cmd.interrupt();
        EXPECT_EQ(cmd.finish(), 0) << cmd.out;
        sim.interrupt();
        EXPECT_EQ(sim.finish(), 0) << sim.out;
    }
    std::filesystem::remove_all(dir);
}

}  // namespace
