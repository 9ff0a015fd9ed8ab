// Whole-line prompt readers.
#include "prompt.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "context.h"

namespace {

const char* const INPUT_ERROR = "\nInput Error !!! Please input a number.\n";
const char* const SELECT_ERROR = "\nSelect Error !!! Please select a option again.\n";

// One line of `in` without its line end, or false at end of input (after saying so).
bool nextLine(FILE* in, std::string* line) {
    fflush(stdout);
    char* buf = nullptr;
    size_t cap = 0;
    ssize_t n = getline(&buf, &cap, in);
    std::unique_ptr<char, decltype(&free)> owned(buf, free);
    if (n < 0) {
        fprintf(stderr, "%s: input ended\n", g_progName);
        return false;
    }
    line->assign(buf, static_cast<size_t>(n));
    while (!line->empty() && (line->back() == '\n' || line->back() == '\r')) line->pop_back();
    return true;
}

bool onlyBlanks(const char* p) {
    for (; *p; ++p)
        if (*p != ' ' && *p != '\t') return false;
    return true;
}

void say(const char* text) {
    fputs(text, stdout);
    fflush(stdout);
}

// Parses the whole line as a number in `base`; false when anything but blanks is left.
bool parseWhole(const std::string& line, int base, long long* value) {
    const char* start = line.c_str();
    char* end = nullptr;
    errno = 0;
    long long v = strtoll(start, &end, base);
    if (end == start || errno != 0 || !onlyBlanks(end)) return false;
    *value = v;
    return true;
}

}  // namespace

int checkSelect(FILE* in, int* value, int min, int max) {
    std::string line;
    for (;;) {
        if (!nextLine(in, &line)) return 0;
        long long v = 0;
        if (!parseWhole(line, 10, &v)) {
            say(INPUT_ERROR);
            continue;
        }
        if (v < min || v > max) {
            say(SELECT_ERROR);
            continue;
        }
        *value = static_cast<int>(v);
        return 1;
    }
}

namespace core {

int readHexLine(FILE* in, unsigned long* value, unsigned long min, unsigned long max) {
    std::string line;
    for (;;) {
        if (!nextLine(in, &line)) return 0;
        long long v = 0;
        if (!parseWhole(line, 16, &v) || v < 0) {
            say(INPUT_ERROR);
            continue;
        }
        if (static_cast<unsigned long long>(v) < min || static_cast<unsigned long long>(v) > max) {
            say(SELECT_ERROR);
            continue;
        }
        *value = static_cast<unsigned long>(v);
        return 1;
    }
}

int readTextLine(FILE* in, std::string* text, size_t maxLength) {
    std::string line;
    for (;;) {
        if (!nextLine(in, &line)) return 0;
        if (line.size() > maxLength) {
            say("\nInput Error !!! The text is too long.\n");
            continue;
        }
        *text = line;
        return 1;
    }
}

}  // namespace core
