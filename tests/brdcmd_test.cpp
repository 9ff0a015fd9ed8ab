// brdcmd: name resolution, arguments and the menu in-process; the program itself run
// as a child against the simulated board (listing, running by name, menu, exit statuses).
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "brdcmd_cli.h"
#include "brdsim.h"
#include "run_program.h"

namespace {

using brdcmd::Match;

int noHandler(int, char*) {
    return 1;
}

// A small table with the shapes resolution has to tell apart.
const FUNCTION_MAP_ENTRY kRows[] = {
    {"ST_SYSTEM_GET_01_01_MCU_VERSION", noHandler, {0, 2, 1, -1}},
    {"ST_SYSTEM_GET_01_01_MCU_VERSION_EXT", noHandler, {0, 2, 1, -1}},
    {"ST_SYSTEM_GET_0A_01_IGNITION_STATUS", noHandler, {0, 2, 10, -1}},
    {"ST_SYSTEM_SET_0A_01_IGNITION", noHandler, {0, 3, 10, -1}},
    {"ST_SYSTEM_GET_0B_01_TWICE", noHandler, {0, 2, 11, -1}},
    {"ST_SYSTEM_GET_0B_01_TWICE", noHandler, {0, 2, 12, -1}},
    {"ST_BKP_GET_00_00_RESERVED", noHandler, {-1}},
    {"FM_SET_FREQ", noHandler, {241, 3, 0, 242, -1}},
    {"DSU_FM_SET_FREQ_MODE", noHandler, {12, 3, 5, -1}},
    {"TPMS_ATB01_DISPLAY_MODE", noHandler, {65, 84, 66, 48, 49, -1}},
    {"ST_IAP_START", noHandler, {3, 0, 0, -1}},
    {"ST_RAW_STATUS", noHandler, {9, 2, 1, -1}},
};
const brdcmd::Table kTable(kRows);

TEST(BrdcmdResolve, PicksExactThenPrefixThenSubstring) {
    struct Case {
        const char* typed;
        Match match;
        std::vector<const FUNCTION_MAP_ENTRY*> rows;
    };
    const Case cases[] = {
        {"ST_SYSTEM_GET_01_01_MCU_VERSION", Match::Exact, {&kRows[0]}},
        {"st_system_get_01_01_mcu_version", Match::Exact, {&kRows[0]}},
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
        brdcmd::Resolution r = brdcmd::resolveName(c.typed, kTable);
        EXPECT_EQ(r.match, c.match) << c.typed;
        EXPECT_EQ(r.rows, c.rows) << c.typed;
    }
}

TEST(BrdcmdResolve, KindComesFromNameThenTemplate) {
    const std::pair<const FUNCTION_MAP_ENTRY*, std::string> cases[] = {
        {&kRows[2], "GET"}, {&kRows[3], "SET"}, {&kRows[7], "SET"},
        {&kRows[9], "-"},   {&kRows[10], "-"},  {&kRows[11], "GET"},
    };
    for (const auto& [row, kind] : cases) EXPECT_EQ(brdcmd::commandKind(*row), kind) << row->name;
}

TEST(BrdcmdArgs, ParsesEveryForm) {
    using O = brdcmd::Options;
    struct Case {
        std::vector<std::string> args;
        O::Action action;
        std::string name, filter;
    };
    const Case cases[] = {
        {{}, O::Menu, "", ""},
        {{"--help"}, O::Help, "", ""},
        {{"-h"}, O::Help, "", ""},
        {{"--version"}, O::Version, "", ""},
        {{"--list"}, O::List, "", ""},
        {{"--list", "volt"}, O::List, "", "volt"},
        {{"IGNITION"}, O::Run, "IGNITION", ""},
        {{"--list", "a", "b"}, O::UsageError, "", ""},
        {{"--help", "x"}, O::UsageError, "", ""},
        {{"--bogus"}, O::UsageError, "", ""},
        {{"IGNITION", "extra"}, O::UsageError, "IGNITION", ""},
        {{""}, O::UsageError, "", ""},
    };
    for (const Case& c : cases) {
        O o = brdcmd::parseArgs(c.args);
        std::string shown = c.args.empty() ? "(none)" : c.args[0];
        EXPECT_EQ(o.action, c.action) << shown;
        EXPECT_EQ(o.name, c.name) << shown;
        EXPECT_EQ(o.filter, c.filter) << shown;
        EXPECT_EQ(o.error.empty(), c.action != O::UsageError) << shown;
    }
}

// Drives the menu over the real table with scripted input and a recording runner.
struct MenuRun {
    int status = -1;
    std::string out, err;
    std::vector<std::string> ran;
};

MenuRun driveMenu(const std::string& input, int handlerResult = 1) {
    MenuRun m;
    std::string in = input;
    FILE* inF = in.empty() ? fopen("/dev/null", "r") : fmemopen(in.data(), in.size(), "r");
    char *outBuf = nullptr, *errBuf = nullptr;
    size_t outLen = 0, errLen = 0;
    FILE* outF = open_memstream(&outBuf, &outLen);
    FILE* errF = open_memstream(&errBuf, &errLen);
    m.status = brdcmd::runMenu(inF, outF, errF, brdcmd::commandTable(),
                               [&](const FUNCTION_MAP_ENTRY& row) {
                                   m.ran.push_back(row.name);
                                   return handlerResult;
                               });
    fclose(inF);
    fclose(outF);
    fclose(errF);
    m.out.assign(outBuf, outLen);
    m.err.assign(errBuf, errLen);
    free(outBuf);
    free(errBuf);
    return m;
}

TEST(BrdcmdMenu, NavigatesGroupsAndCommands) {
    const brdcmd::Table table = brdcmd::commandTable();
    const auto groups = brdcmd::menuGroups(table);
    ASSERT_GE(groups.size(), 2u);
    const auto first = brdcmd::groupRows(groups[0], table);
    const auto second = brdcmd::groupRows(groups[1], table);
    ASSERT_GE(first.size(), 2u);

    // group 1 -> command 2 -> command 1 -> back -> group 2 -> command 1 -> quit
    MenuRun m = driveMenu("1\n2\n1\n0\n2\n1\nq\n");
    EXPECT_EQ(m.status, 0);
    EXPECT_EQ(m.ran, (std::vector<std::string>{first[1]->name, first[0]->name, second[0]->name}));
    EXPECT_EQ(m.err, "");
    EXPECT_NE(m.out.find("  1. " + groups[0] + "\n"), std::string::npos);
}

TEST(BrdcmdMenu, LeavesAndReports) {
    struct Case {
        const char* input;
        int handlerResult;
        int status;
        size_t runs;
        bool complaint;
    };
    const Case cases[] = {
        {"", 1, 0, 0, false},               // end of input at the groups
        {"1\n", 1, 0, 0, false},            // end of input at the commands
        {"1\n1\n", 1, 0, 1, false},         // end of input after a command
        {"1\n1\n", 0, 1, 1, false},         // the command failed
        {"1\n1\n1\nq\n", -4, 1, 2, false},  // one failure is enough
        {"1\nb\nQ\n", 1, 0, 0, false},
        {"x\n9999\n 1 \n1\nq\n", 1, 0, 1, true},  // bad choices re-ask
        {"1\n-1\n1x\nq\n", 1, 0, 0, true},
    };
    for (const Case& c : cases) {
        MenuRun m = driveMenu(c.input, c.handlerResult);
        EXPECT_EQ(m.status, c.status) << c.input;
        EXPECT_EQ(m.ran.size(), c.runs) << c.input;
        EXPECT_EQ(m.err.find("invalid choice") != std::string::npos, c.complaint) << c.input;
    }
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

    // Starts the simulated board and writes the configuration naming it.
    void startBoard() {
        ASSERT_TRUE(sim_.start());
        brdsim::writeConfig(dir_, "KX07", sim_.ptyPath());
    }

    ProgramResult run(const std::vector<std::string>& args, const std::string& input = "",
                      const std::string& product = "KX07") {
        return runProgram(BRDCMD_BIN, args, input,
                          {{"BRDCTL_CONFIG_DIR", dir_}, {"BRDCTL_PRODUCT", product}}, 20000);
    }

    // The row a typed name resolves to in the real table.
    static const FUNCTION_MAP_ENTRY* rowOf(const std::string& typed) {
        brdcmd::Resolution r = brdcmd::resolveName(typed, brdcmd::commandTable());
        return r.rows.size() == 1 ? r.rows[0] : nullptr;
    }

    // Whether the simulator saw the request of `row` (device, command, address).
    bool sawRequestOf(const FUNCTION_MAP_ENTRY& row) const {
        for (const brdsim::Request& q : sim_.requests())
            if (q.device == row.cmd[0] && q.command == row.cmd[1] && q.address == row.cmd[2])
                return true;
        return false;
    }

    std::string dir_;
    brdsim::Simulator sim_{"KX07"};
};

// None of these reaches the start-up: there is no configuration for the product.
TEST_F(BrdcmdProgram, AnswersWithoutConfiguration) {
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string out, err;  // whole texts; "*" means "not empty"
    };
    const std::string usage = brdcmd::usageText();
    const Case cases[] = {
        {{"--help"}, 0, usage, ""},
        {{"--version"}, 0, std::string("brdcmd ") + BRD_VERSION + "\nlink library 3.3.1\n", ""},
        {{"NO_SUCH_COMMAND"}, 2, "", "brdcmd: unknown command 'NO_SUCH_COMMAND'\n"},
        {{"AUTO_REBOOT_FUNCTION"},
         2,
         "",
         "brdcmd: ambiguous name 'AUTO_REBOOT_FUNCTION': 2 candidates\n"
         "ST_BIOS_GET_16_01_AUTO_REBOOT_FUNCTION\n"
         "ST_BIOS_SET_16_01_AUTO_REBOOT_FUNCTION\n"},
        {{"CONFIG_MAIN_EXIT"}, 2, "", "brdcmd: unknown command 'CONFIG_MAIN_EXIT'\n"},
        {{"--bogus"}, 2, "", "brdcmd: unknown option '--bogus'\nTry 'brdcmd --help'.\n"},
        {{"A", "B"}, 2, "", "brdcmd: unexpected argument 'B'\nTry 'brdcmd --help'.\n"},
        {{"--list", "NO_SUCH_TEXT"}, 2, "", "brdcmd: no command contains 'NO_SUCH_TEXT'\n"},
    };
    for (const Case& c : cases) {
        ProgramResult r = run(c.args, "", "NO_SUCH_PRODUCT");
        EXPECT_EQ(r.status, c.status) << c.args[0];
        EXPECT_EQ(r.out, c.out) << c.args[0];
        EXPECT_EQ(r.err, c.err) << c.args[0];
    }
}

