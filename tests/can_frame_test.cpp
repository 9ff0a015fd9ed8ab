// cansend syntax, candump filters, line and log formats, the log reader and the CAN
// request layouts.
#include "can/can_frame.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "can/can_layout.h"

using namespace can;

namespace {

Frame frame(uint32_t id, bool ext, bool rtr, std::vector<uint8_t> data, int dlc = -1) {
    Frame f;
    f.id = id;
    f.ext = ext;
    f.rtr = rtr;
    f.dlc = static_cast<uint8_t>(dlc >= 0 ? dlc : static_cast<int>(data.size()));
    for (size_t k = 0; k < data.size() && k < 8; ++k) f.data[k] = data[k];
    return f;
}

std::string hex(const std::vector<uint8_t>& b) {
    std::string s;
    char buf[4];
    for (uint8_t v : b) {
        snprintf(buf, sizeof buf, "%02X ", v);
        s += buf;
    }
    return s;
}

}  // namespace

TEST(CanSyntax, ParsesCansendFrames) {
    struct Case {
        const char* text;
        uint32_t id;
        bool ext, rtr;
        int dlc;
        std::vector<uint8_t> data;
    } cases[] = {
        {"123#DEADBEEF", 0x123, false, false, 4, {0xDE, 0xAD, 0xBE, 0xEF}},
        {"5AA#", 0x5AA, false, false, 0, {}},
        {"1F334455#1122334455667788",
         0x1F334455,
         true,
         false,
         8,
         {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}},
        {"00000123#11", 0x123, true, false, 1, {0x11}},
        {"123#R", 0x123, false, true, 0, {}},
        {"123#R3", 0x123, false, true, 3, {}},
        {"7ff#de.ad.be.ef", 0x7FF, false, false, 4, {0xDE, 0xAD, 0xBE, 0xEF}},
        {"123#11.2233..44", 0x123, false, false, 4, {0x11, 0x22, 0x33, 0x44}},
    };
    for (const Case& c : cases) {
        Frame f;
        std::string why;
        ASSERT_TRUE(parseFrame(c.text, &f, &why)) << c.text << ": " << why;
        EXPECT_EQ(f.id, c.id) << c.text;
        EXPECT_EQ(f.ext, c.ext) << c.text;
        EXPECT_EQ(f.rtr, c.rtr) << c.text;
        EXPECT_EQ(f.dlc, c.dlc) << c.text;
        EXPECT_EQ(std::vector<uint8_t>(f.data, f.data + (f.rtr ? 0 : f.dlc)), c.data) << c.text;
    }
}

TEST(CanSyntax, RejectsBadFrames) {
    struct Case {
        const char* text;
        const char* why;
    } cases[] = {
        {"123", "no '#'"},
        {"12#11", "3 (standard) or 8"},
        {"1234#11", "3 (standard) or 8"},
        {"800#11", "above 7FF"},
        {"20000000#11", "above 1FFFFFFF"},
        {"12G#11", "not hexadecimal"},
        {"123#112", "pairs of hex"},
        {"123#1G", "pairs of hex"},
        {"123#112233445566778899", "more than 8"},
        {"123#R9", "one digit 0-8"},
        {"123#R12", "one digit 0-8"},
        {"123##1", "CAN FD"},
        {"", "no '#'"},
    };
    for (const Case& c : cases) {
        Frame f;
        std::string why;
        EXPECT_FALSE(parseFrame(c.text, &f, &why)) << c.text;
        EXPECT_NE(why.find(c.why), std::string::npos) << c.text << ": " << why;
    }
}

TEST(CanFilter, MatchesAsCandump) {
    struct Case {
        const char* spec;
        Frame f;
        bool passes;
    } cases[] = {
        {"st1,123:7FF", frame(0x123, false, false, {1}), true},
        {"st1,123:7FF", frame(0x124, false, false, {1}), false},
        {"st1,120:7F0", frame(0x12F, false, false, {}), true},
        {"st1,123~7FF", frame(0x123, false, false, {}), false},
        {"st1,123~7FF", frame(0x124, false, false, {}), true},
        // A short mask ignores the extended flag: an extended 0x123 passes too.
        {"st1,123:7FF", frame(0x123, true, false, {}), true},
        // Eight digits set the extended flag, compared only when the mask holds it.
        {"st1,00000123:1FFFFFFF", frame(0x123, false, false, {}), true},
        {"st1,12345678:DFFFFFFF", frame(0x12345678, true, false, {}), true},
        {"st1,92345678:DFFFFFFF", frame(0x12345678, false, false, {}), false},
        {"st1,123:C00007FF", frame(0x123, false, true, {}), false},
        {"st1,123:C00007FF", frame(0x123, false, false, {}), true},
        // The remote flag can be asked for through the mask.
        {"st1,40000123:400007FF", frame(0x123, false, true, {}), true},
        {"st1,40000000:40000000", frame(0x123, false, false, {}), false},
        // Several filters: any one passes, or all with j.
        {"st1,100:7FF,200:7FF", frame(0x200, false, false, {}), true},
        {"st1,100:700,1FF:0FF,j", frame(0x1FF, false, false, {}), true},
        {"st1,100:700,1FE:0FF,j", frame(0x1FF, false, false, {}), false},
        {"nxp0", frame(0x555, true, false, {}), true},
    };
    for (const Case& c : cases) {
        ChannelSpec spec;
        std::string why;
        ASSERT_TRUE(parseChannelSpec(c.spec, &spec, &why)) << c.spec << ": " << why;
        EXPECT_EQ(spec.passes(c.f), c.passes) << c.spec << " id " << std::hex << c.f.id;
    }
}

