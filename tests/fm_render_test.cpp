// The FM module's answers and the TPMS sensor list and records, rendered without a line.
#include "fm/fm_render.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tpms/tpms_render.h"

namespace {

using Bytes = std::vector<BYTE>;

const std::string CLOSING = std::string(71, '=') + "\n";

std::string received(const Bytes& answer) {
    std::string s =
        "=========================== Result ====================================\n"
        "Receive Data >> ";
    static const char* hex = "0123456789ABCDEF";
    for (BYTE b : answer) s += std::string("0x") + hex[b >> 4] + hex[b & 15] + " ";
    return s + "\n";
}

const std::string OK = "\tfd(7) NAME command executed successfully.\n";
const std::string FAILED = "\tfd(7) NAME command executed unsuccessfully!!!\n";
const std::string MISMATCH = "Receive command address ERROR!!\n";

struct AnswerCase {
    const char* what;
    const fm::Row* row;
    BYTE command;  // the request's command byte
    uint16_t frequency;
    Bytes answer;
    std::string body;  // between the received bytes and the closing rule
    int result;
    int newFrequency = -1;  // a seek's frequency, -1: none
    bool warns = false;     // too short for the bytes it reads
};

// clang-format off
const AnswerCase ANSWERS[] = {
    {"volume set", &fm::VOLUME_ROW, 0x84, 0, {0xF1, 0x85, 0x01, 0xF2}, OK, 1},
    {"volume refused", &fm::VOLUME_ROW, 0x84, 0, {0xF1, 0x85, 0x00, 0xF2}, FAILED, 0},
    {"power, another command's answer", &fm::POWER_ROW, 0x80, 0, {0xF1, 0x87, 0x01, 0xF2}, MISMATCH, 0},
    {"frequency set", &fm::FREQUENCY_ROW, 0x88, 10790, {0xF1, 0x89, 0x01, 0xF2},
     OK + "\n\tSet frequency : 107.90 MHz\n", 1},
    {"frequency refused", &fm::FREQUENCY_ROW, 0x88, 7600, {0xF1, 0x89, 0x00, 0xF2}, FAILED, 0},
    {"scan of three stations", &fm::AUTO_SCAN_ROW, 0x8A, 0,
     {0xF1, 0x8B, 0x03, 0x6A, 0x22, 0xBE, 0x23, 0x8E, 0x26, 0xF2},
     OK + "\tFM Station : 88.10\n\tFM Station : 91.50\n\tFM Station : 98.70\n", 1},
    // Five bytes: the pair at 3 takes the end code as its high byte.
    {"scan of five bytes", &fm::AUTO_SCAN_ROW, 0x8A, 0, {0xF1, 0x8B, 0x01, 0x5E, 0xF2},
     OK + "\tFM Station : 620.46\n", 1},
    {"scan of four bytes", &fm::AUTO_SCAN_ROW, 0x8A, 0, {0xF1, 0x8B, 0x00, 0xF2}, OK, 1},
    {"scan mismatch keeps 1", &fm::AUTO_SCAN_ROW, 0x8A, 0, {0xF1, 0x8A, 0x00, 0xF2}, MISMATCH, 1},
    {"RDS status bits", &fm::RDS_STATUS_ROW, 0x8C, 0, {0xF1, 0x8D, 0x05, 0xF2},
     OK + "RDS Status :\n\tPID Status :\t\tTrue!!\n\tPS Status :\t\tNULL!!\n"
          "\tRDS Status :\t\tTrue!!\n", 1},
    {"RDS status none", &fm::RDS_STATUS_ROW, 0x8C, 0, {0xF1, 0x8D, 0x02, 0xF2},
     OK + "RDS Status :\n\tPID Status :\t\tNULL!!\n\tPS Status :\t\tTrue!!\n"
          "\tRDS Status :\t\tNULL!!\n", 1},
    {"RDS status mismatch keeps 1", &fm::RDS_STATUS_ROW, 0x8C, 0, {0xF1, 0x8F, 0x05, 0xF2}, MISMATCH, 1},
    {"PID bytes", &fm::PID_ROW, 0x8E, 0, {0xF1, 0x8F, 0xC2, 0x01, 0xF2}, OK + "\nPID Data : 0xC2 0x01 \n", 1},
    {"PS empty", &fm::PS_ROW, 0x90, 0, {0xF1, 0x91, 0xF2}, OK + "\nPS Data : \n", 1},
    {"RDS one byte", &fm::RDS_ROW, 0x92, 0, {0xF1, 0x93, 0x41, 0xF2}, OK + "\nRDS Data : 0x41 \n", 1},
    {"seek up", &fm::SEEK_UP_ROW, 0x94, 0, {0xF1, 0x95, 0xF1, 0x22, 0xF2},
     "\n\tSeek UP frequency : 89.45 MHz\n", 1, 0x22F1},
    {"seek down", &fm::SEEK_DOWN_ROW, 0x96, 0, {0xF1, 0x97, 0x6A, 0x22, 0xF2},
     "\n\tSeek Down frequency : 88.10 MHz\n", 1, 8810},
    {"seek mismatch keeps the frequency", &fm::SEEK_UP_ROW, 0x94, 0, {0xF1, 0x97, 0x6A, 0x22, 0xF2},
     MISMATCH, 1},
    {"seek short", &fm::SEEK_UP_ROW, 0x94, 0, {0xF1, 0x95, 0xF2}, "", 1, -1, true},
    {"voice 62", &fm::VOICE_ROW, 0x9A, 0, {0xF1, 0x9B, 62, 0xF2}, OK + "\n\tVolume Level : 62\n", 1},
    {"voice 63 fails", &fm::VOICE_ROW, 0x9A, 0, {0xF1, 0x9B, 63, 0xF2}, FAILED, 0},
    {"voice mismatch", &fm::VOICE_ROW, 0x9A, 0, {0xF1, 0x9D, 20, 0xF2}, MISMATCH, 0},
    {"zone USA", &fm::ZONE_ROW, 0x9C, 0, {0xF1, 0x9D, 0x00, 0xF2}, "\n\tFM Zone : USA\n", 1},
    {"zone JAPAN", &fm::ZONE_ROW, 0x9C, 0, {0xF1, 0x9D, 0x02, 0xF2}, "\n\tFM Zone : JAPAN\n", 1},
    {"zone 3 is NULL", &fm::ZONE_ROW, 0x9C, 0, {0xF1, 0x9D, 0x03, 0xF2}, "\n\tFM Zone : NULL\n", 1},
    {"zone mismatch", &fm::ZONE_ROW, 0x9C, 0, {0xF1, 0x9B, 0x00, 0xF2}, MISMATCH, 0},
    {"mute short", &fm::MUTE_ROW, 0x86, 0, {0xF1, 0x87}, FAILED, 0, -1, true},
    // The system MCU's frame: status in byte 4, command byte not checked.
    {"flash stored", &fm::FLASH_ROW, 0x00, 0, {0xF1, 0x00, 0x03, 0x20, 0x01, 0x48, 0xF2}, OK, 1},
    {"flash refused", &fm::FLASH_ROW, 0x00, 0, {0xF1, 0x00, 0x03, 0x20, 0x00, 0x12, 0xF2}, FAILED, 0},
    {"default short", &fm::LOAD_DEFAULT_ROW, 0x00, 0, {0xF1, 0x00, 0x03, 0xF2}, FAILED, 0, -1, true},
};
// clang-format on

TEST(FmRender, AnswersReadAsEachHandlerSays) {
    for (const AnswerCase& c : ANSWERS) {
        fm::Outcome o = fm::renderAnswer(*c.row, c.answer, {c.command, c.frequency}, 7, "NAME");
        EXPECT_EQ(o.out, received(c.answer) + c.body + CLOSING) << c.what;
        EXPECT_EQ(o.result, c.result) << c.what;
        EXPECT_EQ(o.frequency ? int(*o.frequency) : -1, c.newFrequency) << c.what;
        EXPECT_EQ(c.answer.size() < fm::bytesNeeded(*c.row), c.warns) << c.what;
    }
}

TEST(FmRender, IntroShowsTitleMenuAndPrompt) {
    EXPECT_EQ(fm::renderIntro(fm::POWER_ROW),
              "============         FM Power Control     ==========\n"
              "\t0. Power Off.\n\t1. Power On.\n"
              "====================================================\n"
              "Select which option you want to do:");
    EXPECT_EQ(fm::renderIntro(fm::FREQUENCY_ROW),
              "============         FM Set Frequency     ==========\n"
              "\tUSA\t:8750~10790 (87.5~107.9 MHz)\n\tEUROPE\t:8750~10790 (87.5~107.9 MHz)\n"
              "\tJAPAN\t:7600~9000 (76~90 MHz)\n"
              "====================================================\n"
              "Which frequency you want to set:");
    EXPECT_EQ(fm::renderIntro(fm::PID_ROW), "============         Get FM PID         ==========\n");
    EXPECT_EQ(fm::renderIntro(fm::FLASH_ROW),
              "============         FM Set Flash        ==========\n\n");
    EXPECT_EQ(fm::FREQUENCY_ROW.menu->min, 7600);
    EXPECT_EQ(fm::FREQUENCY_ROW.menu->max, 10790);
    EXPECT_EQ(fm::VOLUME_ROW.menu->max, 63);
    EXPECT_EQ(fm::CONFIG_ROW.menu->max, 2);
}

TEST(TpmsRender, SensorCountAndIdAsTyped) {
    struct {
        const char* line;
        int count;  // -1: refused
    } counts[] = {{"0\n", 0},  {"24\n", 24}, {" 3 \n", 3},  {"25\n", -1},  {"-1\n", -1},
                  {"x\n", -1}, {"\n", -1},   {"2 2\n", -1}, {"0024\n", -1}};
    for (const auto& c : counts) {
        auto v = tpms::parseSensorCount(c.line);
        EXPECT_EQ(v ? *v : -1, c.count) << c.line;
    }
    struct {
        const char* line;
        long long id;  // -1: refused
    } ids[] = {{"ABCD1234\n", 0xABCD1234},
               {"abcd1234", 0xABCD1234},
               {"1\n", 1},
               {" ffffffff \n", 0xFFFFFFFF},
               {"123456789\n", -1},
               {"0x12\n", -1},
               {"\n", -1},
               {"12G4\n", -1},
               {"12 34\n", -1}};
    for (const auto& c : ids) {
        auto v = tpms::parseSensorId(c.line);
        EXPECT_EQ(v ? static_cast<long long>(*v) : -1, c.id) << c.line;
    }
}

TEST(TpmsRender, IdsStoredMostSignificantFirstAndFoundInRecords) {
    tpms::SensorTable table{};
    tpms::storeSensorId(table[0], 0xABCD1234);
    tpms::storeSensorId(table[2], 0x00C0FFEE);
    EXPECT_EQ(Bytes(table[0].begin(), table[0].begin() + 5), (Bytes{0xAB, 0xCD, 0x12, 0x34, 0}));

    Bytes first = {0xAB, 0xCD, 0x12, 0x34, 0x00, 0xE6, 0x4A, 0x00};
    Bytes third = {0x01, 0x00, 0xC0, 0xFF, 0xEE, 0x02};
    Bytes reversed = {0x34, 0x12, 0xCD, 0xAB, 0x00, 0xE6, 0x4A, 0x00};
    EXPECT_EQ(tpms::renderRecord(12 * 3600000L + 1250, first, table, 3),
              "12:00:01.250  AB CD 12 34 00 E6 4A 00  wheel 1\n");
    EXPECT_EQ(tpms::renderRecord(999, third, table, 3),
              "00:00:00.999  01 00 C0 FF EE 02  wheel 3\n");
    // Only the sensors entered count; byte order matters.
    EXPECT_EQ(tpms::matchWheels(third, table, 2), "");
    EXPECT_EQ(tpms::matchWheels(reversed, table, 3), "");
    EXPECT_EQ(tpms::renderRecord(23 * 3600000L + 59 * 60000 + 59999, {}, table, 0),
              "23:59:59.999 \n");
}

}  // namespace
