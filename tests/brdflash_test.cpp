// brdflash run as a child against the simulated board's boot loader: whole updates from
// every image format, refusals before anything is sent, configuration errors, and each
// injected fault (retry then success, retry then stop, restart then a second run, a
// write that did not take).
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "brdsim.h"
#include "nxp_controller.h"
#include "run_program.h"

namespace {

using brdsim::Bytes;
using brdsim::FlashFault;
using brdsim::FlashFaultKind;

constexpr uint32_t APP = 0x08004000;
constexpr uint32_t VERSION_AT = 0x0800F000;
constexpr uint32_t RAM_END = 0x20005000;
// Shortens the update time-out to 5 s; the application's 50 ms stay long enough not to
// expire on a busy machine.
constexpr const char* kTimeoutScale = "4";

// A Cortex-M application image for the simulated system MCU.
Bytes makeApp(size_t size, const std::string& tag, uint32_t seed = 1) {
    Bytes d(size);
    uint32_t x = seed;
    for (auto& b : d) {
        x = x * 1103515245u + 12345u;
        b = static_cast<uint8_t>(x >> 16);
    }
    const uint32_t words[2] = {RAM_END, APP + 0x201};
    for (int w = 0; w < 2; ++w)
        for (int i = 0; i < 4; ++i) d[4 * w + i] = static_cast<uint8_t>(words[w] >> (8 * i));
    size_t at = VERSION_AT - APP;
    std::copy(tag.begin(), tag.end(), d.begin() + at);
    d[at + tag.size()] = 0;
    return d;
}

bool haveSrecCat() {
    return std::system("command -v srec_cat >/dev/null 2>&1") == 0;
}

class Brdflash : public ::testing::Test {
   protected:
    void SetUp() override {
        char tmpl[] = "/tmp/brdflash_test.XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
        ASSERT_TRUE(sim_.start());
        ASSERT_FALSE(brdsim::writeConfig(dir_, "KX07", sim_.ptyPath()).empty());
    }
    void TearDown() override {
        sim_.stop();
        std::filesystem::remove_all(dir_);
    }

    std::string writeImage(const std::string& name, const Bytes& app) {
        std::string bin = dir_ + "/" + (name.find(".bin") != std::string::npos ? name : "src.bin");
        {
            std::ofstream f(bin, std::ios::binary);
            f.write(reinterpret_cast<const char*>(app.data()), static_cast<long>(app.size()));
        }
        if (name.find(".bin") != std::string::npos) return bin;
        std::string out = dir_ + "/" + name;
        std::string fmt = name.find(".hex") != std::string::npos ? "-intel" : "-motorola";
        std::string cmd = "srec_cat " + bin + " -binary -offset " + std::to_string(APP) + " -o " +
                          out + " " + fmt + " 2>&1";
        EXPECT_EQ(std::system(cmd.c_str()), 0) << cmd;
        return out;
    }

    // A configuration of our own (the update section's lines given).
    void writeConfig(const std::string& updateSection) {
        std::ofstream f(dir_ + "/KX07.conf");
        f << "<MCU_INFO>\nMCU_DEVICE=" << sim_.ptyPath() << ",115200,1\n" << updateSection;
    }

    ProgramResult run(const std::vector<std::string>& args, int timeoutMs = 30000) {
        return runProgram(BRDFLASH_BIN, args, "",
                          {{"BRDCTL_CONFIG_DIR", dir_},
                           {"BRDCTL_PRODUCT", "KX07"},
                           {"BRDCTL_TIMEOUT_SCALE", kTimeoutScale}},
                          timeoutMs);
    }

    Bytes flash(size_t n) { return sim_.bootLoader().readFlash(APP, n); }

