// Firmware images: raw binary, Intel HEX and Motorola S-record files read into one
// contiguous block of flash contents (gaps filled with the erased value 0xFF), and the
// checks an image must pass before anything is sent to a board.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace update {

using Bytes = std::vector<uint8_t>;

enum class ImageFormat { Binary, IntelHex, SRecord };
const char* formatName(ImageFormat f);

struct Image {
    ImageFormat format = ImageFormat::Binary;
    uint32_t start = 0;  // address of data[0]
    Bytes data;          // contiguous; gaps between records hold 0xFF
    uint32_t end() const { return start + static_cast<uint32_t>(data.size()); }
};

// Reads an image from text or bytes already in memory. `name` is used in messages only;
// `binaryBase` is where a raw binary is placed. False with a one-line reason in *why
// ("line 12: checksum 3A, expected 3B").
bool parseIntelHex(const std::string& text, Image* out, std::string* why);
bool parseSRecord(const std::string& text, Image* out, std::string* why);
// The format from the file name's extension, else from the first bytes.
ImageFormat detectFormat(const std::string& name, const std::string& content);
bool parseImage(const std::string& name, const std::string& content, uint32_t binaryBase,
                Image* out, std::string* why);
// Reads the file and parses it; *why starts with nothing (the caller names the file).
bool readImageFile(const std::string& path, uint32_t binaryBase, Image* out, std::string* why);

// What an image must fit: the application region, the RAM its stack pointer lies in,
// and where its model tag sits.
struct Limits {
    uint32_t appStart = 0;  // ProgramROM_startAddress
    uint32_t flashEnd = 0;  // MCU_endAddress: first address after the flash
    uint32_t versionAddress = 0;
    uint32_t ramStart = 0;
    uint32_t ramEnd = 0;  // first address after the RAM
    std::string model;    // FW_MODEL
};

struct Validation {
    bool ok = false;
    bool modelMismatch = false;  // only this one can be overridden (--force)
    std::string why;             // the first problem found
    std::string tag;             // the model tag text, "KX07 1.2.0"
    std::string version;         // the text after the model and a blank, "1.2.0"
};

// Checks the region, that the image is not empty, the Cortex-M vector table (initial
// stack pointer inside the RAM, reset vector inside the image with the Thumb bit) and
// the model tag at versionAddress.
Validation validateImage(const Image& img, const Limits& lim);

// `v` as 0x and at least eight upper-case hex digits, as addresses appear in messages.
std::string hexAddr(uint64_t v);

// The text at `offset` of `data` up to NUL, 0xFF or the end, when it is printable.
std::string tagText(const Bytes& data, size_t offset);

// CRC-32 (reflected polynomial 0xEDB88320, initial and final XOR 0xFFFFFFFF): the check
// code the boot loader computes over a flash range.
uint32_t crc32(const uint8_t* p, size_t n, uint32_t crc = 0);

}  // namespace update
