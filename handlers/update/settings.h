// What a firmware update needs to know about a controller: the keys of its update
// section as written, the defaults per controller type, and the size limits the
// frames impose.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "image.h"

namespace update {

// One update section (<MCU_UPDATE_INFO> or <CAN_UPDATE_INFO>) as written; a key not
// given stays empty and gets the controller type's default.
struct UpdateInfo {
    bool present = false;  // the section header was seen
    std::string filePath, fwModel;
    std::optional<unsigned long> mcuStartAddress, programRomStartAddress, mcuVersionAddress,
        mcuEndAddress, ramStartAddress, ramEndAddress;
    std::optional<int> writeSize, verifySize;
};

enum class Target { Mcu, Can };
const char* targetName(Target t);  // "mcu", "can"

struct Settings {
    Target target = Target::Mcu;
    std::string filePath;
    std::string model;
    uint32_t flashStart = 0;  // MCU_startAddress
    uint32_t appStart = 0;    // ProgramROM_startAddress
    uint32_t flashEnd = 0;    // MCU_endAddress (first address after the flash)
    uint32_t versionAddress = 0;
    uint32_t ramStart = 0, ramEnd = 0;
    int writeSize = 0, verifySize = 0;

    Limits limits() const;
};

// The defaults of a controller type (model: the product name without its line end).
Settings defaultSettings(Target t, const std::string& product);

// The largest WRITE_SIZE / VERIFY_SIZE whose frames still fit: a request's stuffed frame
// must fit the 1024-byte send buffer, and a read-back answer must stay under the
// receive decoder's 1024-byte read, even when every byte needs an escape.
int maxWriteSize(Target t);
int maxVerifySize(Target t);

// Applies the section over the defaults and checks the result. False with a one-line
// reason naming the key ("WRITE_SIZE 600 is larger than a frame can carry (at most 500)").
bool resolveSettings(Target t, const UpdateInfo& info, const std::string& product, Settings* out,
                     std::string* why);

}  // namespace update