TEST(CanFilter, RejectsBadFilters) {
    const char* bad[] = {"st1,123",       "st1,123:", "st1,:7FF",       "st1,12G:7FF",
                         "st1,123:7FF:1", ",123:7FF", "st1,123456789:1"};
    for (const char* text : bad) {
        ChannelSpec spec;
        std::string why;
        EXPECT_FALSE(parseChannelSpec(text, &spec, &why)) << text;
        EXPECT_FALSE(why.empty()) << text;
    }
}

TEST(CanFormat, CandumpLines) {
    struct Case {
        Stamp stamp;
        int64_t us;
        const char* name;
        int width;
        Frame f;
        const char* line;
    } cases[] = {
        {Stamp::None, 0, "st1", 3,
         frame(0x123, false, false, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}),
         "  st1  123   [8]  11 22 33 44 55 66 77 88"},
        {Stamp::None, 0, "st1", 4, frame(0x1F334455, true, false, {0xDE, 0xAD}),
         "   st1  1F334455   [2]  DE AD"},
        {Stamp::None, 0, "nxp0", 4, frame(0x123, false, true, {}, 0),
         "  nxp0  123   [0]  remote request"},
        {Stamp::None, 0, "nxp0", 4, frame(0x7FF, false, true, {}, 3),
         "  nxp0  7FF   [3]  remote request"},
        {Stamp::None, 0, "st2", 3, frame(0x001, false, false, {}), "  st2  001   [0]"},
        {Stamp::Absolute, 1700000000123456, "st1", 3, frame(0x5, false, false, {0xAB}),
         " (1700000000.123456)  st1  005   [1]  AB"},
        {Stamp::Delta, 1500000, "st1", 3, frame(0x5, false, false, {}),
         " (001.500000)  st1  005   [0]"},
        {Stamp::Zero, 12000001, "st1", 3, frame(0x5, false, false, {}),
         " (012.000001)  st1  005   [0]"},
    };
    for (const Case& c : cases) {
        std::string out;
        formatLine(&out, c.stamp, c.us, c.name, c.width, c.f);
        EXPECT_EQ(out, c.line);
    }
}

TEST(CanFormat, LogLinesRoundTrip) {
    struct Case {
        Frame f;
        const char* line;
    } cases[] = {
        {frame(0x123, false, false, {0x11, 0x22}), "(1700000000.000042) st1 123#1122\n"},
        {frame(0x1F334455, true, false, {}), "(1700000000.000042) st1 1F334455#\n"},
        {frame(0x123, false, true, {}, 0), "(1700000000.000042) st1 123#R\n"},
        {frame(0x123, false, true, {}, 3), "(1700000000.000042) st1 123#R3\n"},
    };
    for (const Case& c : cases) {
        std::string out;
        formatLogLine(&out, 1700000000000042, "st1", c.f);
        EXPECT_EQ(out, c.line);
        LogRecord r;
        std::string why;
        std::string noEnd(out.begin(), out.end() - 1);
        ASSERT_TRUE(parseLogLine(noEnd, &r, &why)) << why;
        EXPECT_EQ(r.epochUs, 1700000000000042);
        EXPECT_EQ(r.channel, "st1");
        EXPECT_EQ(frameText(r.frame), frameText(c.f));
    }
}

