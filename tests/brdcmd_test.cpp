// brdcmd: name resolution in-process; the program itself run as a child against the
// simulated board (arguments, listing, running by name, menu, exit statuses).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "brdcmd_cli.h"
#include "brdsim.h"
#include "run_program.h"

namespace {

using brdcmd::Match;

// A small table with the shapes resolution has to tell apart.
constexpr core::Link SYS = core::Link::SystemMcu;
const FUNCTION_MAP_ENTRY kRows[] = {
    {"ST_SYSTEM_GET_01_01_MCU_VERSION", nullptr, {0, 2, 1, -1}, SYS, MCU_TYPE_ST},
    {"ST_SYSTEM_GET_01_01_MCU_VERSION_EXT", nullptr, {0, 2, 1, -1}, SYS, MCU_TYPE_ST},
    {"ST_SYSTEM_GET_0A_01_IGNITION_STATUS", nullptr, {0, 2, 10, -1}, SYS, MCU_TYPE_ST},
    {"ST_SYSTEM_SET_0A_01_IGNITION", nullptr, {0, 3, 10, -1}, SYS, MCU_TYPE_ST},
    {"ST_SYSTEM_GET_0B_01_TWICE", nullptr, {0, 2, 11, -1}, SYS, MCU_TYPE_ST},
    {"ST_SYSTEM_GET_0B_01_TWICE", nullptr, {0, 2, 12, -1}, SYS, MCU_TYPE_ST},
    {"ST_BKP_GET_00_00_RESERVED", nullptr, {-1}, SYS, MCU_TYPE_ST},
    {"FM_SET_FREQ", nullptr, {241, 3, 0, 242, -1}, SYS, MCU_TYPE_ST},
    {"DSU_FM_SET_FREQ_MODE", nullptr, {12, 3, 5, -1}, SYS, MCU_TYPE_ST},
    {"TPMS_ATB01_DISPLAY_MODE", nullptr, {65, 84, 66, 48, 49, -1}, SYS, MCU_TYPE_ST},
    {"ST_RAW_STATUS", nullptr, {9, 2, 1, -1}, SYS, MCU_TYPE_ST},
};

TEST(BrdcmdResolve, PicksExactThenPrefixThenSubstring) {
    struct Case {
        const char* typed;
        Match match;
        std::vector<const FUNCTION_MAP_ENTRY*> rows;
    };
    const Case cases[] = {
        {"ST_SYSTEM_GET_01_01_MCU_VERSION", Match::Exact, {&kRows[0]}},
        {"ST_SYSTEM_GET_0A", Match::Prefix, {&kRows[2]}},
        {"FM_SET", Match::Prefix, {&kRows[7]}},  // also inside DSU_FM_SET_...
        {"ignition_status", Match::Substring, {&kRows[2]}},
        {"IGNITION", Match::Ambiguous, {&kRows[2], &kRows[3]}},
        {"ST_SYSTEM_GET_01", Match::Ambiguous, {&kRows[0], &kRows[1]}},
        {"TWICE", Match::Substring, {&kRows[4]}},  // one name, the first row
        {"ST_BKP_GET_00_00_RESERVED", Match::Unknown, {}},
        {"NO_SUCH_COMMAND", Match::Unknown, {}},
    };
    for (const Case& c : cases) {
        brdcmd::Resolution r = brdcmd::resolveName(c.typed, brdcmd::Table(kRows));
        EXPECT_EQ(r.match, c.match) << c.typed;
        EXPECT_EQ(r.rows, c.rows) << c.typed;
    }
    // The kind shown in listings: from the name, else from the template's command byte.
    const std::pair<int, std::string> kinds[] = {{3, "SET"}, {7, "SET"}, {9, "-"}, {10, "GET"}};
    for (const auto& [i, kind] : kinds) EXPECT_EQ(brdcmd::commandKind(kRows[i]), kind) << i;
}

// ---- the program, run from the outside ----

class BrdcmdProgram : public ::testing::Test {
   protected:
    void SetUp() override {
        char tmpl[] = "/tmp/brdcmd_test.XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    ProgramResult run(const std::vector<std::string>& args, const std::string& input = "",
                      const std::string& product = "KX07") {
        return runProgram(BRDCMD_BIN, args, input,
                          {{"BRDCTL_CONFIG_DIR", dir_}, {"BRDCTL_PRODUCT", product}}, 20000);
    }

