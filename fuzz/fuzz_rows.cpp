// libFuzzer target: every data row, SET row and render the handler groups list, rendered
// over arbitrary answers (0 to 64 bytes) on products the rows name or arbitrary text:
// memory safety, and the same text for the same input each time.
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "fuzz_common.h"
#include "row_lists.h"

using namespace shapes;

namespace {

// Reads the fuzzer's bytes one at a time; zeros once they run out.
struct Input {
    const uint8_t* p;
    size_t left;
    uint8_t next() {
        if (left == 0) return 0;
        --left;
        return *p++;
    }
};

// The product names the rows mention (written without their "\n").
std::vector<std::string> namedProducts() {
    std::set<std::string> names;
    const auto add = [&names](const Products& p) {
        for (const char* n : p.names) names.insert(n);
    };
    for (const row_lists::Group& g : row_lists::groups) {
        for (const GetRef& r : g.getRows()) {
            add(r.row.gate);
            for (const Line& line : r.row.lines) add(line.only);
        }
        for (const SetRef& r : g.setRows())
            for (const Variant& v : r.row.variants) add(v.models);
    }
    return {names.begin(), names.end()};
}

// What one row prints for one answer on one product; `values` chooses the steps' answers.
struct Job {
    std::vector<BYTE> answer;
    int fd;
    std::string product;
    std::vector<uint8_t> values;

    // The step answer k, inside the step's range.
    int value(const Step& step, size_t k) const {
        const int v = k < values.size() ? values[k] : 0;
        return step.min + v % (step.max - step.min + 1);
    }

    std::string steps(std::span<const Step> list) const {
        std::string out;
        BYTE request[MAX_REQUEST] = {};
        size_t k = 0;
        for (const Step& step : list) {
            out += renderStep(step);
            applyAnswer(step, value(step, k++), request);
        }
        out.append(reinterpret_cast<const char*>(request), MAX_REQUEST);
        return out;
    }

    std::string render(const row_lists::Group& g, size_t item) const {
        const char* prod = product.c_str();
        if (item < g.getRows().size()) return renderGet(g.getRows()[item].row, fd, answer, prod);
        item -= g.getRows().size();
        if (item < g.renderList().size()) return g.renderList()[item].render(answer, fd, prod);
        item -= g.renderList().size();
        if (item < g.setRows().size()) {
            const SetRow& row = g.setRows()[item].row;
            std::string out = renderSetResult(row, fd, answer);
            if (const Variant* v = pickVariant(row, prod))
                out += steps(spanOf(v->steps));
            else
                out += renderNotSupported(row, prod);
            return out;
        }
        item -= g.setRows().size();
        const Step step = menuStep(g.menuRows()[item].row);
        return steps({&step, 1});
    }
};

size_t itemsOf(const row_lists::Group& g) {
    return g.getRows().size() + g.renderList().size() + g.setRows().size() + g.menuRows().size();
}

}  // namespace

// Layout: two bytes pick the row (over every group's rows in turn), one the product (a
// named one with or without its "\n", or text from the input), one the answer's length
// (0 to 64) followed by its bytes, one the descriptor; what is left answers the steps.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<std::string> products = namedProducts();
    static const size_t total = [] {
        size_t n = 0;
        for (const row_lists::Group& g : row_lists::groups) n += itemsOf(g);
        return n;
    }();
    if (total == 0) return 0;
    Input in{data, size};
    size_t item = (size_t(in.next()) << 8 | in.next()) % total;

    Job job;
    const uint8_t pick = in.next();
    if (pick / 2 < products.size()) {
        job.product = products[pick / 2];
    } else {
        for (size_t n = in.next() % 16; n > 0; --n) job.product += char(in.next());
    }
    if (pick % 2 == 0) job.product += '\n';
    job.answer.resize(in.next() % 65);
    for (BYTE& b : job.answer) b = in.next();
    job.fd = in.next();
    while (in.left > 0) job.values.push_back(in.next());

    for (const row_lists::Group& g : row_lists::groups) {
        if (item >= itemsOf(g)) {
            item -= itemsOf(g);
            continue;
        }
        const std::string first = job.render(g, item);
        FUZZ_CHECK(job.render(g, item) == first);
        break;
    }
    return 0;
}
