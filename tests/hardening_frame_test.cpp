// Frame structure on the line: an escape byte followed by anything but 00-03, or a start
// code inside a frame, makes that frame invalid before any checksum is looked at.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "mcu_base.h"

namespace {

using Bytes = std::vector<BYTE>;

struct Framing {
    const char* name;
    int type, mode;
    BYTE start, end, escape;
    bool crc;
};
const Framing kFramings[] = {
    {"ST", MCU_TYPE_ST, ST_MODE_AP, 0xF1, 0xF2, 0xF0, true},
    {"NXP", MCU_TYPE_NXP, NXP_MODE_AP, 0xC1, 0xC2, 0xC0, false},
    {"NXP update", MCU_TYPE_NXP, NXP_MODE_UPDATE, 0xF1, 0xF2, 0xF0, false},
};

std::unique_ptr<MCU_CONTENT> context(const Framing& f) {
    std::unique_ptr<MCU_CONTENT> m(new MCU_CONTENT{});
    m->fd = -1;
    m->mcuType = f.type;
    (f.type == MCU_TYPE_NXP ? m->nxpMode : m->stMode) = f.mode;
    m->lock = 1;
    return m;
}

int decode(MCU_CONTENT* m, const Bytes& b) {
    return m->mcuType == MCU_TYPE_NXP ? NXP_DecodeBytes(m, b.data(), unsigned(b.size()))
                                      : ST_DecodeBytes(m, b.data(), unsigned(b.size()));
}

Bytes answerOf(const MCU_CONTENT* m) {
    if (m->lock != 0) return {};
    return Bytes(m->CommandResponseData, m->CommandResponseData + m->CommandResponseDataLength);
}

// A frame as it goes on the line: the inner bytes (with an ST checksum) escaped.
Bytes line(const Framing& f, Bytes inner) {
    if (f.crc) inner.push_back(Get_CRC8(inner.data(), unsigned(inner.size())));
    Bytes out(2 * inner.size() + 2);
    out.resize(stuffFrame(f.start, f.end, f.escape, inner.data(), unsigned(inner.size()),
                          out.data(), unsigned(out.size())));
    return out;
}

Bytes plain(const Framing& f, Bytes inner) {
    if (f.crc) inner.push_back(Get_CRC8(inner.data(), unsigned(inner.size())));
    inner.insert(inner.begin(), f.start);
    inner.push_back(f.end);
    return inner;
}

Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

}  // namespace

TEST(HardeningFrame, StructureDecidesBeforeTheChecksum) {
    const Bytes kGood = {0x00, 0x02, 0x0C, 0x28};
    for (const Framing& f : kFramings) {
        SCOPED_TRACE(f.name);
        const BYTE S = f.start, E = f.end, X = f.escape;
        Bytes good = line(f, kGood);
        // The same content with the data byte 0x28 replaced by start+2 (sent escaped).
        Bytes escapedInner = {0x00, 0x02, 0x0C, BYTE(X + 3)};
        struct Case {
            const char* what;
            Bytes onLine;
            Bytes answer;  // empty: nothing accepted
        };
        // An invalid escape whose checksum is made to match: only the structure rejects it.
        Bytes badEscapeInner = {0x00, 0x02, X, 0x05};
        Bytes badEscape = {S, 0x00, 0x02, X, 0x05};
        if (f.crc) badEscape.push_back(Get_CRC8(badEscapeInner.data(), 4));
        badEscape.push_back(E);
        Bytes innerStart = {S, 0x00, 0x02, S, 0x0C};
        const Case cases[] = {
            {"a good frame", good, plain(f, kGood)},
            {"escape followed by 05", badEscape, {}},
            {"escape followed by the end code", {S, 0x00, 0x02, X, E}, {}},
            {"start code inside, then a good frame", cat({innerStart, good}), plain(f, kGood)},
            {"good frame after a cut-off one", cat({{S, 0x00, 0x02}, good}), plain(f, kGood)},
            {"escape+3 data byte is accepted", line(f, escapedInner), plain(f, escapedInner)},
        };
        for (const Case& c : cases) {
            SCOPED_TRACE(c.what);
            auto m = context(f);
            decode(m.get(), c.onLine);
            EXPECT_EQ(answerOf(m.get()), c.answer);
        }
    }
}

namespace {

// The test's own reading of the line: every start code up to the next end code, kept
// only when no start code comes between and every escape is followed by 00-03; the
// frames unescaped.
std::vector<Bytes> wellFormedFrames(const Framing& f, const Bytes& in) {
    std::vector<Bytes> frames;
    for (size_t s = 0; s < in.size(); ++s) {
        if (in[s] != f.start) continue;
        Bytes frame{f.start};
        bool ok = true;
        size_t j = s + 1;
        for (; j < in.size() && in[j] != f.end; ++j) {
            if (in[j] == f.start) ok = false;
            if (in[j] != f.escape) {
                frame.push_back(in[j]);
                continue;
            }
            if (j + 1 >= in.size() || in[j + 1] > 3) {
                ok = false;
                continue;
            }
            frame.push_back(BYTE(f.escape + in[++j]));
        }
        if (!ok || j >= in.size()) continue;
        frame.push_back(f.end);
        frames.push_back(frame);
    }
    return frames;
}

bool inside(const Bytes& part, const Bytes& whole) {
    return std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end();
}

}  // namespace

TEST(HardeningFrame, NoiseYieldsOnlyWellFormedFrames) {
    std::mt19937 rng(20261123);
    for (const Framing& f : kFramings) {
        SCOPED_TRACE(f.name);
        const BYTE special[] = {f.start, f.end, f.escape, 0x00, 0x01, 0x02, 0x03};
        int accepted = 0;
        for (int run = 0; run < 2500; ++run) {
            Bytes noise(4 + rng() % 40);
            for (BYTE& b : noise) b = rng() % 2 ? special[rng() % sizeof special] : BYTE(rng());
            auto m = context(f);
            // Fed in up to three reads; each answer is looked at as it is stored.
            size_t at = 0;
            while (at < noise.size()) {
                size_t n = std::min(noise.size() - at, size_t(1 + rng() % noise.size()));
                decode(m.get(), Bytes(noise.begin() + at, noise.begin() + at + n));
                at += n;
                Bytes answer = answerOf(m.get());
                if (answer.empty()) continue;
                ++accepted;
                bool fromALineFrame = false;
                for (const Bytes& frame : wellFormedFrames(f, noise))
                    fromALineFrame = fromALineFrame || inside(answer, frame);
                EXPECT_TRUE(fromALineFrame)
                    << "run " << run << ": " << testing::PrintToString(noise);
                if (f.crc) {
                    EXPECT_EQ(Get_CRC8(answer.data() + 1, unsigned(answer.size() - 3)),
                              answer[answer.size() - 2]);
                }
                m->lock = 1;
            }
        }
        EXPECT_GT(accepted, 0);  // the noise does reach the answer path
    }
}
