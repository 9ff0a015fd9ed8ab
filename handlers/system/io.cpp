// Digital I/O lines (MDIO/GPIO direction, MDO/MDI levels, GPI active level, GPO pull-up),
// G-sensor registers and the stored iButton and RFID keys: per-product line counts, bit
// masks and request packing.
#include "power_io.h"
#include "system_bespoke.h"
#include "system_renders.h"
#include "system_steps.h"

namespace sysrender {

namespace {

// One line per bit, bit n-1 for line n.
std::string bitLines(const Answer& a, int lines, const char* setFmt, const char* clearFmt) {
    Byte b = a.at(0);
    std::string out;
    for (int n = 1; n <= lines; ++n)
        out += fdLine(a, format(b & (1 << (n - 1)) ? setFmt : clearFmt, n));
    return out;
}

struct LineCount {
    ModelSet models;
    int lines;
};

const LineCount MDO_LINES[] = {
    {{"KX22", "KX23", "KX24", "KX32", "KX29", "KX60"}, 2},
    {{"KX42"}, 3},
    {{"KX02", "KX21", "KX40", "KX41", "KX68", "KX72", "KX65"}, 4},
    {{"KX69", "KX45"}, 5},
};
const LineCount MDI_LINES[] = {
    {{"KX42"}, 3},
    {{"KX02", "KX21", "KX40", "KX41", "KX68", "KX72", "KX65"}, 4},
    {{"KX69", "KX45"}, 5},
};
const LineCount MDO_CONTROL_LINES[] = {
    {{"KX21", "KX65"}, 4},
    {{"KX42"}, 3},
    {{"KX60"}, 2},
};

template <size_t N>
int linesOf(const LineCount (&table)[N], const Answer& a) {
    for (const LineCount& c : table)
        if (a.in(c.models)) return c.lines;
    return 0;
}

std::string levelLines(const Answer& a, int lines, const char* name) {
    std::string out = SEP26;
    if (lines == 0) return out + fdLine(a, format("%s Result Data: 0x%02X", name, a.at(0)));
    std::string high = std::string(name) + "%d High.";
    std::string low = std::string(name) + "%d Low.";
    return out + bitLines(a, lines, high.c_str(), low.c_str()) + SEP26;
}

// Bit set means active low on these products; on the second set it means active high.
const ModelSet GPI_SET_IS_LOW = {"KX68", "KX72", "KX74"};
const ModelSet GPI_SET_IS_HIGH = {"KX64", "KX04", "KX08", "KX09", "KX12", "KX07", "KX10",
                                  "KX05", "KX17", "KX18", "KX13", "KX14", "KX19", "KX20",
                                  "KX56", "KX57", "KX71", "KX42", "KX65"};
const ModelSet GPO_PULLUP_MODELS = {"KX04", "KX08", "KX09", "KX10", "KX12", "KX07", "KX05", "KX17",
                                    "KX18", "KX13", "KX14", "KX20", "KX19", "KX68", "KX72", "KX42",
                                    "KX64", "KX56", "KX57", "KX71", "KX74", "KX65"};

}  // namespace

std::string renderMdioMode(const Answer& a) {
    return SEP26 + bitLines(a, 5, "MDIO%d is Output.", "MDIO%d is Input.") + SEP26;
}

std::string renderGpioMode(const Answer& a) {
    return SEP26 + bitLines(a, 8, "GPIO%d is Output.", "GPIO%d is Input.") + SEP26;
}

std::string renderGpiActiveMode(const Answer& a) {
    Byte b = a.at(0);
    std::string out = SEP26;
    if (a.in(GPI_SET_IS_LOW) || a.in(GPI_SET_IS_HIGH)) {
        // The first set reads a set bit as active low: the opposite sense is on purpose.
        bool setIsLow = a.in(GPI_SET_IS_LOW);
        for (int pair = 0; pair < 2; ++pair) {
            bool set = b & (1 << pair);
            bool low = set == setIsLow;
            out += fdLine(
                a, format("GPI%s Active %s.", pair == 0 ? "12" : "34", low ? "Low" : "High"));
        }
    } else {
        out += fdLine(a, format("GPI Active mode Result Data: 0x%02X", b));
    }
    return out + SEP26;
}

std::string renderGpoPullupMode(const Answer& a) {
    Byte b = a.at(0);
    std::string out = SEP26;  // no closing separator
    if (!a.in(GPO_PULLUP_MODELS))
        return out + fdLine(a, format("GPO Pull Up Mode Result Data: 0x%02X", b));
    out += fdLine(a, b & 0x01 ? "GPO12 External pull high." : "GPO12 Internal pull High.");
    out += fdLine(a, b & 0x02 ? "GPO34 External pull high." : "GPO34 Internal pull High.");
    return out;
}

std::string renderMdoStatus(const Answer& a) {
    return levelLines(a, linesOf(MDO_LINES, a), "MDO");
}

std::string renderMdiStatus(const Answer& a) {
    return levelLines(a, linesOf(MDI_LINES, a), "MDI");
}

int mdoControlLines(std::string_view model) {
    Answer a({}, model, 0);
    return linesOf(MDO_CONTROL_LINES, a);
}

bool gsensorWritable(unsigned index) {
    // 0x1D-0x2A, 0x2C-0x2F, 0x31 and 0x38, as a mask over 0x1D to 0x38.
    constexpr uint32_t WRITABLE = 0x3FFF | 0xFu << 15 | 1u << 20 | 1u << 27;
    return index >= 0x1D && index <= 0x38 && (WRITABLE >> (index - 0x1D) & 1);
}

std::string renderGsensor(unsigned typedIndex, const Answer& a) {
    return SEP26 + fdLine(a, format("Register Index = %#x", typedIndex)) +
           fdLine(a, format("Data %#x = %#x", a.at(0), a.at(1))) + SEP26;
}

std::string renderIButtonKey(unsigned typedIndex, const Answer& a) {
    std::string out = SEP26 + fdLine(a, format("Key Index = %#x", typedIndex));
    // From the second-to-last byte down to the first; the last byte is not shown.
    int n = 0;
    for (size_t i = a.size(); i-- > 1;)
        out += fdLine(a, format("Key Data [%d] = %#x", n++, a.bytes()[i - 1]));
    return out + SEP26;
}

std::string renderRfidKey(unsigned typedIndex, const Answer& a) {
    std::string out = SEP26 + fdLine(a, format("Key Index = %#x", typedIndex));
    int n = 0;
    for (Byte b : a.bytes()) out += fdLine(a, format("Key Data [%d] = %#x", n++, b));
    return out + SEP26;
}

std::array<Byte, 11> iButtonRequest(unsigned index, unsigned family,
                                    const std::array<unsigned, 6>& codes, unsigned crc) {
    // The key travels reversed: CRC, unique codes 6 down to 1, family, then ",".
    return {static_cast<Byte>(index),
            1,
            static_cast<Byte>(crc),
            static_cast<Byte>(codes[5]),
            static_cast<Byte>(codes[4]),
            static_cast<Byte>(codes[3]),
            static_cast<Byte>(codes[2]),
            static_cast<Byte>(codes[1]),
            static_cast<Byte>(codes[0]),
            static_cast<Byte>(family),
            ','};
}

std::array<Byte, 15> rfidRequest(unsigned index, std::string_view text) {
    std::array<Byte, 15> request{};
    request[0] = static_cast<Byte>(index);
    request[1] = 1;
    text = text.substr(0, 10);
    for (size_t i = 0; i < text.size(); ++i) request[2 + i] = static_cast<Byte>(text[i]);
    request[12] = 0x0D;
    request[13] = 0x0A;
    request[14] = ',';
    return request;
}

}  // namespace sysrender

