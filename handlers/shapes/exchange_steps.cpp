// The exchange, prompt and output steps of the peripheral handlers, on the shared link
// context and report of the front end.
#include "exchange_steps.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <thread>

#include "context.h"
#include "exchange.h"
#include "prompt.h"
#include "report.h"
#include "text.h"

namespace steps {

Answer exchange(int cmdIndex, std::span<const BYTE> request, Report mode, char* funName) {
    MCU_CONTENT* link = core::handlerContext().systemLink;
    core::Answer answer = core::exchange(link, MCU_TYPE_ST, ST_MODE_AP, cmdIndex, request);
    Answer a;
    a.verdict = core::report(link, mode == Report::Get ? REPORT_STANDARD : REPORT_ACK_FIRST, answer,
                             funName);
    if (answer.ok()) a.bytes.assign(answer.view().begin(), answer.view().end());
    return a;
}

int fd() {
    MCU_CONTENT* link = core::handlerContext().systemLink;
    return link ? link->fd : -1;
}

const char* programName() {
    return core::handlerContext().progName;
}

const char* productName() {
    return core::handlerContext().product;
}

namespace {
std::string_view model(std::string_view product) {
    while (!product.empty() && (product.back() == '\n' || product.back() == ' '))
        product.remove_suffix(1);
    return product;
}
}  // namespace

bool isModel(std::string_view product, std::span<const std::string_view> models) {
    std::string_view m = model(product);
    for (std::string_view each : models)
        if (each == m) return true;
    return false;
}

bool isModel(std::string_view product, std::initializer_list<std::string_view> models) {
    return isModel(product, std::span<const std::string_view>(models.begin(), models.size()));
}

bool choose(int* value, int min, int max) {
    return checkSelect(core::handlerContext().input, value, min, max) == 1;
}

bool readLine(std::string* line) {
    fflush(stdout);
    core::HandlerContext ctx = core::handlerContext();
    char* buf = nullptr;
    size_t cap = 0;
    ssize_t n = getline(&buf, &cap, ctx.input);
    if (n < 0) {
        free(buf);
        fprintf(stderr, "%s: input ended\n", ctx.progName);
        return false;
    }
    line->assign(buf, static_cast<size_t>(n));
    free(buf);
    while (!line->empty() && (line->back() == '\n' || line->back() == '\r')) line->pop_back();
    return true;
}

void pauseMs(int ms) {
    fflush(stdout);
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void print(const std::string& text) {
    fwrite(text.data(), 1, text.size(), stdout);
    fflush(stdout);
}

void warnShort(const char* funName, const Answer& answer, size_t need) {
    if (answer.bytes.size() >= need) return;
    fflush(stdout);
    fprintf(stderr, "%s: short answer to %s: %zu of %zu bytes\n", core::handlerContext().progName,
            funName, answer.bytes.size(), need);
}

std::string format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string out = core::vstrprintf(fmt, args);
    va_end(args);
    return out;
}

std::string named(std::span<const Named> table, int value, int fd) {
    for (const Named& n : table)
        if (n.value == value) return format(n.line, fd);
    return {};
}

std::string framed(const std::string& body, const char* sep) {
    std::string s = sep;
    s += '\n';
    return s + body + sep + '\n';
}

std::string renderMenu(const Menu& menu) {
    std::string s;
    if (menu.title) s += std::string(menu.title) + '\n';
    for (const char* o : menu.options) s += std::string(o) + '\n';
    if (menu.rule) s += std::string(LONG_RULE) + '\n';
    if (menu.prompt) s += menu.prompt;
    return s;
}

bool ask(const Menu& menu, int* value) {
    print(renderMenu(menu));
    return choose(value, menu.min, menu.max);
}

int runGet(int cmdIndex, char* funName, std::span<const BYTE> request, size_t need, Render render) {
    Answer a = exchange(cmdIndex, request, Report::Get, funName);
    if (!a.ok()) return a.verdict;
    warnShort(funName, a, need);
    print(render(a.bytes, productName(), fd()));
    return a.verdict;
}

int runState(int cmdIndex, char* funName, std::span<const Named> states,
             std::span<const BYTE> request) {
    Answer a = exchange(cmdIndex, request, Report::Get, funName);
    if (!a.ok()) return a.verdict;
    warnShort(funName, a, 1);
    print(framed(named(states, byteAt(a.bytes, 0), fd())));
    return a.verdict;
}

int runChoice(int cmdIndex, char* funName, const Menu& menu, std::span<const BYTE> map) {
    int choice = 0;
    if (!ask(menu, &choice)) return 0;
    BYTE b = static_cast<BYTE>(choice);
    if (choice >= 0 && static_cast<size_t>(choice) < map.size()) b = map[choice];
    return exchange(cmdIndex, {b}, Report::Ack, funName).verdict;
}

int runLoop(int cmdIndex, char* funName, int count,
            const std::function<std::vector<BYTE>(int)>& request, int pause,
            const std::function<void(int, const Answer&)>& onAnswer, size_t need, Report mode) {
    int verdict = 0;
    for (int i = 0; i < count; ++i) {
        std::vector<BYTE> bytes = request(i);
        Answer a = exchange(cmdIndex, bytes, mode, funName);
        verdict = a.verdict;
        if (a.ok()) {
            warnShort(funName, a, need);
            onAnswer(i, a);
        }
        if (pause > 0) pauseMs(pause);
    }
    return verdict;
}

}  // namespace steps
