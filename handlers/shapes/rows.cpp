// The generic routines behind the row shapes: rendering an answer or a menu is pure
// (bytes and product in, text out); run* do the talking.
#include "rows.h"

#include <algorithm>
#include <cstdint>

namespace shapes {

namespace {

// The shorter rule some menus end with.
constexpr size_t RULE54_LENGTH = 54;

BYTE byteAt(std::span<const BYTE> bytes, int i) {
    return i >= 0 && static_cast<size_t>(i) < bytes.size() ? bytes[static_cast<size_t>(i)] : 0;
}

int fieldValue(const Line& line, BYTE b) {
    int v = b & line.mask;
    for (BYTE m = line.mask; m != 0 && (m & 1) == 0; m >>= 1) v >>= 1;
    return v;
}

// The text of a line without "fd(..) " and line end; empty for a Field value with
// neither a state text nor a format.
std::string lineBody(const Line& line, std::span<const BYTE> bytes) {
    const BYTE b = byteAt(bytes, line.at);
    switch (line.value) {
        case Value::Field: {
            const int v = fieldValue(line, b);
            for (const StateText& s : line.states)
                if (s.key == v) return s.text;
            return line.fmt ? rowprintf(line.fmt.text, v) : std::string();
        }
        case Value::Word:
            return rowprintf(line.fmt.text, (b | byteAt(bytes, line.at + 1) << 8) * line.scale);
        case Value::LoHi:
            return rowprintf(line.pair.text, static_cast<int>(b), byteAt(bytes, line.at + 1));
    }
    return {};
}

std::string separator() {
    return std::string(SEPARATOR26) + "\n";
}

std::string ruleLine(Rule rule) {
    switch (rule) {
        case Rule::None:
            return {};
        case Rule::Long:
            return std::string(RULE56) + "\n";
        case Rule::Short:
            return std::string(RULE54_LENGTH, '=') + "\n";
    }
    return {};
}

bool served(const GetRow& row, const char* product) {
    return row.gate.admits(product);
}

// Asks the steps, sends `length` request bytes, reports; then the row's own result.
int askAndSend(std::span<const Step> steps, const BYTE* init, size_t initCount, int length,
               const SetRow* resultOf, int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    BYTE request[MAX_REQUEST] = {};
    std::copy_n(init, std::min<size_t>(initCount, MAX_REQUEST), request);
    int previous = 1;
    for (const Step& step : steps) {
        if (step.ifPrevious && previous == 0) continue;
        printText(renderStep(step));
        int value = 0;
        if (!checkSelect(ctx.input, &value, step.min, step.max)) return 0;  // input ended
        applyAnswer(step, value, request);
        previous = value;
    }
    const core::Answer answer =
        core::exchange(ctx.systemLink, MCU_TYPE_ST, ST_MODE_AP, cmdIndex,
                       {request, static_cast<size_t>(std::clamp(length, 0, MAX_REQUEST))});
    const int verdict = core::report(ctx.systemLink, REPORT_ACK_FIRST, answer, funName);
    if (verdict != MCU_RESULT_OK || resultOf == nullptr) return verdict;
    printText(renderSetResult(*resultOf, ctx.systemLink->fd, answer.view()));
    return verdict;
}

}  // namespace

bool Products::admits(const char* product) const {
    if (names.size() == 0) return true;
    return core::productIn(spanOf(names), product) != outside;
}

std::string renderGet(const GetRow& row, int fd, std::span<const BYTE> answer,
                      const char* product) {
    if (!served(row, product))
        return row.off == OffProduct::AfterOpening ? separator() : std::string();
    std::string out;
    if (row.frame != Frame::None) out += separator();
    if (row.frame == Frame::TwiceBefore) out += separator();
    for (const Line& line : row.lines) {
        if (!line.only.admits(product)) continue;
        const std::string body = lineBody(line, answer);
        if (body.empty() && line.value == Value::Field) continue;  // a value without a text
        if (line.fd) out += strprintf("fd(%d) ", fd);
        out += body;
        out += "\n";
    }
    if (row.frame == Frame::Around) out += separator();
    return out;
}

int bytesRead(const GetRow& row, const char* product) {
    if (!served(row, product)) return 0;
    int needed = 0;
    for (const Line& line : row.lines) {
        if (!line.only.admits(product)) continue;
        needed = std::max(needed, line.at + (line.value == Value::Field ? 1 : 2));
    }
    return needed;
}

int runGet(const GetRow& row, int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    if (row.off == OffProduct::Silent && !served(row, ctx.product)) return 0;
    const core::Answer answer =
        core::exchange(ctx.systemLink, MCU_TYPE_ST, ST_MODE_AP, cmdIndex, spanOf(row.request));
    const int verdict = core::report(ctx.systemLink, REPORT_STANDARD, answer, funName);
    if (verdict != MCU_RESULT_OK) return verdict;
    core::warnShortAnswer(answer, bytesRead(row, ctx.product), funName);
    printText(renderGet(row, ctx.systemLink->fd, answer.view(), ctx.product));
    return 1;
}

uint32_t littleEndian(std::span<const BYTE> answer, size_t from) {
    uint32_t v = 0;
    for (size_t i = from; i < answer.size() && i - from < 4; ++i)
        v |= uint32_t{answer[i]} << (8 * (i - from));
    return v;
}

int runRender(Render render, int needed, int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    const core::Answer answer = core::exchange(ctx.systemLink, MCU_TYPE_ST, ST_MODE_AP, cmdIndex);
    const int verdict = core::report(ctx.systemLink, REPORT_STANDARD, answer, funName);
    if (verdict != MCU_RESULT_OK) return verdict;
    core::warnShortAnswer(answer, needed, funName);
    printText(render(answer.view(), ctx.systemLink->fd, ctx.product));
    return 1;
}

Step menuStep(const MenuRow& row) {
    return {.title = row.title,
            .options = row.options,
            .max = static_cast<int>(row.options.size()) - 1};
}

const Variant* pickVariant(const SetRow& row, const char* product) {
    static const Variant kNoQuestions{};
    if (row.variants.size() == 0) return &kNoQuestions;  // a fixed request for every product
    for (const Variant& v : row.variants) {
        if (v.models.names.size() == 0) return &v;  // serves every product
        if (v.models.admits(product)) return &v;
    }
    return nullptr;
}

std::string renderStep(const Step& step) {
    std::string out;
    if (step.title) out += std::string(step.title) + "\n";
    for (const char* option : step.options) out += std::string(option) + "\n";
    out += ruleLine(step.rule);
    out += step.prompt ? step.prompt : SELECT_PROMPT;
    return out;
}

std::string renderNotSupported(const SetRow& row, const char* product) {
    return strprintf("========  %s does not support this function  ========\n", product) +
           ruleLine(row.offRule);
}

void applyAnswer(const Step& step, int value, BYTE* request) {
    if (step.bits != 0) {
        if (value != 0) request[step.at] |= step.bits;
    } else if (step.width == 2) {
        request[step.at] = static_cast<BYTE>(value & 0xFF);
        request[step.at + 1] = static_cast<BYTE>((value >> 8) & 0xFF);
    } else if (step.map.size() != 0 && value >= 0 && static_cast<size_t>(value) < step.map.size()) {
        request[step.at] = step.map.begin()[value];
    } else {
        request[step.at] = static_cast<BYTE>(value);
    }
}

std::string renderSetResult(const SetRow& row, int fd, std::span<const BYTE> answer) {
    const OwnResult& r = row.result;
    if (!r.success) return {};
    const bool ok = (byteAt(answer, 0) & r.mask) == 1;
    std::string out;
    if (r.framed) out += separator();
    if (r.fd) out += strprintf("fd(%d) ", fd);
    out += ok ? r.success : r.fail;
    out += "\n";
    if (r.framed) out += separator();
    return out;
}

int runMenu(const MenuRow& row, int cmdIndex, char* funName) {
    const Step step = menuStep(row);
    return askAndSend({&step, 1}, nullptr, 0, 1, nullptr, cmdIndex, funName);
}

int runSet(const SetRow& row, int cmdIndex, char* funName) {
    const char* product = core::handlerContext().product;
    const Variant* variant = pickVariant(row, product);
    if (!variant && row.off == OffModel::Gate) return 0;
    if (row.title) printText(std::string(row.title) + "\n");
    if (!variant && row.off == OffModel::NotSupported) {
        printText(renderNotSupported(row, product));
        return 1;
    }
    const std::span<const Step> steps = variant ? spanOf(variant->steps) : std::span<const Step>();
    return askAndSend(steps, row.init.begin(), row.init.size(), row.length, &row, cmdIndex,
                      funName);
}

}  // namespace shapes
