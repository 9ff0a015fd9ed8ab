// brdctl end to end: the real program against the simulated board on a pseudo-terminal.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "brdsim.h"
#include "run_program.h"

namespace {

const char* const kUsage =
    "[Error] Input  Error!!!\n"
    "[Example] To query ST_SYSTEM_GET_01_01_MCU_VERSION : ./brdctl 02(GET) 01 01 (Enter "
    "hexadeciaml data.)\n"
    "[Example] To query ST_SYSTEM_SET_13_01_ALARM_TIMER : ./brdctl 03(SET) 13 01 11 11 11 "
    "(Data In) (Enter hexadeciaml data.)\n";

std::string makeTempDir() {
    char tmpl[] = "/tmp/brdctl-test-XXXXXX";
    const char* dir = mkdtemp(tmpl);
    EXPECT_NE(dir, nullptr);
    return dir ? dir : "/tmp";
}

class BrdctlTest : public ::testing::Test {
   protected:
    void SetUp() override {
        ASSERT_TRUE(sim.start());
        dir = makeTempDir();
        brdsim::writeConfig(dir, "KX07", sim.ptyPath());
    }
    void TearDown() override { sim.stop(); }

    ProgramResult brdctl(const std::vector<std::string>& args, int timeoutMs = 10000) {
        return runProgram(BRDCTL_BIN, args, "",
                          {{"BRDCTL_PRODUCT", "KX07"}, {"BRDCTL_CONFIG_DIR", dir}}, timeoutMs);
    }

    brdsim::Simulator sim{"KX07"};
    std::string dir;
};

// The port layer's lock message, then the line feed that brdctl prints after start-up.
std::string startupText(const brdsim::Simulator& sim) {
    return "Locking device " + sim.ptyPath() + " successfully\n";
}

TEST_F(BrdctlTest, GetSendsTheRowAndPrintsTheAnswerBytes) {
    const std::pair<brdsim::Bytes, std::string> cases[] = {
        {{0x31, 0x2E, 0x30, 0xAB}, "31 2e 30 ab "},
        {{}, ""},  // an empty answer: only the line ends
    };
    for (const auto& [answer, printed] : cases) {
        sim.clearRequests();
        sim.setAnswer(0x00, 0x02, 0x01, answer);
        ProgramResult r = brdctl({"02", "01", "01"});
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.out, startupText(sim) + "\n[Output] Data out: " + printed + "\n\n");
        auto reqs = sim.requests();
        ASSERT_EQ(reqs.size(), 1u);
        EXPECT_EQ(reqs[0].raw, (brdsim::Bytes{0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}));
    }
}

struct RequestCase {
    std::vector<std::string> args;
    uint8_t command, address;
    brdsim::Bytes data;
};

TEST_F(BrdctlTest, RequestBytesFollowTheArguments) {
    const RequestCase cases[] = {
        {{"03", "13", "01", "11", "11", "11"}, 3, 0x13, {0x11, 0x11, 0x11}},
        {{"03", "13", "01", "ff", "1F"}, 3, 0x13, {0xFF, 0x1F}},
        {{"02", "0A", "01"}, 2, 0x0A, {}},
        {{"02", "0C", "01"}, 2, 0x0C, {}},
    };
    for (const RequestCase& c : cases) {
        sim.clearRequests();
        ProgramResult r = brdctl(c.args);
        EXPECT_EQ(r.status, 0);
        EXPECT_NE(r.out.find("[Output] Data out: "), std::string::npos) << r.out;
        auto reqs = sim.requests();
        ASSERT_EQ(reqs.size(), 1u) << c.args[1];
        EXPECT_EQ(reqs[0].device, 0);
        EXPECT_EQ(reqs[0].command, c.command);
        EXPECT_EQ(reqs[0].address, c.address);
        EXPECT_EQ(reqs[0].data, c.data);
        EXPECT_TRUE(reqs[0].crcOk);
    }
}

