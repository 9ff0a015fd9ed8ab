// What the peripheral groups of the system MCU answer before anything was set: battery
// and BIOS, IoT tracker, NVR, ODM board, display unit, supercapacitor charger, PoE
// controllers and LAN switch; and the registers picked by a port, board, slot or index
// in the request data, which remember their SETs one by one.
#include "defaults_peripheral.h"

#include <cstring>

#include "brdsim.h"

namespace brdsim {

namespace {

enum : uint8_t {
    LTC3351 = 2,
    BIOS = 5,
    IOT = 8,
    NVR = 9,
    BKP = 10,
    POE = 11,
    DSU = 12,
    PSE13 = 13,  // IP808 front/rear boards, IP8008 and the LAN switch
    ODM = 17,
};
constexpr uint8_t GET = 2;
constexpr uint8_t SET = 3;
constexpr uint8_t ACK = 1;

struct Row {
    const char* products;  // space-separated models, or nullptr for every product
    uint8_t device;
    uint8_t address;
    Bytes bytes;
};

Bytes text(const char* s) {
    return Bytes(s, s + std::strlen(s));
}
// A length byte, then the text.
Bytes counted(const char* s) {
    Bytes b = {static_cast<uint8_t>(std::strlen(s))};
    Bytes t = text(s);
    b.insert(b.end(), t.begin(), t.end());
    return b;
}

bool listed(const char* products, const std::string& model) {
    if (!products) return true;
    for (const char* p = products; *p;) {
        const char* end = std::strchr(p, ' ');
        size_t n = end ? static_cast<size_t>(end - p) : std::strlen(p);
        if (n == model.size() && model.compare(0, n, p, n) == 0) return true;
        p += n;
        while (*p == ' ') ++p;
    }
    return false;
}

// Registers read without request data. Product rows come before the row for every
// product of the same register.
const std::vector<Row>& table() {
    static const std::vector<Row> rows = {
        // Supercapacitor charger (fitted on KX61): five-character readings.
        {nullptr, LTC3351, 0x01, text("24.05")},
        {nullptr, LTC3351, 0x02, text("11.80")},
        {nullptr, LTC3351, 0x03, text("23.90")},
        {nullptr, LTC3351, 0x04, text("31.50")},
        {nullptr, LTC3351, 0x05, text("0.150")},
        {nullptr, LTC3351, 0x06, text("1.200")},
        {nullptr, LTC3351, 0x07, text("10.00")},
        {nullptr, LTC3351, 0x08, text("2.700")},
        {nullptr, LTC3351, 0x09, text("2.690")},
        {nullptr, LTC3351, 0x0A, text("2.710")},
        {nullptr, LTC3351, 0x0B, text("2.700")},
        {nullptr, LTC3351, 0x0C, {4}},           // four capacitors
        {nullptr, LTC3351, 0x0D, {0xF0, 0x00}},  // 24.0 V: a data byte that needs stuffing
        {nullptr, LTC3351, 0x0E, {0xFB}},        // -5 degrees
        {nullptr, LTC3351, 0x0F, {118, 0}},      // 11.8 V
        {nullptr, LTC3351, 0x10, {0x03}},        // master and slave 1 connected
        {nullptr, LTC3351, 0x11, {0}},           // 2.9 V
        {nullptr, LTC3351, 0x12, {2}},           // charging
        {nullptr, LTC3351, 0x13, {4}},           // 80 %
        {nullptr, LTC3351, 0x14, {0}},           // healthy
        {nullptr, LTC3351, 0x15, {1}},           // LED on

        {nullptr, BIOS, 0x16, {1}},  // auto reboot on

        // A smart battery discharging at 1 A; KX29 carries a backup battery instead.
        {nullptr, BKP, 0x01, {3}},
        {nullptr, BKP, 0x02, {0x44, 0x2F}},  // 12100 mV
        {"KX29", BKP, 0x03, {35}},
        {nullptr, BKP, 0x03, {0xFB}},  // -5 degrees
        {"KX60", BKP, 0x04, {0xC0}},   // discharging, gauge initialised
        {nullptr, BKP, 0x04, {0x40, 0x00}},
        {nullptr, BKP, 0x05, {76}},
        {nullptr, BKP, 0x06, {0xE8, 0x03}},              // 1000 mA
        {nullptr, BKP, 0x0A, {0x4C, 0x04, 0xB0, 0x04}},  // 11.00 V and 12.00 V
        {nullptr, BKP, 0x0B, {6}},                       // 60 minutes
        {nullptr, BKP, 0x0C, {45, 0}},
        {nullptr, BKP, 0x0E, {0}},  // 30 seconds

        // IoT tracker.
        {nullptr, IOT, 0x01, counted("internet")},
        {nullptr, IOT, 0x03, counted("203.0.113.10")},
        {nullptr, IOT, 0x04, {0xBA, 0x13}},  // port 5050
        {nullptr, IOT, 0x05, counted("356938035643809")},
        {nullptr, IOT, 0x06, counted("IOT-Test")},
        {nullptr, IOT, 0x07, counted("secret")},
        {nullptr, IOT, 0x09, {1}},
        {nullptr, IOT, 0x0A, {0}},
        {nullptr, IOT, 0x0B, {0xF0, 0x00}},  // 240 s
        {nullptr, IOT, 0x0C, {0x10, 0x0E}},  // 3600 s
        {nullptr, IOT, 0x0D, {128}},         // 8g
        {nullptr, IOT, 0x0E, {165}},         // 40 degrees
        {nullptr, IOT, 0x0F, {1}},
        {nullptr, IOT, 0x10, {0}},
        {nullptr, IOT, 0x11, counted("This is test.")},
        {nullptr, IOT, 0x12, {1, 0}},

        {nullptr, NVR, 0x01, {0}},

        // ODM board.
        {nullptr, ODM, 0x01, {255}},
        {nullptr, ODM, 0x06, {1}},
        {nullptr, ODM, 0x07, {5}},
        {nullptr, ODM, 0x08, {255}},
        {nullptr, ODM, 0x09, {0x05}},  // SIM 1 and SIM 3 in
        {nullptr, ODM, 0x0A, {0x2C, 0x01}},
        {nullptr, ODM, 0x0B, {60, 0}},
        {nullptr, ODM, 0x0C, {1}},  // woken by ignition
        {nullptr, ODM, 0x0D, {1}},
        {nullptr, ODM, 0x0E, {1}},
        {nullptr, ODM, 0x0F, {0}},
        {nullptr, ODM, 0x30, {0x05}},

        // Display unit.
        {nullptr, DSU, 0x01, {2}},
        {nullptr, DSU, 0x02, {0}},
        {nullptr, DSU, 0x05, {0}},
        {nullptr, DSU, 0x09, {1}},
        {nullptr, DSU, 0x0D, {0}},
        {nullptr, DSU, 0x12, {1}},

        // PoE controllers on device 11.
        {"KX19", POE, 0x04, {0x21, 0x21, 0x21, 0x21, 0x21, 0x22}},
        {nullptr, POE, 0x04, {0x15, 0x16}},
        {nullptr, POE, 0x05, {45, 0xD3}},  // 45 and -45 degrees (the sign is not shown)
        {nullptr, POE, 0x06, {12}},
        {nullptr, POE, 0x07, {60}},
        {"KX08 KX10 KX13 KX14 KX05", POE, 0x08, {0xC5}},  // 4 ports, power OK
        {"KX04 KX63 KX52 KX07 KX12 KX17 KX18 KX20", POE, 0x08, {1}},
        {nullptr, POE, 0x08, {0x05}},  // ports 1 and 3 powered
        {nullptr, POE, 0x09, {0}},
        {nullptr, POE, 0x0C, {7}},
        {nullptr, POE, 0x0D, {4}},
        // Detection (bits 0-2) and classification (bits 4-6) of each port.
        {nullptr, POE, 0x10, {0x44, 0x06, 0x34, 0x71, 0x44, 0x26, 0x14, 0x00}},
        {nullptr, POE, 0x11, {1}},
        {nullptr, POE, 0x2F, {60}},

        // LAN switch (KX39) on device 13.
        {nullptr, PSE13, 0x01, {0x61, 0x20}},
        {nullptr, PSE13, 0x02, {0x0B}},  // ports 1, 2 and 4 connected
        {nullptr, PSE13, 0x03, {0xE4}},  // port speeds: none, 10, 100, 1000 Mbps
    };
    return rows;
}

std::string modelOf(const std::string& product) {
    std::string m = product;
    while (!m.empty() && (m.back() == '\n' || m.back() == ' ')) m.pop_back();
    return m;
}

bool is(const std::string& model, const char* products) {
    return listed(products, model);
}

// GETs whose answer depends on the port, board or index in the request data.
bool perPort(const std::string& model, uint8_t device, uint8_t address, const Bytes& data,
             Bytes* out) {
    if (data.empty()) return false;
    uint8_t last = data.back();
    if (device == POE) {
        bool kx73 = is(model, "KX73");
        switch (address) {
            case 0x04:  // KX73 main board firmware
                *out = {0x16};
                return true;
            case 0x05:  // KX19: per PSE, degrees and tenths; KX73: the main board
                *out = kx73 ? Bytes{38} : Bytes{static_cast<uint8_t>(40 + last), 5};
                return true;
            case 0x06:
                *out = {18};
                return true;
            case 0x08:
                *out = {0x09};  // KX73 main board: ports 1 and 4 powered
                return true;
            case 0x0C:  // consumption of one port
                if (kx73)
                    *out = {static_cast<uint8_t>(3 * last)};
                else if (is(model, "KX19"))
                    *out = {static_cast<uint8_t>(2 * last), 5};
                else
                    *out = {static_cast<uint8_t>(2 * last + 1)};
                return true;
            case 0x10: {
                if (kx73) {
                    *out = {0x44, 0x06, 0x34, 0x71};
                    return true;
                }
                // KX19: the state machine of each PSE.
                static const uint8_t states[] = {16, 3, 17, 14, 4, 0};
                out->assign(1, states[data.back() % 6]);
                return true;
            }
            default:
                return false;
        }
    }
    if (device == PSE13) {
        if (is(model, "KX73")) {  // IP808 front (0) and rear (1) boards
            uint8_t board = data[0];
            switch (address) {
                case 0x02:
                    *out = {static_cast<uint8_t>(21 + board)};
                    return true;
                case 0x03:  // degrees and tenths; the rear board's last port below zero
                    if (board == 1 && data.size() > 1 && data[1] == 7)
                        *out = {0xFB, 0x00};
                    else
                        *out = {static_cast<uint8_t>(40 + last), 5};
                    return true;
                case 0x04:
                    *out = {static_cast<uint8_t>(board ? 30 : 24)};
                    return true;
                case 0x07:
                    *out = {static_cast<uint8_t>(board ? 0x0F : 0xA5)};
                    return true;
                case 0x0C:
                    *out = {static_cast<uint8_t>(last + 8 * board)};
                    return true;
                case 0x10: {
                    static const uint8_t front[] = {0x30, 3, 14, 16, 7, 0, 21, 0xE3};
                    static const uint8_t rear[] = {16, 16, 3, 3, 0x4F, 0x9F, 1, 2};
                    const uint8_t* states = board ? rear : front;
                    out->assign(1, states[data.back() % 8]);
                    return true;
                }
                default:
                    return false;
            }
        }
        if (is(model, "KX57 KX59")) {  // IP8008
            switch (address) {
                case 0x02:
                    *out = {49};
                    return true;
                case 0x04:
                    *out = {15, 25};
                    return true;
                case 0x07:
                    *out = {static_cast<uint8_t>(is(model, "KX57") ? 0x0B : 0x15)};
                    return true;
                case 0x0C:
                    *out = {static_cast<uint8_t>(2 * last), static_cast<uint8_t>(10 * last)};
                    return true;
                case 0x10: {
                    static const uint8_t states[] = {29, 1, 27, 10, 36};
                    out->assign(1, states[data.back() % 5]);
                    return true;
                }
                default:
                    return false;
            }
        }
    }
    return false;
}

// Defaults of the registers picked by leading request bytes (slot, index).
bool picked(uint8_t device, uint8_t address, const Bytes& key, Bytes* out) {
    uint8_t k = key.empty() ? 0 : key[0];
    if (device == IOT && address == 0x02) {
        *out = counted(k ? "8.8.4.4" : "8.8.8.8");
        return true;
    }
    if (device == IOT && address == 0x08) {
        *out = text("+886988123456");
        out->push_back(',');
        return true;
    }
    if (device == ODM) {
        switch (address) {
            case 0x02:
                *out = {static_cast<uint8_t>(k == 0 ? 1 : 0)};
                return true;
            case 0x03:
                *out = {static_cast<uint8_t>(k == 0 ? 5 : 0)};
                return true;
            case 0x04:  // signal LED yellow, service LED green
                *out = {0x06};
                return true;
            case 0x05:
                *out = {5, 3};
                return true;
            case 0x10:
                *out = {1};
                return true;
            case 0x11:
                *out = {0};
                return true;
            default:
                break;
        }
    }
    return false;
}

// How many leading request bytes pick the register (0: the address alone).
size_t pickerLength(uint8_t device, uint8_t address) {
    if (device == IOT && address == 0x02) return 1;
    if (device == IOT && address == 0x08) return 2;
    if (device == ODM &&
        ((address >= 0x02 && address <= 0x05) || address == 0x10 || address == 0x11))
        return 1;
    return 0;
}

Bytes keyOf(uint8_t device, uint8_t address, const Bytes& data, size_t n) {
    Bytes key;
    key.reserve(2 + n);
    key.push_back(device);
    key.push_back(address);
    for (size_t i = 0; i < n && i < data.size(); ++i) key.push_back(data[i]);
    return key;
}

// A port power switch shows in the port status bits: which register holds them.
bool portSwitch(const std::string& model, const Request& r, Bytes* key, int* port, bool* on) {
    if (r.command != SET || r.data.size() < 2) return false;
    *port = r.data[r.data.size() - 2];
    *on = r.data.back() != 0;
    if (r.device == POE && r.address == 0x08) {
        *key = r.data.size() >= 3 ? Bytes{POE, 0x08, 0} : Bytes{POE, 0x08};
        return true;
    }
    if (r.device == PSE13 && r.address == 0x07 && r.data.size() >= 3) {
        *key = is(model, "KX73") ? Bytes{PSE13, 0x07, r.data[0]} : Bytes{PSE13, 0x07, 0};
        return true;
    }
    return false;
}

}  // namespace

bool peripheralDefaultAnswer(const std::string& product, uint8_t device, uint8_t address,
                             Bytes* out) {
    std::string model = modelOf(product);
    for (const Row& r : table()) {
        if (r.device == device && r.address == address && listed(r.products, model)) {
            *out = r.bytes;
            return true;
        }
    }
    return false;
}

bool peripheralAnswer(const std::string& product, std::map<Bytes, Bytes>& remembered,
                      const Request& r, Bytes* out) {
    std::string model = modelOf(product);
    Bytes key;
    int port = 0;
    bool on = false;
    if (portSwitch(model, r, &key, &port, &on)) {
        auto it = remembered.find(key);
        Bytes current;
        if (it != remembered.end())
            current = it->second;
        else if (!perPort(model, r.device, r.device == POE ? 0x08 : 0x07,
                          Bytes(key.begin() + 2, key.end()), &current))
            peripheralDefaultAnswer(product, r.device, r.address, &current);
        if (current.empty()) current = {0};
        if (port >= 1 && port <= 8) {
            uint8_t bit = static_cast<uint8_t>(1u << (port - 1));
            current[0] = on ? (current[0] | bit) : (current[0] & ~bit);
        }
        remembered[key] = current;
        *out = {ACK};
        return true;
    }
    size_t n = pickerLength(r.device, r.address);
    if (n > 0) {
        key = keyOf(r.device, r.address, r.data, n);
        if (r.command == SET) {
            remembered[key] =
                Bytes(r.data.begin() + static_cast<long>(std::min(n, r.data.size())), r.data.end());
            *out = {ACK};
            return true;
        }
        auto it = remembered.find(key);
        if (it != remembered.end())
            *out = it->second;
        else if (!picked(r.device, r.address, Bytes(key.begin() + 2, key.end()), out))
            return false;
        return true;
    }
    if (r.command != GET) return false;
    // The battery's power-off value is set with the GET command code and a data byte.
    if (r.device == BKP && r.address == 0x0E && !r.data.empty()) {
        remembered[{BKP, 0x0E}] = r.data;
        *out = {ACK};
        return true;
    }
    auto it = remembered.find(keyOf(r.device, r.address, r.data, r.data.size()));
    if (it != remembered.end()) {
        *out = it->second;
        return true;
    }
    if (r.device == BKP && r.address == 0x0E) {
        auto set = remembered.find({BKP, 0x0E});
        if (set != remembered.end()) {
            *out = set->second;
            return true;
        }
    }
    return perPort(model, r.device, r.address, r.data, out);
}

}  // namespace brdsim
