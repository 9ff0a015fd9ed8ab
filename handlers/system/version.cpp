// MCU version, event log and the identity records (MAC, serial numbers, machine
// parameters, module name, board identifiers): per-product layouts and request packing.
#include <cstdlib>

#include "shapes/record_loop.h"
#include "system_bespoke.h"
#include "system_renders.h"
#include "system_steps.h"

namespace sysrender {

namespace {

// "R" (0x52) or "T" (0x54), and nothing else.
bool isVersionLetter(Byte b) {
    return ((b - 0x52) & ~0x02) == 0;
}

std::string versionLine(const Answer& a, size_t letterAt, size_t numberAt) {
    Byte letter = a.at(letterAt);
    if (isVersionLetter(letter))
        return fdLine(a, format("MCU Version = %c%02d", letter, a.at(numberAt)));
    return fdLine(a, format("MCU Version = %d", a.at(numberAt)));
}

std::string versionBody(const Answer& a) {
    if (a.in({"KX73", "KX35"}) && a.size() == 7) return versionLine(a, 5, 6);
    if (a.in({"KX35", "KX56", "KX71", "KX57", "KX59"}) && a.size() == 9)
        return versionLine(a, 7, 8);
    if (!a.in({"KX61", "KX51", "KX52", "KX30"})) {
        if (isVersionLetter(a.at(0))) return versionLine(a, 0, 1);
        if (!isVersionLetter(a.at(7))) return fdLine(a, format("MCU Version = %d", a.at(0)));
        return versionLine(a, 7, 8);
    }
    return versionLine(a, 7, 8);
}

// A four-byte counter: b0 shifted left by b1, then by b2, then by b3 (each count modulo 64).
// This is the MCU's own arithmetic, not a little-endian join; kept on purpose.
long eventCounter(const Answer& a, size_t at) {
    uint64_t v = a.at(at);
    for (size_t i = 1; i < 4; ++i) v <<= (a.at(at + i) % 64);
    return static_cast<long>(v);
}

constexpr const char* EVENT_FIELDS[6] = {"Year", "Month", "Day", "Hour", "Minute", "Second"};

// The bytes 1 to 254 of a serial-number record, in order, at most 16 of them.
std::string serialText(const Answer& a) {
    std::string s;
    for (Byte b : a.bytes())
        if (b != 0 && b != 0xFF && s.size() < 16) s += static_cast<char>(b);
    return s;
}

const char* const BOARD_LETTERS[4] = {"Board A.", "Board B.", "Board C.", "Board D."};

std::string boardName(Byte code, const char* side) {
    switch (code) {
        case 0:
            return format("No %s board Insert", side);
        case 1:
            return format("%s Board ID is KX86", side);
        case 2:
            return format("%s Board ID is KX85", side);
        case 4:
            return format("%s Board ID is KX87", side);
        case 8:
            return format("%s Board ID is KX88", side);
    }
    return {};
}

}  // namespace

std::string renderMcuVersion(const Answer& a) {
    return SEP26 + versionBody(a) + SEP26;
}

std::string renderEventLog(const Answer& a) {
    std::string out = SEP26;
    for (size_t i = 0; i < 6; ++i)
        out += fdLine(a, format("First %s = %d", EVENT_FIELDS[i], a.at(i)));
    for (size_t i = 0; i < 6; ++i)
        out += fdLine(a, format("Last %s = %d", EVENT_FIELDS[i], a.at(6 + i)));
    out += fdLine(a, format("Startup Count = %ld", eventCounter(a, 12)));
    out += fdLine(a, format("Shutdown Count = %ld", eventCounter(a, 16)));
    out += fdLine(a, format("Over Voltage Count = %ld", eventCounter(a, 20)));
    out += fdLine(a, format("Low Voltage Count = %ld", eventCounter(a, 24)));
    if (a.in({"KX58", "KX35"}))
        out += fdLine(a, format("BKP over current Count = %ld", eventCounter(a, 28)));
    return out + SEP26;
}

std::string renderSystemParameter(int index, const Answer& a) {
    std::string line = format("\tfd(%d) System Parameter ", a.fd());
    if (index == 0) {
        line += "MAC:";
        for (size_t i = 0; i < 6; ++i) line += format("%02X", a.at(i));
    } else {
        const char* label = "SOM S/N";
        if (index == 2)
            label = a.in({"KX07", "KX12", "KX17", "KX18"}) ? "SOM ASSY" : "Carrier Board S/N";
        std::string text = serialText(a);
        line += std::string(label) + ":" + (text.empty() ? "is Empty" : text);
    }
    return TAB_RULE36 + "\n" + line + "\n" + TAB_RULE36 + "\n";
}

std::string renderMachineParameter(int shownIndex, const Answer& a, bool framed) {
    std::string out = format("\tfd(%d) Parameter %d:", a.fd(), shownIndex);
    // All 64 bytes, whatever the answer's length.
    for (size_t i = 0; i < 64; ++i) out += format("0x%02X ", i < a.size() ? a.bytes()[i] : 0);
    if (framed) return TAB_RULE36 + "\n" + out + "\n" + TAB_RULE36 + "\n";
    return out + "\n";
}

std::string renderModuleName(const Answer& a) {
    std::string out = TAB_RULE36 + "\n" + format("\tfd(%d) MODULE NAME:", a.fd());
    for (size_t i = 0; i < 10; ++i) out += static_cast<char>(a.at(i));
    return out + "\n" + TAB_RULE36 + "\n";
}

std::string renderBoardId(const Answer& a) {
    std::string out = SEP26;
    std::string front = boardName(a.at(0), "Front");
    std::string rear = boardName(a.at(1), "Rear");
    if (!front.empty()) out += fdLine(a, front);
    if (!rear.empty()) out += fdLine(a, rear);
    return out + SEP26;
}

std::string renderIoBoardId(const Answer& a) {
    Byte b = a.at(0);
    std::string out = SEP26;
    if (a.is("KX24")) {
        out += std::string(BOARD_LETTERS[b & 0x03]) + "\n";
        int kind = (b >> 2) & 0x07;
        if (kind == 0) out += "KX89.\n";
        if (kind == 1) out += "KX75.\n";
    } else if (a.is("KX22")) {
        out += std::string(BOARD_LETTERS[b & 0x03]) + "\n";
        int kind = (b >> 2) & 0x03;
        if (kind == 0) out += "KX81.\n";
        if (kind == 1) out += "KX82.\n";
    } else if (a.is("KX36")) {
        if (b == 0) out += fdLine(a, "KX79");
        if (b == 1) out += fdLine(a, "KX78");
    } else {
        return out;  // no closing separator
    }
    return out + SEP26;
}

std::string renderExpansionBoardId(const Answer& a) {
    Byte b = a.at(0);
    std::string out = SEP26;
    if (a.is("KX24")) {
        out += std::string(BOARD_LETTERS[b & 0x03]) + "\n";
        if (((b >> 2) & 0x07) == 0) out += "KX89.\n";
    } else if (a.is("KX22")) {
        out += std::string(BOARD_LETTERS[b & 0x03]) + "\n";
        int kind = (b >> 2) & 0x03;
        if (kind == 0) out += "KX83.\n";
        if (kind == 1) out += "KX84.\n";
    } else if (a.is("KX21")) {
        int kind = b >> 3;
        if (kind == 0) out += "NO CONNECTION.\n";
        if (kind == 1) out += "Connected KX76.\n";
        if (kind == 2) out += "Connected KX28.\n";
    } else {
        return out;
    }
    return out + SEP26;
}

Byte hexPair(std::string_view pair) {
    char text[3] = {};
    for (size_t i = 0; i < pair.size() && i < 2; ++i) text[i] = pair[i];
    return static_cast<Byte>(strtoul(text, nullptr, 16));
}

std::array<Byte, 17> systemParameterRequest(int index, std::string_view typed) {
    std::array<Byte, 17> request{};
    request[0] = static_cast<Byte>(index);
    if (index == 0) {
        // Twelve characters at most, read in pairs; no check of the digits or the length.
        typed = typed.substr(0, 12);
        for (size_t i = 0; i < typed.size(); i += 2)
            request[1 + i / 2] = hexPair(typed.substr(i, 2));
    } else {
        typed = typed.substr(0, 16);
        for (size_t i = 0; i < typed.size(); ++i) request[1 + i] = static_cast<Byte>(typed[i]);
    }
    return request;
}

std::optional<std::array<Byte, 65>> machineParameterRequest(int index, std::string_view hex) {
    hex = hex.substr(0, 128);
    if (hex.size() % 2 != 0) return std::nullopt;
    std::array<Byte, 65> request{};
    request[0] = static_cast<Byte>(index);
    for (size_t i = 0; i < hex.size(); i += 2) request[1 + i / 2] = hexPair(hex.substr(i, 2));
    return request;
}

}  // namespace sysrender