TEST_F(BrdctlTest, BadArgumentsPrintUsageAndSendNothing) {
    std::vector<std::string> tooMany = {"03", "13", "01"};
    for (int i = 0; i < 129; ++i) tooMany.push_back("11");
    const std::vector<std::vector<std::string>> cases = {
        {},
        {"02", "01"},
        {"02", "01", "01", "05"},  // a GET takes no data
        {"03", "13", "01"},        // a SET needs data
        {"02", "1", "01"},
        {"02", "001", "01"},
        {"02", "0a", "01"},  // lower case matches no table name
        {"04", "01", "01"},
        {"02", "zz", "01"},
        {"02", "01", "01", "x"},
        {"02", "77", "01"},  // no such row
        tooMany,
    };
    for (const auto& args : cases) {
        ProgramResult r = brdctl(args);
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.out, startupText(sim) + kUsage) << args.size();
    }
    EXPECT_EQ(sim.requestCount(), 0u);
}

TEST_F(BrdctlTest, ExactlyMaximumDataIsAccepted) {
    std::vector<std::string> args = {"03", "13", "01"};
    for (int i = 0; i < 128; ++i) args.push_back("22");
    ProgramResult r = brdctl(args);
    ASSERT_EQ(sim.requestCount(), 1u) << r.out << r.err;
    EXPECT_EQ(sim.requests()[0].data.size(), 128u);
}

TEST_F(BrdctlTest, TwentyTriesThenFailure) {
    sim.queueFault({brdsim::FaultKind::NoAnswer, 0, 20});
    ProgramResult r = brdctl({"02", "01", "01"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, startupText(sim) + "Get MCU version failure.\n");
    EXPECT_EQ(sim.requestCount(), 20u);
}

TEST_F(BrdctlTest, RetriesUntilAnAnswerComes) {
    sim.queueFault({brdsim::FaultKind::NoAnswer, 0, 3});
    ProgramResult r = brdctl({"02", "0A", "01"});
    EXPECT_NE(r.out.find("[Output] Data out: "), std::string::npos);
    EXPECT_EQ(sim.requestCount(), 4u);
}

// Configuration problems: nothing is opened or sent, one line on stderr.
struct ConfigCase {
    const char* name;
    const char* product;
    std::string content;  // empty: no file at all
    const char* errPart;
};

TEST(BrdctlConfig, ConfigurationErrors) {
    brdsim::Simulator sim("KX07");
    ASSERT_TRUE(sim.start());
    const ConfigCase cases[] = {
        {"missing", "KX98", "", "no configuration file KX98.conf for product KX98 in "},
        {"bad line", "KX07", "<MCU_INFO>\nMCU_DEVICE " + sim.ptyPath() + "\n", "KX07.conf:2: "},
        {"unknown key", "KX07", "<MCU_INFO>\nMCU_DEV=" + sim.ptyPath() + ",115200,1\n",
         "KX07.conf:2: unknown key 'MCU_DEV'"},
        {"bad baud", "KX07", "# c\n<MCU_INFO>\nMCU_DEVICE=" + sim.ptyPath() + ",12345,1\n",
         "KX07.conf:3: bad baud rate '12345'"},
        {"bad number", "KX07", "<MCU_INFO>\nDEBUG_LEVEL=0xZZ\n", "KX07.conf:2: bad number"},
        {"no device", "KX07", "<MCU_INFO>\nMCU_DEVICE=/dev/brdctl-no-such-tty,115200,1\n",
         "cannot open /dev/brdctl-no-such-tty: No such file or directory"},
    };
    for (const ConfigCase& c : cases) {
        std::string dir = makeTempDir();
        if (!c.content.empty()) std::ofstream(dir + "/" + c.product + ".conf") << c.content;
        ProgramResult r =
            runProgram(BRDCTL_BIN, {"02", "01", "01"}, "",
                       {{"BRDCTL_PRODUCT", c.product}, {"BRDCTL_CONFIG_DIR", dir}}, 10000);
        EXPECT_EQ(r.status, 255) << c.name;
        EXPECT_NE(r.err.find(c.errPart), std::string::npos) << c.name << ": " << r.err;
        EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << c.name << ": one line: " << r.err;
        EXPECT_EQ(r.out.find("Output"), std::string::npos) << c.name;
    }
    EXPECT_EQ(sim.requestCount(), 0u);
}

}  // namespace
