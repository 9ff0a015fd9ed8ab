// Text and hexadecimal entry on whole lines.
#include "entry.h"

#include <climits>
#include <string_view>

#include "prompt.h"

namespace shapes {

namespace {

// The next line holding more than blanks, without its line end; false at end of input.
bool nextNonBlank(FILE* in, std::string* line, size_t* from) {
    for (;;) {
        if (!core::readTextLine(in, line, std::string::npos - 1)) return false;
        *from = line->find_first_not_of(" \t");
        if (*from != std::string::npos) return true;
    }
}

}  // namespace

bool readWord(FILE* in, size_t width, std::string* word) {
    std::string line;
    size_t from = 0;
    if (!nextNonBlank(in, &line, &from)) return false;
    size_t to = line.find_first_of(" \t", from);
    if (to == std::string::npos) to = line.size();
    *word = line.substr(from, std::min(to - from, width));
    return true;
}

Hex readHex(FILE* in, unsigned long* value) {
    std::string line;
    size_t from = 0;
    if (!nextNonBlank(in, &line, &from)) return Hex::Ended;
    size_t to = line.find_last_not_of(" \t") + 1;
    std::string_view text(line.data() + from, to - from);
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        text.remove_prefix(2);
    if (text.empty() || text.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos)
        return Hex::NotHex;
    unsigned long v = 0;
    for (char c : text) {
        unsigned long digit =
            static_cast<unsigned long>(c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10);
        v = v > (ULONG_MAX >> 4) ? ULONG_MAX : (v << 4 | digit);
    }
    *value = v;
    return Hex::Value;
}

}  // namespace shapes