TEST_F(BrdcmdProgram, ListsRunnableRowsInColumns) {
    ProgramResult all = run({"--list"}, "", "NO_SUCH_PRODUCT");
    ASSERT_EQ(all.status, 0) << all.err;
    std::istringstream lines(all.out);
    std::string line;
    size_t count = 0, groupColumn = std::string::npos;
    while (std::getline(lines, line)) {
        ++count;
        std::istringstream words(line);
        std::string name, group, kind, extra;
        words >> name >> group >> kind;
        EXPECT_FALSE(words >> extra) << line;
        EXPECT_TRUE(kind == "GET" || kind == "SET" || kind == "-") << line;
        EXPECT_EQ(group, functionGroup(name.c_str())) << line;
        const FUNCTION_MAP_ENTRY* row = findFunctionEntry(name.c_str());
        ASSERT_NE(row, nullptr) << line;
        EXPECT_TRUE(brdcmd::isRunnable(*row)) << line;
        size_t at = line.find(group, name.size());
        if (groupColumn == std::string::npos) groupColumn = at;
        EXPECT_EQ(at, groupColumn) << line;
    }
    EXPECT_GT(count, 400u);
    EXPECT_EQ(all.out.find("ST_BKP_GET_00_00_RESERVED"), std::string::npos);
    EXPECT_EQ(all.out.find("CONFIG_MAIN_"), std::string::npos);

    ProgramResult some = run({"--list", "auto_reboot"}, "", "NO_SUCH_PRODUCT");
    EXPECT_EQ(some.status, 0);
    EXPECT_EQ(some.out,
              "ST_BIOS_GET_16_01_AUTO_REBOOT_FUNCTION  BIOS  GET\n"
              "ST_BIOS_SET_16_01_AUTO_REBOOT_FUNCTION  BIOS  SET\n");
}

