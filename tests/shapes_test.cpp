// The row shapes: formats that do not fit their values do not build, and every data row
// and render the handler groups list survives any answer on any product, the same way
// each time.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "row_lists.h"
#include "shapes/fmt.h"
#include "system/control.h"
#include "system/status.h"

using namespace shapes;

namespace {

// A string literal as a template argument, so a requires-expression can try to build
// a Fmt from it at compile time.
template <size_t N>
struct Literal {
    char text[N];
    consteval Literal(const char (&s)[N]) { std::copy_n(s, N, text); }
};

template <class F, Literal L>
concept Builds = requires {
    typename std::integral_constant<int, (F(L.text), 0)>;
};

static_assert(Builds<Fmt<int>, "Temperature = %d (-27 ~ 125)">);
static_assert(Builds<Fmt<int>, "CAN Power Status : 0x%02X">);
static_assert(Builds<Fmt<int>, "HW Version = %c, 100%%">);
static_assert(Builds<Fmt<int>, "Not found any FAN mode !!!">);  // the value may go unused
static_assert(Builds<Fmt<int, int>, "%02d:%-3d">);
static_assert(Builds<Fmt<const char*>, "Read AST = %s">);
static_assert(!Builds<Fmt<int>, "Read AST = %s">);       // a number given to %s
static_assert(!Builds<Fmt<const char*>, "Count = %d">);  // text given to %d
static_assert(!Builds<Fmt<int>, "%d and %d">);           // more conversions than values
static_assert(!Builds<Fmt<int, const char*>, "%d %d">);  // the second is text
static_assert(!Builds<Fmt<int>, "%ld">);                 // a long is not what rows pass
static_assert(!Builds<Fmt<int>, "%f">);
static_assert(!Builds<Fmt<int>, "%*d">);

const char* const PRODUCTS[] = {"KX07\n", "KX22\n", "KX23\n", "KX25\n", "KX34\n",
                                "KX56\n", "KX71\n", "KX99\n", "\n"};

// Answers of every length up to 20: all zero, all 0xFF, and random bytes.
std::vector<std::vector<BYTE>> answers() {
    std::vector<std::vector<BYTE>> all;
    std::mt19937 random(7);
    for (size_t n = 0; n <= 20; ++n) {
        all.emplace_back(n, 0x00);
        all.emplace_back(n, 0xFF);
        std::vector<BYTE> r(n);
        for (BYTE& b : r) b = static_cast<BYTE>(random());
        all.push_back(r);
    }
    return all;
}

// Everything the listed rows and renders print for one answer on one product.
std::string renderAll(const std::vector<BYTE>& answer, const char* product) {
    std::string out;
    for (const row_lists::Group& g : row_lists::groups) {
        for (const GetRef& r : g.getRows()) out += renderGet(r.row, 3, answer, product);
        for (const RenderRef& r : g.renderList()) out += r.render(answer, 3, product);
        for (const SetRef& r : g.setRows()) {
            out += renderSetResult(r.row, 3, answer);
            if (const Variant* v = pickVariant(r.row, product)) {
                BYTE request[MAX_REQUEST] = {};
                for (const Step& step : v->steps) {
                    out += renderStep(step);
                    const int value = answer.empty()
                                          ? step.min
                                          : step.min + answer[0] % (step.max - step.min + 1);
                    applyAnswer(step, value, request);
                }
                out.append(reinterpret_cast<const char*>(request), MAX_REQUEST);
            } else {
                out += renderNotSupported(r.row, product);
            }
        }
        for (const MenuRef& r : g.menuRows()) out += renderStep(menuStep(r.row));
    }
    return out;
}

TEST(Shapes, EveryRowRendersAnyAnswerOnAnyProductTheSameWayTwice) {
    // The table of lists holds the system groups' lists.
    const auto listed = [](auto list) {
        const void* p = list.data();
        for (const row_lists::Group& g : row_lists::groups)
            if (p == g.getRows().data() || p == g.renderList().data() || p == g.setRows().data() ||
                p == g.menuRows().data())
                return !list.empty();
        return false;
    };
    ASSERT_TRUE(listed(system_status::rows));
    ASSERT_TRUE(listed(system_status::renders));
    ASSERT_TRUE(listed(system_control::rows));
    ASSERT_TRUE(listed(system_control::menus));
    for (const std::vector<BYTE>& answer : answers())
        for (const char* product : PRODUCTS)
            EXPECT_EQ(renderAll(answer, product), renderAll(answer, product))
                << product << " " << answer.size() << " bytes";
}

// The request bytes a step may fill stay inside the request the row sends.
TEST(Shapes, StepsFillOnlyTheBytesTheRowSends) {
    for (const row_lists::Group& g : row_lists::groups)
        for (const SetRef& r : g.setRows()) {
            EXPECT_LE(r.row.length, MAX_REQUEST);
            for (const Variant& v : r.row.variants)
                for (const Step& step : v.steps) {
                    EXPECT_LT(step.at + step.width - 1, r.row.length) << step.title;
                    EXPECT_LE(step.min, step.max);
                    if (step.map.size() != 0) {
                        EXPECT_EQ(int(step.map.size()), step.max + 1);
                    }
                }
        }
}

}  // namespace
