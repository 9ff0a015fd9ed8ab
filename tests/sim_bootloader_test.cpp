// The simulated boot loader on its own: what its flash allows (erase by page, writes
// that only clear bits, nothing while locked or outside the application) and the faults
// it injects, since the update tests trust it to behave like a part.
#include <gtest/gtest.h>

#include <chrono>

#include "bootloader.h"

namespace {

using brdsim::BootLoader;
using brdsim::Bytes;

Bytes le(uint32_t a, uint32_t b) {
    Bytes d;
    for (uint32_t v : {a, b})
        for (int i = 0; i < 4; ++i) d.push_back(static_cast<uint8_t>(v >> (8 * i)));
    return d;
}

Bytes write(uint32_t addr, Bytes data) {
    Bytes d = le(addr, 0);
    d.resize(4);
    d.insert(d.end(), data.begin(), data.end());
    return d;
}

const Bytes kKey = {0x23, 0x01, 0x67, 0x45, 0xAB, 0x89, 0xEF, 0xCD};

TEST(SimBootLoader, FlashRulesThroughTheIapRows) {
    BootLoader b(brdsim::stFlashLayout(), "KX07 0.9.0");
    const uint32_t app = 0x08004000;
    struct Step {
        const char* what;
        uint8_t command, address;
        Bytes data;
        uint8_t status;
    };
    const Step steps[] = {
        {"unlock in the application", 3, 2, kKey, 0x05},
        {"mode: application, valid", 2, 1, {}, 0x01},
        {"update request", 3, 1, {}, 0x01},
        {"write while locked", 3, 4, write(app, {0x00}), 0x02},
        {"wrong key", 3, 2, Bytes(8, 0x00), 0x06},
        {"unlock", 3, 2, kKey, 0x01},
        {"erase into the boot loader", 3, 3, le(0x08000000, 0x08020000), 0x03},
        {"erase off a page boundary", 3, 3, le(app + 4, 0x08020000), 0x07},
        {"erase the application region", 3, 3, le(app, 0x08020000), 0x01},
        {"write 0x0F", 3, 4, write(app + 8, {0x0F, 0xAA}), 0x01},
        {"write 0xF0 over it", 3, 4, write(app + 8, {0xF0, 0xFF}), 0x01},
        {"write past the flash", 3, 4, write(0x0801FFFE, {1, 2, 3, 4}), 0x03},
        {"write more than the boot loader takes", 3, 4, write(app, Bytes(257, 0)), 0x04},
        {"reboot without a vector table", 3, 6, {}, 0x08},
    };
    for (const Step& s : steps) {
        BootLoader::Reply r = b.st(s.command, s.address, s.data);
        ASSERT_FALSE(r.data.empty()) << s.what;
        EXPECT_EQ(r.data[0], s.status) << s.what;
    }
    // Writes only clear bits: 0x0F then 0xF0 leaves 0x00; 0xAA then 0xFF stays 0xAA.
    EXPECT_EQ(b.readFlash(app + 8, 3), (Bytes{0x00, 0xAA, 0xFF}));
    EXPECT_TRUE(b.inBootLoader());
    EXPECT_EQ(b.appVersion(), "");
    // The check code is CRC-32 of the range: nine bytes give the standard check value.
    b.st(3, 4, write(app + 0x100, {'1', '2', '3', '4', '5', '6', '7', '8', '9', 0, 0, 0}));
    BootLoader::Reply check = b.st(3, 5, le(app + 0x100, 9));
    EXPECT_EQ(check.data, (Bytes{0x01, 0x26, 0x39, 0xF4, 0xCB}));
    // A read names its address, then the bytes.
    Bytes rd = le(app + 0x100, 0);
    rd.resize(4);
    rd.push_back(3);
    rd.push_back(0);
    EXPECT_EQ(b.st(2, 4, rd).data, (Bytes{0x01, 0x00, 0x41, 0x00, 0x08, '1', '2', '3'}));
}

TEST(SimBootLoader, FaultsCountWritesFromWhenQueued) {
    BootLoader b(brdsim::nxpFlashLayout(), "KX07 0.9.0");
    const uint32_t app = 0x2000;
    b.nxp(0x42, {});
    b.nxp(0x24, kKey);
    b.nxp(0x10, le(app, 0x40000));
    b.queueFault({brdsim::FlashFaultKind::LostAnswer, 2, 2});
    b.queueFault({brdsim::FlashFaultKind::WriteNotTaken, 4, 1});
    b.queueFault({brdsim::FlashFaultKind::Restart, 5, 1});
    struct Expect {
        bool lost;
        uint8_t status;
        uint8_t stored;
    };
    const Expect expect[] = {
        {false, 0x01, 0x00}, {true, 0x01, 0x00},
        {true, 0x01, 0x00},  {false, 0x01, 0xFF},  // acknowledged, not taken
        {false, 0x01, 0x00},                       // answered, then the restart
        {false, 0x02, 0xFF},                       // locked after the restart
    };
    for (int i = 0; i < 6; ++i) {
        uint32_t addr = app + 4 * static_cast<uint32_t>(i);
        BootLoader::Reply r = b.nxp(0x12, write(addr, {0x00, 0x00, 0x00, 0x00}));
        EXPECT_EQ(r.lost, expect[i].lost) << i;
        EXPECT_EQ(r.data[0], expect[i].status) << i;
        EXPECT_EQ(b.readFlash(addr, 1)[0], expect[i].stored) << i;
    }
    EXPECT_TRUE(b.inBootLoader());
    EXPECT_FALSE(b.unlocked());
}

TEST(SimBootLoader, ParsesFaultOptions) {
    const std::tuple<const char*, bool, brdsim::FlashFaultKind, int, int> cases[] = {
        {"lost@5", true, brdsim::FlashFaultKind::LostAnswer, 5, 1},
        {"corrupt@1x3", true, brdsim::FlashFaultKind::CorruptAnswer, 1, 3},
        {"nowrite@12", true, brdsim::FlashFaultKind::WriteNotTaken, 12, 1},
        {"restart@40", true, brdsim::FlashFaultKind::Restart, 40, 1},
        {"lost@0", false, {}, 0, 0},
        {"lost@5x", false, {}, 0, 0},
        {"lost", false, {}, 0, 0},
        {"drop@5", false, {}, 0, 0},
    };
    for (const auto& [text, ok, kind, at, count] : cases) {
        brdsim::FlashFault f{};
        EXPECT_EQ(brdsim::parseFlashFault(text, &f), ok) << text;
        if (!ok) continue;
        EXPECT_EQ(f.kind, kind) << text;
        EXPECT_EQ(f.atWrite, at) << text;
        EXPECT_EQ(f.count, count) << text;
    }
}

// With flash timing a page erase takes the time a part needs; without it none.
TEST(SimBootLoader, FlashTimingOnlyWhenAsked) {
    for (bool timing : {false, true}) {
        BootLoader b(brdsim::nxpFlashLayout(), "KX07 1.0.0");
        b.setFlashTiming(timing);
        b.nxp(0x42, {});
        b.nxp(0x24, kKey);
        auto t0 = std::chrono::steady_clock::now();
        EXPECT_EQ(b.nxp(0x10, le(0x2000, 0x2000 + 8 * 256)).data[0], 0x01);
        auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                      std::chrono::steady_clock::now() - t0)
                      .count();
        if (timing)
            EXPECT_GE(ms, 160);  // eight pages of 20 ms
        else
            EXPECT_LT(ms, 100);
    }
}

}  // namespace
