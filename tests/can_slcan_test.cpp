// The serial-line CAN protocol engine: answers, actions and the frame lines.
#include <gtest/gtest.h>

#include <string>

#include "can/slcan.h"

using can::SlcanAction;
using can::SlcanEngine;

namespace {

// What the engine does with `input`, as text: actions in brackets, replies as written
// (CR shown as '|', BEL as '!').
std::string run(SlcanEngine& e, const std::string& input) {
    std::string out;
    for (const SlcanAction& a : e.feed(input.data(), input.size())) {
        switch (a.kind) {
            case SlcanAction::Reply:
                for (char c : a.text) out += c == '\r' ? '|' : c == '\a' ? '!' : c;
                break;
            case SlcanAction::Open:
                out += "[open]";
                break;
            case SlcanAction::Close:
                out += "[close]";
                break;
            case SlcanAction::SetBitRate:
                out += "[rate " + std::to_string(a.rateCode) + "]";
                break;
            case SlcanAction::Send:
                out += "[send " + can::frameText(a.frame) + "]";
                break;
        }
    }
    return out;
}

}  // namespace

TEST(Slcan, AnswersEachCommand) {
    struct Case {
        const char* before;  // brings the engine into its state first
        std::string input;
        const char* does;
    } cases[] = {
        {"", "S6\r", "[rate 6]|"},
        {"", "S9\r", "!"},
        {"O\r", "S6\r", "!"},  // no rate change while open
        {"", "O\r", "[open]|"},
        {"O\r", "O\r", "!"},
        {"O\r", "C\r", "[close]|"},
        {"", "C\r", "[close]|"},
        {"O\r", "t1234DEADBEEF\r", "[send 123#DEADBEEF]z|"},
        {"O\r", "T1F3344552AABB\r", "[send 1F334455#AABB]Z|"},
        {"O\r", "r7FF3\r", "[send 7FF#R3]z|"},
        {"O\r", "R000001230\r", "[send 00000123#R]Z|"},
        {"O\r", "t1230\r", "[send 123#]z|"},
        {"", "t1230\r", "!"},                     // closed: nothing sent
        {"O\r", "t1234DEAD\r", "!"},              // fewer data bytes than the length
        {"O\r", "t8001AA\r", "!"},                // standard identifier above 7FF
        {"O\r", "t12391122334455667788\r", "!"},  // length 9
        {"O\r", "t12G1AA\r", "!"},
        {"", "V\r", "V1013|"},
        {"", "N\r", "NB001|"},
        {"O\r", "F\r", "F00|"},
        {"", "Z1\r", "|"},
        {"", "X\r", "!"},
        {"", "s031C\r", "!"},  // bit-timing registers are not offered
        {"", "V\r\n\rV\r", "V1013|V1013|"},
        {"", std::string(70, 'A') + "\rV\r", "!V1013|"},
    };
    for (const Case& c : cases) {
        SlcanEngine e;
        run(e, c.before);
        EXPECT_EQ(run(e, c.input), c.does) << c.before << " then " << c.input;
    }
}

TEST(Slcan, CommandsSplitAcrossReads) {
    SlcanEngine e;
    EXPECT_EQ(run(e, "O"), "");
    EXPECT_EQ(run(e, "\rt12"), "[open]|");
    EXPECT_EQ(run(e, "31A"), "");
    EXPECT_EQ(run(e, "A\r"), "[send 123#AA]z|");
}

TEST(Slcan, FrameLines) {
    struct Case {
        const char* frame;
        const char* line;
    } cases[] = {
        {"123#DEADBEEF", "t1234DEADBEEF\r"},
        {"1F334455#", "T1F3344550\r"},
        {"7FF#R3", "r7FF3\r"},
        {"00000001#R", "R000000010\r"},
    };
    for (const Case& c : cases) {
        can::Frame f;
        std::string why;
        ASSERT_TRUE(can::parseFrame(c.frame, &f, &why)) << c.frame;
        EXPECT_EQ(SlcanEngine::frameLine(f), c.line);
        // What the engine takes back is the same frame.
        SlcanEngine e;
        run(e, "O\r");
        std::string line = c.line;
        EXPECT_EQ(run(e, line), "[send " + can::frameText(f) + "]" + (f.ext ? "Z|" : "z|"));
    }
}
