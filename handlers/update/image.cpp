// Image readers (raw binary, Intel HEX, Motorola S-record) and image validation.
#include "image.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>

namespace update {

namespace {

// Images larger than any controller's flash are refused before they are assembled.
constexpr uint64_t MAX_IMAGE_SPAN = 16u * 1024 * 1024;

std::string hex2(unsigned v) {
    char b[8];
    std::snprintf(b, sizeof b, "%02X", v & 0xFFu);
    return b;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Decodes pairs of hex digits; false on an odd count or a non-hex character.
bool hexBytes(const std::string& s, size_t from, Bytes* out) {
    if ((s.size() - from) % 2 != 0) return false;
    out->clear();
    for (size_t i = from; i < s.size(); i += 2) {
        int h = hexDigit(s[i]), l = hexDigit(s[i + 1]);
        if (h < 0 || l < 0) return false;
        out->push_back(static_cast<uint8_t>(h << 4 | l));
    }
    return true;
}

// Collects data records and assembles them; refuses overlaps.
class Assembler {
   public:
    bool add(uint64_t addr, const uint8_t* p, size_t n, int line, std::string* why) {
        if (n == 0) return true;
        if (addr + n > 0x100000000ull) {
            *why = "line " + std::to_string(line) + ": data runs past the 32-bit address space";
            return false;
        }
        // The chunk that starts at or before addr, and the one after it.
        auto next = chunks_.upper_bound(addr);
        if (next != chunks_.end() && next->first < addr + n) return overlap(next->first, line, why);
        if (next != chunks_.begin()) {
            auto prev = std::prev(next);
            uint64_t prevEnd = prev->first + prev->second.data.size();
            if (prevEnd > addr) return overlap(addr, line, why);
            if (prevEnd == addr) {  // extend the previous chunk: the common case
                prev->second.data.insert(prev->second.data.end(), p, p + n);
                return true;
            }
        }
        chunks_[addr] = Chunk{line, Bytes(p, p + n)};
        return true;
    }

    bool build(Image* out, std::string* why) const {
        if (chunks_.empty()) {
            *why = "no data records";
            return false;
        }
        uint64_t lo = chunks_.begin()->first;
        auto last = std::prev(chunks_.end());
        uint64_t hi = last->first + last->second.data.size();
        if (hi - lo > MAX_IMAGE_SPAN) {
            *why = "data spans " + hexAddr(lo) + " to " + hexAddr(hi) + ", more than 16 MiB";
            return false;
        }
        out->start = static_cast<uint32_t>(lo);
        out->data.assign(hi - lo, 0xFF);
        for (const auto& [a, c] : chunks_)
            std::copy(c.data.begin(), c.data.end(), out->data.begin() + (a - lo));
        return true;
    }

   private:
    struct Chunk {
        int line;
        Bytes data;
    };
    static bool overlap(uint64_t at, int line, std::string* why) {
        *why = "line " + std::to_string(line) + ": data at " + hexAddr(at) +
               " overlaps an earlier record";
        return false;
    }
    std::map<uint64_t, Chunk> chunks_;
};

// Splits text into lines, trimming CR and trailing blanks; calls f(lineNo, line) for each
// non-empty line until it returns false.
template <class F>
bool forEachLine(const std::string& text, F f) {
    size_t pos = 0;
    int lineNo = 0;
    while (pos < text.size()) {
        size_t nl = text.find('\n', pos);
        if (nl == std::string::npos) nl = text.size();
        std::string line = text.substr(pos, nl - pos);
        pos = nl + 1;
        ++lineNo;
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
            line.pop_back();
        size_t b = line.find_first_not_of(" \t");
        if (b == std::string::npos) continue;
        if (!f(lineNo, line.substr(b))) return false;
    }
    return true;
}

}  // namespace

const char* formatName(ImageFormat f) {
    switch (f) {
        case ImageFormat::IntelHex:
            return "Intel HEX";
        case ImageFormat::SRecord:
            return "S-record";
        case ImageFormat::Binary:
            break;
    }
    return "binary";
}

bool parseIntelHex(const std::string& text, Image* out, std::string* why) {
    Assembler asmb;
    uint64_t base = 0;  // from type 02 (segment << 4) or type 04 (upper 16 bits)
    bool sawEnd = false;
    bool ok = forEachLine(text, [&](int line, const std::string& s) {
        std::string at = "line " + std::to_string(line) + ": ";
        if (sawEnd) {
            *why = at + "data after the end-of-file record";
            return false;
        }
        Bytes r;
        if (s[0] != ':') {
            *why = at + "not an Intel HEX record (no ':')";
            return false;
        }
        if (!hexBytes(s, 1, &r) || r.size() < 5) {
            *why = at + "malformed record";
            return false;
        }
        size_t count = r[0];
        if (r.size() != count + 5) {
            *why = at + "length byte says " + std::to_string(count) + " data bytes, record has " +
                   std::to_string(static_cast<long>(r.size()) - 5);
            return false;
        }
        unsigned sum = 0;
        for (size_t i = 0; i + 1 < r.size(); ++i) sum += r[i];
        unsigned expect = (0x100 - (sum & 0xFF)) & 0xFF;
        if (r.back() != expect) {
            *why = at + "checksum " + hex2(r.back()) + ", expected " + hex2(expect);
            return false;
        }
        unsigned offset = static_cast<unsigned>(r[1]) << 8 | r[2];
        uint8_t type = r[3];
        const uint8_t* d = r.data() + 4;
        switch (type) {
            case 0x00:
                return asmb.add(base + offset, d, count, line, why);
            case 0x01:
                sawEnd = true;
                return true;
            case 0x02:
            case 0x04:
                if (count != 2) {
                    *why = at + "address record with " + std::to_string(count) + " data bytes";
                    return false;
                }
                base = type == 0x02 ? static_cast<uint64_t>(d[0] << 8 | d[1]) << 4
                                    : static_cast<uint64_t>(d[0] << 8 | d[1]) << 16;
                return true;
            case 0x03:
            case 0x05:
                return true;  // start address: the vector table says where to start
            default:
                *why = at + "unknown record type " + hex2(type);
                return false;
        }
    });
    if (!ok) return false;
    if (!sawEnd) {
        *why = "truncated: no end-of-file record";
        return false;
    }
    out->format = ImageFormat::IntelHex;
    return asmb.build(out, why);
}

bool parseSRecord(const std::string& text, Image* out, std::string* why) {
    Assembler asmb;
    bool sawEnd = false, sawCount = false;
    unsigned long dataRecords = 0;
    bool ok = forEachLine(text, [&](int line, const std::string& s) {
        std::string at = "line " + std::to_string(line) + ": ";
        if (sawEnd) {
            *why = at + "data after the termination record";
            return false;
        }
        if (s.size() < 2 || s[0] != 'S') {
            *why = at + "not an S-record (no 'S')";
            return false;
        }
        char t = s[1];
        static const char kTypes[] = "01235789";
        if (std::strchr(kTypes, t) == nullptr || t == '\0') {
            *why = at + "record type S" + std::string(1, t) + " is not a valid S-record type";
            return false;
        }
        Bytes r;
        if (!hexBytes(s, 2, &r) || r.empty()) {
            *why = at + "malformed record";
            return false;
        }
        if (r[0] + 1u != r.size()) {
            *why = at + "count byte says " + std::to_string(r[0]) + ", record has " +
                   std::to_string(r.size() - 1);
            return false;
        }
        unsigned sum = 0;
        for (size_t i = 0; i + 1 < r.size(); ++i) sum += r[i];
        unsigned expect = ~sum & 0xFF;
        if (r.back() != expect) {
            *why = at + "checksum " + hex2(r.back()) + ", expected " + hex2(expect);
            return false;
        }
        // Address length per type: S0/S1/S5/S9 2 bytes, S2/S6/S8 3, S3/S7 4.
        size_t alen = (t == '2' || t == '6' || t == '8') ? 3 : (t == '3' || t == '7') ? 4 : 2;
        if (r.size() < 2 + alen) {
            *why = at + "record too short for its address";
            return false;
        }
        uint64_t addr = 0;
        for (size_t i = 0; i < alen; ++i) addr = addr << 8 | r[1 + i];
        const uint8_t* d = r.data() + 1 + alen;
        size_t n = r.size() - 2 - alen;
        switch (t) {
            case '0':
                return true;  // header
            case '1':
            case '2':
            case '3':
                ++dataRecords;
                return asmb.add(addr, d, n, line, why);
            case '5':
            case '6':
                if (addr != dataRecords) {
                    *why = at + "record count says " + std::to_string(addr) + ", file has " +
                           std::to_string(dataRecords);
                    return false;
                }
                sawCount = true;
                return true;
            default:  // 7, 8, 9: termination with the start address
                sawEnd = true;
                return true;
        }
    });
    if (!ok) return false;
    // A file without a start address may end with its record count instead (srec_cat
    // writes it so); the count then proves that nothing was cut off.
    if (!sawEnd && !sawCount) {
        *why = "truncated: no termination record (S7, S8 or S9) nor record count (S5, S6)";
        return false;
    }
    out->format = ImageFormat::SRecord;
    return asmb.build(out, why);
}

ImageFormat detectFormat(const std::string& name, const std::string& content) {
    std::string ext;
    size_t dot = name.rfind('.');
    size_t slash = name.rfind('/');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash))
        ext = name.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ext == "hex" || ext == "ihx" || ext == "ihex") return ImageFormat::IntelHex;
    if (ext == "srec" || ext == "s19" || ext == "s28" || ext == "s37" || ext == "mot" ||
        ext == "sx")
        return ImageFormat::SRecord;
    if (ext == "bin") return ImageFormat::Binary;
    size_t b = content.find_first_not_of(" \t\r\n");
    if (b != std::string::npos && content[b] == ':') return ImageFormat::IntelHex;
    if (b != std::string::npos && content[b] == 'S' && b + 1 < content.size() &&
        content[b + 1] >= '0' && content[b + 1] <= '9')
        return ImageFormat::SRecord;
    return ImageFormat::Binary;
}