// ---------------------------------------------------------------- handlers

using namespace sysflow;

namespace system_power_io {

// Active High sets bit 0 (GPI1-2), then bit 1 (GPI3-4), on every product.
const shapes::SetRow SET_GPI_ACTIVE_MODE = {
    .variants = {{.steps = {{.title = "========\t\tGPI12 Active mode Control \t\t========",
                             .options = {"0. Active Low", "1. Active High"},
                             .bits = 0x01},
                            {.title = "========\t\tGPI34 Active mode Control \t\t========",
                             .options = {"0. Active Low", "1. Active High"},
                             .bits = 0x02}}}}};

// External sets bit 0 (GPO1-2), then bit 1 (GPO3-4); some products mark internal as the
// default.
const shapes::SetRow SET_GPO_PULLUP_MODE = {
    .variants = {
        {.models = {.names = {"KX74", "KX12", "KX07", "KX17", "KX18", "KX20", "KX56", "KX57",
                              "KX71", "KX19"}},
         .steps = {{.title = "========\t\tGPO12 Pull up Control \t\t========",
                    .options = {"0. Internal pull high (default)", "1. External pull high"},
                    .bits = 0x01},
                   {.title = "========\t\tGPO34 Pull up Control \t\t========",
                    .options = {"0. Internal pull high (default)", "1. External pull high"},
                    .bits = 0x02}}},
        {.steps = {{.title = "========\t\tGPO12 Pull up Control \t\t========",
                    .options = {"0. Internal pull high", "1. External pull high"},
                    .bits = 0x01},
                   {.title = "========\t\tGPO34 Pull up Control \t\t========",
                    .options = {"0. Internal pull high", "1. External pull high"},
                    .bits = 0x02}}}}};

}  // namespace system_power_io
using sysrender::format;