TEST_F(BrdcmdProgram, UniquePrefixRunsTheFullNamedRow) {
    startBoard();
    const FUNCTION_MAP_ENTRY* row = rowOf("ST_SYSTEM_GET_0A_01");
    ASSERT_NE(row, nullptr);
    ProgramResult r = run({"st_system_get_0a_01"});
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_NE(r.out.find(std::string(row->name) + " command executed successfully."),
              std::string::npos)
        << r.out;
    EXPECT_TRUE(sawRequestOf(*row));
}

TEST_F(BrdcmdProgram, FailedExchangeExitsOne) {
    startBoard();
    sim_.queueFault({brdsim::FaultKind::NoAnswer, 0, 1000});
    const FUNCTION_MAP_ENTRY* row = rowOf("ST_SYSTEM_GET_0A_01");
    ASSERT_NE(row, nullptr);
    ProgramResult r = run({row->name});
    EXPECT_EQ(r.status, 1) << r.out << r.err;
    EXPECT_NE(r.out.find(std::string(row->name) + " : Request Timeout !!!"), std::string::npos);
}

TEST_F(BrdcmdProgram, MenuRunsWhatIsChosen) {
    startBoard();
    const FUNCTION_MAP_ENTRY* row = rowOf("ST_SYSTEM_GET_0A_01");
    ASSERT_NE(row, nullptr);
    const brdcmd::Table table = brdcmd::commandTable();
    const auto groups = brdcmd::menuGroups(table);
    const std::string group = functionGroup(row->name);
    size_t g = std::find(groups.begin(), groups.end(), group) - groups.begin() + 1;
    const auto rows = brdcmd::groupRows(group, table);
    size_t c = std::find(rows.begin(), rows.end(), row) - rows.begin() + 1;
    ASSERT_LE(c, rows.size());

    // group -> command -> back -> quit
    std::string script = std::to_string(g) + "\n" + std::to_string(c) + "\nb\nq\n";
    ProgramResult r = run({}, script);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(sawRequestOf(*row));
    EXPECT_NE(r.out.find(std::string(row->name) + " command executed successfully."),
              std::string::npos);
    EXPECT_EQ(sim_.requestCount(), 1u);

    // Input ends at the command list: nothing more is sent.
    sim_.clearRequests();
    r = run({}, std::to_string(g) + "\n");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(sim_.requestCount(), 0u);
}

