// What the system MCU answers to its power, version, identity, I/O, fan and radio
// commands: per-product defaults, and the records chosen by an index byte (system and
// machine parameters, G-sensor registers, iButton and RFID keys), which remember SETs.
#include <cstring>

#include "brdsim.h"

namespace brdsim {

namespace {

constexpr uint8_t SYSTEM = 0x00;
constexpr uint8_t ODM = 0x11;
constexpr uint8_t GET = 0x02;
constexpr uint8_t SET = 0x03;

struct DefaultRow {
    const char* products;  // space-separated models, or nullptr for every product
    uint8_t device;
    uint8_t address;
    Bytes bytes;
};

Bytes padded(const char* text, size_t size, uint8_t fill) {
    Bytes b(text, text + std::strlen(text));
    b.resize(size, fill);
    return b;
}

// Product rows come before the row for every product of the same register.
const std::vector<DefaultRow>& table() {
    static const std::vector<DefaultRow> rows = {
        // MCU version: where the letter and number sit depends on the model.
        {"KX73 KX35", SYSTEM, 0x01, {'S', 'T', '3', '2', 'F', 'R', 7}},
        {"KX56 KX71 KX57 KX59", SYSTEM, 0x01, {'S', 'T', '3', '2', 'F', '1', ' ', 'T', 12}},
        {"KX61 KX51 KX52 KX30", SYSTEM, 0x01, {'S', 'T', '3', '2', 'F', '1', ' ', 3, 12}},
        {"KX02 KX21", SYSTEM, 0x01, {'R', 5}},
        {nullptr, SYSTEM, 0x01, {'S', 'T', '3', '2', 'F', '1', ' ', 'R', 7}},
        // Event log: first and last event (year, month, day, hour, minute, second), then
        // start-up, shut-down, over- and low-voltage counters; two models add the backup
        // battery's over-current counter.
        {"KX58 KX35", SYSTEM, 0x05, {24, 1, 15, 8, 0, 0, 24, 6, 30, 17, 45, 10, 42, 0, 0, 0,
                                     41, 0, 0,  0, 0, 0, 0,  0, 1,  0,  0,  0,  3,  0, 0, 0}},
        {nullptr, SYSTEM, 0x05, {24, 1, 15, 8, 0, 0, 24, 6, 30, 17, 45, 10, 42, 0,
                                 0,  0, 41, 0, 0, 0, 0,  0, 0,  0,  1,  0,  0,  0}},
        {nullptr, SYSTEM, 0x0E, {'O', 'r', 'i', 'n', '-', 'N', 'X', '1', '6', 'G'}},
        {"KX74", SYSTEM, 0x10, {2}},  // 12 V on this model
        {"KX60 KX61", SYSTEM, 0x10, {1}},
        {nullptr, SYSTEM, 0x10, {0}},
        {nullptr, SYSTEM, 0x11, {0xC9}},  // delay off 1 min, delay on 30 s, both enabled
        {nullptr, SYSTEM, 0x12, {1}},
        {"KX07 KX12 KX17 KX18", SYSTEM, 0x1C, {0x01, 5}},  // counting minutes, disabled
        {nullptr, SYSTEM, 0x1C, {0x80, 60}},
        {"KX22 KX23 KX24 KX32 KX29 KX60 KX42 KX02 KX21 KX40 KX41 KX68 KX72 KX65 KX69 KX45",
         SYSTEM,
         0x21,
         {0x05, 0x00}},
        {"KX24", SYSTEM, 0x31, {0x05}},  // board B, KX75
        {"KX22", SYSTEM, 0x31, {0x04}},  // board A, KX82
        {"KX36", SYSTEM, 0x31, {0x00}},
        {"KX21", SYSTEM, 0x32, {0x08}},  // KX76 connected
        {"KX22", SYSTEM, 0x32, {0x01}},
        {nullptr, SYSTEM, 0x15, {1}},  // WWAN on
        {nullptr, SYSTEM, 0x16, {1}},  // WIFI on
        {nullptr, SYSTEM, 0x17, {0}},  // BT off
        {nullptr, SYSTEM, 0x19, {1}},  // USB on
        {nullptr, SYSTEM, 0x3A, {0x01}},
        {nullptr, SYSTEM, 0x3B, {0x02}},
        {nullptr, SYSTEM, 0x40, {0}},
        {"KX64", SYSTEM, 0x41, {0, 55, 70}},
        {nullptr, SYSTEM, 0x41, {40, 60, 80}},
        {"KX64",
         SYSTEM,
         0x42,
         {0xB8, 0x0B, 0xAC, 0x0D, 0xA0, 0x0F, 0x94, 0x11, 0xD0, 0x07, 0x10, 0x27}},
        {nullptr, SYSTEM, 0x42, {0xB8, 0x0B, 0xD0, 0x07, 0xDC, 0x05}},  // 3000, 2000, 1500 rpm
        {"KX34 KX35", SYSTEM, 0x48, {0x05}},
        {nullptr, SYSTEM, 0x48, {0x01}},
        {"KX73", SYSTEM, 0x50, {1, 4}},  // front KX86, rear KX87
        {nullptr, ODM, 0x30, {0x06}},    // GPI 2 and 3 high
    };
    return rows;
}

bool listed(const char* products, const std::string& model) {
    if (!products) return true;
    size_t len = model.size();
    for (const char* p = products; *p;) {
        const char* end = std::strchr(p, ' ');
        size_t n = end ? static_cast<size_t>(end - p) : std::strlen(p);
        if (n == len && model.compare(0, len, p, n) == 0) return true;
        p += n;
        while (*p == ' ') ++p;
    }
    return false;
}

std::string modelOf(const std::string& product) {
    std::string model = product;
    while (!model.empty() && (model.back() == '\n' || model.back() == ' ')) model.pop_back();
    return model;
}

// ---------------------------------------------------------------- indexed records

enum Family : uint8_t { SYSTEM_PARAMETER, MACHINE_PARAMETER, GSENSOR, IBUTTON_KEY, RFID_KEY };

// A request that reads or writes one record: request byte 0 is the index; a SET carries
// the record's bytes from `valueFrom` on, `valueSize` of them. A request shorter than
// `minData` is another command of the same byte and not a record access.
struct RecordRow {
    uint8_t command;
    uint8_t address;
    Family family;
    size_t minData;
    size_t valueFrom;
    size_t valueSize;
};

const RecordRow RECORD_ROWS[] = {
    {GET, 0x06, SYSTEM_PARAMETER, 1, 0, 0},
    {SET, 0x06, SYSTEM_PARAMETER, 17, 1, 16},
    {GET, 0x5D, MACHINE_PARAMETER, 1, 0, 0},
    {SET, 0x5D, MACHINE_PARAMETER, 65, 1, 64},
    {GET, 0x23, GSENSOR, 2, 0, 0},
    {GET, 0x25, GSENSOR, 2, 0, 0},
    {SET, 0x22, GSENSOR, 3, 2, 1},
    {SET, 0x23, GSENSOR, 3, 2, 1},
    // A stored key keeps the order it travels in (CRC, codes 6..1, family, ","), which is
    // the order a GET answers with.
    {GET, 0x27, IBUTTON_KEY, 2, 0, 0},
    {SET, 0x24, IBUTTON_KEY, 11, 2, 9},
    {SET, 0x27, IBUTTON_KEY, 11, 2, 9},
    {GET, 0x29, RFID_KEY, 2, 0, 0},
    {SET, 0x26, RFID_KEY, 15, 2, 10},
    {SET, 0x29, RFID_KEY, 15, 2, 10},
};

Bytes defaultRecord(const std::string& model, Family family, uint8_t index) {
    switch (family) {
        case SYSTEM_PARAMETER:
            if (index == 0) return {0x00, 0x1B, 0xEB, 0x12, 0x34, 0x56};
            if (index == 1) return padded("1423419012345", 16, 0xFF);
            if (index == 2) return padded(model == "KX02" ? "" : "CB24A0001", 16, 0x00);
            return Bytes(16, 0xFF);
        case MACHINE_PARAMETER: {
            Bytes b(64, 0x00);
            for (uint8_t j = 0; j < 8; ++j) b[j] = static_cast<uint8_t>(index << 4 | j);
            return b;
        }
        case GSENSOR:
            if (index == 0x0F) return {0x33};  // identification register
            if (index == 0x20) return {0x07};  // all three axes on
            return {0x00};
        case IBUTTON_KEY:
            if (index == 0) return {0xA2, 0x00, 0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x01, ','};
            return Bytes(9, 0x00);
        case RFID_KEY:
            if (index == 0) return padded("0012345678", 10, 0);
            return Bytes(10, 0x00);
    }
    return {};
}

// SETs that change one byte of a register that a GET reads whole.
struct PartialSet {
    uint8_t address;    // the SET's command byte
    uint8_t register_;  // the register it changes
    size_t at;          // the byte it replaces
};

const PartialSet PARTIAL_SETS[] = {
    {0x1C, 0x1C, 0},  // watchdog configuration
    {0x1D, 0x1C, 1},  // watchdog time
};

}  // namespace

bool systemDefaultAnswer(const std::string& product, uint8_t device, uint8_t address, Bytes* out) {
    std::string model = modelOf(product);
    for (const DefaultRow& r : table()) {
        if (r.device == device && r.address == address && listed(r.products, model)) {
            *out = r.bytes;
            return true;
        }
    }
    return false;
}

bool systemRecordAnswer(const std::string& product, const Request& r, RecordMap& records,
                        RegisterMap& registers, Bytes* out) {
    if (r.device != SYSTEM) return false;
    for (const RecordRow& row : RECORD_ROWS) {
        if (row.command != r.command || row.address != r.address || r.data.size() < row.minData)
            continue;
        uint8_t index = r.data[0];
        auto key = std::make_tuple(static_cast<uint8_t>(row.family), index);
        if (r.command == SET) {
            records[key] = Bytes(r.data.begin() + static_cast<long>(row.valueFrom),
                                 r.data.begin() + static_cast<long>(row.valueFrom + row.valueSize));
            *out = {0x01};
            return true;
        }
        auto it = records.find(key);
        Bytes value =
            it != records.end() ? it->second : defaultRecord(modelOf(product), row.family, index);
        if (row.family == GSENSOR) value.insert(value.begin(), index);  // address, then value
        *out = value;
        return true;
    }
    if (r.command == SET && r.data.size() == 1) {
        for (const PartialSet& p : PARTIAL_SETS) {
            if (p.address != r.address) continue;
            auto reg = registers.find({SYSTEM, p.register_});
            Bytes current;
            if (reg != registers.end())
                current = reg->second;
            else if (!defaultAnswer(product, SYSTEM, p.register_, &current))
                current.clear();
            if (current.size() <= p.at) current.resize(p.at + 1, 0);
            current[p.at] = r.data[0];
            registers[{SYSTEM, p.register_}] = current;
            *out = {0x01};
            return true;
        }
    }
    return false;
}

}  // namespace brdsim
