// The update rows of the system MCU's IAP boot loader and of the CAN MCU's boot loader.
#include "update_rows.h"

#include <cstring>

namespace update {

using F = Field;

// Every update request of both controllers. Answers are given without the frame: for the
// system MCU the data after device, command and address; for the CAN MCU the bytes after
// its answer code (the command code + 1) and, for rows without a status of their own,
// after the status byte every CAN answer carries.
// clang-format off
const UpdateRow kUpdateRows[] = {
    // target, step, row, mode, request data, least answer, status first, answer
    {Target::Mcu, Step::Mode, "ST_IAP_GET_01_01_OPERATION_MODE", Mode::Any, {F::End}, 2, false,
     "mode (1 application, 2 boot loader), application valid (0 or 1)"},
    {Target::Mcu, Step::Mode, "ST_IAP_GET_01_02_UPDATE_MODE", Mode::Any, {F::End}, 2, false,
     "the same request and answer as the operation mode"},
    {Target::Mcu, Step::Request, "ST_IAP_SET_01_01_UPDATE_REQUEST", Mode::App, {F::End}, 1, true,
     "status; then the MCU restarts into its boot loader"},
    {Target::Mcu, Step::Start, "ST_IAP_START", Mode::Update, {F::Flag}, 1, true,
     "status (flag 1: start an update session)"},
    {Target::Mcu, Step::Info, "ST_IAP_GET_02_01_IAP_INFORMATION", Mode::Any, {F::End},
     BOOT_INFO_SIZE, false,
     "version major, minor; flash start, flash end, application start (4 bytes each); page "
     "size, largest write (2 bytes each); RAM start, RAM end (4 bytes each)"},
    {Target::Mcu, Step::AppVersion, "ST_IAP_GET_03_01_APP_VERSION", Mode::Any, {F::End}, 0, false,
     "the model tag text of the application in flash (empty without one)"},
    {Target::Mcu, Step::Read, "ST_IAP_GET_04_01_FLASH_DATA", Mode::Any, {F::Addr, F::Len16}, 5,
     true, "status, address (4 bytes), the bytes read"},
    {Target::Mcu, Step::State, "ST_IAP_GET_05_01_PROGRAM_STATE", Mode::Any, {F::End}, 2, false,
     "state (0 locked, 1 unlocked, 2 erased, 3 written), application valid (0 or 1)"},
    {Target::Mcu, Step::Unlock, "ST_IAP_SET_02_01_FLASH_UNLOCK", Mode::Update, {F::Key}, 1, true,
     "status"},
    {Target::Mcu, Step::Erase, "ST_IAP_SET_03_01_ERASE_FLASH", Mode::Update, {F::Addr, F::Limit},
     1, true, "status (both addresses on page boundaries, inside the application region)"},
    {Target::Mcu, Step::Write, "ST_IAP_SET_04_01_WRITE_FLASH", Mode::Update, {F::Addr, F::Data},
     5, true, "status, address (4 bytes)"},
    {Target::Mcu, Step::Check, "ST_IAP_SET_05_01_CHECK_CODE", Mode::Any, {F::Addr, F::Len32}, 5,
     true, "status, CRC-32 of the range (4 bytes)"},
    {Target::Mcu, Step::Reboot, "ST_IAP_SET_06_01_IAP_REBOOT", Mode::Update, {F::End}, 1, true,
     "status; then the application starts (refused without a valid vector table)"},
    {Target::Mcu, Step::Cancel, "ST_IAP_CANCEL", Mode::Update, {F::Flag}, 1, true,
     "status (flag 0: end the session, flash locked again)"},

    {Target::Can, Step::Mode, "NXP_UPDATE_40_READ_UPDATE_MODE", Mode::Any, {F::End}, 2, false,
     "mode (1 application, 2 boot loader), application valid (0 or 1)"},
    {Target::Can, Step::Request, "NXP_UPDATE_42_IS_REQUEST_UPDATE", Mode::App, {F::End}, 1, true,
     "status; then the controller restarts into its boot loader"},
    {Target::Can, Step::Info, "NXP_UPDATE_30_READ_BSL_INFO", Mode::Any, {F::End},
     BOOT_INFO_SIZE, false, "as the system MCU's information answer"},
    {Target::Can, Step::AppVersion, "NXP_CAN_AP_02_READ_FW_VERSION", Mode::App, {F::End}, 3,
     false, "the running application's version: three numbers (major, minor, patch)"},
    {Target::Can, Step::State, "NXP_UPDATE_20_READ_PROGRAM_STATE", Mode::Update, {F::End}, 2, false,
     "state (0 locked, 1 unlocked, 2 erased, 3 written), application valid (0 or 1)"},
    {Target::Can, Step::Unlock, "NXP_UPDATE_24_FLASH_UNLOCK", Mode::Update, {F::Key}, 1, true,
     "status"},
    {Target::Can, Step::Erase, "NXP_UPDATE_10_ERASE_FLASH", Mode::Update, {F::Addr, F::Limit}, 1,
     true, "status"},
    {Target::Can, Step::Write, "NXP_UPDATE_12_WRITE_FLASH", Mode::Update, {F::Addr, F::Data}, 5,
     true, "status, address (4 bytes)"},
    {Target::Can, Step::Read, "NXP_UPDATE_14_READ_FLASH", Mode::Any, {F::Addr, F::Len16}, 5, true,
     "status, address (4 bytes), the bytes read"},
    {Target::Can, Step::Reboot, "NXP_UPDATE_36_IS_REQUEST_REBOOT", Mode::Update, {F::End}, 1, true,
     "status; then the application starts"},
};
// clang-format on
const int kUpdateRowCount = static_cast<int>(sizeof kUpdateRows / sizeof kUpdateRows[0]);

// The two words of a Cortex-M flash controller's unlock sequence, little-endian.
const uint8_t kUnlockKey[8] = {0x23, 0x01, 0x67, 0x45, 0xAB, 0x89, 0xEF, 0xCD};

const UpdateRow* findRow(Target t, Step s) {
    for (const UpdateRow& r : kUpdateRows)
        if (r.target == t && r.step == s) return &r;
    return nullptr;
}

const UpdateRow* findRowByName(const std::string& name) {
    for (const UpdateRow& r : kUpdateRows)
        if (name == r.name) return &r;
    return nullptr;
}

uint32_t le32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

uint16_t le16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | p[1] << 8);
}