    std::string dir_;
    brdsim::Simulator sim_{"KX07"};
};

// Nothing here reaches the board: arguments, listing by text, unknown and ambiguous
// names, and a configuration that is missing, names a device that cannot be opened or is
// malformed (status 3 with one error line naming the culprit).
TEST_F(BrdcmdProgram, AnswersWithoutTheBoard) {
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string out, err;   // whole texts; for status 3 a part of the one error line
        std::string conf = "";  // KX07's configuration: a device to name ("/..."), or its text
    };
    const std::string usage = brdcmd::usageText(), tryHelp = "Try 'brdcmd --help'.\n";
    // clang-format off
    const Case cases[] = {
        {{"--help"}, 0, usage, ""},
        {{"-h"}, 0, usage, ""},
        {{"--version"}, 0, std::string("brdcmd ") + BRD_VERSION + "\nlink library 3.3.1\n", ""},
        {{"NO_SUCH_COMMAND"}, 2, "", "brdcmd: unknown command 'NO_SUCH_COMMAND'\n"},
        {{"AUTO_REBOOT_FUNCTION"}, 2, "", "brdcmd: ambiguous name 'AUTO_REBOOT_FUNCTION': 2 candidates\n"
         "ST_BIOS_GET_16_01_AUTO_REBOOT_FUNCTION\nST_BIOS_SET_16_01_AUTO_REBOOT_FUNCTION\n"},
        {{"--bogus"}, 2, "", "brdcmd: unknown option '--bogus'\n" + tryHelp},
        {{"A", "B"}, 2, "", "brdcmd: unexpected argument 'B'\n" + tryHelp},
        {{""}, 2, "", "brdcmd: empty command name\n" + tryHelp},
        {{"--list", "a", "b"}, 2, "", "brdcmd: --list takes at most one text\n" + tryHelp},
        {{"--list", "NO_SUCH_TEXT"}, 2, "", "brdcmd: no command contains 'NO_SUCH_TEXT'\n"},
        {{"--list", "auto_reboot"}, 0, "ST_BIOS_GET_16_01_AUTO_REBOOT_FUNCTION  BIOS  GET\n"
         "ST_BIOS_SET_16_01_AUTO_REBOOT_FUNCTION  BIOS  SET\n", ""},
        {{"ST_SYSTEM_GET_0A_01"}, 3, "", "NO_SUCH_PRODUCT"},
        {{}, 3, "", "NO_SUCH_PRODUCT"},
        {{"ST_SYSTEM_GET_0A_01"}, 3, "", "/nonexistent/ttyX9", "/nonexistent/ttyX9"},
        {{"ST_SYSTEM_GET_0A_01"}, 3, "", "KX07.conf:2", "<MCU_INFO>\nNO_SUCH_KEY=1\n"},
    };
    // clang-format on
    for (const Case& c : cases) {
        const std::string what = c.args.empty() ? "(menu) " + c.conf : c.args[0] + " " + c.conf;
        if (c.conf[0] == '/') brdsim::writeConfig(dir_, "KX07", c.conf);
        if (c.conf[0] == '<') std::ofstream(dir_ + "/KX07.conf") << c.conf;
        ProgramResult r = run(c.args, "1\n1\nq\n", c.conf.empty() ? "NO_SUCH_PRODUCT" : "KX07");
        EXPECT_EQ(r.status, c.status) << what;
        EXPECT_EQ(r.out, c.out) << what;
        if (c.status != 3) {
            EXPECT_EQ(r.err, c.err) << what;
        } else {
            EXPECT_NE(r.err.find(c.err), std::string::npos) << what << ": " << r.err;
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << what << ": " << r.err;
        }
    }
}

// The device a command needs follows its row's link column: a CAN row on a board with
// only an MCU device, an MCU row on one with only a CAN device, are refused before
// anything is sent (status 3, one line naming the file and the missing device). The ST
// MCU's CAN channels are pooled with the CAN rows but need the system MCU.
TEST_F(BrdcmdProgram, NeedsTheDeviceOfTheRowsLink) {
    ASSERT_TRUE(sim_.start());
    const std::string conf = dir_ + "/KX07.conf", device = sim_.ptyPath() + ",115200,1\n";
    const std::string mcuOnly = "<MCU_INFO>\nMCU_DEVICE=" + device,
                      canOnly = "<CAN_INFO>\nCAN_DEVICE=" + device;
    const std::string noCan = "brdcmd: " + conf +
                              ": no enabled CAN_DEVICE in <CAN_INFO>, which this command needs\n",
                      noMcu = "brdcmd: " + conf +
                              ": no enabled MCU_DEVICE in <MCU_INFO>, which this command needs\n";
    struct Case {
        const char* row;
        core::Link link;  // the row's link in the table
        std::string conf, err;
    };
    const Case cases[] = {
        {"NXP_CAN_AP_02_READ_FW_VERSION", core::Link::CurrentCan, mcuOnly, noCan},
        {"ST_CAN1_GET_01_01_ERROR_CODE", core::Link::CurrentCan, canOnly, noMcu},
        {"ST_SYSTEM_GET_0C_01_TEMPERATURE", core::Link::SystemMcu, canOnly, noMcu},
    };
    for (const Case& c : cases) {
        const FUNCTION_MAP_ENTRY* row = findFunctionEntry(c.row);
        ASSERT_NE(row, nullptr) << c.row;
        ASSERT_EQ(row->link, c.link) << c.row;
        std::ofstream(conf) << c.conf;
        sim_.clearRequests();
        ProgramResult r = run({c.row});
        EXPECT_EQ(r.status, 3) << c.row;
        EXPECT_EQ(r.err, c.err) << c.row;
        EXPECT_EQ(sim_.requestCount(), 0u) << c.row;
    }
}