namespace {

int setOneByte(int cmdIndex, char* funName, Byte value) {
    const Byte request[] = {value};
    return set(cmdIndex, funName, request);
}

// Menus for lines 1..count, each answer 1 setting the line's bit; where an exit is
// offered, answer 2 ends the questions. False when the input ended.
enum class Exit { Offered, None };
bool askLineBits(int count, std::string (*menuOf)(int line), Exit exit, Byte* bits) {
    for (int n = 1; n <= count; ++n) {
        int choice = 0;
        if (!ask(menuOf(n), 0, exit == Exit::Offered ? 2 : 1, &choice)) return false;
        if (choice == 2) break;  // exit: the byte built so far goes out
        if (choice == 1) *bits |= static_cast<Byte>(1 << (n - 1));
    }
    return true;
}

// A hexadecimal index: read until it is below `limit` (a GET takes text that is not
// hexadecimal as index 0). `tooBig` is printed for an index out of range.
bool askIndexForGet(const char* prompt, unsigned long limit, const char* tooBig,
                    unsigned long* index) {
    for (;;) {
        print(std::string("\n") + prompt);
        unsigned long v = 0;
        Hex h = readHex(&v);
        if (h == Hex::Ended) return false;
        if (h == Hex::NotHex) v = 0;
        if (v < limit) {
            *index = v;
            return true;
        }
        print(std::string(tooBig) + "\n");
    }
}

// A hexadecimal value for a SET: text that is not hexadecimal is refused and asked again;
// `echo` (a format of one %#x) is printed with each value read.
bool askHexForSet(const std::string& prompt, const char* echo, unsigned long* value) {
    for (;;) {
        print(prompt);
        Hex h = readHex(value);
        if (h == Hex::Ended) return false;
        if (h == Hex::Value) {
            if (echo) print(format(echo, static_cast<unsigned>(*value)));
            return true;
        }
        print("Input Error !!! Please input a number.\n");
    }
}

// A SET key index: below `limit`, else `tooBig` and the prompt again.
bool askKeyIndex(const char* prompt, const char* echo, unsigned long limit, const char* tooBig,
                 unsigned long* index) {
    for (;;) {
        if (!askHexForSet(prompt, echo, index)) return false;
        if (*index < limit) return true;
        print(std::string(tooBig) + "\n");
    }
}

}  // namespace

int FUNC_ST_SYSTEM_GET_MDIO_MODE_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderMdioMode);
}

