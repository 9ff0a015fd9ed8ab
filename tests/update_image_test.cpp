// Firmware images and update settings: the readers (including files written by srec_cat),
// validation, the configured sizes, the request data of every update row and the plan.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "update/flow.h"
#include "update/update_handlers.h"

namespace {

using namespace update;

// A Cortex-M application for the system MCU's defaults: vector table, model tag, and
// `size` bytes in all.
Bytes makeApp(const Settings& s, size_t size, const std::string& tag, uint32_t sp = 0) {
    Bytes d(size);
    for (size_t i = 0; i < size; ++i) d[i] = static_cast<uint8_t>(i * 7 + 3);
    Bytes vt;
    put32(&vt, sp ? sp : s.ramEnd);
    put32(&vt, s.appStart + 0x101);
    std::copy(vt.begin(), vt.end(), d.begin());
    size_t at = s.versionAddress - s.appStart;
    std::copy(tag.begin(), tag.end(), d.begin() + at);
    d[at + tag.size()] = 0;
    return d;
}

TEST(UpdateImage, IntelHexRecords) {
    struct Case {
        const char* what;
        std::string text;
        bool ok;
        uint32_t start;
        std::string data;  // hex of the assembled bytes, or the expected error text
    };
    const Case cases[] = {
        {"extended linear address", ":020000040800F2\n:0440000001020304B2\n:00000001FF\n", true,
         0x08004000, "01020304"},
        {"segment address and a gap filled with FF",
         ":020000021000EC\n:02000000AABB99\n:02000400CCDD51\n:00000001FF\n", true, 0x10000,
         "AABBFFFFCCDD"},
        {"CRLF, blanks and a start address record",
         "  :0400000501020304ED\r\n:0100000042BD\r\n:00000001FF\r\n", true, 0, "42"},
        {"bad checksum", ":0440000001020304B3\n:00000001FF\n", false, 0,
         "line 1: checksum B3, expected B2"},
        {"length byte disagrees", ":0540000001020304B2\n:00000001FF\n", false, 0,
         "line 1: length byte says 5 data bytes, record has 4"},
        {"no end record", ":0440000001020304B2\n", false, 0, "truncated: no end-of-file record"},
        {"overlapping records", ":0400000001020304F2\n:0200020055AAFD\n:00000001FF\n", false, 0,
         "line 2: data at 0x00000002 overlaps an earlier record"},
        {"unknown type", ":00000006FA\n:00000001FF\n", false, 0, "line 1: unknown record type 06"},
        {"not a record", "hello\n", false, 0, "line 1: not an Intel HEX record (no ':')"},
        {"odd digits", ":0440000001020304A\n", false, 0, "line 1: malformed record"},
        {"data after the end", ":00000001FF\n:0100000042BD\n", false, 0,
         "line 2: data after the end-of-file record"},
        {"only an end record", ":00000001FF\n", false, 0, "no data records"},
    };
    for (const Case& c : cases) {
        Image img;
        std::string why;
        bool ok = parseIntelHex(c.text, &img, &why);
        ASSERT_EQ(ok, c.ok) << c.what << ": " << why;
        if (!ok) {
            EXPECT_EQ(why, c.data) << c.what;
            continue;
        }
        EXPECT_EQ(img.start, c.start) << c.what;
        std::string hex;
        for (uint8_t b : img.data) {
            char h[3];
            std::snprintf(h, sizeof h, "%02X", b);
            hex += h;
        }
        EXPECT_EQ(hex, c.data) << c.what;
    }
}

TEST(UpdateImage, SRecordRecords) {
    struct Case {
        const char* what;
        std::string text;
        bool ok;
        uint32_t start;
        size_t size;
        std::string why;
    };
    const Case cases[] = {
        {"S1 with S9", "S0030000FC\nS107000001020304EE\nS9030000FC\n", true, 0, 4, ""},
        {"S2 with S5 count and S8", "S20801000001020304EC\nS5030001FB\nS804000000FB\n", true,
         0x10000, 4, ""},
        {"S3 with a gap", "S30908004000AABBCCDDA0\nS30708004008EEFFBB\nS70508004000B2\n", true,
         0x08004000, 10, ""},
        {"count record alone ends the file (as srec_cat writes it)",
         "S107000001020304EE\nS5030001FB\n", true, 0, 4, ""},
        {"bad checksum", "S107000001020304EF\nS9030000FC\n", false, 0, 0,
         "line 1: checksum EF, expected EE"},
        {"S4 is no record type", "S407000001020304EE\nS9030000FC\n", false, 0, 0,
         "line 1: record type S4 is not a valid S-record type"},
        {"wrong count", "S107000001020304EE\nS5030002FA\n", false, 0, 0,
         "line 2: record count says 2, file has 1"},
        {"truncated", "S107000001020304EE\n", false, 0, 0,
         "truncated: no termination record (S7, S8 or S9) nor record count (S5, S6)"},
        {"count byte disagrees", "S108000001020304EE\nS9030000FC\n", false, 0, 0,
         "line 1: count byte says 8, record has 7"},
        {"overlap", "S107000001020304EE\nS1050002AABB93\nS9030000FC\n", false, 0, 0,
         "line 2: data at 0x00000002 overlaps an earlier record"},
        {"data after termination", "S9030000FC\nS107000001020304EE\n", false, 0, 0,
         "line 2: data after the termination record"},
    };
    for (const Case& c : cases) {
        Image img;
        std::string why;
        bool ok = parseSRecord(c.text, &img, &why);
        ASSERT_EQ(ok, c.ok) << c.what << ": " << why;
        if (!ok) {
            EXPECT_EQ(why, c.why) << c.what;
            continue;
        }
        EXPECT_EQ(img.start, c.start) << c.what;
        EXPECT_EQ(img.data.size(), c.size) << c.what;
    }
    // The gap of the S3 case reads as erased flash.
    Image img;
    std::string why;
    ASSERT_TRUE(parseSRecord(cases[2].text, &img, &why));
    EXPECT_EQ(img.data, (Bytes{0xAA, 0xBB, 0xCC, 0xDD, 0xFF, 0xFF, 0xFF, 0xFF, 0xEE, 0xFF}));
}

TEST(UpdateImage, FormatFromNameThenContent) {
    const std::tuple<const char*, const char*, ImageFormat> cases[] = {
        {"fw.HEX", "", ImageFormat::IntelHex},        {"fw.s19", "", ImageFormat::SRecord},
        {"fw.bin", ":00", ImageFormat::Binary},       {"dir.v2/fw", ":0000", ImageFormat::IntelHex},
        {"fw", "\nS1030000FC", ImageFormat::SRecord}, {"fw", "\x00\x50", ImageFormat::Binary},
        {"fw.img", "Sx", ImageFormat::Binary},
    };
    for (const auto& [name, content, fmt] : cases)
        EXPECT_EQ(detectFormat(name, content), fmt) << name;
}

// Files written by srec_cat, an independent tool, read back to the same bytes.
TEST(UpdateImage, ReadsFilesWrittenBySrecCat) {
    if (std::system("command -v srec_cat >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "srec_cat (Debian package srecord) is not installed";
    char tmpl[] = "/tmp/update_image_test.XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    std::string dir = tmpl;
    Settings s = defaultSettings(Target::Mcu, "KX07");
    Bytes app = makeApp(s, 0xB123, "KX07 2.0.1");
    // A hole in the middle: srec_cat leaves it out, the reader fills it with 0xFF.
    std::string bin = dir + "/fw.bin";
    {
        std::ofstream f(bin, std::ios::binary);
        f.write(reinterpret_cast<const char*>(app.data()), static_cast<long>(app.size()));
    }
    struct Out {
        const char* file;
        const char* args;
    };
    const Out outs[] = {
        {"fw.hex", "-o %s -intel"},
        {"fw.srec", "-o %s -motorola"},
        {"fw.s19", "-o %s -motorola -address-length=2"},
        {"fw.s28", "-o %s -motorola -address-length=3"},
        {"fw.s37", "-o %s -motorola -address-length=4 -execution-start-address=0x08004101"},
    };
    for (const Out& o : outs) {
        // Shifted to the application start, with bytes 0x100..0x1FF cut out.
        std::string path = dir + "/" + o.file;
        char out[256];
        std::snprintf(out, sizeof out, o.args, path.c_str());
        uint32_t base = o.file == std::string("fw.s19") ? 0x4000 : s.appStart;
        if (o.file == std::string("fw.s28")) base = 0x104000;
        std::string cmd = "srec_cat " + bin + " -binary -exclude 0x100 0x200 -offset " +
                          std::to_string(base) + " " + out + " 2>&1";
        ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
        Image img;
        std::string why;
        ASSERT_TRUE(readImageFile(path, 0, &img, &why)) << o.file << ": " << why;
        EXPECT_EQ(img.start, base) << o.file;
        Bytes want = app;
        std::fill(want.begin() + 0x100, want.begin() + 0x200, 0xFF);
        EXPECT_EQ(img.data, want) << o.file;
    }
    // The binary itself goes to where it is told.
    Image img;
    std::string why;
    ASSERT_TRUE(readImageFile(bin, s.appStart, &img, &why)) << why;
    EXPECT_EQ(img.start, s.appStart);
    EXPECT_EQ(img.data, app);
    EXPECT_TRUE(validateImage(img, s.limits()).ok);
    // Missing and empty files.
    EXPECT_FALSE(readImageFile(dir + "/none.bin", 0, &img, &why));
    EXPECT_EQ(why, "No such file or directory");
    std::ofstream(dir + "/empty.hex").close();
    EXPECT_FALSE(readImageFile(dir + "/empty.hex", 0, &img, &why));
    EXPECT_EQ(why, "empty file");
    std::filesystem::remove_all(dir);
}

TEST(UpdateImage, Validation) {
    Settings s = defaultSettings(Target::Mcu, "KX07");
    struct Case {
        const char* what;
        uint32_t start;
        Bytes data;
        bool ok, mismatch;
        std::string why;
    };
    Bytes good = makeApp(s, 0xC000, "KX07 1.2.0");
    Bytes noVersion = makeApp(s, 0xC000, "KX07");
    Bytes otherModel = makeApp(s, 0xC000, "KX071 1.0");
    Bytes noTag = makeApp(s, 0xC000, "");
    Bytes badSp = makeApp(s, 0xC000, "KX07 1", 0x08000000);
    Bytes spAtBottom = makeApp(s, 0xC000, "KX07 1", s.ramStart);
    Bytes armReset = good;
    armReset[4] &= 0xFE;  // ARM state instead of Thumb
    Bytes farReset = good;
    farReset[7] = 0x09;  // 0x09004101
    Bytes tooLong(s.flashEnd - s.appStart + 4, 0x00);
    std::copy(good.begin(), good.end(), tooLong.begin());
    const Case cases[] = {
        {"good", s.appStart, good, true, false, ""},
        {"model without version", s.appStart, noVersion, true, false, ""},
        {"longer model name", s.appStart, otherModel, true, true,
         "model tag 'KX071 1.0' at 0x0800F000 is not for model 'KX07'"},
        {"no tag", s.appStart, noTag, true, true, "no model tag at 0x0800F000 (expected 'KX07')"},
        {"empty", s.appStart, {}, false, false, "the image holds no data"},
        {"below the application", s.appStart - 0x100, good, false, false,
         "data at 0x08003F00-0x0800FEFF lies outside the application region "
         "0x08004000-0x0801FFFF"},
        {"past the flash end", s.appStart, tooLong, false, false,
         "data at 0x08004000-0x08020003 lies outside the application region "
         "0x08004000-0x0801FFFF"},
        {"not at the start", s.appStart + 0x400, good, false, false,
         "the image starts at 0x08004400, not at the application start 0x08004000 where the "
         "vector table belongs"},
        {"stack in flash", s.appStart, badSp, false, false,
         "bad vector table: initial stack pointer 0x08000000 is not inside the RAM "
         "0x20000000-0x20004FFF"},
        {"stack at the RAM start", s.appStart, spAtBottom, false, false,
         "bad vector table: initial stack pointer 0x20000000 is not inside the RAM "
         "0x20000000-0x20004FFF"},
        {"no Thumb bit", s.appStart, armReset, false, false,
         "bad vector table: reset vector 0x08004100 lacks the Thumb bit"},
        {"reset outside", s.appStart, farReset, false, false,
         "bad vector table: reset vector 0x09004101 points outside the image"},
        {"version address past the image", s.appStart, Bytes(good.begin(), good.begin() + 0x1000),
         false, false, "no model tag: the version address 0x0800F000 lies outside the image"},
    };
    for (const Case& c : cases) {
        Image img;
        img.start = c.start;
        img.data = c.data;
        Validation v = validateImage(img, s.limits());
        EXPECT_EQ(v.ok, c.ok) << c.what;
        EXPECT_EQ(v.modelMismatch, c.mismatch) << c.what;
        EXPECT_EQ(v.why, c.why) << c.what;
    }
    Image img{ImageFormat::Binary, s.appStart, good};
    EXPECT_EQ(validateImage(img, s.limits()).version, "1.2.0");
}

TEST(UpdateSettings, DefaultsAndLimits) {
    struct Case {
        const char* what;
        Target t;
        UpdateInfo info;
        bool ok;
        std::string why;
    };
    auto with = [](auto f) {
        UpdateInfo i;
        i.present = true;
        f(i);
        return i;
    };
    const Case cases[] = {
        {"mcu defaults", Target::Mcu, with([](UpdateInfo&) {}), true, ""},
        {"can defaults", Target::Can, with([](UpdateInfo&) {}), true, ""},
        {"largest ST write", Target::Mcu, with([](UpdateInfo& i) { i.writeSize = 500; }), true, ""},
        {"ST write too large", Target::Mcu, with([](UpdateInfo& i) { i.writeSize = 504; }), false,
         "WRITE_SIZE 504 is larger than a frame can carry (at most 500)"},
        {"NXP write fits more", Target::Can, with([](UpdateInfo& i) { i.writeSize = 504; }), true,
         ""},
        {"verify too large", Target::Mcu, with([](UpdateInfo& i) { i.verifySize = 1024; }), false,
         "VERIFY_SIZE 1024 is larger than a frame can carry (at most 500)"},
        {"odd write size", Target::Mcu, with([](UpdateInfo& i) { i.writeSize = 130; }), false,
         "WRITE_SIZE 130 must be a positive multiple of 4"},
        {"zero verify size", Target::Can, with([](UpdateInfo& i) { i.verifySize = 0; }), false,
         "VERIFY_SIZE 0 must be a positive multiple of 4"},
        {"application outside the flash", Target::Mcu,
         with([](UpdateInfo& i) { i.programRomStartAddress = 0x08020000; }), false,
         "ProgramROM_startAddress 0x08020000 lies outside the flash 0x08000000-0x08020000"},
        {"version outside", Target::Can, with([](UpdateInfo& i) { i.mcuVersionAddress = 0x100; }),
         false, "MCU_versionAddress 0x00000100 lies outside the application region"},
        {"RAM reversed", Target::Mcu, with([](UpdateInfo& i) { i.ramEndAddress = 0x1000; }), false,
         "RAM_startAddress 0x20000000 is not below RAM_endAddress 0x00001000"},
        {"address past 32 bits", Target::Mcu,
         with([](UpdateInfo& i) { i.mcuEndAddress = 0x100000000ul; }), false,
         "MCU_endAddress 0x100000000 lies outside 32-bit addresses"},
    };
    for (const Case& c : cases) {
        Settings s;
        std::string why;
        EXPECT_EQ(resolveSettings(c.t, c.info, "KX07\n", &s, &why), c.ok) << c.what;
        EXPECT_EQ(why, c.why) << c.what;
        if (c.ok) {
            EXPECT_EQ(s.model, "KX07") << c.what;
        }
    }
    Settings can;
    std::string why;
    ASSERT_TRUE(resolveSettings(Target::Can, with([](UpdateInfo&) {}), "KX22", &can, &why));
    EXPECT_EQ(can.ramStart, 0x10000000u);
    EXPECT_EQ(can.flashStart, 0u);
}

// The data of every update request, byte for byte.
TEST(UpdateRows, RequestData) {
    const uint8_t block[] = {0xF1, 0x00, 0x7E};
    Args a;
    a.addr = 0x08004080;
    a.end = 0x08020000;
    a.len = 0x400;
    a.flag = 1;
    a.data = block;
    a.dataLen = sizeof block;
    const std::pair<const char*, Bytes> cases[] = {
        {"ST_IAP_START", {0x01}},
        {"ST_IAP_CANCEL", {0x01}},  // the flag is the caller's: 0 cancels
        {"ST_IAP_GET_01_01_OPERATION_MODE", {}},
        {"ST_IAP_GET_01_02_UPDATE_MODE", {}},
        {"ST_IAP_GET_02_01_IAP_INFORMATION", {}},
        {"ST_IAP_GET_03_01_APP_VERSION", {}},
        {"ST_IAP_GET_04_01_FLASH_DATA", {0x80, 0x40, 0x00, 0x08, 0x00, 0x04}},
        {"ST_IAP_GET_05_01_PROGRAM_STATE", {}},
        {"ST_IAP_SET_01_01_UPDATE_REQUEST", {}},
        {"ST_IAP_SET_02_01_FLASH_UNLOCK", {0x23, 0x01, 0x67, 0x45, 0xAB, 0x89, 0xEF, 0xCD}},
        {"ST_IAP_SET_03_01_ERASE_FLASH", {0x80, 0x40, 0x00, 0x08, 0x00, 0x00, 0x02, 0x08}},
        {"ST_IAP_SET_04_01_WRITE_FLASH", {0x80, 0x40, 0x00, 0x08, 0xF1, 0x00, 0x7E}},
        {"ST_IAP_SET_05_01_CHECK_CODE", {0x80, 0x40, 0x00, 0x08, 0x00, 0x04, 0x00, 0x00}},
        {"ST_IAP_SET_06_01_IAP_REBOOT", {}},
        {"NXP_UPDATE_10_ERASE_FLASH", {0x80, 0x40, 0x00, 0x08, 0x00, 0x00, 0x02, 0x08}},
        {"NXP_UPDATE_12_WRITE_FLASH", {0x80, 0x40, 0x00, 0x08, 0xF1, 0x00, 0x7E}},
        {"NXP_UPDATE_14_READ_FLASH", {0x80, 0x40, 0x00, 0x08, 0x00, 0x04}},
        {"NXP_UPDATE_20_READ_PROGRAM_STATE", {}},
        {"NXP_UPDATE_24_FLASH_UNLOCK", {0x23, 0x01, 0x67, 0x45, 0xAB, 0x89, 0xEF, 0xCD}},
        {"NXP_UPDATE_30_READ_BSL_INFO", {}},
        {"NXP_UPDATE_36_IS_REQUEST_REBOOT", {}},
        {"NXP_UPDATE_40_READ_UPDATE_MODE", {}},
        {"NXP_UPDATE_42_IS_REQUEST_UPDATE", {}},
        {"NXP_CAN_AP_02_READ_FW_VERSION", {}},
    };
    EXPECT_EQ(static_cast<int>(std::size(cases)), kUpdateRowCount);
    for (const auto& [name, want] : cases) {
        const UpdateRow* row = findRowByName(name);
        ASSERT_NE(row, nullptr) << name;
        EXPECT_EQ(encodeRequest(*row, a), want) << name;
    }
    // The CAN boot loader verifies by reading back: it has no check code row.
    EXPECT_EQ(findRow(Target::Can, Step::Check), nullptr);
    EXPECT_NE(findRow(Target::Mcu, Step::Check), nullptr);
}

TEST(UpdateRows, BootInfoRoundTripAndCheckCode) {
    BootInfo b{2, 1, 0x08000000, 0x08020000, 0x08004000, 1024, 256, 0x20000000, 0x20005000};
    Bytes wire = encodeBootInfo(b);
    ASSERT_EQ(wire.size(), static_cast<size_t>(BOOT_INFO_SIZE));
    BootInfo back;
    ASSERT_TRUE(parseBootInfo(wire, &back));
    EXPECT_EQ(back.appStart, b.appStart);
    EXPECT_EQ(back.pageSize, 1024);
    EXPECT_EQ(back.ramEnd, 0x20005000u);
    EXPECT_FALSE(parseBootInfo(Bytes(wire.begin(), wire.end() - 1), &back));
    // The check value of CRC-32, and chaining over two parts.
    const std::string nine = "123456789";
    auto p = reinterpret_cast<const uint8_t*>(nine.data());
    EXPECT_EQ(crc32(p, 9), 0xCBF43926u);
    EXPECT_EQ(crc32(p + 4, 5, crc32(p, 4)), 0xCBF43926u);
}

TEST(UpdatePlan, BlocksPagesAndLineBytes) {
    Settings s = defaultSettings(Target::Mcu, "KX07");
    Image img{ImageFormat::Binary, s.appStart, makeApp(s, 0xB100, "KX07 1")};
    // An erased stretch needs no write.
    std::fill(img.data.begin() + 0x1000, img.data.begin() + 0x2000, 0xFF);
    Plan p = makePlan(s, img, 1024);
    EXPECT_EQ(p.eraseStart, s.appStart);
    EXPECT_EQ(p.eraseEnd, s.flashEnd);
    EXPECT_EQ(p.writes.size(), (0xB100u - 0x1000u) / 128u);
    EXPECT_EQ(p.writes.back().addr, s.appStart + 0xB080);
    ASSERT_EQ(p.verify.size(), 45u);  // 44 whole pages and the last quarter page
    EXPECT_EQ(p.verify.back().len, 0x100u);
    // Each write frame carries its data and the answer its status: the line bytes are
    // at least that, and stuffing adds at most one byte in four for this data.
    uint64_t payload = (0xB100 - 0x1000) + p.writes.size() * (8 + 6 + 9);
    EXPECT_GT(p.lineBytes, payload);
    EXPECT_LT(p.lineBytes, payload + payload / 4 + 4000);
    EXPECT_NEAR(p.lineSeconds(115200), static_cast<double>(p.lineBytes) / 11520.0, 1e-9);

    Settings c = defaultSettings(Target::Can, "KX07");
    Image ci{ImageFormat::Binary, c.appStart, Bytes(1000, 0x11)};
    Plan cp = makePlan(c, ci, 256);
    ASSERT_EQ(cp.verify.size(), 8u);  // VERIFY_SIZE blocks, the last one clipped
    EXPECT_EQ(cp.verify.back().len, 1000u - 7u * 128u);
    EXPECT_EQ(stuffedLength({0xF0, 0x01, 0xF3}), 7u);
}

TEST(UpdateProgress, Lines) {
    EXPECT_EQ(formatProgressStep("write", 32768, 65536), "write: 50% (32768/65536 bytes)");
    EXPECT_EQ(formatProgressLine("write", 32768, 65536, 2.0),
              "write  [##########..........]  50%  32768/65536 B  16.0 KiB/s  0:02 left");
    EXPECT_EQ(formatProgressLine("erase", 0, 0, 0.0),
              "erase  [####################] 100%  0/0 B  0.0 KiB/s  -:-- left");
}

// What brdcmd prints for each kind of answer, including refusals and short answers.
TEST(UpdateRows, RenderedAnswers) {
    BootInfo b{2, 1, 0x08000000, 0x08020000, 0x08004000, 1024, 256, 0x20000000, 0x20005000};
    const std::tuple<const char*, Bytes, std::string> cases[] = {
        {"ST_IAP_GET_01_01_OPERATION_MODE", {2, 0}, "mode: boot loader, application valid: no\n"},
        {"NXP_UPDATE_40_READ_UPDATE_MODE", {1, 1}, "mode: application, application valid: yes\n"},
        {"ST_IAP_GET_05_01_PROGRAM_STATE", {2, 0}, "state: erased, application valid: no\n"},
        {"ST_IAP_GET_02_01_IAP_INFORMATION", encodeBootInfo(b),
         "boot loader 2.1\nflash 0x08000000-0x0801FFFF, application from 0x08004000\npages of "
         "1024 bytes, writes up to 256 bytes\nRAM 0x20000000-0x20004FFF\n"},
        {"ST_IAP_GET_03_01_APP_VERSION", {'K', 'X', '0', '7', ' ', '1'}, "application: KX07 1\n"},
        {"NXP_CAN_AP_02_READ_FW_VERSION", {1, 4, 2}, "application: 1.4.2\n"},
        {"ST_IAP_GET_03_01_APP_VERSION", {}, "application: (none)\n"},
        {"ST_IAP_SET_04_01_WRITE_FLASH",
         {1, 0x80, 0x40, 0x00, 0x08},
         "status: 0x01 (done)\nwritten at 0x08004080\n"},
        {"ST_IAP_SET_04_01_WRITE_FLASH", {2}, "status: 0x02 (flash locked)\n"},
        {"ST_IAP_SET_05_01_CHECK_CODE",
         {1, 0x26, 0x39, 0xF4, 0xCB},
         "status: 0x01 (done)\ncheck code: 0xCBF43926\n"},
        {"NXP_UPDATE_14_READ_FLASH",
         {1, 0x00, 0x20, 0, 0, 0xAA, 0xBB},
         "status: 0x01 (done)\n0x00002000: AA BB\n"},
        {"ST_IAP_SET_03_01_ERASE_FLASH", {7}, "status: 0x07 (not on a page boundary)\n"},
        {"ST_IAP_SET_05_01_CHECK_CODE",
         {1, 0x26},
         "status: 0x01 (done)\nanswer too short to decode\n"},
        {"ST_IAP_SET_06_01_IAP_REBOOT", {}, "no answer data\n"},
    };
    for (const auto& [name, data, text] : cases) {
        const UpdateRow* row = findRowByName(name);
        ASSERT_NE(row, nullptr) << name;
        EXPECT_EQ(renderUpdateAnswer(*row, data), text) << name;
    }
}

}  // namespace
