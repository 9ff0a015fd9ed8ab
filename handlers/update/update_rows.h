// The update rows of both boot loaders: one table with each request's data layout, the
// mode it is sent in and the least answer it must get, and the encoder of a request.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "settings.h"

namespace update {

// What a row is for; the flow picks rows by step and controller type.
enum class Step {
    Mode,        // application or boot loader?
    Request,     // the application restarts into its boot loader
    Start,       // the boot loader starts an update session
    Info,        // boot loader version and flash layout
    AppVersion,  // the model tag of the application in flash
    State,       // the boot loader's program state
    Unlock,
    Erase,
    Write,
    Check,   // check code (CRC-32) of a range
    Read,    // read back a range
    Reboot,  // start the application
    Cancel,  // end the session, flash locked again
};

// One field of a request's data, all little-endian.
enum class Field : uint8_t {
    End,    // no more fields
    Flag,   // 1 byte: Args::flag
    Key,    // 8 bytes: the flash unlock key
    Addr,   // 4 bytes: Args::addr
    Limit,  // 4 bytes: Args::end (first address after a range)
    Len16,  // 2 bytes: Args::len
    Len32,  // 4 bytes: Args::len
    Data,   // the bytes of Args::data
};

// The link mode a row is sent in.
enum class Mode : uint8_t {
    Any,     // as the session is (these rows work for application and boot loader)
    App,     // application framing and time-out
    Update,  // boot-loader framing and the update time-out
};

struct UpdateRow {
    Target target;
    Step step;
    const char* name;  // the command table row
    Mode mode;
    Field request[4];
    int answerMin;       // least answer payload length
    bool status;         // the answer starts with a status byte (STATUS_OK or why not)
    const char* answer;  // the answer's layout, for docs and decoded output
};

extern const UpdateRow kUpdateRows[];
extern const int kUpdateRowCount;

// The row of a step for a controller type; null when that type has none (the CAN
// boot loader has no check code).
const UpdateRow* findRow(Target t, Step s);
const UpdateRow* findRowByName(const std::string& name);

struct Args {
    uint32_t addr = 0, end = 0, len = 0;
    uint8_t flag = 0;
    const uint8_t* data = nullptr;
    size_t dataLen = 0;
};

// The request data of a row (what follows the row's fixed bytes).
Bytes encodeRequest(const UpdateRow& row, const Args& a);

// The flash unlock key both boot loaders expect.
extern const uint8_t kUnlockKey[8];

// Answer layouts. The CAN boot loader's answers start with the command echo; `payload`
// here is what follows it. Every SET answer starts with a status byte.
constexpr uint8_t STATUS_OK = 0x01;
// Text of a status byte ("flash locked").
const char* statusText(uint8_t status);

// The boot loader's information answer.
struct BootInfo {
    uint8_t major = 0, minor = 0;
    uint32_t flashStart = 0, flashEnd = 0, appStart = 0;
    uint16_t pageSize = 0, maxWrite = 0;
    uint32_t ramStart = 0, ramEnd = 0;
};
constexpr int BOOT_INFO_SIZE = 26;
bool parseBootInfo(const Bytes& p, BootInfo* out);
Bytes encodeBootInfo(const BootInfo& b);

uint32_t le32(const uint8_t* p);
uint16_t le16(const uint8_t* p);
void put32(Bytes* b, uint32_t v);
void put16(Bytes* b, uint16_t v);

}  // namespace update
