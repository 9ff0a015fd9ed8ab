// What the system MCU of each product answers to a GET before anything was set:
// one table of registers, with rows for the products whose firmware differs.
#include <cstring>

#include "brdsim.h"
#include "defaults_peripheral.h"

namespace brdsim {

namespace {

struct DefaultRow {
    const char* products;  // space-separated model names, or nullptr for every product
    uint8_t device;
    uint8_t address;
    Bytes bytes;
};

Bytes text(const char* s) {
    return Bytes(s, s + std::strlen(s));
}

// Product rows come before the row for every product of the same register.
const std::vector<DefaultRow>& table() {
    static const std::vector<DefaultRow> rows = {
        // MCU version: the letter and number sit at the end of the answer; models with a
        // 7-byte answer carry them in bytes 5 and 6, the others in bytes 7 and 8.
        {"KX73 KX35", 0x00, 0x01, {'S', 'T', '3', '2', 'F', 'R', 7}},
        {nullptr, 0x00, 0x01, {'S', 'T', '3', '2', 'F', '1', ' ', 'R', 7}},
        {nullptr, 0x00, 0x02, {'A'}},  // hardware version letter
        {nullptr, 0x00, 0x03, {3}},    // DTP version
        {nullptr, 0x00, 0x04, {2}},    // boot loader version
        // Event log: first and last event (year, month, day, hour, minute, second), then
        // start-up, shut-down, over- and low-voltage counters, four bytes each.
        {"KX58 KX35", 0x00, 0x05, {24, 1, 15, 8, 0, 0, 24, 6, 30, 17, 45, 10, 42, 0, 0, 0,
                                   41, 0, 0,  0, 0, 0, 0,  0, 1,  0,  0,  0,  0,  0, 0, 0}},
        {nullptr, 0x00, 0x05, {24, 1, 15, 8, 0, 0, 24, 6, 30, 17, 45, 10, 42, 0,
                               0,  0, 41, 0, 0, 0, 0,  0, 0,  0,  1,  0,  0,  0}},
        {nullptr, 0x00, 0x06, {0x03}},  // WWAN slot pins both high
        {nullptr, 0x00, 0x07, {1}},     // OS control: auto reboot
        {nullptr, 0x00, 0x0A, {1}},     // ignition on
        // Supply voltage 12.00 V: in 10 mV units on some models, 100 mV on the rest.
        {"KX25 KX60 KX34", 0x00, 0x0B, {0xB0, 0x04}},
        {nullptr, 0x00, 0x0B, {120, 0}},
        {nullptr, 0x00, 0x0C, {40}},  // temperature, degrees
        {nullptr, 0x00, 0x0F, {0}},
        {nullptr, 0x00, 0x13, {7, 30, 0}},  // alarm at 07:30:00
        {nullptr, 0x00, 0x14, {8}},         // panel brightness
        {"KX71", 0x00, 0x18, {1, 1}},       // GPS on, antenna connected
        {nullptr, 0x00, 0x18, {1}},
        {nullptr, 0x00, 0x1A, {0}},
        {nullptr, 0x00, 0x1B, {0}},
        {nullptr, 0x00, 0x1D, {0x4A, 0x01}},  // LS voltage 3.30 V
        {nullptr, 0x00, 0x1E, {5, 0}},        // audio volume
        {nullptr, 0x00, 0x20, {0}},           // flash stored
        {nullptr, 0x00, 0x21, {0, 0}},
        {nullptr, 0x00, 0x22, {120, 0}},  // input voltage 12.0 V
        {nullptr, 0x00, 0x24, {0, 0}},
        {nullptr, 0x00, 0x25, {0, 0}},
        {nullptr, 0x00, 0x26, {0}},
        {nullptr, 0x00, 0x27, {50, 0}},  // input frequency
        {nullptr, 0x00, 0x28, {0}},
        {"KX22", 0x00, 0x2A, {0x03}},  // both CAN modules powered
        {nullptr, 0x00, 0x2A, {1}},
        {nullptr, 0x00, 0x2B, {0}},
        {nullptr, 0x00, 0x2C, {0, 0}},
        {nullptr, 0x00, 0x2D, {120, 0}},  // backup battery 12.0 V
        {nullptr, 0x00, 0x2E, {35}},      // backup battery temperature
        {nullptr, 0x00, 0x2F, {1}},
        {nullptr, 0x00, 0x30, {0}},
        {nullptr, 0x00, 0x31, {1}},  // backup battery charged
        {nullptr, 0x00, 0x32, {0}},
        {nullptr, 0x00, 0x33, {0x2C, 0x01}},  // wake-up timer 300
        {nullptr, 0x00, 0x34, {0xC8, 0x00}},  // LCD PWM 200 Hz
        {nullptr, 0x00, 0x35, {1}},           // health LED green
        {nullptr, 0x00, 0x36, {0}},
        {nullptr, 0x00, 0x37, {0}},
        {nullptr, 0x00, 0x38, {0}},
        {nullptr, 0x00, 0x39, {0}},
        {nullptr, 0x00, 0x3D, {0}},
        {nullptr, 0x00, 0x3E, {2}},                       // CN7 reset time 2 s
        {nullptr, 0x00, 0x3F, {0x10, 0x27, 0x00, 0x00}},  // pulse count 10000
        {nullptr, 0x00, 0x43, {0}},                       // smart fan
        {nullptr, 0x00, 0x44, {'B'}},                     // power board version
        {nullptr, 0x00, 0x45, text("AST-0000-0001-A1")},
        {nullptr, 0x00, 0x46, {42, 0, 0, 0}},  // start-up count
        {nullptr, 0x00, 0x47, {30, 15, 2}},    // booted 02:15:30 ago
        {nullptr, 0x00, 0x4B, {0}},
        {nullptr, 0x00, 0x4C, {1}},
        {nullptr, 0x00, 0x51, {1}},           // power board connected
        {nullptr, 0x00, 0x53, {1}},           // key LED white
        {nullptr, 0x00, 0x56, {0xF4, 0x01}},  // analog in 5.00 V
        {"KX56 KX71", 0x00, 0x57, {80}},      // converse timer, ms
        {nullptr, 0x00, 0x57, {0}},
        {nullptr, 0x00, 0x58, {0}},
        {nullptr, 0x00, 0x59, {0x2C, 0x01}},  // RTC battery 3.00 V
        {nullptr, 0x00, 0x5B, {1}},           // BIOS 1
        {nullptr, 0x00, 0x5E, {1}},           // Orin NX
        {nullptr, 0x00, 0x62, {1, 30}},       // heartbeat on, every 30 s
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

}  // namespace

bool defaultAnswer(const std::string& product, uint8_t device, uint8_t address, Bytes* out) {
    std::string model = product;
    while (!model.empty() && (model.back() == '\n' || model.back() == ' ')) model.pop_back();
    for (const DefaultRow& r : table()) {
        if (r.device == device && r.address == address && listed(r.products, model)) {
            *out = r.bytes;
            return true;
        }
    }
    return peripheralDefaultAnswer(product, device, address, out);
}

}  // namespace brdsim
