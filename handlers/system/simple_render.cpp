// The generic routines behind the simple status and control commands: rendering an
// answer or a menu is pure (bytes and product in, text out); run* do the talking.
#include <cstring>
#include <utility>
#include <vector>

#include "simple_rows.h"

namespace simple {

namespace {

BYTE byteAt(const BYTE* bytes, int length, int i) {
    return i < length ? bytes[i] : 0;
}

// Little-endian value of bytes [from, length), kept to 32 bits.
uint32_t littleEndian(const BYTE* bytes, int length, int from) {
    uint32_t v = 0;
    for (int i = from; i < length && i - from < 4; ++i) v |= uint32_t{bytes[i]} << (8 * (i - from));
    return v;
}

int fieldValue(const Line& line, BYTE b) {
    int v = b & line.mask;
    for (BYTE m = line.mask; m != 0 && (m & 1) == 0; m >>= 1) v >>= 1;
    return v;
}

std::string lineBody(const Line& line, const BYTE* bytes, int length, const char* product) {
    const char* fmt = line.fmt;
    if (line.alt && !line.altModels.empty() && productIn(line.altModels, product)) fmt = line.alt;
    BYTE b = byteAt(bytes, length, line.at);
    switch (line.val) {
        case Val::Text:
            return fmt;
        case Val::Field: {
            int v = fieldValue(line, b);
            for (const StateText& s : line.states)
                if (s.key == v) return s.text;
            if (!fmt) return {};
            return rowprintf(fmt, v);
        }
        case Val::Signed:
            if (b & 0x80) return rowprintf(line.alt, 256 - b);
            return rowprintf(fmt, static_cast<int>(b));
        case Val::Word: {
            int word = b | byteAt(bytes, length, line.at + 1) << 8;
            return rowprintf(fmt, word * line.scale);
        }
        case Val::LoHi:
            return rowprintf(fmt, static_cast<int>(b), byteAt(bytes, length, line.at + 1));
        case Val::Counter:
            return rowprintf(fmt, static_cast<int>(littleEndian(bytes, length, 0)));
        case Val::Exact4:
            if (length != 4) return line.alt;
            return rowprintf(fmt, static_cast<unsigned>(littleEndian(bytes, length, 0)));
        case Val::BootTime: {
            int hours = static_cast<int>(littleEndian(bytes, length, 2));
            return rowprintf(fmt, hours, byteAt(bytes, length, 1), byteAt(bytes, length, 0));
        }
        case Val::Chars: {
            char text[17] = {};
            for (int i = 0; i < length && i < 16; ++i) text[i] = static_cast<char>(bytes[i]);
            return rowprintf(fmt, text);
        }
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
            return std::string(54, '=') + "\n";
    }
    return {};
}

template <class Row>
std::vector<std::pair<FUNC_HANDLER, const Row*>>& registry() {
    static std::vector<std::pair<FUNC_HANDLER, const Row*>> rows;
    return rows;
}

template <class Row>
const Row* lookup(FUNC_HANDLER handler) {
    for (const auto& [h, row] : registry<Row>())
        if (h == handler) return row;
    return nullptr;
}

}  // namespace

bool getServes(const GetRow& row, const char* product) {
    return row.gate.empty() || productIn(row.gate, product);
}

std::string renderGet(const GetRow& row, int fd, const BYTE* bytes, int length,
                      const char* product) {
    if (!getServes(row, product))
        return row.off == OffProduct::AfterOpening ? separator() : std::string();
    if (length < row.minLength) return {};
    std::string out;
    if (row.frame != Frame::None) out += separator();
    if (row.frame == Frame::TwiceBefore) out += separator();
    for (const Line& line : row.lines) {
        if (!line.used()) break;
        if (!line.only.empty() && productIn(line.only, product) == line.notIn) continue;
        std::string body = lineBody(line, bytes, length, product);
        if (body.empty() && line.val == Val::Field) continue;  // a value without a text
        if (line.fd) out += strprintf("fd(%d) ", fd);
        out += body;
        out += "\n";
    }
    if (row.frame == Frame::Around) out += separator();
    return out;
}

int runGet(const GetRow& row, int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    if (row.off == OffProduct::Silent && !getServes(row, ctx.product)) return 0;
    const core::Answer answer =
        core::exchange(ctx.systemLink, MCU_TYPE_ST, ST_MODE_AP, cmdIndex, row.request.span());
    int verdict = core::report(ctx.systemLink, REPORT_STANDARD, answer, funName);
    if (verdict != 1) return verdict;
    printText(renderGet(row, ctx.systemLink->fd, answer.bytes.data(), answer.length, ctx.product));
    return 1;
}

const Variant* pickVariant(const SetRow& row, const char* product) {
    for (int i = 0; i < 3; ++i) {
        const Variant& v = row.variants[i];
        if (v.models.empty()) {
            if (i == 0) return &v;  // serves every product
            break;
        }
        if (productIn(v.models, product)) return &v;
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
    return rowprintf("========  %s does not support this function  ========\n", product) +
           ruleLine(row.offRule);
}

void applyAnswer(const Step& step, int value, BYTE* request) {
    if (step.bits != 0) {
        if (value != 0) request[step.at] |= step.bits;
    } else if (step.width == 2) {
        request[step.at] = static_cast<BYTE>(value & 0xFF);
        request[step.at + 1] = static_cast<BYTE>((value >> 8) & 0xFF);
    } else if (!step.map.empty() && value >= 0 && value < step.map.count) {
        request[step.at] = step.map[value];
    } else {
        request[step.at] = static_cast<BYTE>(value);
    }
}

std::string renderSetResult(const SetRow& row, int fd, const BYTE* bytes, int length) {
    const OwnResult& r = row.result;
    if (!r.success) return {};
    bool ok = (byteAt(bytes, length, 0) & r.mask) == 1;
    std::string out;
    if (r.framed) out += separator();
    if (r.fd) out += strprintf("fd(%d) ", fd);
    out += ok ? r.success : r.fail;
    out += "\n";
    if (r.framed) out += separator();
    return out;
}

int runSet(const SetRow& row, int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    const Variant* variant = pickVariant(row, ctx.product);
    if (!variant && row.off == OffModel::Gate) return 0;
    BYTE request[4] = {};
    for (int i = 0; i < row.init.count; ++i) request[i] = row.init[i];
    if (row.title) printText(std::string(row.title) + "\n");
    if (!variant && row.off == OffModel::NotSupported) {
        printText(renderNotSupported(row, ctx.product));
        return 1;
    }
    if (variant) {
        int previous = 1;
        for (const Step& step : variant->steps) {
            if (!step.used()) break;
            if (step.ifPrevious && previous == 0) continue;
            printText(renderStep(step));
            int value = 0;
            if (!checkSelect(ctx.input, &value, step.min, step.max)) return 0;  // input ended
            applyAnswer(step, value, request);
            previous = value;
        }
    }
    const core::Answer answer = core::exchange(ctx.systemLink, MCU_TYPE_ST, ST_MODE_AP, cmdIndex,
                                               {request, static_cast<size_t>(row.length)});
    int verdict = core::report(ctx.systemLink, REPORT_ACK_FIRST, answer, funName);
    if (verdict != 1) return verdict;
    printText(renderSetResult(row, ctx.systemLink->fd, answer.bytes.data(), answer.length));
    return verdict;
}

const GetRow* getRowOf(FUNC_HANDLER handler) {
    return lookup<GetRow>(handler);
}
const SetRow* setRowOf(FUNC_HANDLER handler) {
    return lookup<SetRow>(handler);
}

Registrar::Registrar(FUNC_HANDLER handler, const GetRow* row) {
    registry<GetRow>().emplace_back(handler, row);
}
Registrar::Registrar(FUNC_HANDLER handler, const SetRow* row) {
    registry<SetRow>().emplace_back(handler, row);
}

}  // namespace simple