int FUNC_ST_SYSTEM_SET_MDIO_MODE_CONTROL(int cmdIndex, char* funName) {
    // Up to seven lines may be set although the status shows five: kept as it is.
    int count = 0;
    if (!ask(
            menuText("========\t\tMDIO Control \t\t========", {}, NO_RULE, "Set MDIO Count (1-7):"),
            1, 7, &count))
        return 0;
    Byte bits = 0;
    if (!askLineBits(
            count,
            [](int n) {
                return menuText(format("========\t\tMDIO %d Control \t========", n).c_str(),
                                {"0. Input", "1. Output", "2. Exit"});
            },
            Exit::Offered, &bits))
        return 0;
    return setOneByte(cmdIndex, funName, bits);
}

int FUNC_ST_SYSTEM_GET_GPIO_MODE_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderGpioMode);
}

int FUNC_ST_SYSTEM_SET_GPIO_MODE_CONTROL(int cmdIndex, char* funName) {
    Byte bits = 0;
    if (!askLineBits(
            8,
            [](int n) {
                return menuText(format("========\t\tGPIO %d Control \t========", n).c_str(),
                                {"0. Disable (Default)", "1. Enable", "2. Exit"});
            },
            Exit::Offered, &bits))
        return 0;
    return setOneByte(cmdIndex, funName, bits);
}

int FUNC_ST_SYSTEM_GET_GPI_ACTIVE_MODE(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderGpiActiveMode);
}

int FUNC_ST_SYSTEM_SET_GPI_ACTIVE_MODE(int cmdIndex, char* funName) {
    return shapes::runSet(system_power_io::SET_GPI_ACTIVE_MODE, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_GPO_PULLUP_MODE(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderGpoPullupMode);
}

int FUNC_ST_SYSTEM_SET_GPO_PULLUP_MODE(int cmdIndex, char* funName) {
    return shapes::runSet(system_power_io::SET_GPO_PULLUP_MODE, cmdIndex, funName);
}

int FUNC_ST_SYSTEM_GET_MDO_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderMdoStatus);
}

int FUNC_ST_SYSTEM_GET_MDI_STATUS(int cmdIndex, char* funName) {
    return get(cmdIndex, funName, sysrender::renderMdiStatus);
}

int FUNC_ST_SYSTEM_SET_MDO_CONTROL(int cmdIndex, char* funName) {
    int count = sysrender::mdoControlLines(product());
    if (count == 0 && !ask(menuText("========\tGPO/MDO Control \t\t========", {}, NO_RULE,
                                    "Set GPO or MDO Count (1-7):"),
                           1, 7, &count))
        return 0;
    Byte bits = 0;
    if (!askLineBits(
            count,
            [](int n) {
                return menuText(format("========\tGPO/MDO Control - MDO%d\t\t========", n).c_str(),
                                {format("0. MDO%d Pin to Low", n).c_str(),
                                 format("1. MDO%d Pin to High", n).c_str()});
            },
            Exit::None, &bits))
        return 0;
    return setOneByte(cmdIndex, funName, bits);
}

int FUNC_ST_SYSTEM_GET_GSENSOR_DATA(int cmdIndex, char* funName) {
    unsigned long index = 0;
    if (!askIndexForGet("Input Register Index 0x(00-39) : ", 0x3A,
                        "Input Register Index error !!! Please try again.", &index))
        return 0;
    const Byte request[] = {static_cast<Byte>(index), 1};
    Reported r = exchange(cmdIndex, request, REPORT_STANDARD, funName);
    if (r.verdict != 1) return r.verdict;
    sysrender::Answer a(r.bytes(), product(), fd());
    std::string text = sysrender::renderGsensor(static_cast<unsigned>(index), a);
    core::warnShortAnswer(r.answer, static_cast<int>(a.needed()), funName);
    print(text);
    return 1;
}

int FUNC_ST_SYSTEM_SET_G_SENSOR_DATA(int cmdIndex, char* funName) {
    print(
        "===================Set G-Sensor Data====================\n"
        "index 1D,1E,1F,20~2A,2C~2F,31,38 can be set.\n" +
        std::string(RULE56) + "\n");
    unsigned long index = 0, value = 0;
    for (;;) {
        if (!askHexForSet("Input G-Sensor Register Index : ", "Register Index = %#x\n", &index))
            return 0;
        if (sysrender::gsensorWritable(static_cast<unsigned>(index))) break;
        print("Input G-Sensor Register Index error !!! Please input again.\n");
    }
    if (!askHexForSet("Input G-Sensor Data is 0x(00-FF) : ", "Register Data = %#x\n", &value))
        return 0;
    const Byte request[] = {static_cast<Byte>(index), 1, static_cast<Byte>(value)};
    int verdict = set(cmdIndex, funName, request);
    print(std::string(RULE56) + "\n");
    return verdict;
}

