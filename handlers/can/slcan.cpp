// The serial-line CAN protocol engine.
#include "can/slcan.h"

namespace can {

namespace {

constexpr char CR = '\r';
constexpr char BEL = '\a';
// A line longer than any command is junk: it is answered with BEL.
constexpr size_t MAX_LINE = 64;

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

SlcanAction reply(std::string text) {
    SlcanAction a;
    a.text = std::move(text);
    return a;
}

// t/T/r/R lines: identifier (3 or 8 digits), length digit, data (2 digits a byte).
bool parseFrameCommand(const std::string& l, Frame* f) {
    char kind = l[0];
    bool ext = kind == 'T' || kind == 'R';
    bool rtr = kind == 'r' || kind == 'R';
    size_t idLen = ext ? 8 : 3;
    if (l.size() < idLen + 2) return false;
    uint32_t id = 0;
    for (size_t i = 1; i <= idLen; ++i) {
        int d = hexDigit(l[i]);
        if (d < 0) return false;
        id = id << 4 | static_cast<uint32_t>(d);
    }
    if (id > (ext ? EFF_MASK : SFF_MASK)) return false;
    char len = l[idLen + 1];
    if (len < '0' || len > '8') return false;
    Frame out;
    out.id = id;
    out.ext = ext;
    out.rtr = rtr;
    out.dlc = static_cast<uint8_t>(len - '0');
    size_t want = idLen + 2 + (rtr ? 0 : 2u * out.dlc);
    if (l.size() != want) return false;
    for (int k = 0; k < out.dlc && !rtr; ++k) {
        int hi = hexDigit(l[idLen + 2 + 2 * k]), lo = hexDigit(l[idLen + 3 + 2 * k]);
        if (hi < 0 || lo < 0) return false;
        out.data[k] = static_cast<uint8_t>(hi << 4 | lo);
    }
    *f = out;
    return true;
}

}  // namespace

std::vector<SlcanAction> SlcanEngine::feed(const char* bytes, size_t n) {
    std::vector<SlcanAction> out;
    for (size_t i = 0; i < n; ++i) {
        char c = bytes[i];
        if (c == CR || c == '\n') {
            // An empty line (the LF of CR LF, or a bare CR) is ignored.
            if (!pending_.empty() && !discarding_) command(pending_, &out);
            pending_.clear();
            discarding_ = false;
        } else if (discarding_) {
            continue;
        } else if (pending_.size() < MAX_LINE) {
            pending_.push_back(c);
        } else {
            // One BEL for the whole over-long line; the rest of it is dropped.
            pending_.clear();
            discarding_ = true;
            out.push_back(reply(std::string(1, BEL)));
        }
    }
    return out;
}

void SlcanEngine::command(const std::string& l, std::vector<SlcanAction>* out) {
    const std::string ok(1, CR), error(1, BEL);
    SlcanAction a;
    switch (l[0]) {
        case 'O':
        case 'L':  // listen only: the bridge does not send anyway unless asked
            if (l.size() != 1 || open_) break;
            open_ = true;
            a.kind = SlcanAction::Open;
            out->push_back(a);
            out->push_back(reply(ok));
            return;
        case 'C':
            if (l.size() != 1) break;
            // Closing a closed channel is harmless; clients do it before setting a rate.
            open_ = false;
            a.kind = SlcanAction::Close;
            out->push_back(a);
            out->push_back(reply(ok));
            return;
        case 'S':
            if (l.size() != 2 || l[1] < '0' || l[1] > '8' || open_) break;
            a.kind = SlcanAction::SetBitRate;
            a.rateCode = l[1] - '0';
            out->push_back(a);
            out->push_back(reply(ok));
            return;
        case 't':
        case 'T':
        case 'r':
        case 'R':
            if (!open_ || !parseFrameCommand(l, &a.frame)) break;
            a.kind = SlcanAction::Send;
            out->push_back(a);
            out->push_back(reply(l[0] == 't' || l[0] == 'r' ? "z\r" : "Z\r"));
            return;
        case 'V':
            if (l.size() != 1) break;
            out->push_back(reply("V1013\r"));
            return;
        case 'N':
            if (l.size() != 1) break;
            out->push_back(reply("NB001\r"));
            return;
        case 'F':
            if (l.size() != 1 || !open_) break;
            out->push_back(reply("F00\r"));
            return;
        case 'Z':
            if (l.size() != 2 || (l[1] != '0' && l[1] != '1')) break;
            out->push_back(reply(ok));
            return;
        default:
            break;
    }
    out->push_back(reply(error));
}

std::string SlcanEngine::frameLine(const Frame& f) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string s(1, f.ext ? (f.rtr ? 'R' : 'T') : (f.rtr ? 'r' : 't'));
    int digits = f.ext ? 8 : 3;
    for (int k = digits - 1; k >= 0; --k) s.push_back(kHex[(f.id >> (4 * k)) & 15]);
    s.push_back(static_cast<char>('0' + (f.dlc > 8 ? 8 : f.dlc)));
    for (int k = 0; k < f.dlc && k < 8 && !f.rtr; ++k) {
        s.push_back(kHex[f.data[k] >> 4]);
        s.push_back(kHex[f.data[k] & 15]);
    }
    s.push_back(CR);
    return s;
}

}  // namespace can