bool parseImage(const std::string& name, const std::string& content, uint32_t binaryBase,
                Image* out, std::string* why) {
    *out = Image{};
    switch (detectFormat(name, content)) {
        case ImageFormat::IntelHex:
            return parseIntelHex(content, out, why);
        case ImageFormat::SRecord:
            return parseSRecord(content, out, why);
        case ImageFormat::Binary:
            break;
    }
    if (content.empty()) {
        *why = "empty file";
        return false;
    }
    if (content.size() > MAX_IMAGE_SPAN) {
        *why = "larger than 16 MiB";
        return false;
    }
    out->format = ImageFormat::Binary;
    out->start = binaryBase;
    out->data.assign(content.begin(), content.end());
    return true;
}

bool readImageFile(const std::string& path, uint32_t binaryBase, Image* out, std::string* why) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        *why = std::strerror(errno);
        return false;
    }
    std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad()) {
        *why = "read error";
        return false;
    }
    if (content.empty()) {
        *why = "empty file";
        return false;
    }
    return parseImage(path, content, binaryBase, out, why);
}

std::string tagText(const Bytes& data, size_t offset) {
    std::string s;
    for (size_t i = offset; i < data.size() && s.size() < 64; ++i) {
        uint8_t c = data[i];
        if (c == 0x00 || c == 0xFF) break;
        if (c < 0x20 || c > 0x7E) return "";
        s.push_back(static_cast<char>(c));
    }
    return s;
}