void put32(Bytes* b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b->push_back(static_cast<uint8_t>(v >> (8 * i)));
}

void put16(Bytes* b, uint16_t v) {
    b->push_back(static_cast<uint8_t>(v));
    b->push_back(static_cast<uint8_t>(v >> 8));
}

Bytes encodeRequest(const UpdateRow& row, const Args& a) {
    Bytes out;
    for (Field f : row.request) {
        switch (f) {
            case F::End:
                return out;
            case F::Flag:
                out.push_back(a.flag);
                break;
            case F::Key:
                out.insert(out.end(), kUnlockKey, kUnlockKey + sizeof kUnlockKey);
                break;
            case F::Addr:
                put32(&out, a.addr);
                break;
            case F::Limit:
                put32(&out, a.end);
                break;
            case F::Len16:
                put16(&out, static_cast<uint16_t>(a.len));
                break;
            case F::Len32:
                put32(&out, a.len);
                break;
            case F::Data:
                if (a.dataLen > 0) out.insert(out.end(), a.data, a.data + a.dataLen);
                break;
        }
    }
    return out;
}

const char* statusText(uint8_t status) {
    switch (status) {
        case STATUS_OK:
            return "done";
        case 0x02:
            return "flash locked";
        case 0x03:
            return "address outside the application region";
        case 0x04:
            return "bad length";
        case 0x05:
            return "not in the boot loader";
        case 0x06:
            return "wrong unlock key";
        case 0x07:
            return "not on a page boundary";
        case 0x08:
            return "no valid application";
        default:
            return "unknown status";
    }
}

bool parseBootInfo(const Bytes& p, BootInfo* out) {
    if (p.size() < static_cast<size_t>(BOOT_INFO_SIZE)) return false;
    const uint8_t* d = p.data();
    out->major = d[0];
    out->minor = d[1];
    out->flashStart = le32(d + 2);
    out->flashEnd = le32(d + 6);
    out->appStart = le32(d + 10);
    out->pageSize = le16(d + 14);
    out->maxWrite = le16(d + 16);
    out->ramStart = le32(d + 18);
    out->ramEnd = le32(d + 22);
    return true;
}

Bytes encodeBootInfo(const BootInfo& b) {
    Bytes out = {b.major, b.minor};
    put32(&out, b.flashStart);
    put32(&out, b.flashEnd);
    put32(&out, b.appStart);
    put16(&out, b.pageSize);
    put16(&out, b.maxWrite);
    put32(&out, b.ramStart);
    put32(&out, b.ramEnd);
    return out;
}

}  // namespace update