// can-utils' log2long turns a log into candump's lines: ours must agree with it
// (log2long indents standard identifiers and adds an ASCII column; both are cut here).
TEST(CanFormat, LinesAgreeWithLog2long) {
    Frame frames[] = {frame(0x123, false, false, {0x11, 0x22, 0x33}),
                      frame(0x1F334455, true, false, {0xDE, 0xAD, 0xBE, 0xEF, 0, 1, 2, 3}),
                      frame(0x7FF, false, true, {}, 2)};
    std::string log;
    for (const Frame& f : frames) formatLogLine(&log, 1700000000000001, "st1", f);
    char path[] = "/tmp/brdcan_log2long_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, log.data(), log.size()), static_cast<ssize_t>(log.size()));
    close(fd);
    std::string cmd = std::string("log2long < ") + path;
    FILE* p = popen(cmd.c_str(), "r");
    ASSERT_NE(p, nullptr);
    char buf[256];
    int i = 0;
    while (fgets(buf, sizeof buf, p) && i < 3) {
        std::string theirs = buf;
        std::string ours;
        formatLine(&ours, Stamp::Absolute, 1700000000000001, "st1", 3, frames[i]);
        // Cut their ASCII column and the indent of standard identifiers.
        size_t q = theirs.find("  '");
        if (q != std::string::npos) theirs.resize(q);
        while (!theirs.empty() && (theirs.back() == ' ' || theirs.back() == '\n'))
            theirs.pop_back();
        if (!frames[i].ext) theirs.erase(theirs.find("st1") + 5, 5);
        EXPECT_EQ(" " + theirs, ours);
        ++i;
    }
    EXPECT_EQ(pclose(p), 0);
    EXPECT_EQ(i, 3);
    unlink(path);
}

TEST(CanLog, ReaderReportsTheLineThatIsWrong) {
    struct Case {
        const char* text;
        size_t records;
        const char* error;
    } cases[] = {
        {"(1.000001) st1 123#11\n\n(2.5) nxp0 1F334455#R\n", 2, ""},
        {"(1.000001) st1 123#11 R\n", 1, ""},  // a trailing direction flag is allowed
        {"(1.000001) st1 123#11\nst1 123#11\n", 0, "line 2: expected '('"},
        {"(1.000001) st1 123#11\n(2.0) st1\n", 0, "line 2: expected a channel and a frame"},
        {"(x.1) st1 123#11\n", 0, "line 1: timestamp"},
        {"(1.1) st1 123#1\n", 0, "line 1: '123#1': data must be pairs"},
        {"(1.1 st1 123#11\n", 0, "line 1: timestamp"},
    };
    for (const Case& c : cases) {
        std::string text = c.text;
        FILE* f = fmemopen(text.data(), text.size(), "r");
        std::vector<LogRecord> out;
        std::string why;
        bool ok = readLog(f, &out, &why);
        fclose(f);
        if (*c.error == '\0') {
            EXPECT_TRUE(ok) << c.text << why;
            EXPECT_EQ(out.size(), c.records) << c.text;
        } else {
            EXPECT_FALSE(ok) << c.text;
            EXPECT_EQ(why.rfind(c.error, 0), 0u) << c.text << " -> " << why;
        }
    }
}

TEST(CanLayout, RequestBytesOfEachController) {
    Filter flt;
    std::string why;
    ASSERT_TRUE(parseFilter("1F334455:1FFFFFFF", &flt, &why));
    Filter stdFlt;
    ASSERT_TRUE(parseFilter("123:7FF", &stdFlt, &why));
    struct Case {
        const char* what;
        std::vector<uint8_t> got;
        const char* bytes;
    } cases[] = {
        {"bit rate 500k", bitRateData(static_cast<uint8_t>(bitRateCode("500k"))), "06 "},
        {"bit rate 1M", bitRateData(static_cast<uint8_t>(bitRateCode("1000000"))), "08 "},
        {"ST extended filter", filterData(Controller::St, flt), "01 55 44 33 1F FF FF FF 1F 04 "},
        {"NXP extended filter", filterData(Controller::Nxp, flt), "01 55 44 33 1F FF FF FF 1F 01 "},
        {"standard filter", filterData(Controller::Nxp, stdFlt), "01 23 01 00 00 FF 07 00 00 00 "},
        {"clear filters", clearFiltersData(), "00 "},
        {"ST extended message", messageData(Controller::St, frame(0x1F334455, true, false, {0xAA})),
         "55 44 33 1F 04 00 01 AA 00 00 00 00 00 00 00 "},
        {"ST remote", messageData(Controller::St, frame(0x123, false, true, {}, 2)),
         "23 01 00 00 00 02 02 00 00 00 00 00 00 00 00 "},
        {"NXP remote", messageData(Controller::Nxp, frame(0x123, false, true, {}, 2)),
         "23 01 00 00 00 01 02 00 00 00 00 00 00 00 00 "},
        {"NXP extended", messageData(Controller::Nxp, frame(0x100, true, false, {1, 2})),
         "00 01 00 00 01 00 02 01 02 00 00 00 00 00 00 "},
    };
    for (const Case& c : cases) EXPECT_EQ(hex(c.got), c.bytes) << c.what;
}