TEST_F(BrdcmdProgram, ConfigurationOrDeviceErrorExitsThree) {
    struct Case {
        const char* what;
        std::vector<std::string> args;
        std::string product;  // a product without a configuration file...
        std::string device;   // ...or KX07 with a configuration naming this device
        std::string inErr;    // the error line names this
    };
    const Case cases[] = {
        {"no configuration, by name",
         {"ST_SYSTEM_GET_0A_01"},
         "NO_SUCH_PRODUCT",
         "",
         "NO_SUCH_PRODUCT"},
        {"no configuration, menu", {}, "NO_SUCH_PRODUCT", "", "NO_SUCH_PRODUCT"},
        {"device cannot be opened",
         {"ST_SYSTEM_GET_0A_01"},
         "KX07",
         "/nonexistent/ttyX9",
         "/nonexistent/ttyX9"},
    };
    for (const Case& c : cases) {
        if (!c.device.empty()) brdsim::writeConfig(dir_, c.product, c.device);
        ProgramResult r = run(c.args, "1\n1\nq\n", c.product);
        EXPECT_EQ(r.status, 3) << c.what << r.err;
        EXPECT_NE(r.err.find(c.inErr), std::string::npos) << c.what << ": " << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << c.what << ": " << r.err;
    }

    // A malformed configuration names the file and line; nothing is opened.
    FILE* f = fopen((dir_ + "/KX07.conf").c_str(), "w");
    ASSERT_NE(f, nullptr);
    fputs("<MCU_INFO>\nNO_SUCH_KEY=1\n", f);
    fclose(f);
    ProgramResult r = run({"ST_SYSTEM_GET_0A_01"});
    EXPECT_EQ(r.status, 3);
    EXPECT_NE(r.err.find("KX07.conf:2"), std::string::npos) << r.err;
    EXPECT_EQ(r.out, "");
}

}  // namespace
