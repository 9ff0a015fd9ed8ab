// The row types behind the system MCU's simple status and control commands, and the
// few generic routines that run them: a GET row says how to turn the answer bytes into
// lines, a SET row which menus and prompts fill the request bytes.
#pragma once

#include <string>

#include "handler_util.h"

namespace simple {

// ---------------------------------------------------------------- GET rows

struct StateText {
    int key;
    const char* text;
};
using StateList = FixedList<StateText, 8>;

// Where the number(s) of a line come from.
enum class Val {
    Text,      // no value: fmt is printed as it is
    Field,     // (byte[at] & mask) shifted down to bit 0
    Signed,    // byte[at] with bit 7 as the sign: fmt for 0..127, alt ("-%d") with 256 - byte
    Word,      // byte[at] | byte[at+1] << 8, times `scale`
    LoHi,      // byte[at] and byte[at+1] as two numbers
    Counter,   // every answer byte, little-endian, into 32 bits
    Exact4,    // four answer bytes little-endian, unsigned; alt when the length is not 4
    BootTime,  // hours (byte 2 to the end, little-endian), minutes (byte 1), seconds (byte 0)
    Chars,     // the answer as text, at most 16 characters
};

struct Line {
    Val val = Val::Field;
    int at = 0;
    BYTE mask = 0xFF;
    StateList states = {};      // Field: the text of each value (fmt for any other value)
    const char* fmt = nullptr;  // the line; with states, the line of an unlisted value
    const char* alt = nullptr;  // see Val; or the line on the products of altModels
    Models altModels = {};
    Models only = {};    // printed only on these products (all when empty) ...
    bool notIn = false;  // ... or only on the products outside them
    bool fd = true;      // the line begins "fd(%d) "
    int scale = 1;
    constexpr bool used() const { return fmt != nullptr || !states.empty(); }
};

enum class Frame {
    Around,       // a 26-"=" separator before and after the lines
    None,         // no separators
    TwiceBefore,  // two separators before the lines, none after
};

enum class OffProduct {
    Silent,        // the handler returns 0 before sending, printing nothing
    AfterOpening,  // sent and reported; then only the opening separator, and 1
};

struct GetRow {
    Line lines[4];
    Models gate = {};  // the products served (all when empty)
    OffProduct off = OffProduct::Silent;
    Frame frame = Frame::Around;
    int minLength = 0;  // a shorter answer prints nothing after check_result
    FixedList<BYTE, 2> request = {};
};

// The lines a GET prints after check_result, for `bytes` (`length` of them).
std::string renderGet(const GetRow& row, int fd, const BYTE* bytes, int length,
                      const char* product);
// Whether the product passes the row's gate (a handler outside it sends nothing).
bool getServes(const GetRow& row, const char* product);
int runGet(const GetRow& row, int cmdIndex, char* funName);

// ---------------------------------------------------------------- SET rows

enum class Rule { None, Long /* 56 "=" */, Short /* 54 "=" */ };

// One menu or number prompt whose answer goes into the request.
struct Step {
    const char* title = nullptr;
    FixedList<const char*, 8> options = {};
    Rule rule = Rule::Long;
    const char* prompt = nullptr;  // null: the standard select prompt; "": none
    int min = 0, max = 1;
    int at = 0;                   // the request byte it fills
    int width = 1;                // 2: a 16-bit value, low byte first
    BYTE bits = 0;                // non-zero: a choice other than 0 sets these bits of byte `at`
    FixedList<BYTE, 4> map = {};  // the byte sent for each option (the option number when empty)
    bool ifPrevious = false;      // asked only when the previous answer was not 0
    constexpr bool used() const { return !options.empty() || (prompt && *prompt); }
};

struct Variant {
    Models models = {};  // the products it serves (any when empty)
    Step steps[3];
};

enum class OffModel {
    Gate,          // return 0 at once, print and send nothing
    NotSupported,  // "... does not support this function ..." and a rule, return 1
    SendAsIs,      // no menu: the request goes out as initialised
};

// A result line of the handler's own, from answer byte 0.
struct OwnResult {
    const char* success = nullptr;
    const char* fail = nullptr;
    BYTE mask = 0xFF;  // success when (byte 0 & mask) == 1
    bool fd = true;
    bool framed = false;  // between 26-"=" separators
};

struct SetRow {
    const char* title = nullptr;  // printed first (after a passed gate)
    Variant variants[3];          // the first serving the product is used
    OffModel off = OffModel::Gate;
    Rule offRule = Rule::Long;
    int length = 1;                // request bytes sent
    FixedList<BYTE, 3> init = {};  // request bytes before any answer (the rest 0)
    OwnResult result = {};
};

// The variant serving `product`, or null.
const Variant* pickVariant(const SetRow& row, const char* product);
// What a step prints before its answer is read.
std::string renderStep(const Step& step);
// What a product outside every variant sees (NotSupported rows).
std::string renderNotSupported(const SetRow& row, const char* product);
// Puts one answer into the request bytes.
void applyAnswer(const Step& step, int value, BYTE* request);
// The handler's own result line(s) after check_result returned 1.
std::string renderSetResult(const SetRow& row, int fd, const BYTE* bytes, int length);
int runSet(const SetRow& row, int cmdIndex, char* funName);

// The rows behind the handlers, for tests and listings; null for other handlers.
const GetRow* getRowOf(FUNC_HANDLER handler);
const SetRow* setRowOf(FUNC_HANDLER handler);

// Records a handler with its row (used by the definitions of the rows).
struct Registrar {
    Registrar(FUNC_HANDLER handler, const GetRow* row);
    Registrar(FUNC_HANDLER handler, const SetRow* row);
};

}  // namespace simple
