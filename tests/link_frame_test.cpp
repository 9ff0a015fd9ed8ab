// Request frames on the wire, byte stuffing, CRC-8 and the command pool.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <memory>
#include <random>
#include <vector>

#include "brdsim.h"
#include "mcu_base.h"
#include "sim_frame.h"

namespace {

using Bytes = std::vector<BYTE>;

// A context whose port is the write end of a pipe, with the pool row `row` at index 5
// (device, command, address for ST and NXP; the request bytes for FM and customised).
struct PipeLink {
    std::unique_ptr<MCU_CONTENT> m{new MCU_CONTENT{}};
    int p[2] = {-1, -1};
    PipeLink(int type, int nxpMode, Bytes row) {
        EXPECT_EQ(pipe(p), 0);
        m->fd = p[1];
        m->mcuType = type;
        m->stMode = ST_MODE_AP;
        m->nxpMode = nxpMode;
        if (type == MCU_TYPE_FM || type == MCU_TYPE_CUSTOMISE) {
            pushCommandToPoolCustomise(m.get(), 5, row.data(), int(row.size()));
        } else {
            row.resize(3);
            pushCommandToPool(m.get(), 5, row[0], row[1], row[2]);
        }
    }
    ~PipeLink() {
        for (int fd : p)
            if (fd >= 0) close(fd);
    }
    // Everything written so far; closes the write end.
    Bytes wire() {
        close(p[1]);
        m->fd = p[1] = -1;
        Bytes out;
        BYTE buf[4096];
        ssize_t n;
        while ((n = read(p[0], buf, sizeof buf)) > 0) out.insert(out.end(), buf, buf + n);
        return out;
    }
};

}  // namespace

// The link's table-driven CRC against the simulated board's bit-by-bit one.
TEST(Crc8, CheckValueAndAgreementWithABitByBitCrc) {
    const BYTE digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(Get_CRC8(digits, 9), 0xC6);
    EXPECT_EQ(brdsim::crc8(digits, 9), 0xC6);
    EXPECT_EQ(Get_CRC8(digits, 0), 0x00);
    // Every pair of bytes covers every CRC state before every byte value.
    for (int a = 0; a < 256; ++a)
        for (int b = 0; b < 256; ++b) {
            const BYTE d[2] = {BYTE(a), BYTE(b)};
            ASSERT_EQ(Get_CRC8(d, 2), brdsim::crc8(d, 2)) << a << "," << b;
        }
    std::mt19937 rng(7);
    for (unsigned len = 0; len < 80; ++len) {
        Bytes d(len);
        for (auto& x : d) x = BYTE(rng());
        ASSERT_EQ(Get_CRC8(d.data(), len), brdsim::crc8(d.data(), len)) << "length " << len;
    }
}

TEST(Stuffing, EscapesExactlyFourValuesAndRoundTrips) {
    struct Row {
        BYTE start, end, escape;
        Bytes src, wire;
    };
    // clang-format off
    const Row rows[] = {
        {0xF1, 0xF2, 0xF0, {0x00, 0x02, 0x01, 0xAC}, {0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}},
        {0xF1, 0xF2, 0xF0, {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xEF},
         {0xF1, 0xF0, 0x00, 0xF0, 0x01, 0xF0, 0x02, 0xF0, 0x03, 0xF4, 0xEF, 0xF2}},
        {0xC1, 0xC2, 0xC0, {0xC0, 0xC3, 0xC4, 0xF1}, {0xC1, 0xC0, 0x00, 0xC0, 0x03, 0xC4, 0xF1, 0xC2}},
        {0xF1, 0xF2, 0xF0, {}, {0xF1, 0xF2}},
    };
    // clang-format on
    for (const auto& r : rows) {
        BYTE dst[64], back[64];
        unsigned n = stuffFrame(r.start, r.end, r.escape, r.src.data(), r.src.size(), dst, 64);
        EXPECT_EQ(Bytes(dst, dst + n), r.wire);
        // Unstuffing gives back start code, source and end code.
        unsigned m = unstuffFrame(r.escape, dst, n, back);
        ASSERT_EQ(m, r.src.size() + 2);
        EXPECT_EQ(back[0], r.start);
        EXPECT_EQ(Bytes(back + 1, back + m - 1), r.src);
        EXPECT_EQ(back[m - 1], r.end);
        // The simulated board's own stuffing agrees.
        if (r.escape != 0xF0) continue;
        EXPECT_EQ(brdsim::stuff(r.src), r.wire);
        Bytes plain;
        EXPECT_TRUE(brdsim::unstuff(r.wire, &plain));
        EXPECT_EQ(plain, Bytes(back, back + m));
    }
    // Every byte doubles: 2 + 20 bytes do not fit 21.
    Bytes src(10, 0xF1);
    BYTE dst[22];
    EXPECT_EQ(stuffFrame(0xF1, 0xF2, 0xF0, src.data(), 10, dst, 21), 0u);
    EXPECT_EQ(stuffFrame(0xF1, 0xF2, 0xF0, src.data(), 10, dst, 22), 22u);
    // A bad escape swallows the end code, so the end-code test fails.
    const BYTE bad[] = {0xF1, 0x00, 0xF0, 0xF2};
    EXPECT_EQ(unstuffFrame(0xF0, bad, 4, dst), 3u);
    EXPECT_NE(dst[2], 0xF2);
}

