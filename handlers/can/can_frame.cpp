// cansend syntax, candump filters, line and log formats, the log reader.
#include "can_frame.h"

#include <cctype>
#include <cstring>
#include <ctime>

namespace can {

namespace {

const char kHex[] = "0123456789ABCDEF";

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Parses exactly the hex digits of `s` (1 to 8 of them).
bool parseHex32(const std::string& s, uint32_t* out) {
    if (s.empty() || s.size() > 8) return false;
    uint32_t v = 0;
    for (char c : s) {
        int d = hexValue(c);
        if (d < 0) return false;
        v = v << 4 | static_cast<uint32_t>(d);
    }
    *out = v;
    return true;
}

void putHexByte(std::string* out, uint8_t b) {
    out->push_back(kHex[b >> 4]);
    out->push_back(kHex[b & 15]);
}

void putId(std::string* out, const Frame& f) {
    int digits = f.ext ? 8 : 3;
    for (int k = digits - 1; k >= 0; --k) out->push_back(kHex[(f.id >> (4 * k)) & 15]);
}

// Appends v as decimal, zero-padded to `width` digits.
void putDec(std::string* out, uint64_t v, int width) {
    char buf[24];
    int n = 0;
    do {
        buf[n++] = static_cast<char>('0' + v % 10);
        v /= 10;
    } while (v != 0);
    for (int k = n; k < width; ++k) out->push_back('0');
    while (n > 0) out->push_back(buf[--n]);
}

void putSecondsMicros(std::string* out, int64_t us, int width) {
    if (us < 0) us = 0;
    putDec(out, static_cast<uint64_t>(us / 1000000), width);
    out->push_back('.');
    putDec(out, static_cast<uint64_t>(us % 1000000), 6);
}

}  // namespace

bool parseFrame(const std::string& text, Frame* out, std::string* why) {
    Frame f;
    size_t hash = text.find('#');
    if (hash == std::string::npos) {
        *why = "no '#' between identifier and data";
        return false;
    }
    std::string id = text.substr(0, hash);
    if (id.size() != 3 && id.size() != 8) {
        *why = "identifier must have 3 (standard) or 8 (extended) hex digits";
        return false;
    }
    if (!parseHex32(id, &f.id)) {
        *why = "identifier is not hexadecimal";
        return false;
    }
    f.ext = id.size() == 8;
    if (f.id > (f.ext ? EFF_MASK : SFF_MASK)) {
        *why = f.ext ? "extended identifier above 1FFFFFFF" : "standard identifier above 7FF";
        return false;
    }
    std::string rest = text.substr(hash + 1);
    if (!rest.empty() && rest[0] == '#') {
        *why = "CAN FD frames are not supported";
        return false;
    }
    if (!rest.empty() && (rest[0] == 'R' || rest[0] == 'r')) {
        f.rtr = true;
        if (rest.size() == 2 && rest[1] >= '0' && rest[1] <= '8') {
            f.dlc = static_cast<uint8_t>(rest[1] - '0');
        } else if (rest.size() != 1) {
            *why = "remote request length must be one digit 0-8";
            return false;
        }
        *out = f;
        return true;
    }
    size_t i = 0;
    while (i < rest.size()) {
        if (rest[i] == '.') {
            ++i;
            continue;
        }
        if (i + 1 >= rest.size() || hexValue(rest[i]) < 0 || hexValue(rest[i + 1]) < 0) {
            *why = "data must be pairs of hex digits";
            return false;
        }
        if (f.dlc == 8) {
            *why = "more than 8 data bytes";
            return false;
        }
        f.data[f.dlc++] = static_cast<uint8_t>(hexValue(rest[i]) << 4 | hexValue(rest[i + 1]));
        i += 2;
    }
    *out = f;
    return true;
}

bool parseFilter(const std::string& text, Filter* out, std::string* why) {
    size_t sep = text.find_first_of(":~");
    if (sep == std::string::npos) {
        *why = "filter must be ID:MASK or ID~MASK";
        return false;
    }
    Filter f;
    std::string id = text.substr(0, sep), mask = text.substr(sep + 1);
    if (!parseHex32(id, &f.id) || !parseHex32(mask, &f.mask)) {
        *why = "filter identifier and mask must be 1 to 8 hex digits";
        return false;
    }
    f.inverted = text[sep] == '~';
    // As candump: eight digits name an extended identifier (the flag is compared only
    // when the mask holds it too, as in 80000123:DFFFFFFF).
    if (id.size() == 8) f.id |= EFF_FLAG;
    *out = f;
    return true;
}

bool ChannelSpec::passes(const Frame& f) const {
    if (filters.empty()) return true;
    for (const Filter& flt : filters) {
        bool m = flt.matches(f);
        if (join && !m) return false;
        if (!join && m) return true;
    }
    return join;
}

bool parseChannelSpec(const std::string& text, ChannelSpec* out, std::string* why) {
    ChannelSpec spec;
    size_t pos = text.find(',');
    spec.name = text.substr(0, pos);
    if (spec.name.empty()) {
        *why = "empty channel name";
        return false;
    }
    while (pos != std::string::npos) {
        size_t next = text.find(',', pos + 1);
        std::string item = text.substr(pos + 1, next == std::string::npos ? next : next - pos - 1);
        pos = next;
        if (item == "j" || item == "J") {
            spec.join = true;
            continue;
        }
        Filter f;
        if (!parseFilter(item, &f, why)) {
            *why = "'" + item + "': " + *why;
            return false;
        }
        spec.filters.push_back(f);
    }
    *out = std::move(spec);
    return true;
}

void formatLine(std::string* out, Stamp stamp, int64_t stampUs, const std::string& name,
                int nameWidth, const Frame& f) {
    out->push_back(' ');
    switch (stamp) {
        case Stamp::None:
            break;
        case Stamp::Absolute:
            out->push_back('(');
            putSecondsMicros(out, stampUs, 10);
            out->append(") ");
            break;
        case Stamp::Date: {
            time_t secs = static_cast<time_t>(stampUs / 1000000);
            struct tm tm;
            localtime_r(&secs, &tm);
            char buf[32];
            size_t n = strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tm);
            out->push_back('(');
            out->append(buf, n);
            out->push_back('.');
            putDec(out, static_cast<uint64_t>(stampUs % 1000000), 6);
            out->append(") ");
            break;
        }
        case Stamp::Delta:
        case Stamp::Zero:
            out->push_back('(');
            putSecondsMicros(out, stampUs, 3);
            out->append(") ");
            break;
    }
    out->push_back(' ');
    for (int k = static_cast<int>(name.size()); k < nameWidth; ++k) out->push_back(' ');
    out->append(name);
    out->append("  ");
    putId(out, f);
    out->append("   [");
    out->push_back(static_cast<char>('0' + (f.dlc > 8 ? 8 : f.dlc)));
    out->push_back(']');
    if (f.rtr) {
        out->append("  remote request");
        return;
    }
    if (f.dlc > 0) out->push_back(' ');
    for (int k = 0; k < f.dlc && k < 8; ++k) {
        out->push_back(' ');
        putHexByte(out, f.data[k]);
    }
}