Validation validateImage(const Image& img, const Limits& lim) {
    Validation v;
    auto fail = [&](std::string why) {
        v.why = std::move(why);
        return v;
    };
    if (img.data.empty()) return fail("the image holds no data");
    uint64_t end = static_cast<uint64_t>(img.start) + img.data.size();
    if (img.start < lim.appStart || end > lim.flashEnd)
        return fail("data at " + hexAddr(img.start) + "-" + hexAddr(end - 1) +
                    " lies outside the application region " + hexAddr(lim.appStart) + "-" +
                    hexAddr(static_cast<uint64_t>(lim.flashEnd) - 1));
    if (img.start != lim.appStart)
        return fail("the image starts at " + hexAddr(img.start) +
                    ", not at the application start " + hexAddr(lim.appStart) +
                    " where the vector table belongs");
    if (img.data.size() < 8) return fail("the image is too short for a vector table");
    auto word = [&](size_t off) {
        return static_cast<uint32_t>(img.data[off]) |
               static_cast<uint32_t>(img.data[off + 1]) << 8 |
               static_cast<uint32_t>(img.data[off + 2]) << 16 |
               static_cast<uint32_t>(img.data[off + 3]) << 24;
    };
    uint32_t sp = word(0), reset = word(4);
    if (sp <= lim.ramStart || sp > lim.ramEnd || sp % 4 != 0)
        return fail("bad vector table: initial stack pointer " + hexAddr(sp) +
                    " is not inside the RAM " + hexAddr(lim.ramStart) + "-" +
                    hexAddr(static_cast<uint64_t>(lim.ramEnd) - 1));
    if ((reset & 1u) == 0)
        return fail("bad vector table: reset vector " + hexAddr(reset) + " lacks the Thumb bit");
    if ((reset & ~1u) < img.start || (reset & ~1u) >= end)
        return fail("bad vector table: reset vector " + hexAddr(reset) +
                    " points outside the image");
    if (lim.versionAddress < img.start || lim.versionAddress >= end)
        return fail("no model tag: the version address " + hexAddr(lim.versionAddress) +
                    " lies outside the image");
    v.tag = tagText(img.data, lim.versionAddress - img.start);
    const std::string& m = lim.model;
    bool modelOk = !m.empty() && v.tag.compare(0, m.size(), m) == 0 &&
                   (v.tag.size() == m.size() || v.tag[m.size()] == ' ');
    if (modelOk && v.tag.size() > m.size()) v.version = v.tag.substr(m.size() + 1);
    v.ok = true;
    if (!modelOk) {
        v.modelMismatch = true;
        v.why = v.tag.empty()
                    ? "no model tag at " + hexAddr(lim.versionAddress) + " (expected '" + m + "')"
                    : "model tag '" + v.tag + "' at " + hexAddr(lim.versionAddress) +
                          " is not for model '" + m + "'";
    }
    return v;
}

uint32_t crc32(const uint8_t* p, size_t n, uint32_t crc) {
    static const auto table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (size_t i = 0; i < n; ++i) crc = table[(crc ^ p[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

std::string hexAddr(uint64_t v) {
    char b[24];
    std::snprintf(b, sizeof b, "0x%08llX", static_cast<unsigned long long>(v));
    return b;
}

}  // namespace update