// ---------------------------------------------------------------- handlers

using namespace sysflow;

namespace {

constexpr int RECORD_PAUSE_MS = 100;  // between the records of one run: the MCU needs it

const sysrender::ModelSet SYSTEM_PARAMETER_SET_MODELS = {
    "KX04", "KX08", "KX09", "KX10", "KX11", "KX06", "KX12", "KX07", "KX63",
    "KX05", "KX17", "KX18", "KX16", "KX15", "KX13", "KX14", "KX19"};
const sysrender::ModelSet MACHINE_PARAMETER_SET_MODELS = {"KX07", "KX12", "KX17", "KX18"};

}  // namespace

int FUNC_ST_SYSTEM_GET_MCU_VERSION(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderMcuVersion);
}

int FUNC_ST_SYSTEM_GET_EVENT_LOG(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderEventLog);
}

int FUNC_ST_SYSTEM_GET_SYSTEM_PARAMETER(int cmdIndex, char* funName) {
    // Three records; a failed exchange is reported and the next record is still asked for.
    return shapes::runRecords({link(), cmdIndex, funName, 0, 3, RECORD_PAUSE_MS},
                              [](int index, std::span<const Byte> answer, int) {
                                  print(sysrender::renderSystemParameter(
                                      index, sysrender::Answer(answer, product(), fd())));
                              });
}