constexpr int ST = MCU_TYPE_ST, NXP = MCU_TYPE_NXP, FM = MCU_TYPE_FM, CU = MCU_TYPE_CUSTOMISE;

TEST(DefaultWrite, FramesOnTheWire) {
    struct Row {
        const char* what;
        int type, nxpMode;
        Bytes row, data;
        int index, result;
        Bytes wire;
    };
    // clang-format off
    const Row rows[] = {
        {"ST no data", ST, 0, {0x00, 0x02, 0x01}, {}, 5, 1, {0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}},
        {"ST data F1 escaped", ST, 0, {0x00, 0x01, 0x10}, {0xF1}, 5, 1,
         {0xF1, 0x00, 0x01, 0x10, 0xF0, 0x01, 0x7A, 0xF2}},
        {"ST CRC escaped", ST, 0, {0x00, 0x02, 0x50}, {}, 5, 1, {0xF1, 0x00, 0x02, 0x50, 0xF0, 0x00, 0xF2}},
        {"ST unknown index", ST, 0, {0x00, 0x02, 0x01}, {}, 6, -20, {}},
        {"ST too long once escaped", ST, 0, {0x00, 0x03, 0x01}, Bytes(600, 0xF1), 5, -2, {}},
        {"NXP AP", NXP, NXP_MODE_AP, {0x21}, {0xC1, 0xF1}, 5, 1, {0xC1, 0x21, 0xC0, 0x01, 0xF1, 0xC2}},
        {"NXP update", NXP, NXP_MODE_UPDATE, {0x21}, {0xC1, 0xF1}, 5, 1, {0xF1, 0x21, 0xC1, 0xF0, 0x01, 0xF2}},
        {"FM escaped command", FM, 0, {0xF1, 0x94, 0xF2, 0xF1, 0xF2}, {0x55}, 5, 1,
         {0xF1, 0x94, 0xF0, 0x02, 0xF0, 0x01, 0xF2}},
        {"FM other command", FM, 0, {0xF1, 0x90, 0xF2, 0x05, 0xF2}, {}, 5, 1, {0xF1, 0x90, 0xF2, 0x05, 0xF2}},
        {"FM F0 F3 pass", FM, 0, {0xF1, 0x88, 0xF0, 0xF3, 0xF2}, {}, 5, 1, {0xF1, 0x88, 0xF0, 0xF3, 0xF2}},
        {"customised", CU, 0, {0x01, 0xF1, 0x03}, {0x09}, 5, 1, {0x01, 0xF1, 0x03}},
        {"unknown type", 7, 0, {0x00, 0x02, 0x01}, {}, 5, 1, {}},
    };
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.what);
        PipeLink link(r.type, r.nxpMode, r.row);
        Bytes data = r.data;
        EXPECT_EQ(defaultWrite(link.m.get(), r.index, data.data(), int(data.size())), r.result);
        EXPECT_EQ(link.m->lock, r.result == 1 ? 1 : 0);  // nothing written: not waiting
        EXPECT_EQ(link.wire(), r.wire);
        // The simulated board builds the same ST frames.
        if (r.type == ST && r.result == 1) {
            EXPECT_EQ(brdsim::encodeStFrame(r.row[0], r.row[1], r.row[2], r.data), r.wire);
        }
    }
}

TEST(DefaultWrite, ShortWriteFailsAndLeavesLinkBusy) {
    PipeLink link(MCU_TYPE_ST, 0, {0, 2, 1});
    close(link.p[0]);  // nobody reads: the write fails
    link.p[0] = -1;
    signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(defaultWrite(link.m.get(), 5, nullptr, 0), -2);
    EXPECT_EQ(link.m->lock, 1);
}

TEST(VerifyCrc, MatchAndMismatch) {
    struct Row {
        Bytes frame;
        int result;
    } rows[] = {
        {{0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}, 1},
        {{0xF1, 0x00, 0x02, 0x01, 0xAD, 0xF2}, -8},
        {{0xF1, 0x00, 0x01, 0x10, 0xF1, 0x7A, 0xF2}, 1},
        {{0xF1, 0x00, 0x02, 0x50, 0xF0, 0xF2}, 1},
        {{0xF1, 0xF2}, -8},
    };
    std::unique_ptr<MCU_CONTENT> m(new MCU_CONTENT{});
    m->debugLevel = 1;
    for (auto& r : rows)
        EXPECT_EQ(verify_CRC(m.get(), r.frame.data(), int(r.frame.size())), r.result);
}

TEST(CommandPool, OverlongCustomisedRowTakesASlotButNoIndex) {
    std::unique_ptr<MCU_CONTENT> m(new MCU_CONTENT{});
    BYTE tooLong[CMD_DATA_SIZE] = {};
    pushCommandToPoolCustomise(m.get(), 42, tooLong, CMD_DATA_SIZE);
    EXPECT_EQ(m->cmd_count, 1);
    EXPECT_EQ(getCommandByIndex(m.get(), 42), nullptr);
}
