// The exchange, prompt and output steps of the system handlers, on the core's link
// context, exchange and report.
#include "system_steps.h"

#include <algorithm>
#include <cstdio>

#include "context.h"
#include "prompt.h"
#include "text.h"

namespace sysflow {

Reported exchange(int cmdIndex, std::span<const Byte> request, ReportMode mode,
                  const char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    Reported r;
    r.answer = core::exchange(ctx.systemLink, MCU_TYPE_ST, ST_MODE_AP, cmdIndex, request);
    r.verdict = core::report(ctx.systemLink, mode, r.answer, funName);
    return r;
}

MCU_CONTENT* link() {
    return core::handlerContext().systemLink;
}

int fd() {
    MCU_CONTENT* l = link();
    return l ? l->fd : -1;
}

std::string_view product() {
    return core::handlerContext().product;
}

bool productIs(sysrender::ModelSet models) {
    return sysrender::Answer({}, product(), 0).in(models);
}

FILE* input() {
    return core::handlerContext().input;
}

int get(int cmdIndex, char* funName, Render render, std::span<const Byte> request, Warn warn) {
    Reported r = exchange(cmdIndex, request, REPORT_STANDARD, funName);
    if (r.verdict != 1) return r.verdict;
    sysrender::Answer a(r.bytes(), product(), fd());
    std::string text = render(a);
    if (warn == Warn::Short) core::warnShortAnswer(r.answer, static_cast<int>(a.needed()), funName);
    print(text);
    return 1;
}

int set(int cmdIndex, char* funName, std::span<const Byte> request) {
    return exchange(cmdIndex, request, REPORT_ACK_FIRST, funName).verdict;
}

void print(const std::string& text) {
    core::printText(text);
}

std::string menuText(const char* title, std::initializer_list<const char*> options, Rule rule,
                     const char* prompt) {
    std::string out;
    if (title) out += std::string(title) + "\n";
    for (const char* o : options) out += std::string(o) + "\n";
    if (!rule.text)
        out += std::string(RULE56) + "\n";
    else if (*rule.text)
        out += std::string(rule.text) + "\n";
    out += prompt ? prompt : SELECT_PROMPT;
    return out;
}

bool ask(const std::string& text, int min, int max, int* value) {
    print(text);
    return checkSelect(input(), value, min, max) == 1;
}

}  // namespace sysflow