int FUNC_ST_SYSTEM_SET_SYSTEM_PARAMETER(int cmdIndex, char* funName) {
    if (!productIs(SYSTEM_PARAMETER_SET_MODELS)) return 1;  // silently, as done
    int index = 0;
    if (!ask(menuText("========\tSystem Parameter\t========",
                      {"Select which system parameter to input", "0. Ethernet MAC.",
                       "1. SoM Board Serial Number.", "2. Tavelo Carrier Board Serial Number."},
                      Rule{"========================================="}),
             0, 2, &index))
        return 0;
    const char* prompts[3] = {"Enter Ethernet MAC: ", "Enter SoM Board Serial Number:",
                              "Enter Tavelo Carrier Board Serial Number:"};
    print(prompts[index]);
    std::string typed;
    if (!readWord(index == 0 ? 12 : 16, &typed)) return 0;
    return set(cmdIndex, funName, sysrender::systemParameterRequest(index, typed));
}

int FUNC_ST_SYSTEM_GET_MACHINE_PARAMETER(int cmdIndex, char* funName) {
    int index = 0;
    if (!ask("Input Parameter Index (0~15) | (Show All->16):", 0, 16, &index)) return 0;
    if (index < 16) {
        const Byte request[] = {static_cast<Byte>(index)};
        Reported r = exchange(cmdIndex, request, REPORT_STANDARD, funName);
        if (r.verdict != 1) return r.verdict;
        // The header shows 0 whatever the index: kept on purpose.
        print(sysrender::renderMachineParameter(0, sysrender::Answer(r.bytes(), product(), fd()),
                                                true));
        return 1;
    }
    // Show all: sixteen records, each after its report, the next one asked for even when
    // an exchange failed.
    return shapes::runRecords({link(), cmdIndex, funName, 0, 16, RECORD_PAUSE_MS},
                              [](int i, std::span<const Byte> answer, int) {
                                  print(sysrender::renderMachineParameter(
                                      i, sysrender::Answer(answer, product(), fd()), false));
                              });
}

int FUNC_ST_SYSTEM_SET_MACHINE_PARAMETER(int cmdIndex, char* funName) {
    if (!productIs(MACHINE_PARAMETER_SET_MODELS)) return 1;  // silently, as done
    print("========    System Parameter    ========\n");
    int index = 0;
    if (!ask("Input Parameter Index (0~15):", 0, 15, &index)) return 0;
    // The runs of seven blanks are part of the texts.
    print("Enter 64 bytes in hex (e.g.,0102...FF for 0x01 0x02 ...       0xFF):");
    std::string hex;
    if (!readWord(128, &hex)) return 0;
    auto request = sysrender::machineParameterRequest(index, hex);
    if (!request) {
        print("Error: Input length must be even (2 hex digits per       byte).\n");
        return -1;
    }
    return set(cmdIndex, funName, *request);
}

int FUNC_ST_SYSTEM_GET_MODULE_NAME(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderModuleName);
}

int FUNC_ST_SYSTEM_GET_BOARD_ID(int cmdIndex, char* funName) {
    if (!productIs({"KX73"})) return 0;
    return get(cmdIndex, funName, sysrender::renderBoardId);
}

int FUNC_ST_SYSTEM_GET_IO_BOARD_ID(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderIoBoardId);
}

int FUNC_ST_SYSTEM_GET_EXPANSION_BOARD_ID(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderExpansionBoardId);
}