std::string frameText(const Frame& f) {
    std::string s;
    putId(&s, f);
    s.push_back('#');
    if (f.rtr) {
        s.push_back('R');
        if (f.dlc > 0) s.push_back(static_cast<char>('0' + f.dlc));
        return s;
    }
    for (int k = 0; k < f.dlc && k < 8; ++k) putHexByte(&s, f.data[k]);
    return s;
}

void formatLogLine(std::string* out, int64_t epochUs, const std::string& name, const Frame& f) {
    out->push_back('(');
    putSecondsMicros(out, epochUs, 10);
    out->append(") ");
    out->append(name);
    out->push_back(' ');
    putId(out, f);
    out->push_back('#');
    if (f.rtr) {
        out->push_back('R');
        if (f.dlc > 0) out->push_back(static_cast<char>('0' + f.dlc));
    } else {
        for (int k = 0; k < f.dlc && k < 8; ++k) putHexByte(out, f.data[k]);
    }
    out->push_back('\n');
}

bool parseLogLine(const std::string& line, LogRecord* out, std::string* why) {
    // (SECONDS.MICROS) CHANNEL FRAME [anything, e.g. a direction flag]
    if (line.size() < 3 || line[0] != '(') {
        *why = "expected '(' and a timestamp";
        return false;
    }
    size_t close = line.find(')');
    size_t dot = line.find('.');
    if (close == std::string::npos || dot == std::string::npos || dot > close) {
        *why = "timestamp must be (SECONDS.MICROSECONDS)";
        return false;
    }
    std::string secs = line.substr(1, dot - 1), frac = line.substr(dot + 1, close - dot - 1);
    if (secs.empty() || frac.empty() || frac.size() > 9 ||
        secs.find_first_not_of("0123456789") != std::string::npos ||
        frac.find_first_not_of("0123456789") != std::string::npos || secs.size() > 12) {
        *why = "timestamp must be (SECONDS.MICROSECONDS)";
        return false;
    }
    int64_t us = std::stoll(secs) * 1000000;
    std::string six = (frac + "000000").substr(0, 6);
    us += std::stoll(six);
    size_t p = close + 1;
    auto skipBlanks = [&] {
        while (p < line.size() && (line[p] == ' ' || line[p] == '\t')) ++p;
    };
    auto word = [&] {
        size_t s = p;
        while (p < line.size() && line[p] != ' ' && line[p] != '\t') ++p;
        return line.substr(s, p - s);
    };
    skipBlanks();
    std::string channel = word();
    skipBlanks();
    std::string frame = word();
    if (channel.empty() || frame.empty()) {
        *why = "expected a channel and a frame after the timestamp";
        return false;
    }
    LogRecord r;
    if (!parseFrame(frame, &r.frame, why)) {
        *why = "'" + frame + "': " + *why;
        return false;
    }
    r.epochUs = us;
    r.channel = channel;
    *out = std::move(r);
    return true;
}

bool readLog(FILE* f, std::vector<LogRecord>* out, std::string* why) {
    char* raw = nullptr;
    size_t cap = 0;
    ssize_t n;
    int lineNo = 0;
    bool ok = true;
    while ((n = getline(&raw, &cap, f)) >= 0) {
        ++lineNo;
        std::string line(raw, static_cast<size_t>(n));
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        LogRecord r;
        if (!parseLogLine(line, &r, why)) {
            *why = "line " + std::to_string(lineNo) + ": " + *why;
            ok = false;
            break;
        }
        r.line = lineNo;
        out->push_back(std::move(r));
    }
    free(raw);
    return ok;
}

std::string logFileName(int64_t epochSeconds) {
    time_t t = static_cast<time_t>(epochSeconds);
    struct tm tm;
    localtime_r(&t, &tm);
    char buf[64];
    strftime(buf, sizeof buf, "candump-%Y-%m-%d_%H%M%S.log", &tm);
    return buf;
}

}  // namespace can
