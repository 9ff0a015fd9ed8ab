// The simulated NXP CAN controller and the ST CAN channels on the simulated bus.
#include "nxp_controller.h"

#include <cstdio>

#include "sim_frame.h"

namespace brdsim {

namespace {

constexpr uint8_t NXP_CAN_FRAME = 0x30;
constexpr uint8_t OK = 1;
constexpr uint8_t FAIL = 0;
// How each controller marks extended and remote frames.
constexpr uint8_t ST_IDE_EXT = 4, ST_RTR_REMOTE = 2;
constexpr uint8_t NXP_IDE_EXT = 1, NXP_RTR_REMOTE = 1;

// The NXP controller's framing in application mode.
constexpr uint8_t NXP_START_CODE_C1 = 0xC1;
constexpr uint8_t NXP_END_CODE_C2 = 0xC2;
constexpr uint8_t ESCAPE_CODE_C0 = 0xC0;

Bytes frame(uint8_t start, uint8_t end, uint8_t escape, const Bytes& body) {
    return stuffWith(start, end, escape, body);
}

uint32_t le32(const Bytes& b, size_t at) {
    uint32_t v = 0;
    for (int k = 0; k < 4; ++k) v |= static_cast<uint32_t>(b[at + k]) << (8 * k);
    return v;
}

void putLe32(Bytes* b, uint32_t v) {
    for (int k = 0; k < 4; ++k) b->push_back(static_cast<uint8_t>(v >> (8 * k)));
}

// The 15 bytes of a message request: id(4), ide, rtr, dlc, data(8).
bool parseMessage(const Bytes& d, bool nxp, CanMessage* m) {
    if (d.size() < 7) return false;
    m->id = le32(d, 0);
    m->ext = d[4] != 0;
    m->rtr = d[5] == (nxp ? NXP_RTR_REMOTE : ST_RTR_REMOTE);
    m->dlc = d[6] > 8 ? 8 : d[6];
    m->id &= m->ext ? 0x1FFFFFFFu : 0x7FFu;
    for (int k = 0; k < m->dlc && !m->rtr; ++k) m->data[k] = 7u + k < d.size() ? d[7 + k] : 0;
    return true;
}

Bytes errorData(const CanErrors& e) {
    Bytes b = {e.code, e.txErrors, e.rxErrors};
    putLe32(&b, e.count);
    return b;
}

// Filter data: 0 clears, 1 id(4) mask(4) ide adds one.
bool applyFilter(CanBus& bus, int port, const Bytes& d) {
    if (d.size() == 1 && d[0] == 0) {
        bus.clearFilters(port);
        return true;
    }
    if (d.size() < 10 || d[0] != 1) return false;
    bus.addFilter(port, le32(d, 1), le32(d, 5), d[9] != 0);
    return true;
}

}  // namespace

Bytes encodeNxpCanFrame(const CanMessage& m) {
    Bytes body = {NXP_START_CODE_C1, NXP_CAN_FRAME};
    putLe32(&body, m.id);
    body.push_back(m.ext ? NXP_IDE_EXT : 0);
    body.push_back(m.rtr ? NXP_RTR_REMOTE : 0);
    body.push_back(m.dlc);
    for (int k = 0; k < m.dlc; ++k) body.push_back(m.rtr ? 0 : m.data[k]);
    body.push_back(NXP_END_CODE_C2);
    // frame() adds the start and end codes itself.
    return frame(NXP_START_CODE_C1, NXP_END_CODE_C2, ESCAPE_CODE_C0,
                 Bytes(body.begin() + 1, body.end() - 1));
}

NxpController::NxpController(CanBus& bus) : bus_(bus), boot_(nxpFlashLayout(), "KX07 1.4.2") {
    auto reply = [](uint8_t code, Bytes data = {}) {
        Bytes b = {static_cast<uint8_t>(code + 1), OK};
        b.insert(b.end(), data.begin(), data.end());
        return b;
    };
    auto refuse = [](uint8_t code) { return Bytes{static_cast<uint8_t>(code + 1), FAIL}; };
    commands_[0x02] = [=](const Bytes&) { return reply(0x02, Bytes(FW_VERSION, FW_VERSION + 3)); };
    commands_[0x04] = [=](const Bytes&) { return reply(0x04, Bytes(BL_VERSION, BL_VERSION + 3)); };
    commands_[0x10] = [=, this](const Bytes& d) {
        if (d.size() != 1 || d[0] > 8) return refuse(0x10);
        bus_.setBitRate(busPort_, d[0]);
        return reply(0x10);
    };
    commands_[0x12] = [=, this](const Bytes& d) {
        return applyFilter(bus_, busPort_, d) ? reply(0x12) : refuse(0x12);
    };
    commands_[0x20] = [=, this](const Bytes& d) {
        CanMessage m;
        if (!parseMessage(d, true, &m)) return refuse(0x20);
        bus_.transmit(busPort_, m);
        return reply(0x20);
    };
    commands_[0x22] = [=](const Bytes&) { return reply(0x22); };
    commands_[0x34] = [=, this](const Bytes&) {
        return reply(0x34, errorData(bus_.errors(busPort_)));
    };
    commands_[0x50] = [=](const Bytes&) {
        return reply(0x50, Bytes{static_cast<uint8_t>(INPUT_MILLIVOLTS & 0xFF),
                                 static_cast<uint8_t>(INPUT_MILLIVOLTS >> 8)});
    };
}

void NxpController::addCommand(uint8_t code, Command handler) {
    commands_[code] = std::move(handler);
}

// The update codes: answered by the boot loader in F1/F2 framing, and the few the
// application also answers (update request, mode, information, its version).
Bytes NxpController::bootAnswer(uint8_t code, const Bytes& data, bool app) {
    BootLoader::Reply r = boot_.nxp(code, data);
    if (r.lost) return {};
    // Answers to reading codes carry no status of their own: the controller adds OK.
    bool reading = code == 0x02 || code == 0x20 || code == 0x30 || code == 0x40;
    Bytes body = {static_cast<uint8_t>(code + 1)};
    if (reading) body.push_back(OK);
    if (code == 0x02) {
        // The application reports its version as three numbers from its model tag.
        std::string tag(r.data.begin(), r.data.end());
        unsigned v[3] = {0, 0, 0};
        size_t blank = tag.find(' ');
        if (blank != std::string::npos)
            std::sscanf(tag.c_str() + blank + 1, "%u.%u.%u", &v[0], &v[1], &v[2]);
        for (unsigned x : v) body.push_back(static_cast<uint8_t>(x));
    } else {
        body.insert(body.end(), r.data.begin(), r.data.end());
    }
    if (r.corrupt) body[0] ^= 0x40;  // the host cannot take it for the answer it awaits
    return app ? frame(NXP_START_CODE_C1, NXP_END_CODE_C2, ESCAPE_CODE_C0, body)
               : frame(kFrameStart, kFrameEnd, kFrameEscape, body);
}

Bytes NxpController::answer(const Bytes& f) {
    // f: C1 code data... C2 (F1 ... F2 in the boot loader)
    if (f.size() < 2) return {};
    Bytes data = f.size() > 3 ? Bytes(f.begin() + 2, f.end() - 1) : Bytes{};
    if (f[0] == kFrameStart) return bootAnswer(f[1], data, false);
    if (f[1] == 0x02 || f[1] == 0x14 || f[1] == 0x30 || f[1] == 0x40 || f[1] == 0x42)
        return bootAnswer(f[1], data, true);
    if (f.size() < 3) return {};
    auto it = commands_.find(f[1]);
    if (it == commands_.end()) return {};
    Bytes body = it->second(Bytes(f.begin() + 2, f.end() - 1));
    if (body.empty()) return {};
    return frame(NXP_START_CODE_C1, NXP_END_CODE_C2, ESCAPE_CODE_C0, body);
}

void NxpController::deliver(const CanMessage& m) {
    port_.injectRaw(encodeNxpCanFrame(m));
}

bool NxpController::start() {
    if (busPort_ < 0)
        busPort_ = bus_.attach([this](const CanMessage& m) { deliver(m); },
                               [this] { return port_.backlog(); });
    port_.setFrameHandler({NXP_START_CODE_C1, NXP_END_CODE_C2, ESCAPE_CODE_C0},
                          [this](const Bytes& f) { return answer(f); });
    port_.setAltFraming({kFrameStart, kFrameEnd, kFrameEscape},
                        [this] { return boot_.inBootLoader(); });
    return port_.start();
}

std::pair<int, int> attachStChannels(Simulator& sim, CanBus& bus) {
    int ports[2];
    for (int ch = 0; ch < 2; ++ch) {
        uint8_t device = static_cast<uint8_t>(6 + ch);
        ports[ch] = bus.attach(
            [&sim, device](const CanMessage& m) {
                Bytes data(m.dlc, 0);
                if (!m.rtr) data.assign(m.data, m.data + m.dlc);
                sim.injectCanFrame(device, m.id, m.ext ? ST_IDE_EXT : 0, m.rtr ? ST_RTR_REMOTE : 0,
                                   data);
            },
            [&sim] { return sim.backlog(); });
        int port = ports[ch];
        sim.setDeviceHandler(
            device, [&bus, port](uint8_t command, uint8_t address, const Bytes& d) -> Bytes {
                if (command == 0x02)
                    return address == 0x01 ? errorData(bus.errors(port)) : Bytes{FAIL};
                if (command != 0x03) return {FAIL};
                switch (address) {
                    case 0x01:
                        if (d.size() != 1 || d[0] > 8) return {FAIL};
                        bus.setBitRate(port, d[0]);
                        return {OK};
                    case 0x02:
                        return {applyFilter(bus, port, d) ? OK : FAIL};
                    case 0x03: {
                        CanMessage m;
                        if (!parseMessage(d, false, &m)) return {FAIL};
                        bus.transmit(port, m);
                        return {OK};
                    }
                    case 0x04:
                    case 0x05:
                        return {OK};
                    default:
                        return {FAIL};
                }
            });
    }
    return {ports[0], ports[1]};
}

}  // namespace brdsim
