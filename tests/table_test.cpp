// Checks of the command table: templates, device codes, command and address bytes.
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string>

#include "function_MAP.h"

namespace {

// The parts of an "ST_<GROUP>_GET|SET_<CC>_<VV>_<WORDS>" name.
struct StName {
    std::string group;
    bool get;
    int cc, vv;
};

std::optional<StName> parseStName(const std::string& name) {
    static const std::regex re("ST_([A-Z0-9]+)_(GET|SET)_([0-9A-F]{2})_([0-9A-F]{2})_[A-Z0-9_]+");
    std::smatch m;
    if (!std::regex_match(name, m, re)) return std::nullopt;
    return StName{m[1], m[2] == "GET", std::stoi(m[3], nullptr, 16), std::stoi(m[4], nullptr, 16)};
}

// NXP rows carry their command code in the name ("NXP_CAN_AP_34_GET_ERROR_CODE" -> 0x34).
std::optional<int> nxpCode(const std::string& name) {
    static const std::regex re("NXP_(CAN_AP|UPDATE)_([0-9A-F]{2})_.*");
    std::smatch m;
    if (!std::regex_match(name, m, re)) return std::nullopt;
    return std::stoi(m[2], nullptr, 16);
}

bool startsWith(const std::string& s, const std::string& prefix) {
    return s.rfind(prefix, 0) == 0;
}

// Per row: a unique name; a -1 within 16 values; placeholders never pooled (-1 first);
// the group's device code first; command and address as the name says.
TEST(CommandTable, EveryRowIsWellFormed) {
    const std::map<std::string, int> device = {
        {"SYSTEM", 0},   {"LTC3351", 2}, {"IAP", 3},   {"BIOS", 5}, {"CAN1", 6}, {"CAN2", 7},
        {"IOT", 8},      {"NVR", 9},     {"BKP", 10},  {"POE", 11}, {"DSU", 12}, {"IP8008", 13},
        {"LANSWCH", 13}, {"ODM", 17},    {"FM", 0xF1}, {"TPMS", 0},
    };
    std::set<std::string> names;
    int named = 0;
    for (size_t i = 0; i < function_map_count; ++i) {
        const FUNCTION_MAP_ENTRY& r = function_map[i];
        const std::string name = r.name, group = functionGroup(r.name);
        EXPECT_TRUE(names.insert(name).second) << "duplicate " << name;
        int end = 0;
        for (; end < 16 && r.cmd[end] != -1; ++end)
            EXPECT_TRUE(r.cmd[end] >= 0 && r.cmd[end] <= 0xFE) << name << " value " << end;
        ASSERT_LT(end, 16) << name << ": no -1 within 16 values";

        const auto st = parseStName(name);
        const bool placeholder = st && st->group != "SYSTEM" && st->get && st->cc == 0 && !st->vv;
        EXPECT_EQ(end == 0, startsWith(name, "CONFIG_MAIN_") || placeholder ||
                                name == "ST_CAN_GET_REALTIME_DATA" ||
                                (startsWith(name, "NXP_") && !nxpCode(name)))
            << name << ": pooled or not";
        if (end == 0) continue;

        int want = -1;
        if (auto code = nxpCode(name)) {
            want = *code;
        } else {
            auto it = device.find(group);
            ASSERT_NE(it, device.end()) << name << " in group '" << group << "'";
            want = it->second;
            if (group == "POE" && name.find("_808_") != std::string::npos) want = 13;
            if (name == "TPMS_ATB01_DISPLAY_MODE") want = 'A';
        }
        EXPECT_EQ(r.cmd[0], want) << name;
        EXPECT_TRUE(group != "FM" || r.cmd[end - 1] == 0xF2) << name << ": a whole FM frame";

        if (!st) continue;
        ++named;
        int cmd = st->get ? 2 : 3, addr = st->cc;
        if (st->group == "DSU") {  // DSU names carry the device (0C), then the address
            EXPECT_TRUE(st->cc == 0x0C || !(st->cc || st->vv)) << name;
            addr = st->vv;
        }
        if (name == "ST_SYSTEM_SET_30_01_EXTERNAL_12V_CONTROL") addr = 0x02;
        if (name == "ST_BKP_SET_0E_01_POWER_OFF_VALUE") cmd = 2;
        EXPECT_EQ(r.cmd[1], cmd) << name;
        EXPECT_EQ(r.cmd[2], addr) << name;
        EXPECT_EQ(end, 3) << name;
    }
    EXPECT_GT(named, 400);
}

// Every row of the peripheral groups runs a decoding handler; reserved rows run
// FUNC_RESERVED. The ODM GPI row waits for the system group's GPI handler.
TEST(CommandTable, PeripheralRowsRunTheirHandlers) {
    const char* const prefixes[] = {"ST_BKP_",     "ST_BIOS_",   "ST_IOT_",    "ST_NVR_",
                                    "ST_ODM_",     "ST_POE_",    "ST_IP8008_", "ST_DSU_",
                                    "ST_LANSWCH_", "ST_LTC3351_"};
    int rows = 0;
    for (size_t i = 0; i < function_map_count; ++i) {
        const std::string name = function_map[i].name;
        bool peripheral = false;
        for (const char* p : prefixes) peripheral = peripheral || startsWith(name, p);
        if (!peripheral) continue;
        ++rows;
        bool reserved = name.size() > 9 && name.compare(name.size() - 9, 9, "_RESERVED") == 0;
        if (reserved) {
            EXPECT_EQ(function_map[i].func, &FUNC_RESERVED) << name;
        } else if (name != "ST_ODM_GET_30_01_GPI_STATUS") {
            EXPECT_NE(function_map[i].func, &FUNC_GENERIC) << name;
            EXPECT_NE(function_map[i].func, &FUNC_RESERVED) << name;
        }
    }
    EXPECT_EQ(rows, 17 + 2 + 38 + 4 + 37 + 24 + 6 + 14 + 3 + 23);
}

}  // namespace
