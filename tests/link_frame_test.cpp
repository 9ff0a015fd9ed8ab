// Request frames on the wire, byte stuffing, CRC-8 and the command pool.
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <random>
#include <vector>

#include "mcu_base.h"

namespace {

using Bytes = std::vector<BYTE>;

// Bit-at-a-time CRC-8, polynomial 0x5A, MSB first, no reflection, no final XOR.
BYTE crcBitwise(const Bytes& d) {
    BYTE crc = 0;
    for (BYTE b : d) {
        crc ^= b;
        for (int k = 0; k < 8; ++k) crc = (crc & 0x80) ? BYTE((crc << 1) ^ 0x5A) : BYTE(crc << 1);
    }
    return crc;
}

struct Link {
    std::unique_ptr<MCU_CONTENT> m{new MCU_CONTENT{}};
    int pipeFds[2] = {-1, -1};
    Link() {
        EXPECT_EQ(pipe(pipeFds), 0);
        m->fd = pipeFds[1];
        m->stMode = ST_MODE_AP;
        m->nxpMode = NXP_MODE_AP;
    }
    ~Link() {
        close(pipeFds[0]);
        close(pipeFds[1]);
    }
    void addRow(int index, const std::vector<int>& data) {
        cmd& e = m->cmd_pool[m->cmd_count++];
        e.cmd_index = index;
        for (size_t i = 0; i < data.size(); ++i) e.cmd_data[i] = data[i];
        e.cmd_data[data.size()] = -1;
    }
    // What the last write put on the line.
    Bytes wire() {
        close(pipeFds[1]);
        m->fd = pipeFds[1] = -1;
        Bytes out;
        BYTE buf[4096];
        ssize_t n;
        while ((n = read(pipeFds[0], buf, sizeof buf)) > 0) out.insert(out.end(), buf, buf + n);
        return out;
    }
};

}  // namespace

TEST(Crc8, CheckValueAndEmptyRange) {
    const BYTE digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(Get_CRC8(digits, 9), 0xC6);
    EXPECT_EQ(Get_CRC8_Nibble(digits, 9), 0xC6);
    EXPECT_EQ(Get_CRC8(digits, 0), 0x00);
}

TEST(Crc8, NibbleTableIsFourShiftsOfEachNibble) {
    for (int n = 0; n < 16; ++n) {
        BYTE crc = BYTE(n << 4);
        for (int k = 0; k < 4; ++k) crc = (crc & 0x80) ? BYTE((crc << 1) ^ 0x5A) : BYTE(crc << 1);
        EXPECT_EQ(CRC8_Table[n], crc) << "entry " << n;
    }
}

TEST(Crc8, FastTablesAgreeWithNibbleTableAndBitwise) {
    // Every pair of bytes covers every CRC state before every byte value.
    for (int a = 0; a < 256; ++a)
        for (int b = 0; b < 256; ++b) {
            BYTE d[2] = {BYTE(a), BYTE(b)};
            ASSERT_EQ(Get_CRC8(d, 2), Get_CRC8_Nibble(d, 2)) << a << "," << b;
        }
    std::mt19937 rng(7);
    for (unsigned len = 0; len < 80; ++len) {
        Bytes d(len);
        for (auto& x : d) x = BYTE(rng());
        ASSERT_EQ(Get_CRC8(d.data(), len), crcBitwise(d)) << "length " << len;
        ASSERT_EQ(Get_CRC8_Nibble(d.data(), len), crcBitwise(d)) << "length " << len;
    }
}

