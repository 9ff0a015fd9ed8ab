// Configuration and product name errors: NUL bytes, repeated keys, the 32-bit debug mask,
// echoed text clipped and escaped, refused product names, an unusable configuration
// directory, and a command whose device the configuration does not enable.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "brdsim.h"
#include "init.h"
#include "launch.h"
#include "run_program.h"

namespace {

struct ParseCase {
    std::string text;
    std::string error;  // empty: parses
};

bool parse(const std::string& text, BrdConfig* cfg, std::string* error) {
    std::string copy = text;
    FILE* f = fmemopen(copy.data(), copy.size(), "r");
    bool ok = parseConfigFile(f, "p.conf", cfg, error);
    fclose(f);
    return ok;
}

std::string makeTempDir() {
    char tmpl[] = "/tmp/brdctl-conf-XXXXXX";
    const char* dir = mkdtemp(tmpl);
    EXPECT_NE(dir, nullptr);
    return dir ? dir : "/tmp";
}

}  // namespace

TEST(HardeningConfig, FileErrorsNameTheLine) {
    const std::string longValue(200, '7');
    const ParseCase cases[] = {
        {std::string("<MCU_INFO>\nDEBUG_LEVEL=1\0\n", 26), "p.conf:2: NUL byte in the line"},
        {"<MCU_INFO>\nMCU_DEVICE=/dev/a,115200,1\n\nMCU_DEVICE=/dev/b,115200,1\n",
         "p.conf:4: 'MCU_DEVICE' repeated (first set on line 2)"},
        {"<MCU_INFO>\nDEBUG_LEVEL=1\n<CAN_INFO>\n<MCU_INFO>\nDEBUG_LEVEL=2\n",
         "p.conf:5: 'DEBUG_LEVEL' repeated (first set on line 2)"},
        // The same key in different sections, and CAN devices, may repeat.
        {"<MCU_UPDATE_INFO>\nFILE_PATH=/a\n<CAN_UPDATE_INFO>\nFILE_PATH=/b\n", ""},
        {"<CAN_INFO>\nCAN_DEVICE=/dev/a,115200,1\nCAN_DEVICE=/dev/a,115200,1\n", ""},
        {"<MCU_INFO>\nDEBUG_LEVEL=0x100000000\n",
         "p.conf:2: bad number '0x100000000' for DEBUG_LEVEL"},
        {"<MCU_UPDATE_INFO>\nWRITE_SIZE=" + longValue + "x\n",
         "p.conf:2: bad number '" + std::string(80, '7') + "...' for WRITE_SIZE"},
        {"<MCU_INFO>\nMCU_DEVICE=/dev/a,\x1b[2J,1\n", "p.conf:2: bad baud rate '\\x1b[2J'"},
        {"<MCU_INFO>\nK\xff=1\n", "p.conf:2: unknown key 'K\\xff'"},
    };
    for (const ParseCase& c : cases) {
        SCOPED_TRACE(c.text);
        BrdConfig cfg;
        std::string error;
        EXPECT_EQ(parse(c.text, &cfg, &error), c.error.empty());
        EXPECT_EQ(error, c.error);
    }
}

TEST(HardeningConfig, DebugLevelTakesAny32BitMask) {
    const struct {
        const char* text;
        int mask;
    } cases[] = {
        {"0xFFFFFFFF", -1}, {"0x80000009", int(0x80000009u)}, {"4294967295", -1}, {"9", 9}};
    for (const auto& c : cases) {
        BrdConfig cfg;
        std::string error;
        EXPECT_TRUE(parse(std::string("<MCU_INFO>\nDEBUG_LEVEL=") + c.text + "\n", &cfg, &error))
            << error;
        EXPECT_EQ(cfg.debugLevel, c.mask) << c.text;
    }
}

