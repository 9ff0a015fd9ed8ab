// The steps the peripheral handlers are built from: one reported exchange on the
// system-MCU link, the product, prompts, pauses, the short-answer warning, and the
// small shapes that repeat (a named state, a menu, a one-byte choice, a rendered GET).
#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "mcu_base.h"

namespace steps {

inline constexpr const char* SEPARATOR = "==========================";
inline constexpr const char* LONG_RULE = "========================================================";
inline constexpr const char* SELECT_QUESTION = "Select which option you want to do:";

// How check_result judges an exchange: Get succeeds on any answer, Ack only when
// answer byte 0 is 1.
enum class Report { Get = 2, Ack = 3 };

struct Answer {
    int verdict = 0;  // check_result's verdict: 1 success, else 0 or a link result
    std::vector<BYTE> bytes;
    bool ok() const { return verdict == 1; }
};

// Sends the pool entry `cmdIndex` with `request` as ST, reports it through
// check_result in `mode` and returns the verdict with the answer bytes.
Answer exchange(int cmdIndex, std::span<const BYTE> request, Report mode, char* funName);
inline Answer exchange(int cmdIndex, std::initializer_list<BYTE> request, Report mode,
                       char* funName) {
    return exchange(cmdIndex, std::span<const BYTE>(request.begin(), request.size()), mode,
                    funName);
}

int fd();                   // the system-MCU link's descriptor, printed as "fd(%d)"
const char* programName();  // for "<program>: <what>: <why>" lines on stderr
const char* productName();  // the detected product name, with its line end
// Whether `product` (with or without its line end) is one of `models`.
bool isModel(std::string_view product, std::initializer_list<std::string_view> models);
bool isModel(std::string_view product, std::span<const std::string_view> models);

// Reads a whole line holding a number in [min, max] (checkSelect); false when the input
// ended (reported on stderr; the caller sends nothing).
bool choose(int* value, int min, int max);
// Reads one line without its line end; false at the end of input.
bool readLine(std::string* line);
void pauseMs(int ms);
void print(const std::string& text);
// Warns once on stderr when the answer holds fewer than `need` bytes.
void warnShort(const char* funName, const Answer& answer, size_t need);

// Answer bytes read without passing the end (0 there).
inline BYTE byteAt(std::span<const BYTE> a, size_t i) {
    return i < a.size() ? a[i] : 0;
}
inline int wordAt(std::span<const BYTE> a, size_t i) {
    return byteAt(a, i) | byteAt(a, i + 1) << 8;
}

// printf into a string; the format may come from a table row.
std::string format(const char* fmt, ...);

// ---------------------------------------------------------------- repeating shapes

// A value and the line it prints; the line takes the descriptor ("fd(%d) ...").
struct Named {
    int value;
    const char* line;
};
// The line of `value`, or "" when the table does not list it.
std::string named(std::span<const Named> table, int value, int fd);
// `body` between two separators.
std::string framed(const std::string& body, const char* sep = SEPARATOR);

// A menu: title, options one a line, the rule, the prompt; answered in [min, max].
struct Menu {
    const char* title;
    std::span<const char* const> options;
    int min = 0;
    int max = 1;
    bool rule = true;
    const char* prompt = SELECT_QUESTION;  // printed without a line end
};
std::string renderMenu(const Menu& menu);
// Shows the menu and reads the answer; false when the input ended.
bool ask(const Menu& menu, int* value);

// The lines a GET prints after a successful exchange: answer, product, descriptor.
using Render = std::string (*)(std::span<const BYTE> answer, std::string_view product, int fd);

// A GET: sends `request`, checks in Get mode; on success warns when fewer than `need`
// bytes came and prints render's lines. Returns the verdict.
int runGet(int cmdIndex, char* funName, std::span<const BYTE> request, size_t need, Render render);
inline int runGet(int cmdIndex, char* funName, std::initializer_list<BYTE> request, size_t need,
                  Render render) {
    return runGet(cmdIndex, funName, std::span<const BYTE>(request.begin(), request.size()), need,
                  render);
}
// A GET (with `request`) whose answer byte 0 names a state, framed by 26-"=" separators.
int runState(int cmdIndex, char* funName, std::span<const Named> states,
             std::span<const BYTE> request = {});
// A SET of one menu: the answer (or map[answer]) is the one request byte, checked in
// Ack mode. Returns the verdict, or 0 when the input ended.
int runChoice(int cmdIndex, char* funName, const Menu& menu, std::span<const BYTE> map = {});

// A loop of exchanges, one per port or board: for i = 0..count-1 sends request(i),
// reports it in `mode`, warns when a successful answer holds fewer than `need` bytes,
// hands each successful answer to onAnswer(i, answer), and pauses
// `pause` ms after every request, answered or not. A failed request does not stop the
// loop. Returns the verdict of the last request (0 when count is 0).
int runLoop(int cmdIndex, char* funName, int count,
            const std::function<std::vector<BYTE>(int)>& request, int pause,
            const std::function<void(int, const Answer&)>& onAnswer, size_t need = 0,
            Report mode = Report::Get);

}  // namespace steps
