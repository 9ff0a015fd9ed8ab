// Update settings: defaults per controller type and the checks of the configured values.
#include "settings.h"

#include <cstdio>

namespace update {

namespace {

// Bytes around the data of the largest request and answer, before stuffing:
// ST write request: device, command, address, 4-byte address, data, CRC.
// ST read-back answer: device, command, address, status, 4-byte address, data, CRC.
// NXP write request: command, 4-byte address, data.
// NXP read-back answer: command echo, status, 4-byte address, data.
constexpr int ST_WRITE_OVERHEAD = 8;
constexpr int ST_READ_OVERHEAD = 9;
constexpr int NXP_WRITE_OVERHEAD = 5;
constexpr int NXP_READ_OVERHEAD = 6;
constexpr int SEND_LIMIT = 1024;     // the link's send buffer
constexpr int RECEIVE_LIMIT = 1023;  // one decoder read must not fill its 1024 bytes

// Largest multiple of 4 whose stuffed frame (start, end, every byte escaped) fits `limit`.
int fitting(int overhead, int limit) {
    int n = (limit - 2) / 2 - overhead;
    return n - n % 4;
}

}  // namespace

const char* targetName(Target t) {
    return t == Target::Mcu ? "mcu" : "can";
}

Limits Settings::limits() const {
    return Limits{appStart, flashEnd, versionAddress, ramStart, ramEnd, model};
}

Settings defaultSettings(Target t, const std::string& product) {
    std::string model = product;
    while (!model.empty() && (model.back() == '\n' || model.back() == ' ')) model.pop_back();
    Settings s;
    s.target = t;
    s.model = model;
    s.writeSize = 128;
    s.verifySize = 128;
    // flashStart, appStart, flashEnd, versionAddress, ramStart, ramEnd
    static const uint32_t LAYOUTS[2][6] = {
        // 128 KiB of flash with a 16 KiB boot loader, 20 KiB of SRAM.
        {0x08000000, 0x08004000, 0x08020000, 0x0800F000, 0x20000000, 0x20005000},
        // 256 KiB of flash from 0 with an 8 KiB boot loader; SRAM at 0x10000000.
        {0x00000000, 0x00002000, 0x00040000, 0x00002400, 0x10000000, 0x10009000},
    };
    const uint32_t* l = LAYOUTS[t == Target::Mcu ? 0 : 1];
    s.flashStart = l[0];
    s.appStart = l[1];
    s.flashEnd = l[2];
    s.versionAddress = l[3];
    s.ramStart = l[4];
    s.ramEnd = l[5];
    return s;
}

int maxWriteSize(Target t) {
    return fitting(t == Target::Mcu ? ST_WRITE_OVERHEAD : NXP_WRITE_OVERHEAD, SEND_LIMIT);
}

int maxVerifySize(Target t) {
    return fitting(t == Target::Mcu ? ST_READ_OVERHEAD : NXP_READ_OVERHEAD, RECEIVE_LIMIT);
}

bool resolveSettings(Target t, const UpdateInfo& info, const std::string& product, Settings* out,
                     std::string* why) {
    Settings s = defaultSettings(t, product);
    if (!info.filePath.empty()) s.filePath = info.filePath;
    if (!info.fwModel.empty()) s.model = info.fwModel;
    struct Addr {
        const char* key;
        const std::optional<unsigned long>& value;
        uint32_t* dst;
    };
    const Addr addrs[] = {
        {"MCU_startAddress", info.mcuStartAddress, &s.flashStart},
        {"ProgramROM_startAddress", info.programRomStartAddress, &s.appStart},
        {"MCU_endAddress", info.mcuEndAddress, &s.flashEnd},
        {"MCU_versionAddress", info.mcuVersionAddress, &s.versionAddress},
        {"RAM_startAddress", info.ramStartAddress, &s.ramStart},
        {"RAM_endAddress", info.ramEndAddress, &s.ramEnd},
    };
    for (const Addr& a : addrs) {
        if (!a.value) continue;
        // An end address may be 2^32 exactly (flash up to the top of the address space).
        if (*a.value > 0xFFFFFFFFul) {
            *why = std::string(a.key) + " " + hexAddr(*a.value) + " lies outside 32-bit addresses";
            return false;
        }
        *a.dst = static_cast<uint32_t>(*a.value);
    }
    if (info.writeSize) s.writeSize = *info.writeSize;
    if (info.verifySize) s.verifySize = *info.verifySize;
    struct Size {
        const char* key;
        int value, max;
    };
    const Size sizes[] = {{"WRITE_SIZE", s.writeSize, maxWriteSize(t)},
                          {"VERIFY_SIZE", s.verifySize, maxVerifySize(t)}};
    for (const Size& z : sizes) {
        if (z.value > z.max) {
            *why = std::string(z.key) + " " + std::to_string(z.value) +
                   " is larger than a frame can carry (at most " + std::to_string(z.max) + ")";
            return false;
        }
        if (z.value < 4 || z.value % 4 != 0) {
            *why = std::string(z.key) + " " + std::to_string(z.value) +
                   " must be a positive multiple of 4";
            return false;
        }
    }
    if (!(s.flashStart <= s.appStart && s.appStart < s.flashEnd)) {
        *why = "ProgramROM_startAddress " + hexAddr(s.appStart) + " lies outside the flash " +
               hexAddr(s.flashStart) + "-" + hexAddr(s.flashEnd);
        return false;
    }
    if (s.appStart % 4 != 0) {
        *why = "ProgramROM_startAddress " + hexAddr(s.appStart) + " is not word aligned";
        return false;
    }
    if (!(s.appStart <= s.versionAddress && s.versionAddress < s.flashEnd)) {
        *why = "MCU_versionAddress " + hexAddr(s.versionAddress) +
               " lies outside the application region";
        return false;
    }
    if (s.ramStart >= s.ramEnd) {
        *why = "RAM_startAddress " + hexAddr(s.ramStart) + " is not below RAM_endAddress " +
               hexAddr(s.ramEnd);
        return false;
    }
    if (s.model.empty()) {
        *why = "FW_MODEL is empty and the product has no name";
        return false;
    }
    *out = s;
    return true;
}

}  // namespace update
