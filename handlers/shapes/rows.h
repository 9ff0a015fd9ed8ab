// The row shapes that repeat across command groups, and the generic routines that run
// them. A GET row says which answer bytes become which lines; a menu row is one
// numbered menu whose choice is the request byte; a SET row asks a few menus or number
// prompts (per product) and packs the answers into the request.
//
// Rows are namespace-scope constants written in place with braces: a List member keeps
// the items it was written with for as long as the row exists (a List is a pointer and
// a count, so a row costs the same whatever it holds). Never return a row from a
// function or build one on the stack from a temporary list.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

#include "fmt.h"
#include "handler_util.h"

namespace shapes {

template <class T>
using List = std::initializer_list<T>;

template <class T>
constexpr std::span<const T> spanOf(List<T> list) {
    return {list.begin(), list.size()};
}

// The products a line or row is for: every product when `names` is empty; otherwise
// those named, or (outside) those not named. Names are written without their "\n".
struct Products {
    List<const char*> names = {};
    bool outside = false;
    bool admits(const char* product) const;
};

// ---------------------------------------------------------------- GET rows

struct StateText {
    int key;
    const char* text;
};

// How a line turns answer bytes into its value.
enum class Value : unsigned char {
    Field,  // (byte[at] & mask) shifted down to bit 0; a state text or `fmt`
    Word,   // byte[at] | byte[at+1] << 8, times `scale`, printed with `fmt`
    LoHi,   // byte[at] and byte[at+1] as two numbers, printed with `pair`
};

struct Line {
    Value value = Value::Field;
    int at = 0;                   // the first answer byte the line reads
    BYTE mask = 0xFF;             // Field: the bits of byte `at` that make the value
    List<StateText> states = {};  // Field: the text of each value
    Fmt<int> fmt = {};            // Field, Word: the line (Field: of a value without a text;
                                  // a Field value with neither prints no line)
    Fmt<int, int> pair = {};      // LoHi: the line
    int scale = 1;                // Word: the value is multiplied by this
    Products only = {};           // printed only on these products
    bool fd = true;               // the line begins "fd(%d) "
};

// A line printing byte `at` (masked) with `fmt`.
constexpr Line field(Fmt<int> fmt, int at = 0) {
    return {.at = at, .fmt = fmt};
}
// A line printing the 16-bit value at `at` with `fmt`.
constexpr Line word(Fmt<int> fmt, int at = 0) {
    return {.value = Value::Word, .at = at, .fmt = fmt};
}
// A line printing bytes `at` and `at`+1 as two numbers.
constexpr Line loHi(Fmt<int, int> pair, int at = 0) {
    return {.value = Value::LoHi, .at = at, .pair = pair};
}

enum class Frame : unsigned char {
    Around,       // a 26-"=" separator before and after the lines
    None,         // no separators
    TwiceBefore,  // two separators before the lines, none after
};

// What a product outside the row's gate sees.
enum class OffProduct : unsigned char {
    Silent,        // the handler returns 0 before sending, printing nothing
    AfterOpening,  // sent and reported; then only the opening separator, and 1
};

struct GetRow {
    List<Line> lines;
    Products gate = {};  // the products served
    OffProduct off = OffProduct::Silent;
    Frame frame = Frame::Around;
    List<BYTE> request = {};  // the request's data bytes
};

// The lines a GET prints after check_result for `answer` on `product` (pure).
std::string renderGet(const GetRow& row, int fd, std::span<const BYTE> answer, const char* product);
// How many answer bytes the lines printed on `product` read.
int bytesRead(const GetRow& row, const char* product);
// Sends the row's request on the system-MCU link, reports, and prints the lines. A
// shorter answer than the lines read also gets one warning on stderr.
int runGet(const GetRow& row, int cmdIndex, char* funName);

// ---------------------------------------------------------------- menus and prompts

enum class Rule : unsigned char { None, Long /* 56 "=" */, Short /* 54 "=" */ };

// One menu or number prompt whose answer goes into the request.
struct Step {
    const char* title = nullptr;
    List<const char*> options = {};
    Rule rule = Rule::Long;
    const char* prompt = nullptr;  // null: the standard select prompt; "": none
    int min = 0, max = 1;
    int at = 0;               // the request byte it fills
    int width = 1;            // 2: a 16-bit value, low byte first
    BYTE bits = 0;            // non-zero: a choice other than 0 sets these bits of byte `at`
    List<BYTE> map = {};      // the byte sent for each option (the option number when empty)
    bool ifPrevious = false;  // asked only when the previous answer was not 0
};

// A SET that is one numbered menu: the choice (0 to the last option) is request byte 0,
// sent to every product, and the answer's byte 0 must be 1.
struct MenuRow {
    const char* title;
    List<const char*> options;
};

struct Variant {
    Products models = {};  // the products it serves
    List<Step> steps = {};
};

// What a product that no variant serves sees.
enum class OffModel : unsigned char {
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

constexpr int MAX_REQUEST = 4;

struct SetRow {
    const char* title = nullptr;  // printed first (after a passed gate)
    List<Variant> variants = {};  // the first serving the product is used; none: no
                                  // questions, every product
    OffModel off = OffModel::Gate;
    Rule offRule = Rule::Long;
    int length = 1;        // request bytes sent (at most MAX_REQUEST)
    List<BYTE> init = {};  // request bytes before any answer (the rest 0)
    OwnResult result = {};
};

// The one step of a menu row.
Step menuStep(const MenuRow& row);
// The variant serving `product`, or null.
const Variant* pickVariant(const SetRow& row, const char* product);
// What a step prints before its answer is read.
std::string renderStep(const Step& step);
// What a product outside every variant sees (NotSupported rows).
std::string renderNotSupported(const SetRow& row, const char* product);
// Puts one answer into the request bytes.
void applyAnswer(const Step& step, int value, BYTE* request);
// The handler's own result line(s) after check_result returned 1.
std::string renderSetResult(const SetRow& row, int fd, std::span<const BYTE> answer);
int runMenu(const MenuRow& row, int cmdIndex, char* funName);
int runSet(const SetRow& row, int cmdIndex, char* funName);

// ---------------------------------------------------------------- decodings of their own

// A pure render of a handler with a decoding of its own: answer bytes, the link's
// descriptor and the product in, the text printed after check_result out.
using Render = std::string (*)(std::span<const BYTE> answer, int fd, const char* product);

// Bytes [from, from + 4) of `answer` (those present), little-endian.
uint32_t littleEndian(std::span<const BYTE> answer, size_t from);

// Runs a GET with a decoding of its own: sends no data on the system-MCU link, reports
// in the standard mode, and on success prints render(answer). `needed` is the highest
// answer position the render reads plus one (0 for a render that looks at the length
// itself): a shorter answer gets one warning on stderr.
int runRender(Render render, int needed, int cmdIndex, char* funName);

// ---------------------------------------------------------------- lists of rows

// A handler and the row it runs, for checks that walk every row of a file.
template <class Row>
struct Bound {
    FUNC_HANDLER handler;
    const Row& row;
};
using GetRef = Bound<GetRow>;
using MenuRef = Bound<MenuRow>;
using SetRef = Bound<SetRow>;
struct RenderRef {
    FUNC_HANDLER handler;
    Render render;
};

// The row `handler` runs in `rows`, or null.
template <class Row>
const Row* rowOf(std::span<const Bound<Row>> rows, FUNC_HANDLER handler) {
    for (const Bound<Row>& b : rows)
        if (b.handler == handler) return &b.row;
    return nullptr;
}

}  // namespace shapes