TEST(CanLayout, TableNamesRowsAndOffersRates) {
    struct Case {
        Controller ctl;
        Op op;
        int channel;
        const char* row;
        int command, address;
    } cases[] = {
        {Controller::St, Op::BitRate, 1, "ST_CAN1_SET_01_01_SPEED", 3, 1},
        {Controller::St, Op::Filter, 2, "ST_CAN2_SET_02_01_FILTER", 3, 2},
        {Controller::St, Op::ClearFilters, 1, "ST_CAN1_SET_02_01_DISABLE_AND_CLEAR_ALL_FILTER", 3,
         2},
        {Controller::St, Op::Send, 2, "ST_CAN2_SET_03_01_SEND_MESSAGE", 3, 3},
        {Controller::St, Op::Stop, 1, "ST_CAN1_SET_04_01_STOP_TRANSMIT", 3, 4},
        {Controller::St, Op::ClearFifo, 1, "ST_CAN1_SET_05_01_CLEAR_RECEIVE_FIFO", 3, 5},
        {Controller::St, Op::ErrorCode, 2, "ST_CAN2_GET_01_01_ERROR_CODE", 2, 1},
        {Controller::Nxp, Op::FwVersion, 0, "NXP_CAN_AP_02_READ_FW_VERSION", 0x02, 0},
        {Controller::Nxp, Op::BitRate, 0, "NXP_CAN_AP_10_SET_SPEED", 0x10, 0},
        {Controller::Nxp, Op::Send, 0, "NXP_CAN_AP_20_EDIT_MESSAGE_TO_SENDING", 0x20, 0},
        {Controller::Nxp, Op::ErrorCode, 0, "NXP_CAN_AP_34_GET_ERROR_CODE", 0x34, 0},
        {Controller::Nxp, Op::InputVoltage, 0, "NXP_CAN_AP_50_READ_INPUT_VOLTAGE", 0x50, 0},
    };
    for (const Case& c : cases) {
        const RequestLayout* l = findLayout(c.ctl, c.op);
        ASSERT_NE(l, nullptr) << c.row;
        EXPECT_EQ(rowName(*l, c.channel), c.row);
        EXPECT_EQ(l->command, c.command) << c.row;
        EXPECT_EQ(l->address, c.address) << c.row;
    }
    EXPECT_EQ(findLayout(Controller::St, Op::InputVoltage), nullptr);
    struct Rate {
        const char* text;
        int code;
    } rates[] = {{"10k", 0},  {"125000", 4}, {"1M", 8},  {"800K", 7},  {"5k", -1},
                 {"500", -1}, {"", -1},      {"1x", -1}, {"-500k", -1}};
    for (const Rate& r : rates) EXPECT_EQ(bitRateCode(r.text), r.code) << r.text;
}

TEST(CanLayout, AnswersOfEachController) {
    const RequestLayout* nxpSend = findLayout(Controller::Nxp, Op::Send);
    const RequestLayout* nxpErr = findLayout(Controller::Nxp, Op::ErrorCode);
    const RequestLayout* stSend = findLayout(Controller::St, Op::Send);
    const RequestLayout* stErr = findLayout(Controller::St, Op::ErrorCode);
    struct Case {
        Controller ctl;
        const RequestLayout* l;
        std::vector<uint8_t> answer;
        bool ok;
        size_t payload;
    } cases[] = {
        {Controller::Nxp, nxpSend, {0x21, 0x01}, true, 0},
        {Controller::Nxp, nxpSend, {0x21, 0x00}, false, 0},
        {Controller::Nxp, nxpSend, {0x35, 0x01}, false, 0},  // the answer of another request
        {Controller::Nxp, nxpErr, {0x35, 0x01, 2, 0, 1, 1, 0, 0, 0}, true, 7},
        {Controller::Nxp, nxpSend, {0x21}, false, 0},
        {Controller::St, stSend, {0x01}, true, 0},
        {Controller::St, stSend, {0x00}, false, 0},
        {Controller::St, stErr, {0, 0, 0, 0, 0, 0, 0}, true, 7},
        {Controller::St, stErr, {}, false, 0},
    };
    for (const Case& c : cases) {
        Bytes payload;
        EXPECT_EQ(
            answerOk(c.ctl, *c.l, c.answer.data(), static_cast<int>(c.answer.size()), &payload),
            c.ok)
            << hex(c.answer);
        EXPECT_EQ(payload.size(), c.payload) << hex(c.answer);
    }
}