    std::string dir_;
    brdsim::Simulator sim_{"KX07"};
};

TEST_F(Brdflash, UpdatesFromEveryFormat) {
    struct Case {
        const char* file;
        size_t size;
        const char* tag;
    };
    const Case cases[] = {
        {"fw.bin", 0xC000 + 3, "KX07 1.0.1"},
        {"fw.hex", 0xC000, "KX07 1.0.2"},
        {"fw.srec", 0xB800 + 17, "KX07"},
    };
    uint32_t seed = 1;
    for (const Case& c : cases) {
        if (std::string(c.file) != "fw.bin" && !haveSrecCat()) continue;
        Bytes app = makeApp(c.size, c.tag, ++seed);
        std::string path = writeImage(c.file, app);
        ProgramResult r = run({"mcu", path});
        ASSERT_EQ(r.status, 0) << c.file << "\n" << r.err;
        EXPECT_NE(r.out.find("mcu: updated from " + path), std::string::npos) << r.out;
        EXPECT_NE(r.out.find(std::string("application '") + c.tag + "' running"), std::string::npos)
            << r.out;
        // On a pipe: one progress line per 10 %, ending at 100 %.
        EXPECT_NE(r.err.find("write: 50% "), std::string::npos) << r.err;
        EXPECT_NE(r.err.find("verify: 100% "), std::string::npos) << r.err;
        EXPECT_EQ(flash(app.size()), app) << c.file;
        EXPECT_EQ(sim_.bootLoader().appVersion(), c.tag);
        EXPECT_FALSE(sim_.bootLoader().inBootLoader());
        // The rest of the region was erased.
        EXPECT_EQ(sim_.bootLoader().readFlash(APP + app.size(), 16), Bytes(16, 0xFF));
    }
}

TEST_F(Brdflash, RefusesBadImagesBeforeSending) {
    Bytes good = makeApp(0x10000, "KX07 2.0");
    Bytes badSp = good;
    badSp[3] = 0x08;  // stack pointer in flash
    struct Case {
        const char* what;
        std::string file;
        std::string content;  // written as is; empty: no file
        std::vector<std::string> extra;
        std::string why;
    };
    const std::string hexBad = ":020000040800F2\n:0440000001020304B3\n:00000001FF\n";
    const std::string srecBad = "S407000001020304EE\nS9030000FC\n";
    const std::string overlap =
        ":020000040800F2\n:0440000001020304B2\n:0240020055AABD\n:00000001FF\n";
    const std::string past = ":020000040802F0\n:0400000001020304F2\n:00000001FF\n";
    const Case cases[] = {
        {"missing", "none.bin", "", {}, "none.bin: No such file or directory"},
        {"empty", "empty.bin", "", {}, "empty.bin: empty file"},
        {"bad checksum", "bad.hex", hexBad, {}, "bad.hex: line 2: checksum B3, expected B2"},
        {"wrong S-record type",
         "bad.srec",
         srecBad,
         {},
         "bad.srec: line 1: record type S4 is not a valid S-record type"},
        {"overlapping records",
         "ov.hex",
         overlap,
         {},
         "ov.hex: line 3: data at 0x08004002 overlaps an earlier record"},
        {"record past the region",
         "past.hex",
         past,
         {},
         "past.hex: data at 0x08020000-0x08020003 lies outside the application region"},
        {"model mismatch", "other.bin", "", {}, "is not for model 'KX07' (--force accepts it)"},
        {"bad vector table",
         "sp.bin",
         std::string(badSp.begin(), badSp.end()),
         {},
         "sp.bin: bad vector table: initial stack pointer 0x08005000"},
        {"truncated binary",
         "short.bin",
         std::string(good.begin(), good.begin() + 0x400),
         {},
         "short.bin: no model tag: the version address 0x0800F000 lies outside the image"},
    };
    Bytes other = makeApp(0x10000, "KX22 2.0");
    for (const Case& c : cases) {
        std::string path = dir_ + "/" + c.file;
        if (c.what == std::string("model mismatch"))
            writeImage(c.file, other);
        else if (c.file != "none.bin")
            std::ofstream(path, std::ios::binary) << c.content;
        ProgramResult r = run({"mcu", path});
        EXPECT_EQ(r.status, 2) << c.what << "\n" << r.err;
        EXPECT_NE(r.err.find(c.why), std::string::npos) << c.what << "\n" << r.err;
        EXPECT_EQ(r.out, "") << c.what;
    }
    EXPECT_EQ(sim_.requestCount(), 0u);
    // With --json the refusal is also the summary object.
    ProgramResult json = run({"mcu", dir_ + "/sp.bin", "--json"});
    EXPECT_EQ(json.status, 2);
    EXPECT_NE(json.out.find("\"outcome\":\"refused\""), std::string::npos) << json.out;
    EXPECT_NE(json.out.find("\"error\":\"bad vector table: "), std::string::npos) << json.out;
    // --force takes the other model, with a warning.
    ProgramResult r = run({"mcu", dir_ + "/other.bin", "--force", "--quiet"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("warning: "), std::string::npos);
    EXPECT_EQ(sim_.bootLoader().appVersion(), "KX22 2.0");
}

TEST_F(Brdflash, ConfigurationErrorsAndUsage) {
    std::string path = writeImage("fw.bin", makeApp(0x10000, "KX07 3"));
    struct Case {
        const char* what;
        std::string section;
        std::vector<std::string> args;
        int status;
        std::string err;
    };
    const Case cases[] = {
        {"no update section", "", {"mcu", path}, 3, "no <MCU_UPDATE_INFO> section"},
        {"write size too large",
         "<MCU_UPDATE_INFO>\nWRITE_SIZE=512\n",
         {"mcu", path},
         3,
         "WRITE_SIZE 512 is larger than a frame can carry (at most 500)"},
        {"verify size too large",
         "<MCU_UPDATE_INFO>\nVERIFY_SIZE=1000\n",
         {"mcu", path},
         3,
         "VERIFY_SIZE 1000 is larger than a frame can carry"},
        {"board disagrees",
         "<MCU_UPDATE_INFO>\nMCU_endAddress=0x08040000\n",
         {"mcu", path},
         3,
         "the boot loader reports flash end (MCU_endAddress) 0x08020000, the configuration "
         "says 0x08040000"},
        {"unknown option", "<MCU_UPDATE_INFO>\n", {"mcu", "--fast"}, 2, "--fast: unknown option"},
        {"no target", "<MCU_UPDATE_INFO>\n", {}, 2, "missing mcu or can"},
        {"two modes", "<MCU_UPDATE_INFO>\n", {"mcu", "--info", "--dry-run"}, 2, "exclude"},
        {"no CAN device",
         "<MCU_UPDATE_INFO>\n<CAN_UPDATE_INFO>\n",
         {"can", path},
         3,
         "no enabled CAN device 0"},
    };
    for (const Case& c : cases) {
        writeConfig(c.section);
        ProgramResult r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.what << "\n" << r.err;
        EXPECT_NE(r.err.find(c.err), std::string::npos) << c.what << "\n" << r.err;
    }
    // The board that disagreed was not erased: the factory application still runs
    // once it is told to, and nothing was written.
    EXPECT_EQ(sim_.bootLoader().writeCount(), 0);
    EXPECT_EQ(sim_.bootLoader().appVersion(), "KX07 0.9.0");
}

TEST_F(Brdflash, DryRunInfoAndVerifyOnlyChangeNothing) {
    Bytes app = makeApp(0x10000, "KX07 4.1");
    std::string path = writeImage("fw.bin", app);
    ProgramResult dry = run({"mcu", path, "--dry-run"});
    EXPECT_EQ(dry.status, 0) << dry.err;
    EXPECT_NE(dry.out.find("  write:  512 blocks of up to 128 bytes"), std::string::npos)
        << dry.out;
    EXPECT_NE(dry.out.find("expected time: "), std::string::npos);
    EXPECT_EQ(sim_.requestCount(), 0u);

    ProgramResult info = run({"mcu", "--info", "--json"});
    EXPECT_EQ(info.status, 0) << info.err;
    EXPECT_NE(info.out.find("\"app_version\":\"KX07 0.9.0\""), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("\"state\":\"application\""), std::string::npos);
    EXPECT_NE(info.out.find("\"page_size\":1024"), std::string::npos);

    ProgramResult differs = run({"mcu", path, "--verify-only", "--json"});
    EXPECT_EQ(differs.status, 1);
    EXPECT_NE(differs.out.find("\"outcome\":\"differs\""), std::string::npos) << differs.out;
    EXPECT_NE(differs.out.find("\"first_difference\":\"0x08004005\""), std::string::npos);

    ASSERT_EQ(run({"mcu", path, "--quiet"}).status, 0);
    ProgramResult same = run({"mcu", path, "--verify-only"});
    EXPECT_EQ(same.status, 0) << same.err;
    EXPECT_NE(same.out.find("flash matches"), std::string::npos);
    int writes = sim_.bootLoader().writeCount();
    EXPECT_EQ(writes, 512);
    EXPECT_FALSE(sim_.bootLoader().inBootLoader());
}

// brdcmd runs the same rows one at a time, decoded.
TEST_F(Brdflash, SingleStepsFromBrdcmd) {
    struct Step {
        const char* row;
        const char* input;
        std::string shows;
    };
    const Step steps[] = {
        {"ST_IAP_GET_01_01_OPERATION_MODE", "", "mode: application, application valid: yes"},
        {"ST_IAP_SET_02_01_FLASH_UNLOCK", "", "status: 0x05 (not in the boot loader)"},
        {"ST_IAP_SET_01_01_UPDATE_REQUEST", "", "status: 0x01 (done)"},
        {"ST_IAP_GET_01_01_OPERATION_MODE", "", "mode: boot loader, application valid: yes"},
        {"ST_IAP_SET_02_01_FLASH_UNLOCK", "", "status: 0x01 (done)"},
        {"ST_IAP_SET_03_01_ERASE_FLASH", "8004010\n8020000\n", "(not on a page boundary)"},
        {"ST_IAP_SET_04_01_WRITE_FLASH", "8004100\n12 34 f1\n", "written at 0x08004100"},
        {"ST_IAP_GET_04_01_FLASH_DATA", "8004100\n4\n", "0x08004100: 12 34 F1 FF"},
        {"ST_IAP_SET_06_01_IAP_REBOOT", "", "status: 0x01 (done)"},
        {"ST_IAP_GET_03_01_APP_VERSION", "", "application: KX07 0.9.0"},
    };
    for (const Step& st : steps) {
        ProgramResult r =
            runProgram(BRDCMD_BIN, {st.row}, st.input,
                       {{"BRDCTL_CONFIG_DIR", dir_}, {"BRDCTL_PRODUCT", "KX07"}}, 20000);
        EXPECT_NE(r.out.find(st.shows), std::string::npos) << st.row << "\n" << r.out << r.err;
    }
    EXPECT_FALSE(sim_.bootLoader().inBootLoader());
}

// SIGINT during the writes: the request in flight finishes, nothing more is sent, the
// board stays in its boot loader, and the next run finishes.
TEST_F(Brdflash, InterruptStopsWithoutStartingTheApplication) {
    sim_.stop();
    sim_.setLineRate(115200);  // slow enough to be interrupted in the middle
    ASSERT_TRUE(sim_.start());
    ASSERT_FALSE(brdsim::writeConfig(dir_, "KX07", sim_.ptyPath()).empty());
    Bytes app = makeApp(0xC000, "KX07 6.0");
    std::string path = writeImage("fw.bin", app);
    std::string cmd = "BRDCTL_CONFIG_DIR=" + dir_ + " BRDCTL_PRODUCT=KX07 exec " +
                      std::string(BRDFLASH_BIN) + " mcu " + path + " --json >" + dir_ + "/out 2>" +
                      dir_ + "/err";
    const char* argv[] = {"/bin/sh", "-c", cmd.c_str(), nullptr};
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, "/bin/sh", nullptr, nullptr, const_cast<char**>(argv), environ), 0);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (sim_.bootLoader().writeCount() < 20 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(pid, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    std::ifstream out(dir_ + "/out");
    std::string json((std::istreambuf_iterator<char>(out)), std::istreambuf_iterator<char>());
    EXPECT_NE(json.find("\"error\":\"interrupted\""), std::string::npos) << json;
    EXPECT_NE(json.find("\"rebooted\":false"), std::string::npos) << json;
    int written = sim_.bootLoader().writeCount();
    EXPECT_LT(written, 96);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(sim_.bootLoader().writeCount(), written);  // nothing sent after it stopped
    EXPECT_TRUE(sim_.bootLoader().inBootLoader());

    ProgramResult again = run({"mcu", path, "--quiet"});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(flash(app.size()), app);
}

// Each fault during the writes: how the run ends, and that an unverified application
// is never started. One test per fault: a lost answer waits out the update time-out
// unless BRDCTL_TIMEOUT_SCALE shortens it.
struct FaultCase {
    const char* what;
    FlashFault fault;
    int status;
    int writes;        // write requests the board receives (384 blocks, plus those sent again)
    std::string json;  // a field the summary must hold
    std::string err;
    bool started;  // the new application runs afterwards
};

// clang-format off
const FaultCase kFaultCases[] = {
    {"lost_once", {FlashFaultKind::LostAnswer, 5, 1}, 0, 385, "\"verified\":true", "", true},
    {"corrupted_once", {FlashFaultKind::CorruptAnswer, 9, 1}, 0, 385, "\"verified\":true", "",
     true},
    {"lost_three_times", {FlashFaultKind::LostAnswer, 5, 3}, 1, 7, "\"bytes_written\":512",
     "ST_IAP_SET_04_01_WRITE_FLASH: no usable answer after 3 tries", false},
    {"write_not_taken", {FlashFaultKind::WriteNotTaken, 7, 1}, 1, 384,
     "\"first_difference\":\"0x08004300\"", "verification failed: flash holds", false},
    {"restart_in_the_middle", {FlashFaultKind::Restart, 100, 1}, 1, 101,
     "\"bytes_written\":12800", "refused: flash locked", false},
};
// clang-format on

class BrdflashFault : public Brdflash, public ::testing::WithParamInterface<FaultCase> {};

TEST_P(BrdflashFault, EndsSafely) {
    const FaultCase& c = GetParam();
    std::string tag = std::string("KX07 5.") + c.what;
    Bytes app = makeApp(0xC000, tag, 77);
    std::string path = writeImage("fw.bin", app);
    sim_.bootLoader().queueFault(c.fault);
    ProgramResult r = run({"mcu", path, "--json"}, 100000);
    EXPECT_EQ(r.status, c.status) << r.err;
    EXPECT_EQ(sim_.bootLoader().writeCount(), c.writes);
    EXPECT_NE(r.out.find(c.json), std::string::npos) << r.out;
    EXPECT_NE(r.err.find(c.err), std::string::npos) << r.err;
    EXPECT_EQ(!sim_.bootLoader().inBootLoader(), c.started);
    if (c.started) {
        EXPECT_EQ(sim_.bootLoader().appVersion(), tag);
        return;
    }
    EXPECT_NE(r.out.find("\"rebooted\":false"), std::string::npos);
    EXPECT_NE(r.err.find("again to start again from erase"), std::string::npos);
    // The next run finds the board in its boot loader and finishes.
    ProgramResult again = run({"mcu", path, "--json"}, 100000);
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_NE(again.out.find("\"resumed\":true"), std::string::npos) << again.out;
    EXPECT_NE(again.err.find("in its boot loader: starting again from erase"), std::string::npos);
    EXPECT_EQ(flash(app.size()), app);
    EXPECT_EQ(sim_.bootLoader().appVersion(), tag);
}

INSTANTIATE_TEST_SUITE_P(Faults, BrdflashFault, ::testing::ValuesIn(kFaultCases),
                         [](const auto& info) { return std::string(info.param.what); });

// The CAN MCU: its boot loader answers on the NXP controller's own line in F1/F2 framing,
// has no check code, and is verified by reading every block back.
class BrdflashCan : public ::testing::Test {
   protected:
    void SetUp() override {
        char tmpl[] = "/tmp/brdflash_can.XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
        ASSERT_TRUE(sim_.start());
        ASSERT_TRUE(nxp_.start());
        ASSERT_FALSE(
            brdsim::writeConfig(dir_, "KX07", sim_.ptyPath(), 0, {nxp_.ptyPath()}).empty());
    }
    void TearDown() override {
        nxp_.stop();
        sim_.stop();
        std::filesystem::remove_all(dir_);
    }
    ProgramResult run(const std::vector<std::string>& args) {
        return runProgram(BRDFLASH_BIN, args, "",
                          {{"BRDCTL_CONFIG_DIR", dir_},
                           {"BRDCTL_PRODUCT", "KX07"},
                           {"BRDCTL_TIMEOUT_SCALE", kTimeoutScale}},
                          30000);
    }
    // An application for the CAN MCU's defaults: stack in SRAM at 0x10000000.
    std::string image(const std::string& tag, uint32_t seed) {
        Bytes d(0x2345);
        for (auto& b : d) b = static_cast<uint8_t>(seed = seed * 1103515245u + 12345u);
        const uint32_t words[2] = {0x10009000, 0x2000 + 0x141};
        for (int w = 0; w < 2; ++w)
            for (int i = 0; i < 4; ++i) d[4 * w + i] = static_cast<uint8_t>(words[w] >> (8 * i));
        std::copy(tag.begin(), tag.end(), d.begin() + 0x400);
        d[0x400 + tag.size()] = 0xFF;
        app_ = d;
        std::string path = dir_ + "/can.bin";
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(d.data()), static_cast<long>(d.size()));
        return path;
    }

    std::string dir_;
    Bytes app_;
    brdsim::CanBus bus_;
    brdsim::Simulator sim_{"KX07"};
    brdsim::NxpController nxp_{bus_};
};

TEST_F(BrdflashCan, UpdatesAndSurvivesFaults) {
    struct Case {
        const char* what;
        std::vector<FlashFault> faults;
        int status;
        std::string out, err;
        bool started;
    };
    const Case cases[] = {
        {"clean", {}, 0, "application '3.1.4' running (", "write: 100% ", true},
        {"a lost answer is retried",
         {{FlashFaultKind::LostAnswer, 7, 1}},
         0,
         "verified;",
         "",
         true},
        {"damaged answers are retried",
         {{FlashFaultKind::CorruptAnswer, 4, 2}},
         0,
         "verified;",
         "",
         true},
        {"a write that did not take",
         {{FlashFaultKind::WriteNotTaken, 3, 1}},
         1,
         "",
         "verification failed: flash holds",
         false},
        {"restart in the middle",
         {{FlashFaultKind::Restart, 20, 1}},
         1,
         "",
         "NXP_UPDATE_12_WRITE_FLASH: refused: flash locked",
         false},
    };
    uint32_t seed = 5;
    for (const Case& c : cases) {
        std::string path = image("KX07 3.1.4", ++seed);
        for (const FlashFault& f : c.faults) nxp_.bootLoader().queueFault(f);
        ProgramResult r = run({"can", path});
        EXPECT_EQ(r.status, c.status) << c.what << "\n" << r.err;
        EXPECT_NE(r.out.find(c.out), std::string::npos) << c.what << "\n" << r.out;
        EXPECT_NE(r.err.find(c.err), std::string::npos) << c.what << "\n" << r.err;
        EXPECT_EQ(!nxp_.bootLoader().inBootLoader(), c.started) << c.what;
        if (!c.started) {
            // Resumed from erase by the next run.
            ProgramResult again = run({"can", path, "--quiet"});
            EXPECT_EQ(again.status, 0) << c.what << "\n" << again.err;
        }
        EXPECT_EQ(nxp_.bootLoader().readFlash(0x2000, app_.size()), app_) << c.what;
        EXPECT_EQ(nxp_.bootLoader().appVersion(), "KX07 3.1.4") << c.what;
    }
    // The CAN application's own commands still answer after the update.
    ProgramResult info = run({"can", "--info"});
    EXPECT_EQ(info.status, 0) << info.err;
    EXPECT_NE(info.out.find("application: 3.1.4"), std::string::npos) << info.out;
    // Single steps from brdcmd find the controller in either framing.
    const std::pair<const char*, const char*> steps[] = {
        {"NXP_UPDATE_42_IS_REQUEST_UPDATE", "status: 0x01 (done)"},
        {"NXP_UPDATE_40_READ_UPDATE_MODE", "mode: boot loader, application valid: yes"},
        {"NXP_UPDATE_20_READ_PROGRAM_STATE", "state: locked, application valid: yes"},
        {"NXP_UPDATE_36_IS_REQUEST_REBOOT", "status: 0x01 (done)"},
        {"NXP_UPDATE_40_READ_UPDATE_MODE", "mode: application, application valid: yes"},
    };
    for (const auto& [row, shows] : steps) {
        ProgramResult r =
            runProgram(BRDCMD_BIN, {row}, "",
                       {{"BRDCTL_CONFIG_DIR", dir_}, {"BRDCTL_PRODUCT", "KX07"}}, 20000);
        EXPECT_NE(r.out.find(shows), std::string::npos) << row << "\n" << r.out << r.err;
    }
}

}  // namespace
