// The steps the power, version, I/O, fan and radio handlers are written with: one
// reported exchange on the system-MCU link, a rendered GET, menus and prompts read as
// whole lines, and the short-answer warning.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "answer_view.h"
#include "exchange.h"
#include "report.h"
#include "shapes/entry.h"

namespace sysflow {

using sysrender::Byte;

// check_result's verdict of one exchange and the answer it judged.
struct Reported {
    int verdict = 0;
    core::Answer answer;
    std::span<const Byte> bytes() const { return answer.view(); }
};

// Sends pool entry `cmdIndex` on the system-MCU link as ST with `request`, and reports it
// through check_result in `mode`.
Reported exchange(int cmdIndex, std::span<const Byte> request, ReportMode mode,
                  const char* funName);

MCU_CONTENT* link();         // the system-MCU link (null when not open)
int fd();                    // the system-MCU link's descriptor (-1 when not open)
std::string_view product();  // the detected product name, with its line end
bool productIs(sysrender::ModelSet models);
FILE* input();

using Render = std::string (*)(const sysrender::Answer&);
enum class Warn { Short, Never };

// A GET: one exchange with `request`, reported in the standard mode; on success the
// render's lines (and the short-answer warning). Returns the verdict.
int get(int cmdIndex, char* funName, Render render, std::span<const Byte> request = {},
        Warn warn = Warn::Short);
// A SET: sends `request`, reported with the first answer byte as acknowledgement.
int set(int cmdIndex, char* funName, std::span<const Byte> request);

void print(const std::string& text);

// The line that closes a menu before its prompt.
struct Rule {
    const char* text;  // null: the 56-"=" rule; "": none
};
inline constexpr Rule RULE_56 = {nullptr};
inline constexpr Rule NO_RULE = {""};
inline constexpr const char* NO_PROMPT = "";

// What a menu shows: the title (when not null), the options one a line, the rule, and the
// prompt (the standard one when null) without a line end.
std::string menuText(const char* title, std::initializer_list<const char*> options,
                     Rule rule = RULE_56, const char* prompt = nullptr);

// Prints `text`, then reads a number in [min, max] as checkSelect does; false when the
// input ended.
bool ask(const std::string& text, int min, int max, int* value);

// Text and hexadecimal entry at the prompts, from the handlers' input.
using shapes::Hex;
inline bool readWord(size_t width, std::string* word) {
    return shapes::readWord(input(), width, word);
}
inline Hex readHex(unsigned long* value) {
    return shapes::readHex(input(), value);
}

}  // namespace sysflow