TEST(HardeningConfig, ProductNames) {
    const struct {
        std::string name;
        bool refused;
    } cases[] = {
        {"KX07", false},
        {"/../../../../tmp/x", true},
        {"a/b", true},
        {".hidden", true},
        {"..", true},
        {std::string(62, 'A'), false},
        {std::string(63, 'A'), true},
        {"KX.07", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(productNameProblem(c.name) != nullptr, c.refused) << c.name;
}

TEST(HardeningConfig, StartUpRefusals) {
    std::string dir = makeTempDir();
    std::string noMcu = dir + "/NOMCU.conf";
    { std::ofstream(noMcu) << "<MCU_INFO>\nMCU_DEVICE=/dev/ttyS4,115200,0\n"; }
    std::string file = dir + "/plain";
    { std::ofstream(file) << "x"; }
    struct Case {
        std::string product, configDir;
        const char* args;
        std::string err;  // expected on stderr, after "<program>: "
        int brdctlStatus, brdcmdStatus;
    };
    const Case cases[] = {
        {"/../../../tmp/x", dir, "02 01 01",
         "product name '/../../../tmp/x' refused: it contains '/'", 255, 3},
        {".KX07", dir, "02 01 01", "product name '.KX07' refused: it starts with '.'", 255, 3},
        {"KX07\x1b]0;t\x07", dir, "02 01 01", "no configuration file KX07\\x1b]0;t\\x07.conf", 255,
         3},
        {"KX07", dir + "/missing", "02 01 01",
         "BRDCTL_CONFIG_DIR " + dir + "/missing: cannot search: No such file or directory", 255, 3},
        {"KX07", file, "02 01 01", "BRDCTL_CONFIG_DIR " + file + ": cannot search: not a directory",
         255, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.err);
        std::vector<std::pair<std::string, std::string>> env = {{"BRDCTL_PRODUCT", c.product},
                                                                {"BRDCTL_CONFIG_DIR", c.configDir}};
        ProgramResult a = runProgram(BRDCTL_BIN, {"02", "01", "01"}, "", env, 10000);
        EXPECT_EQ(a.status, c.brdctlStatus);
        EXPECT_NE(a.err.find("brdctl: " + c.err), std::string::npos) << a.err;
        EXPECT_EQ(a.out, "");
        ProgramResult b =
            runProgram(BRDCMD_BIN, {"ST_SYSTEM_GET_0C_01_TEMPERATURE"}, "", env, 10000);
        EXPECT_EQ(b.status, c.brdcmdStatus);
        EXPECT_NE(b.err.find("brdcmd: " + c.err), std::string::npos) << b.err;
    }

    // No enabled system MCU: brdctl shows its usage text as before; brdcmd names the file.
    std::vector<std::pair<std::string, std::string>> env = {{"BRDCTL_PRODUCT", "NOMCU"},
                                                            {"BRDCTL_CONFIG_DIR", dir}};
    ProgramResult a = runProgram(BRDCTL_BIN, {"02", "01", "01"}, "", env, 10000);
    EXPECT_EQ(a.status, 0);
    EXPECT_NE(a.out.find("[Error] Input  Error!!!"), std::string::npos);
    ProgramResult b = runProgram(BRDCMD_BIN, {"ST_SYSTEM_GET_0C_01_TEMPERATURE"}, "", env, 10000);
    EXPECT_EQ(b.status, 3);
    EXPECT_NE(b.err.find("brdcmd: " + noMcu + ": no enabled MCU_DEVICE in <MCU_INFO>"),
              std::string::npos)
        << b.err;
}

TEST(HardeningConfig, DeviceCheckPerLink) {
    // A board with CAN devices only stays usable for CAN commands.
    MCU_CONTENT* savedMcu = mcu_content;
    mcu_content = nullptr;
    nCANDevice = 1;
    g_configPath = "/etc/brdctl/configs/CANONLY.conf";
    testing::internal::CaptureStderr();
    EXPECT_TRUE(LAUNCH_CHECK_DEVICES(false, true));
    EXPECT_FALSE(LAUNCH_CHECK_DEVICES(true, false));
    nCANDevice = 0;
    EXPECT_FALSE(LAUNCH_CHECK_DEVICES(false, true));
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("/etc/brdctl/configs/CANONLY.conf: no enabled MCU_DEVICE"),
              std::string::npos);
    EXPECT_NE(err.find("/etc/brdctl/configs/CANONLY.conf: no enabled CAN_DEVICE"),
              std::string::npos);
    mcu_content = savedMcu;
}