TEST(Stuffing, EscapesExactlyFourValuesAndRoundTrips) {
    struct Row {
        BYTE start, end, escape;
        Bytes src, wire;
    } rows[] = {
        {0xF1, 0xF2, 0xF0, {0x00, 0x02, 0x01, 0xAC}, {0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}},
        {0xF1,
         0xF2,
         0xF0,
         {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xEF},
         {0xF1, 0xF0, 0x00, 0xF0, 0x01, 0xF0, 0x02, 0xF0, 0x03, 0xF4, 0xEF, 0xF2}},
        {0xC1,
         0xC2,
         0xC0,
         {0xC0, 0xC3, 0xC4, 0xF1},
         {0xC1, 0xC0, 0x00, 0xC0, 0x03, 0xC4, 0xF1, 0xC2}},
        {0xF1, 0xF2, 0xF0, {}, {0xF1, 0xF2}},
    };
    for (const auto& r : rows) {
        BYTE dst[64];
        unsigned n = stuffFrame(r.start, r.end, r.escape, r.src.data(), r.src.size(), dst, 64);
        EXPECT_EQ(Bytes(dst, dst + n), r.wire);
        BYTE back[64];
        unsigned m = unstuffFrame(r.escape, dst, n, back);
        Bytes expect{r.start};
        expect.insert(expect.end(), r.src.begin(), r.src.end());
        expect.push_back(r.end);
        EXPECT_EQ(Bytes(back, back + m), expect);
    }
}

TEST(Stuffing, RefusesWhatWouldNotFit) {
    Bytes src(10, 0xF1);  // every byte doubles: 2 + 20 bytes
    BYTE dst[22];
    EXPECT_EQ(stuffFrame(0xF1, 0xF2, 0xF0, src.data(), 10, dst, 21), 0u);
    EXPECT_EQ(stuffFrame(0xF1, 0xF2, 0xF0, src.data(), 10, dst, 22), 22u);
}

TEST(Stuffing, BadEscapeLeavesNoEndCode) {
    // F0 F2 at the end: the escape swallows the end code, so the end-code test fails.
    const BYTE wire[] = {0xF1, 0x00, 0xF0, 0xF2};
    BYTE out[4];
    unsigned n = unstuffFrame(0xF0, wire, 4, out);
    ASSERT_EQ(n, 3u);
    EXPECT_NE(out[n - 1], 0xF2);
}

TEST(DefaultWrite, FramesOnTheWire) {
    struct Row {
        const char* what;
        int type, nxpMode;
        std::vector<int> row;
        Bytes data, wire;
    } rows[] = {
        {"ST no data",
         MCU_TYPE_ST,
         0,
         {0x00, 0x02, 0x01},
         {},
         {0xF1, 0x00, 0x02, 0x01, 0xAC, 0xF2}},
        {"ST data F1 escaped",
         MCU_TYPE_ST,
         0,
         {0x00, 0x01, 0x10},
         {0xF1},
         {0xF1, 0x00, 0x01, 0x10, 0xF0, 0x01, 0x7A, 0xF2}},
        {"ST CRC escaped",
         MCU_TYPE_ST,
         0,
         {0x00, 0x02, 0x50},
         {},
         {0xF1, 0x00, 0x02, 0x50, 0xF0, 0x00, 0xF2}},
        {"NXP AP",
         MCU_TYPE_NXP,
         NXP_MODE_AP,
         {0x21},
         {0xC1, 0xF1},
         {0xC1, 0x21, 0xC0, 0x01, 0xF1, 0xC2}},
        {"NXP update",
         MCU_TYPE_NXP,
         NXP_MODE_UPDATE,
         {0x21},
         {0xC1, 0xF1},
         {0xF1, 0x21, 0xC1, 0xF0, 0x01, 0xF2}},
        {"FM escaped command",
         MCU_TYPE_FM,
         0,
         {0xF1, 0x94, 0xF2, 0xF1, 0xF2, 0xFF},
         {0x55},
         {0xF1, 0x94, 0xF0, 0x02, 0xF0, 0x01, 0xF2}},
        {"FM other command",
         MCU_TYPE_FM,
         0,
         {0xF1, 0x90, 0xF2, 0x05, 0xF2, 0xFF},
         {},
         {0xF1, 0x90, 0xF2, 0x05, 0xF2}},
        {"FM F0 F3 pass",
         MCU_TYPE_FM,
         0,
         {0xF1, 0x88, 0xF0, 0xF3, 0xF2, 0xFF},
         {},
         {0xF1, 0x88, 0xF0, 0xF3, 0xF2}},
        {"customised", MCU_TYPE_CUSTOMISE, 0, {0x01, 0xF1, 0x03, 255}, {0x09}, {0x01, 0xF1, 0x03}},
        {"unknown type", 7, 0, {0x00, 0x02, 0x01}, {}, {}},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.what);
        Link link;
        link.m->mcuType = r.type;
        link.m->nxpMode = r.nxpMode;
        link.addRow(5, r.row);
        Bytes data = r.data;
        EXPECT_EQ(defaultWrite(link.m.get(), 5, data.data(), int(data.size())), 1);
        EXPECT_EQ(link.m->lock, 1);
        EXPECT_EQ(link.wire(), r.wire);
    }
}