namespace {

// A key reading: the key's index typed in hexadecimal, one exchange, the key rendered.
int getKey(int cmdIndex, char* funName, const char* prompt, unsigned long limit, const char* error,
           std::string (*render)(unsigned typedIndex, const sysrender::Answer& a)) {
    unsigned long index = 0;
    if (!askIndexForGet(prompt, limit, error, &index)) return 0;
    const Byte request[] = {static_cast<Byte>(index), 1};
    Reported r = exchange(cmdIndex, request, REPORT_STANDARD, funName);
    if (r.verdict != 1) return r.verdict;
    print(render(static_cast<unsigned>(index), sysrender::Answer(r.bytes(), product(), fd())));
    return 1;
}

}  // namespace

int FUNC_ST_SYSTEM_GET_I_BUTTON_KEY(int cmdIndex, char* funName) {
    return getKey(cmdIndex, funName, "Input iButton Key Index 0x(00-31) : ", 0x32,
                  "Input iButton Key Index error !!! Please try again.",
                  sysrender::renderIButtonKey);
}

int FUNC_ST_SYSTEM_SET_I_BUTTON_KEY(int cmdIndex, char* funName) {
    print("=================Set I-Button Key Data==================\n");
    unsigned long index = 0, family = 0, crc = 0;
    if (!askKeyIndex("Input I-Button Key Index is 0x(00-09) : ", "I-Button Key Index = %#x\n", 0x0A,
                     "Input I-Button Key error !!! Please input again.", &index) ||
        !askHexForSet("Input I-Button Family is 0x(00-FF) : ", nullptr, &family))
        return 0;
    std::array<unsigned, 6> codes{};
    for (int i = 0; i < 6; ++i) {
        unsigned long code = 0;
        if (!askHexForSet(format("Input I-Button Unique Code %d is 0x(00-FF) : ", i + 1), nullptr,
                          &code))
            return 0;
        codes[static_cast<size_t>(i)] = static_cast<unsigned>(code);
    }
    if (!askHexForSet("Input I-Button CRC is 0x(00-FF) : ", nullptr, &crc)) return 0;
    return set(
        cmdIndex, funName,
        sysrender::iButtonRequest(static_cast<unsigned>(index), static_cast<unsigned>(family),
                                  codes, static_cast<unsigned>(crc)));
}

int FUNC_ST_SYSTEM_GET_RFID_KEY(int cmdIndex, char* funName) {
    return getKey(cmdIndex, funName, "Input RFID Key Index 0x(00-09) : ", 0x0A,
                  "Input RFID Key Index error !!! Please try again.", sysrender::renderRfidKey);
}

int FUNC_ST_SYSTEM_SET_RFID_KEY(int cmdIndex, char* funName) {
    print("========\t\tRFID Key Data\t \t========\n");
    unsigned long index = 0;
    if (!askKeyIndex("Input RFID Key Index is 0x(00-09) : ", "RFID Key Index = %#x\n", 0x0A,
                     "Input RFID Key error !!! Please input again.", &index))
        return 0;
    // Two blanks after the comma, as the text stands.
    print("Input RFID Key Data,  total 10 character. (0123456789) : ");
    std::string text;
    if (!readWord(10, &text)) return 0;
    auto request = sysrender::rfidRequest(static_cast<unsigned>(index), text);
    std::string echo;
    for (size_t i = 0; i < request.size(); ++i) echo += format("data[%zu] = %#x\n", i, request[i]);
    print(echo);
    int verdict = set(cmdIndex, funName, request);
    print(std::string(RULE56) + "\n");
    return verdict;
}
