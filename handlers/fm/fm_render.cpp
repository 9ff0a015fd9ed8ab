// The FM rows and the renders of the module's answers.
#include "fm_render.h"

#include "text.h"

namespace fm {

namespace {

constexpr const char* MENU_RULE = "====================================================";
constexpr const char* SELECT = "Select which option you want to do:";
constexpr const char* RESULT_RULE =
    "=========================== Result ====================================";
constexpr const char* CLOSING_RULE =
    "=======================================================================";

constexpr const char* POWER_LINES[] = {"\t0. Power Off.", "\t1. Power On."};
constexpr const char* ZONE_LINES[] = {"\t0. USA", "\t1. EUROPE", "\t2. JAPAN"};
constexpr const char* VOLUME_LINES[] = {"\t\tSet Volume (0~63) :"};
constexpr const char* MUTE_LINES[] = {"\t0. Volume normal.", "\t1. Volume Mute."};
constexpr const char* FREQUENCY_LINES[] = {"\tUSA\t:8750~10790 (87.5~107.9 MHz)",
                                           "\tEUROPE\t:8750~10790 (87.5~107.9 MHz)",
                                           "\tJAPAN\t:7600~9000 (76~90 MHz)"};
constexpr const char* AUDIO_LINES[] = {"\t0. FM", "\t1. WWAN"};

constexpr Menu POWER_MENU{POWER_LINES, MENU_RULE, SELECT, 0, 1, false};
constexpr Menu ZONE_MENU{ZONE_LINES, MENU_RULE, SELECT, 0, 2, false};
constexpr Menu VOLUME_MENU{VOLUME_LINES, MENU_RULE, "Which level you want to set:", 0, 63, false};
constexpr Menu MUTE_MENU{MUTE_LINES, MENU_RULE, SELECT, 0, 1, false};
// Every zone takes the whole range here: the module itself refuses what its zone lacks.
constexpr Menu FREQUENCY_MENU{FREQUENCY_LINES, MENU_RULE, "Which frequency you want to set:", 7600,
                              10790,           true};
constexpr Menu AUDIO_MENU{AUDIO_LINES, MENU_RULE, SELECT, 0, 1, false};

}  // namespace

size_t bytesNeeded(const Row& row) {
    switch (row.reading) {
        case Reading::Status:
        case Reading::SetFrequency:
        case Reading::RdsStatus:
        case Reading::Voice:
        case Reading::Zone:
            return 3;
        case Reading::SeekUp:
        case Reading::SeekDown:
            return 4;
        case Reading::Byte4Status:
            return 5;
        case Reading::AutoScan:
        case Reading::DataBytes:
            return 0;
    }
    return 0;
}

namespace {

void line(std::string& out, const char* text) {
    out += text;
    out += '\n';
}

void success(std::string& out, int fd, const char* funName) {
    out += core::strprintf("\tfd(%d) %s command executed successfully.\n", fd, funName);
}

void failure(std::string& out, int fd, const char* funName) {
    out += core::strprintf("\tfd(%d) %s command executed unsuccessfully!!!\n", fd, funName);
}

// A 10 kHz count shown in MHz, computed in single precision as the module's tools do.
float megahertz(unsigned value) {
    return static_cast<float>(value) / 100;
}

}  // namespace

// clang-format off
const Row POWER_ROW{"============         FM Power Control     ==========", &POWER_MENU,
                    Reading::Status, nullptr, true, false};
const Row CONFIG_ROW{"============         FM Config            ==========", &ZONE_MENU,
                     Reading::Status, nullptr, true, false};
const Row VOLUME_ROW{"============         FM Set Volume        ==========", &VOLUME_MENU,
                     Reading::Status, nullptr, true, false};
const Row MUTE_ROW{"============         Set FM Mute          ==========", &MUTE_MENU,
                   Reading::Status, nullptr, true, false};
const Row FREQUENCY_ROW{"============         FM Set Frequency     ==========", &FREQUENCY_MENU,
                        Reading::SetFrequency, nullptr, true, false};
const Row AUTO_SCAN_ROW{"============         FM Auto Scan          ==========", nullptr,
                        Reading::AutoScan, nullptr, true, true};
const Row RDS_STATUS_ROW{"============         Get FM RDS Status     ==========", nullptr,
                         Reading::RdsStatus, nullptr, true, true};
const Row PID_ROW{"============         Get FM PID         ==========", nullptr,
                  Reading::DataBytes, "\nPID Data : ", true, true};
const Row PS_ROW{"============         Get FM PS         ==========", nullptr,
                 Reading::DataBytes, "\nPS Data : ", true, true};
const Row RDS_ROW{"============         Get FM RDS         ==========", nullptr,
                  Reading::DataBytes, "\nRDS Data : ", true, true};
const Row SEEK_UP_ROW{"============         FM Seek UP         ==========", nullptr,
                      Reading::SeekUp, nullptr, true, true};
const Row SEEK_DOWN_ROW{"============         FM Seek Down        ==========", nullptr,
                        Reading::SeekDown, nullptr, true, true};
const Row AUDIO_ROW{"============         FM Audio Switch      ==========", &AUDIO_MENU,
                    Reading::Status, nullptr, true, false};
const Row VOICE_ROW{"============         Get FM Voice     ==========", nullptr,
                    Reading::Voice, nullptr, true, false};
const Row ZONE_ROW{"============         Get FM Zone         ==========", nullptr,
                   Reading::Zone, nullptr, true, false};
// These two titles carry a line end of their own: a blank line follows them.
const Row FLASH_ROW{"============         FM Set Flash        ==========\n", nullptr,
                    Reading::Byte4Status, nullptr, false, false};
const Row LOAD_DEFAULT_ROW{"============         FM Load Default        ==========\n", nullptr,
                           Reading::Byte4Status, nullptr, false, false};
// clang-format on

std::string renderIntro(const Row& row) {
    std::string out;
    line(out, row.title);
    if (!row.menu) return out;
    for (const char* l : row.menu->lines) line(out, l);
    line(out, row.menu->rule);
    out += row.menu->prompt;
    return out;
}

Outcome renderAnswer(const Row& row, std::span<const BYTE> answer, const Request& request, int fd,
                     const char* funName) {
    Outcome o;
    std::string& out = o.out;
    const size_t len = answer.size();
    line(out, RESULT_RULE);
    out += "Receive Data >> ";
    for (BYTE b : answer) out += core::strprintf("0x%02X ", b);
    out += '\n';

    if (row.checkCommand && (len < 2 || answer[1] != static_cast<BYTE>(request.command + 1))) {
        line(out, "Receive command address ERROR!!");
        o.result = row.keepResultOnMismatch ? 1 : 0;
        line(out, CLOSING_RULE);
        return o;
    }
    if (len < bytesNeeded(row)) {
        // Nothing past the answer is read; a setting or a level counts as not done.
        bool fails = row.reading == Reading::Status || row.reading == Reading::SetFrequency ||
                     row.reading == Reading::Voice || row.reading == Reading::Byte4Status;
        if (fails) failure(out, fd, funName);
        if (!row.keepResultOnMismatch) o.result = 0;
        line(out, CLOSING_RULE);
        return o;
    }

    switch (row.reading) {
        case Reading::Status:
        case Reading::SetFrequency:
            if (answer[2] != 1) {
                failure(out, fd, funName);
                o.result = 0;
                break;
            }
            success(out, fd, funName);
            if (row.reading == Reading::SetFrequency)
                out +=
                    core::strprintf("\n\tSet frequency : %.2f MHz\n", megahertz(request.frequency));
            break;
        case Reading::Byte4Status:
            if (answer[4] == 1) {
                success(out, fd, funName);
            } else {
                failure(out, fd, funName);
                o.result = 0;
            }
            break;
        case Reading::AutoScan:
            success(out, fd, funName);
            // Pairs run while their first byte lies before the answer's last byte.
            if (len > 4)
                for (size_t i = 3; i < len - 1; i += 2)
                    out += core::strprintf("\tFM Station : %.2f\n",
                                           megahertz(frequencyOf(answer[i], answer[i + 1])));
            break;
        case Reading::RdsStatus: {
            success(out, fd, funName);
            line(out, "RDS Status :");
            BYTE bits = answer[2];
            line(out, bits & 0x01 ? "\tPID Status :\t\tTrue!!" : "\tPID Status :\t\tNULL!!");
            line(out, bits & 0x02 ? "\tPS Status :\t\tTrue!!" : "\tPS Status :\t\tNULL!!");
            line(out, bits & 0x04 ? "\tRDS Status :\t\tTrue!!" : "\tRDS Status :\t\tNULL!!");
            break;
        }
        case Reading::DataBytes:
            success(out, fd, funName);
            out += row.label;
            if (len > 3)
                for (size_t i = 2; i <= len - 2; ++i) out += core::strprintf("0x%02X ", answer[i]);
            out += '\n';
            break;
        case Reading::SeekUp:
        case Reading::SeekDown: {
            uint16_t f = frequencyOf(answer[2], answer[3]);
            o.frequency = f;
            if (row.reading == Reading::SeekUp)
                out += core::strprintf("\n\tSeek UP frequency : %.2f MHz\n", megahertz(f));
            else
                out += core::strprintf("\n\tSeek Down frequency : %.2f MHz\n", megahertz(f));
            break;
        }
        case Reading::Voice:
            // A reading of 63 counts as failure although 63 can be set: kept on purpose.
            if (answer[2] > 62) {
                failure(out, fd, funName);
                o.result = 0;
                break;
            }
            success(out, fd, funName);
            out += core::strprintf("\n\tVolume Level : %d\n", answer[2]);
            break;
        case Reading::Zone: {
            static const char* const zones[] = {"\n\tFM Zone : USA", "\n\tFM Zone : EUROPE",
                                                "\n\tFM Zone : JAPAN"};
            line(out, answer[2] < 3 ? zones[answer[2]] : "\n\tFM Zone : NULL");
            break;
        }
    }
    line(out, CLOSING_RULE);
    return o;
}

}  // namespace fm