TEST(DefaultWrite, UnknownIndexWritesNothing) {
    Link link;
    link.m->mcuType = MCU_TYPE_ST;
    link.addRow(5, {0, 2, 1});
    EXPECT_EQ(defaultWrite(link.m.get(), 6, nullptr, 0), -20);
    EXPECT_EQ(link.m->lock, 0);
    EXPECT_TRUE(link.wire().empty());
}

TEST(DefaultWrite, FrameThatWouldNotFitIsRefusedBeforeWriting) {
    Link link;
    link.m->mcuType = MCU_TYPE_ST;
    link.addRow(5, {0, 3, 1});
    Bytes data(600, 0xF1);  // escapes to 1200 bytes
    EXPECT_EQ(defaultWrite(link.m.get(), 5, data.data(), int(data.size())), -2);
    EXPECT_EQ(link.m->lock, 0);
    EXPECT_TRUE(link.wire().empty());
    Bytes fits(500, 0x11);
    Link ok;
    ok.m->mcuType = MCU_TYPE_ST;
    ok.addRow(5, {0, 3, 1});
    EXPECT_EQ(defaultWrite(ok.m.get(), 5, fits.data(), int(fits.size())), 1);
}

TEST(DefaultWrite, ShortWriteFailsAndLeavesLinkBusy) {
    Link link;
    link.m->mcuType = MCU_TYPE_ST;
    link.addRow(5, {0, 2, 1});
    close(link.pipeFds[0]);  // nobody reads: the write fails
    link.pipeFds[0] = -1;
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

TEST(CommandPool, RowsAndOverflow) {
    std::unique_ptr<MCU_CONTENT> m(new MCU_CONTENT{});
    pushCommandToPool(m.get(), 40, 0x00, 0x02, 0x0A);
    BYTE fm[] = {0xF1, 0x88, 0x01, 0xF2};
    pushCommandToPoolCustomise(m.get(), 41, fm, 4);
    BYTE tooLong[16] = {};
    pushCommandToPoolCustomise(m.get(), 42, tooLong, 16);
    EXPECT_EQ(m->cmd_count, 3);

    cmd* st = getCommandByIndex(m.get(), 40);
    ASSERT_NE(st, nullptr);
    EXPECT_EQ(std::vector<int>(st->cmd_data, st->cmd_data + 4), (std::vector<int>{0, 2, 0x0A, -1}));
    cmd* c = getCommandByIndex(m.get(), 41);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(std::vector<int>(c->cmd_data, c->cmd_data + 5),
              (std::vector<int>{0xF1, 0x88, 0x01, 0xF2, 255}));
    EXPECT_EQ(getCommandByIndex(m.get(), 43), nullptr);
}

TEST(Version, IsThreeThreeOne) {
    BYTE v[10];
    memset(v, 0xAA, sizeof v);
    MCU_Library_Version(v);
    EXPECT_STREQ(reinterpret_cast<char*>(v), "3.3.1");
    EXPECT_EQ(v[9], 0);
}