// Every line: a runnable row's name, then its group in one column.
TEST_F(BrdcmdProgram, ListsRunnableRowsInColumns) {
    ProgramResult all = run({"--list"}, "", "NO_SUCH_PRODUCT");
    ASSERT_EQ(all.status, 0) << all.err;
    std::istringstream lines(all.out);
    std::string line, name, group;
    size_t count = 0, groupColumn = 0;
    while (std::getline(lines, line)) {
        std::istringstream(line) >> name >> group;
        const FUNCTION_MAP_ENTRY* row = findFunctionEntry(name.c_str());
        ASSERT_NE(row, nullptr) << line;
        EXPECT_TRUE(brdcmd::isRunnable(*row)) << line;
        if (count++ == 0) groupColumn = line.find(group, name.size());
        EXPECT_EQ(line.find(group, name.size()), groupColumn) << line;
    }
    EXPECT_GT(count, 400u);
}

// By name (a unique prefix runs the full-named row) and through the menu.
TEST_F(BrdcmdProgram, RunsAgainstTheBoard) {
    ASSERT_TRUE(sim_.start());
    brdsim::writeConfig(dir_, "KX07", sim_.ptyPath());
    const brdcmd::Table table = brdcmd::commandTable();
    const FUNCTION_MAP_ENTRY& row = *brdcmd::resolveName("ST_SYSTEM_GET_0A_01", table).rows.at(0);
    const auto position = [](const auto& list, const auto& item) {
        return std::to_string(std::find(list.begin(), list.end(), item) - list.begin() + 1);
    };
    const std::string group = functionGroup(row.name);
    const std::string g = position(brdcmd::menuGroups(table), group) + "\n",
                      c = position(brdcmd::groupRows(group, table), &row) + "\n";
    const std::string ok = std::string(row.name) + " command executed successfully.",
                      timeout = std::string(row.name) + " : Request Timeout !!!";

    struct Case {
        std::vector<std::string> args;
        std::string script;
        int status;
        size_t requests;
        std::string shown;  // on stdout
        bool complaint;     // "invalid choice" on stderr
    };
    // clang-format off
    const Case cases[] = {
        {{"st_system_get_0a_01"}, "", 0, 1, ok, false},
        {{}, g + c + "b\nq\n", 0, 1, ok, false},                  // group -> command -> back -> q
        {{}, g, 0, 0, "", false},                                  // input ends at the commands
        {{}, "x\n" + g + "9999\n" + c + "0\nQ\n", 0, 1, ok, true},  // bad choices re-ask
        {{row.name}, "", 1, 1, timeout, false},                    // the board answers nothing
        {{}, g + c, 1, 1, timeout, false},                         // a command failed
    };
    // clang-format on
    for (const Case& k : cases) {
        const std::string what = (k.args.empty() ? "menu " : k.args[0] + " ") + k.script;
        sim_.clearRequests();
        if (k.shown == timeout) sim_.queueFault({brdsim::FaultKind::NoAnswer});
        ProgramResult r = run(k.args, k.script);
        EXPECT_EQ(r.status, k.status) << what << r.err;
        EXPECT_EQ(sim_.requestCount(), k.requests) << what;
        for (const brdsim::Request& q : sim_.requests())  // the full-named row's request
            EXPECT_EQ((std::tuple<int, int, int>(q.device, q.command, q.address)),
                      std::tuple(row.cmd[0], row.cmd[1], row.cmd[2]))
                << what;
        EXPECT_NE(r.out.find(k.shown), std::string::npos) << what << r.out;
        EXPECT_EQ(r.err.find("invalid choice") != std::string::npos, k.complaint) << what;
    }
}

}  // namespace
