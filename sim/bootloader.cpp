// The simulated boot loaders: one flash model answered through the system MCU's IAP rows
// and the CAN MCU's update codes.
#include "bootloader.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace brdsim {

namespace {

constexpr uint8_t OK = 0x01, LOCKED = 0x02, OUTSIDE = 0x03, BAD_LENGTH = 0x04, NOT_BOOT = 0x05,
                  BAD_KEY = 0x06, UNALIGNED = 0x07, NO_APP = 0x08;
const uint8_t kKey[8] = {0x23, 0x01, 0x67, 0x45, 0xAB, 0x89, 0xEF, 0xCD};

// Timing of a small Cortex-M part's flash when asked for.
constexpr auto PAGE_ERASE_TIME = std::chrono::milliseconds(20);
constexpr auto WORD_WRITE_TIME = std::chrono::microseconds(50);

uint32_t get32(const Bytes& b, size_t at) {
    return static_cast<uint32_t>(b[at]) | static_cast<uint32_t>(b[at + 1]) << 8 |
           static_cast<uint32_t>(b[at + 2]) << 16 | static_cast<uint32_t>(b[at + 3]) << 24;
}

void add32(Bytes* b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b->push_back(static_cast<uint8_t>(v >> (8 * i)));
}

void add16(Bytes* b, uint16_t v) {
    b->push_back(static_cast<uint8_t>(v));
    b->push_back(static_cast<uint8_t>(v >> 8));
}

// The board's check code: CRC-32 as zlib computes it, bit by bit.
uint32_t checkCode(const uint8_t* p, size_t n) {
    uint32_t crc = 0xFFFFFFFFu;
    for (size_t i = 0; i < n; ++i) {
        crc ^= p[i];
        for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

}  // namespace

FlashLayout stFlashLayout() {
    return {0x08000000, 0x08020000, 0x08004000, 0x0800F000, 0x20000000,
            0x20005000, 1024,       256,        2,          1};
}

FlashLayout nxpFlashLayout() {
    return {0x00000000, 0x00040000, 0x00002000, 0x00002400, 0x10000000, 0x10009000, 256, 256, 1, 4};
}

bool parseFlashFault(const std::string& text, FlashFault* out) {
    static const std::pair<const char*, FlashFaultKind> kinds[] = {
        {"lost", FlashFaultKind::LostAnswer},
        {"corrupt", FlashFaultKind::CorruptAnswer},
        {"nowrite", FlashFaultKind::WriteNotTaken},
        {"restart", FlashFaultKind::Restart}};
    size_t at = text.find('@');
    if (at == std::string::npos) return false;
    std::string name = text.substr(0, at);
    for (const auto& [n, k] : kinds) {
        if (name != n) continue;
        const char* s = text.c_str() + at + 1;
        char* end = nullptr;
        long n1 = std::strtol(s, &end, 10);
        if (end == s || n1 < 1 || n1 > 1000000) return false;
        long c = 1;
        if (*end == 'x') {
            const char* cs = end + 1;
            c = std::strtol(cs, &end, 10);
            if (end == cs || c < 1 || c > 1000) return false;
        }
        if (*end != '\0') return false;
        *out = FlashFault{k, static_cast<int>(n1), static_cast<int>(c)};
        return true;
    }
    return false;
}

BootLoader::BootLoader(FlashLayout layout, std::string appTag)
    : layout_(layout), flash_(layout.flashEnd - layout.flashStart, 0xFF) {
    // A factory application: stack at the top of RAM, reset handler just after the
    // vector table, and its model tag.
    Bytes vt;
    add32(&vt, layout.ramEnd);
    add32(&vt, layout.appStart + 0x101);
    std::copy(vt.begin(), vt.end(), flash_.begin() + (layout.appStart - layout.flashStart));
    std::copy(appTag.begin(), appTag.end(),
              flash_.begin() + (layout.versionAddress - layout.flashStart));
    flash_[layout.versionAddress - layout.flashStart + appTag.size()] = 0x00;
}

void BootLoader::queueFault(FlashFault f) {
    std::lock_guard<std::mutex> g(mu_);
    faults_.push_back(f);
}

void BootLoader::setFlashTiming(bool on) {
    std::lock_guard<std::mutex> g(mu_);
    timing_ = on;
}

bool BootLoader::inBootLoader() const {
    std::lock_guard<std::mutex> g(mu_);
    return boot_;
}

bool BootLoader::unlocked() const {
    std::lock_guard<std::mutex> g(mu_);
    return unlocked_;
}

int BootLoader::writeCount() const {
    std::lock_guard<std::mutex> g(mu_);
    return writes_;
}

Bytes BootLoader::readFlash(uint32_t addr, size_t n) const {
    std::lock_guard<std::mutex> g(mu_);
    if (addr < layout_.flashStart || addr + n > layout_.flashEnd) return {};
    auto from = flash_.begin() + (addr - layout_.flashStart);
    return Bytes(from, from + static_cast<long>(n));
}

void BootLoader::loadApplication(uint32_t addr, const Bytes& bytes) {
    std::lock_guard<std::mutex> g(mu_);
    if (addr < layout_.flashStart || addr + bytes.size() > layout_.flashEnd) return;
    std::copy(bytes.begin(), bytes.end(), flash_.begin() + (addr - layout_.flashStart));
}

std::string BootLoader::appVersion() const {
    std::lock_guard<std::mutex> g(mu_);
    std::string s;
    for (size_t i = layout_.versionAddress - layout_.flashStart; i < flash_.size() && s.size() < 64;
         ++i) {
        uint8_t c = flash_[i];
        if (c == 0x00 || c == 0xFF || c < 0x20 || c > 0x7E) break;
        s.push_back(static_cast<char>(c));
    }
    return s;
}

bool BootLoader::appValid() const {
    size_t at = layout_.appStart - layout_.flashStart;
    uint32_t sp = get32(flash_, at), reset = get32(flash_, at + 4);
    return sp > layout_.ramStart && sp <= layout_.ramEnd && (reset & 1u) &&
           (reset & ~1u) >= layout_.appStart && (reset & ~1u) < layout_.flashEnd;
}

bool BootLoader::inApp(uint32_t addr, uint64_t len) const {
    return addr >= layout_.appStart && addr + len <= layout_.flashEnd;
}

BootLoader::Reply BootLoader::st(uint8_t command, uint8_t address, const Bytes& data) {
    Op op = Op::Unknown;
    if (command == 0x00)
        op = !data.empty() && data[0] == 0x01 ? Op::Start : Op::Cancel;
    else if (command == 0x02) {
        static const Op gets[] = {Op::Unknown, Op::Mode, Op::Info,
                                  Op::Version, Op::Read, Op::State};
        if (address < 6) op = gets[address];
    } else if (command == 0x03) {
        static const Op sets[] = {Op::Unknown, Op::Request, Op::Unlock, Op::Erase,
                                  Op::Write,   Op::Check,   Op::Reboot};
        if (address < 7) op = sets[address];
    }
    return run(op, data);
}

BootLoader::Reply BootLoader::nxp(uint8_t code, const Bytes& data) {
    static const std::pair<uint8_t, Op> codes[] = {
        {0x02, Op::Version}, {0x10, Op::Erase},  {0x12, Op::Write}, {0x14, Op::Read},
        {0x20, Op::State},   {0x24, Op::Unlock}, {0x30, Op::Info},  {0x36, Op::Reboot},
        {0x40, Op::Mode},    {0x42, Op::Request}};
    for (const auto& [c, op] : codes)
        if (c == code) return run(op, data);
    return run(Op::Unknown, data);
}

BootLoader::Reply BootLoader::run(Op op, const Bytes& data) {
    std::unique_lock<std::mutex> g(mu_);
    Reply r;
    Bytes& out = r.data;
    const FlashLayout& L = layout_;
    auto status = [&](uint8_t s) {
        out.push_back(s);
        return r;
    };
    bool needBoot = op == Op::Unlock || op == Op::Erase || op == Op::Write || op == Op::Start ||
                    op == Op::Cancel;
    if (needBoot && !boot_) return status(NOT_BOOT);
    switch (op) {
        case Op::Mode:
            out = {static_cast<uint8_t>(boot_ ? 2 : 1), static_cast<uint8_t>(appValid())};
            return r;
        case Op::Request:
            boot_ = true;  // the application restarts into its boot loader
            unlocked_ = false;
            return status(OK);
        case Op::Start:
            return status(OK);
        case Op::Cancel:
            unlocked_ = false;
            state_ = 0;
            return status(OK);
        case Op::Info:
            out = {L.major, L.minor};
            add32(&out, L.flashStart);
            add32(&out, L.flashEnd);
            add32(&out, L.appStart);
            add16(&out, L.pageSize);
            add16(&out, L.maxWrite);
            add32(&out, L.ramStart);
            add32(&out, L.ramEnd);
            return r;
        case Op::Version: {
            g.unlock();
            std::string v = appVersion();
            out.assign(v.begin(), v.end());
            return r;
        }
        case Op::State:
            out = {static_cast<uint8_t>(state_), static_cast<uint8_t>(appValid())};
            return r;
        case Op::Unlock:
            if (data.size() != sizeof kKey || !std::equal(data.begin(), data.end(), kKey))
                return status(BAD_KEY);
            unlocked_ = true;
            state_ = 1;
            return status(OK);
        case Op::Erase: {
            if (!unlocked_) return status(LOCKED);
            if (data.size() != 8) return status(BAD_LENGTH);
            uint32_t from = get32(data, 0), to = get32(data, 4);
            if (to <= from || !inApp(from, to - from)) return status(OUTSIDE);
            if ((from - L.flashStart) % L.pageSize || (to - L.flashStart) % L.pageSize)
                return status(UNALIGNED);
            std::fill(flash_.begin() + (from - L.flashStart), flash_.begin() + (to - L.flashStart),
                      0xFF);
            state_ = 2;
            if (timing_) {
                g.unlock();
                std::this_thread::sleep_for(PAGE_ERASE_TIME * ((to - from) / L.pageSize));
            }
            return status(OK);
        }
        case Op::Write: {
            ++writes_;
            if (!unlocked_) return status(LOCKED);
            if (data.size() < 5 || data.size() - 4 > L.maxWrite) return status(BAD_LENGTH);
            uint32_t addr = get32(data, 0);
            size_t n = data.size() - 4;
            if (!inApp(addr, n)) return status(OUTSIDE);
            // Which fault, if any, hits this write: faults count writes from when queued.
            bool lost = false, corrupt = false, noWrite = false, restart = false;
            for (auto it = faults_.begin(); it != faults_.end();) {
                if (--it->atWrite > 0) {
                    ++it;
                    continue;
                }
                lost |= it->kind == FlashFaultKind::LostAnswer;
                corrupt |= it->kind == FlashFaultKind::CorruptAnswer;
                noWrite |= it->kind == FlashFaultKind::WriteNotTaken;
                restart |= it->kind == FlashFaultKind::Restart;
                if (--it->count > 0) {
                    it->atWrite = 1;
                    ++it;
                } else {
                    it = faults_.erase(it);
                }
            }
            if (!noWrite) {
                auto at = flash_.begin() + (addr - L.flashStart);
                for (size_t i = 0; i < n; ++i) at[i] &= data[4 + i];  // flash only clears bits
            }
            state_ = 3;
            out.push_back(OK);
            add32(&out, addr);
            r.lost = lost;
            r.corrupt = corrupt;
            if (restart) {  // answered, then the board restarts into its boot loader
                unlocked_ = false;
                state_ = 0;
                boot_ = true;
            }
            if (timing_) {
                g.unlock();
                std::this_thread::sleep_for(WORD_WRITE_TIME * ((n + 3) / 4));
            }
            return r;
        }
        case Op::Check:
        case Op::Read: {
            size_t need = op == Op::Check ? 8 : 6;
            if (data.size() != need) return status(BAD_LENGTH);
            uint32_t addr = get32(data, 0);
            uint32_t len = op == Op::Check ? get32(data, 4) : (data[4] | data[5] << 8);
            if (addr < L.flashStart || static_cast<uint64_t>(addr) + len > L.flashEnd)
                return status(OUTSIDE);
            const uint8_t* p = flash_.data() + (addr - L.flashStart);
            out.push_back(OK);
            if (op == Op::Check) {
                add32(&out, checkCode(p, len));
            } else {
                if (len > 500) return r.data = {BAD_LENGTH}, r;
                add32(&out, addr);
                out.insert(out.end(), p, p + len);
            }
            return r;
        }
        case Op::Reboot:
            if (!appValid()) return status(NO_APP);
            boot_ = false;
            unlocked_ = false;
            state_ = 0;
            return status(OK);
        case Op::Unknown:
            break;
    }
    return status(BAD_LENGTH);
}

}  // namespace brdsim
