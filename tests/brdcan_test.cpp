// brdcan end to end: the real program against the simulated board, with its NXP
// controller and CAN bus; python-can reads what it logs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "brdsim.h"
#include "can_bus.h"
#include "nxp_controller.h"
#include "run_program.h"

namespace {

using brdsim::Bytes;

std::string makeTempDir() {
    char tmpl[] = "/tmp/brdcan-test-XXXXXX";
    const char* dir = mkdtemp(tmpl);
    EXPECT_NE(dir, nullptr);
    return dir ? dir : "/tmp";
}

std::string readFile(const std::string& path) {
    std::ifstream f(path);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

// A program started in the background, with its output in files, to be signalled.
struct Background {
    pid_t pid = -1;
    std::string outPath, errPath;
    int status = -1;

    Background(const std::vector<std::string>& args, const std::string& dir,
               const std::string& tag) {
        outPath = dir + "/" + tag + ".out";
        errPath = dir + "/" + tag + ".err";
        pid = fork();
        if (pid == 0) {
            int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(out, 1);
            dup2(err, 2);
            if (chdir(dir.c_str()) != 0) _exit(126);
            setenv("BRDCTL_PRODUCT", "KX07", 1);
            setenv("BRDCTL_CONFIG_DIR", dir.c_str(), 1);
            std::vector<char*> argv;
            argv.push_back(const_cast<char*>(BRDCAN_BIN));
            for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            execv(BRDCAN_BIN, argv.data());
            _exit(127);
        }
    }
    // Waits up to `ms` for the program to end; kills it after that.
    bool wait(int ms) {
        auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        while (std::chrono::steady_clock::now() < until) {
            int st = 0;
            if (waitpid(pid, &st, WNOHANG) == pid) {
                status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
                pid = -1;
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        pid = -1;
        return false;
    }
    // Waits until the program has opened its ports (its lock message is on stderr).
    void waitReady(size_t ports = 1) {
        for (int i = 0; i < 400; ++i) {
            std::string err = readFile(errPath);
            size_t n = 0;
            for (size_t p = err.find("Locking device"); p != std::string::npos;
                 p = err.find("Locking device", p + 1))
                ++n;
            if (n >= ports) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ~Background() {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
    std::string out() const { return readFile(outPath); }
    std::string err() const { return readFile(errPath); }
};

class BrdcanTest : public ::testing::Test {
   protected:
    void SetUp() override {
        brdsim::attachStChannels(sim, bus);
        ASSERT_TRUE(sim.start());
        ASSERT_TRUE(nxp.start());
        dir = makeTempDir();
        brdsim::writeConfig(dir, "KX07", sim.ptyPath(), 0, {nxp.ptyPath()});
    }
    void TearDown() override {
        bus.stopGenerator();
        nxp.stop();
        sim.stop();
    }

    ProgramResult brdcan(const std::vector<std::string>& args, int timeoutMs = 10000) {
        return runProgram(BRDCAN_BIN, args, "",
                          {{"BRDCTL_PRODUCT", "KX07"}, {"BRDCTL_CONFIG_DIR", dir}}, timeoutMs);
    }

    brdsim::CanBus bus;
    brdsim::Simulator sim{"KX07"};
    brdsim::NxpController nxp{bus};
    std::string dir;
};

}  // namespace

// Bad input: one line on stderr, exit 2, nothing sent on either line.
TEST_F(BrdcanTest, BadInputIsRefusedBeforeAnythingIsSent) {
    std::ofstream(dir + "/bad.log") << "(1.000000) can0 123#11\n(1.5) can0 123#1\n";
    struct Case {
        std::vector<std::string> args;
        std::string error;
    } cases[] = {
        {{"send", "st1", "12#11"}, "brdcan: send: bad frame '12#11': identifier must have 3"},
        {{"send", "st1", "123#R9"}, "brdcan: send: bad frame '123#R9'"},
        {{"send", "st7", "123#11"}, "brdcan: st7: no such channel"},
        {{"send", "nxp1", "123#11"}, "brdcan: nxp1: no such channel"},
        {{"bitrate", "st1", "300k"}, "brdcan: bitrate: '300k' is not offered"},
        {{"filter", "nxp0", "123"}, "brdcan: filter: bad filter '123'"},
        {{"filter", "nxp0", "123~7FF"}, "brdcan: filter: bad filter '123~7FF'"},
        {{"dump", "st1,12G:7FF"}, "brdcan: dump: 'st1,12G:7FF'"},
        {{"dump", "-t", "x", "st1"}, "brdcan: dump: -t"},
        {{"gen", "st1", "123", "-n", "5"}, "brdcan: gen: -g GAP_MS and -n COUNT are required"},
        {{"play", "-I", dir + "/bad.log"}, "brdcan: play: " + dir + "/bad.log: line 2: '123#1'"},
        {{"play", "-I", dir + "/none.log"}, "brdcan: play: cannot read"},
        {{"frobnicate"}, "brdcan: unknown command 'frobnicate'"},
        {{"info", "st1"}, "brdcan: info st1: versions and input voltage are those of an NXP"},
    };
    for (const Case& c : cases) {
        ProgramResult r = brdcan(c.args);
        EXPECT_EQ(r.status, 2) << c.args[0] << " " << r.err;
        EXPECT_EQ(r.out, "") << c.args[0];
        EXPECT_NE(r.err.find(c.error), std::string::npos) << c.error << " in: " << r.err;
    }
    EXPECT_EQ(sim.requestCount(), 0u);
    EXPECT_EQ(nxp.port().requestCount(), 0u);
}

TEST_F(BrdcanTest, DisabledDeviceIsADeviceError) {
    std::ofstream(dir + "/KX07.conf")
        << "<MCU_INFO>\nMCU_DEVICE=" << sim.ptyPath()
        << ",115200,0\n<CAN_INFO>\nCAN_DEVICE=" << nxp.ptyPath() << ",115200,1\n";
    ProgramResult r = brdcan({"send", "st1", "123#11"});
    EXPECT_EQ(r.status, 3) << r.err;
    EXPECT_NE(r.err.find("brdcan: st1: the device is disabled"), std::string::npos) << r.err;
    std::ofstream(dir + "/KX07.conf") << "<CAN_INFO>\nCAN_DEVICE=/dev/no-such-tty,115200,1\n";
    r = brdcan({"errors", "nxp0"});
    EXPECT_EQ(r.status, 3) << r.err;
    EXPECT_NE(r.err.find("/dev/no-such-tty"), std::string::npos) << r.err;
}

// Each command puts its request on the line as the request table lays it out.
TEST_F(BrdcanTest, RequestBytesOfEachCommand) {
    struct Case {
        std::vector<std::string> args;
        bool onNxp;
        Bytes unstuffed;  // ST: device command address data; NXP: code data
    } cases[] = {
        {{"bitrate", "st1", "250k"}, false, {6, 3, 1, 5}},
        {{"bitrate", "nxp0", "1M"}, true, {0x10, 8}},
        {{"filter", "st2", "123:7FF"}, false, {7, 3, 2, 1, 0x23, 1, 0, 0, 0xFF, 7, 0, 0, 0}},
        {{"filter", "nxp0", "1F334455:1FFFFFFF"},
         true,
         {0x12, 1, 0x55, 0x44, 0x33, 0x1F, 0xFF, 0xFF, 0xFF, 0x1F, 1}},
        {{"filter", "st1", "clear"}, false, {6, 3, 2, 0}},
        {{"send", "st1", "1F334455#AA"},
         false,
         {6, 3, 3, 0x55, 0x44, 0x33, 0x1F, 4, 0, 1, 0xAA, 0, 0, 0, 0, 0, 0, 0}},
        {{"send", "nxp0", "123#R2"}, true, {0x20, 0x23, 1, 0, 0, 0, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0}},
        {{"stop", "st2"}, false, {7, 3, 4}},
        {{"stop", "nxp0"}, true, {0x22}},
        {{"errors", "st1"}, false, {6, 2, 1}},
        {{"errors", "nxp0"}, true, {0x34}},
    };
    for (const Case& c : cases) {
        sim.clearRequests();
        nxp.port().clearRequests();
        ProgramResult r = brdcan(c.args);
        EXPECT_EQ(r.status, 0) << c.args[0] << " " << c.args[1] << ": " << r.err;
        brdsim::Simulator& port = c.onNxp ? nxp.port() : sim;
        auto reqs = port.requests();
        ASSERT_EQ(reqs.size(), 1u) << c.args[0];
        Bytes got;
        if (c.onNxp) {
            got.push_back(reqs[0].command);
            got.insert(got.end(), reqs[0].data.begin(), reqs[0].data.end());
        } else {
            got = {reqs[0].device, reqs[0].command, reqs[0].address};
            got.insert(got.end(), reqs[0].data.begin(), reqs[0].data.end());
        }
        EXPECT_EQ(got, c.unstuffed)
            << c.args[0] << " " << c.args[1] << " " << c.args[2 % c.args.size()];
    }
}

TEST_F(BrdcanTest, InfoAndErrorsAreDecoded) {
    ProgramResult r = brdcan({"info", "nxp0"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "nxp0: firmware 1.4.2, boot loader 1.0.7, input voltage 12.150 V\n");
    // nxp0 at another bit rate than st1: st1's frame is noise to it.
    ASSERT_EQ(brdcan({"bitrate", "nxp0", "125k"}).status, 0);
    ASSERT_EQ(brdcan({"send", "st1", "100#01"}).status, 0);
    r = brdcan({"errors", "nxp0"});
    EXPECT_EQ(r.out, "nxp0: last error 2 (form), tx errors 0, rx errors 1, errors 1\n");
    r = brdcan({"list"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("st2   system MCU channel 2 (device 7)"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("nxp0  NXP CAN controller               " + nxp.ptyPath()),
              std::string::npos)
        << r.out;
}

// A frame sent on one channel is dumped from another, as candump shows it; the log
// format is read back by python-can.
TEST_F(BrdcanTest, SendOnOneChannelDumpOnAnother) {
    Background dump({"dump", "-n", "4", "-T", "5000", "nxp0"}, dir, "dump");
    dump.waitReady();
    for (const char* f : {"123#DEADBEEF", "1F334455#R2", "7FF#"})
        ASSERT_EQ(brdcan({"send", "st1", f}).status, 0);
    // The fourth comes from outside the board, with bytes the line has to escape.
    brdsim::CanMessage m;
    m.id = 0x42;
    m.dlc = 8;
    for (int k = 0; k < 8; ++k) m.data[k] = static_cast<uint8_t>(0xC0 + k);
    bus.transmit(-1, m);
    ASSERT_TRUE(dump.wait(5000));
    EXPECT_EQ(dump.status, 0);
    EXPECT_EQ(dump.out(),
              "  nxp0  123   [4]  DE AD BE EF\n"
              "  nxp0  1F334455   [2]  remote request\n"
              "  nxp0  7FF   [0]\n"
              "  nxp0  042   [8]  C0 C1 C2 C3 C4 C5 C6 C7\n");

    Background log({"dump", "-L", "-n", "4", "-T", "5000", "st2"}, dir, "log");
    log.waitReady();
    for (const char* f : {"123#DEADBEEF", "1F334455#R2", "7FF#"})
        ASSERT_EQ(brdcan({"send", "nxp0", f}).status, 0);
    for (int k = 0; k < 8; ++k) m.data[k] = static_cast<uint8_t>(0xF0 + k);
    bus.transmit(-1, m);
    ASSERT_TRUE(log.wait(5000));
    EXPECT_EQ(log.status, 0);
    std::string logPath = dir + "/st2.log";
    std::ofstream(logPath) << log.out();
    std::string cmd =
        "/usr/bin/python3 -c \"import can,sys\n"
        "for m in can.CanutilsLogReader(sys.argv[1]):\n"
        "  print(m.channel, hex(m.arbitration_id), m.is_extended_id, m.is_remote_frame, m.dlc, "
        "m.data.hex())\" " +
        logPath;
    FILE* p = popen(cmd.c_str(), "r");
    ASSERT_NE(p, nullptr);
    std::string got;
    char buf[256];
    while (fgets(buf, sizeof buf, p)) got += buf;
    EXPECT_EQ(pclose(p), 0);
    EXPECT_EQ(got,
              "st2 0x123 False False 4 deadbeef\n"
              "st2 0x1f334455 True True 2 \n"
              "st2 0x7ff False False 0 \n"
              "st2 0x42 False False 8 f0f1f2f3f4f5f6f7\n");
}

// The link's timed series: every message with its running counter, and the summary.
TEST_F(BrdcanTest, SeriesCarriesItsCounter) {
    Background dump({"dump", "-n", "5", "-T", "5000", "nxp0"}, dir, "dump");
    dump.waitReady();
    ProgramResult r = brdcan({"gen", "st1", "321", "-g", "1", "-n", "5"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("sendTotalCount(5), sendCommandSuccessCount(5), sendCommandErrorCount(0)"),
              std::string::npos)
        << r.out;
    ASSERT_TRUE(dump.wait(5000));
    std::string want;
    for (int i = 1; i <= 5; ++i)
        want += "  nxp0  00000321   [8]  0" + std::to_string(i) + " 00 00 00 00 00 00 0" +
                std::to_string(i) + "\n";
    EXPECT_EQ(dump.out(), want);
}

// SIGINT ends a dump: what was received is on stdout, the counts on stderr.
TEST_F(BrdcanTest, InterruptEndsADumpWithItsCounts) {
    Background dump({"dump", "-t", "z", "st1"}, dir, "dump");
    dump.waitReady();
    brdsim::CanMessage m;
    m.id = 0x10;
    m.dlc = 1;
    bus.transmit(-1, m);
    bus.transmit(-1, m);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    kill(dump.pid, SIGINT);
    ASSERT_TRUE(dump.wait(3000));
    EXPECT_EQ(dump.status, 0);
    std::string out = dump.out();
    EXPECT_EQ(out.rfind(" (000.000000)  st1  010   [1]  00\n (000.", 0), 0u) << out;
    EXPECT_NE(dump.err().find("brdcan: 2 received, 0 errors, 0 dropped reads"), std::string::npos)
        << dump.err();
}

// A recorded log is replayed in order, mapped onto a board channel.
TEST_F(BrdcanTest, ReplayOfARecordedLog) {
    std::ofstream(dir + "/rec.log") << "(1700000000.000000) can0 100#01\n"
                                       "(1700000000.050000) can1 200#02\n"
                                       "(1700000000.100000) can0 1ABCDEF0#R\n";
    Background dump({"dump", "-n", "2", "-T", "5000", "nxp0"}, dir, "dump");
    dump.waitReady();
    auto start = std::chrono::steady_clock::now();
    ProgramResult r = brdcan({"play", "-I", dir + "/rec.log", "st1=can0"});
    auto took = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_GE(took, std::chrono::milliseconds(100));  // the log's own timing
    ASSERT_TRUE(dump.wait(5000));
    EXPECT_EQ(dump.out(),
              "  nxp0  100   [1]  01\n"
              "  nxp0  1ABCDEF0   [0]  remote request\n");
}

// brdcmd's CAN rows: what each asks, what it sends and what it prints decoded.
TEST_F(BrdcanTest, BrdcmdCanRowsSendTheTableLayouts) {
    struct Case {
        const char* row;
        const char* input;
        bool onNxp;
        Bytes unstuffed;    // as in RequestBytesOfEachCommand
        const char* shows;  // a line the output holds
    } cases[] = {
        {"ST_CAN1_SET_01_01_SPEED", "5\n", false, {6, 3, 1, 4}, "5. 125 kbit/s\n"},
        {"NXP_CAN_AP_10_SET_SPEED",
         "x\n9\n",
         true,
         {0x10, 8},
         "Input Error !!! Please input a number."},
        {"ST_CAN2_SET_02_01_FILTER",
         "12G\n120:7F0\n",
         false,
         {7, 3, 2, 1, 0x20, 1, 0, 0, 0xF0, 7, 0, 0, 0},
         "Input Error !!! filter must be ID:MASK"},
        {"ST_CAN1_SET_02_01_DISABLE_AND_CLEAR_ALL_FILTER",
         "",
         false,
         {6, 3, 2, 0},
         "command executed successfully"},
        {"NXP_CAN_AP_20_EDIT_MESSAGE_TO_SENDING",
         "1F334455#11.22\n",
         true,
         {0x20, 0x55, 0x44, 0x33, 0x1F, 1, 0, 2, 0x11, 0x22, 0, 0, 0, 0, 0, 0},
         "command executed successfully"},
        {"ST_CAN2_SET_03_01_SEND_MESSAGE",
         "123#R\n",
         false,
         {7, 3, 3, 0x23, 1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0},
         "command executed"},
        {"ST_CAN1_SET_04_01_STOP_TRANSMIT", "", false, {6, 3, 4}, "command executed"},
        {"ST_CAN2_SET_05_01_CLEAR_RECEIVE_FIFO", "", false, {7, 3, 5}, "command executed"},
        {"ST_CAN1_GET_01_01_ERROR_CODE", "", false, {6, 2, 1}, ") Last error: "},
        {"NXP_CAN_AP_34_GET_ERROR_CODE", "", true, {0x34}, ") Errors seen: "},
        {"NXP_CAN_AP_02_READ_FW_VERSION", "", true, {0x02}, "Firmware version: 1.4.2\n"},
        {"NXP_CAN_AP_04_READ_BL_VERSION", "", true, {0x04}, "Boot loader version: 1.0.7\n"},
        {"NXP_CAN_AP_50_READ_INPUT_VOLTAGE", "", true, {0x50}, "Input voltage: 12.150 V\n"},
    };
    for (const Case& c : cases) {
        sim.clearRequests();
        nxp.port().clearRequests();
        ProgramResult r =
            runProgram(BRDCMD_BIN, {c.row}, c.input,
                       {{"BRDCTL_PRODUCT", "KX07"}, {"BRDCTL_CONFIG_DIR", dir}}, 10000);
        EXPECT_EQ(r.status, 0) << c.row << ": " << r.err;
        EXPECT_NE(r.out.find(c.shows), std::string::npos) << c.row << ":\n" << r.out;
        brdsim::Simulator& port = c.onNxp ? nxp.port() : sim;
        auto reqs = port.requests();
        ASSERT_EQ(reqs.size(), 1u) << c.row;
        Bytes got;
        if (!c.onNxp) got = {reqs[0].device, reqs[0].address};
        got.insert(got.begin() + (c.onNxp ? 0 : 1), reqs[0].command);
        got.insert(got.end(), reqs[0].data.begin(), reqs[0].data.end());
        EXPECT_EQ(got, c.unstuffed) << c.row;
    }
    // End of input at a prompt sends nothing.
    sim.clearRequests();
    ProgramResult r = runProgram(BRDCMD_BIN, {"ST_CAN1_SET_03_01_SEND_MESSAGE"}, "",
                                 {{"BRDCTL_PRODUCT", "KX07"}, {"BRDCTL_CONFIG_DIR", dir}}, 10000);
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("input ended"), std::string::npos) << r.err;
    EXPECT_EQ(sim.requestCount(), 0u);
}

// The series row runs the link's send thread and prints its summary.
TEST_F(BrdcanTest, BrdcmdSeriesRow) {
    ProgramResult r = runProgram(BRDCMD_BIN, {"NXP_CAN_AP_AUTO_SEND"}, "7A\n3\n1\n",
                                 {{"BRDCTL_PRODUCT", "KX07"}, {"BRDCTL_CONFIG_DIR", dir}}, 10000);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("sendTotalCount(3), sendCommandSuccessCount(3), sendCommandErrorCount(0)"),
              std::string::npos)
        << r.out;
    auto reqs = nxp.port().requests();
    ASSERT_EQ(reqs.size(), 3u);
    EXPECT_EQ(reqs[2].data, (Bytes{0x7A, 0, 0, 0, 4, 0, 8, 3, 0, 0, 0, 0, 0, 0, 3}));
}

// python-can's slcan interface drives nxp0 through the bridge: it sets the bit rate,
// opens the channel, asks the version, sends an unknown command (BEL, and the bridge goes
// on), sends a standard and a remote extended frame (dumped on st1) and receives what st1
// sends.
TEST_F(BrdcanTest, SlcanBridgeDrivenByPythonCan) {
    Background bridge({"slcan", "nxp0"}, dir, "slcan");
    bridge.waitReady();
    std::string pty = bridge.out();
    ASSERT_FALSE(pty.empty());
    pty.pop_back();
    ASSERT_EQ(brdcan({"bitrate", "st1", "250k"}).status, 0);
    Background dump({"dump", "-n", "2", "-T", "8000", "st1"}, dir, "dump");
    dump.waitReady();
    std::string script = dir + "/client.py", ready = dir + "/sent", pyOut = dir + "/client.out";
    std::ofstream(script) << "import can, sys\n"
                             "bus = can.interface.Bus(interface='slcan', channel=sys.argv[1], "
                             "bitrate=250000, sleep_after_open=0)\n"
                             "print('version', bus.get_version(2.0))\n"
                             "bus.serialPortOrig.write(b'Q\\r')\n"
                             "bus.send(can.Message(arbitration_id=0x321, data=[1, 2, 3], "
                             "is_extended_id=False))\n"
                             "bus.send(can.Message(arbitration_id=0x1ABCDE, is_remote_frame=True, "
                             "dlc=2, is_extended_id=True))\n"
                             "open(sys.argv[2], 'w').close()\n"
                             "for i in range(2):\n"
                             "    m = bus.recv(8.0)\n"
                             "    print(hex(m.arbitration_id), m.is_extended_id, "
                             "m.is_remote_frame, m.dlc, m.data.hex())\n"
                             "bus.shutdown()\n";
    pid_t py = fork();
    if (py == 0) {
        int fd = open(pyOut.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, 1);
        dup2(fd, 2);
        execl("/usr/bin/python3", "python3", script.c_str(), pty.c_str(), ready.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    ASSERT_TRUE(dump.wait(8000));
    EXPECT_EQ(dump.out(),
              "  st1  321   [3]  01 02 03\n"
              "  st1  001ABCDE   [2]  remote request\n");
    for (int i = 0; i < 400 && access(ready.c_str(), F_OK) != 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_EQ(brdcan({"send", "st1", "123#DEADBEEF"}).status, 0);
    ASSERT_EQ(brdcan({"send", "st1", "12345678#R"}).status, 0);
    int st = 0;
    ASSERT_EQ(waitpid(py, &st, 0), py);
    EXPECT_TRUE(WIFEXITED(st) && WEXITSTATUS(st) == 0);
    EXPECT_EQ(readFile(pyOut),
              "version (10, 13)\n"
              "0x123 False False 4 deadbeef\n"
              "0x12345678 True True 0 \n");
    std::vector<Bytes> sent;
    for (const auto& r : nxp.port().requests()) {
        Bytes b = {r.command};
        b.insert(b.end(), r.data.begin(), r.data.end());
        sent.push_back(b);
    }
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[0], (Bytes{0x10, 5}));
    EXPECT_EQ(sent[1], (Bytes{0x20, 0x21, 3, 0, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 0, 0}));
    EXPECT_EQ(sent[2], (Bytes{0x20, 0xDE, 0xBC, 0x1A, 0, 1, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0}));
    kill(bridge.pid, SIGINT);
    ASSERT_TRUE(bridge.wait(3000));
    EXPECT_EQ(bridge.status, 0);
}

// -l writes the log lines into a file named as candump names it, nothing on stdout.
TEST_F(BrdcanTest, LogFileNamedAsCandumpNamesIt) {
    Background dump({"dump", "-l", "-n", "1", "-T", "5000", "st2"}, dir, "dump");
    dump.waitReady();
    ASSERT_EQ(brdcan({"send", "nxp0", "7FF#0102"}).status, 0);
    ASSERT_TRUE(dump.wait(5000));
    EXPECT_EQ(dump.status, 0);
    EXPECT_EQ(dump.out(), "");
    std::string err = dump.err();
    size_t at = err.find("brdcan: logging to candump-");
    ASSERT_NE(at, std::string::npos) << err;
    std::string name = err.substr(at + 19, err.find('\n', at) - at - 19);
    EXPECT_EQ(name.size(), std::string("candump-2026-11-23_201500.log").size()) << name;
    std::string log = readFile(dir + "/" + name);
    EXPECT_EQ(log.substr(log.find(')')), ") st2 7FF#0102\n") << log;
}
