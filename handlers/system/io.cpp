// Digital I/O lines (MDIO/GPIO direction, MDO/MDI levels, GPI active level, GPO pull-up),
// G-sensor registers and the stored iButton and RFID keys: per-product line counts, bit
// masks and request packing.
#include "system_renders.h"

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
