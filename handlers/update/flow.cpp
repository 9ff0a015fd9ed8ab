// The update sequence: enter the boot loader, check its layout, unlock, erase, write,
// verify, and only then start the application.
#include "flow.h"

#include <algorithm>
#include <cstdio>

#include "mcu_base.h"

namespace update {

namespace {

// Placeholder device, command and address bytes of the system MCU's IAP rows: none of
// them is a reserved value, so they stuff as the real ones do.
const Bytes kStHeader = {0x03, 0x03, 0x04};

uint64_t frameBytes(Target t, Bytes inner) {
    if (t == Target::Mcu) {
        inner.insert(inner.begin(), kStHeader.begin(), kStHeader.end());
        inner.push_back(Get_CRC8(inner.data(), static_cast<unsigned int>(inner.size())));
    } else {
        inner.insert(inner.begin(), 0x12);  // command code, or its echo
    }
    return stuffedLength(inner);
}

// The expected flash contents of a range that lies inside the image.
const uint8_t* expected(const Image& img, const Block& b) {
    return img.data.data() + (b.addr - img.start);
}

}  // namespace

std::string versionText(Target t, const Bytes& answer) {
    if (t == Target::Mcu) return std::string(answer.begin(), answer.end());
    if (answer.size() < 3) return "";
    return std::to_string(answer[0]) + "." + std::to_string(answer[1]) + "." +
           std::to_string(answer[2]);
}

uint64_t stuffedLength(const Bytes& inner) {
    uint64_t n = 2;
    for (uint8_t b : inner) n += (b >= 0xF0 && b <= 0xF3) ? 2 : 1;
    return n;
}

double Plan::lineSeconds(int baud) const {
    return baud > 0 ? static_cast<double>(lineBytes) * 10.0 / baud : 0.0;
}

uint32_t defaultPageSize(Target t) {
    return t == Target::Mcu ? 1024 : 256;
}

Plan makePlan(const Settings& s, const Image& img, uint32_t pageSize) {
    Plan p;
    p.eraseStart = s.appStart;
    p.eraseEnd = s.flashEnd;
    p.imageBytes = img.data.size();
    Target t = s.target;
    auto add = [&](Bytes req, Bytes ans) {
        p.lineBytes += frameBytes(t, req) + frameBytes(t, ans);
    };
    // Entering the boot loader, its information, unlock and erase.
    for (int i = 0; i < 4; ++i) add({}, {0x01, 0x00});
    add({}, Bytes(BOOT_INFO_SIZE, 0x00));
    add(Bytes(8, 0x00), {0x01});
    add(Bytes(8, 0x00), {0x01});
    const uint32_t ws = static_cast<uint32_t>(s.writeSize);
    for (uint32_t off = 0; off < img.data.size(); off += ws) {
        uint32_t len = std::min<uint32_t>(ws, static_cast<uint32_t>(img.data.size() - off));
        const uint8_t* d = img.data.data() + off;
        if (std::all_of(d, d + len, [](uint8_t b) { return b == 0xFF; })) continue;
        Block b{img.start + off, len};
        p.writes.push_back(b);
        Bytes req;
        put32(&req, b.addr);
        req.insert(req.end(), d, d + len);
        Bytes ans = {STATUS_OK};
        put32(&ans, b.addr);
        add(req, ans);
    }
    // Verify units: pages (check code) or VERIFY_SIZE blocks (read-back), clipped to the image.
    uint32_t unit = t == Target::Mcu ? pageSize : static_cast<uint32_t>(s.verifySize);
    if (unit == 0) unit = defaultPageSize(t);
    for (uint64_t a = img.start; a < img.end();) {
        uint64_t next = t == Target::Mcu ? (a / unit + 1) * unit : a + unit;
        next = std::min<uint64_t>(next, img.end());
        Block b{static_cast<uint32_t>(a), static_cast<uint32_t>(next - a)};
        p.verify.push_back(b);
        Bytes req;
        put32(&req, b.addr);
        Bytes ans = {STATUS_OK};
        if (t == Target::Mcu) {
            put32(&req, b.len);
            put32(&ans, crc32(expected(img, b), b.len));
        } else {
            put16(&req, static_cast<uint16_t>(b.len));
            put32(&ans, b.addr);
            ans.insert(ans.end(), expected(img, b), expected(img, b) + b.len);
        }
        add(req, ans);
        a = next;
    }
    // Reboot and the application's version.
    add({}, {0x01});
    add({}, Bytes(16, 0x20));
    return p;
}

Updater::Updater(UpdateLink& link, const Settings& s, Progress& progress,
                 const std::atomic<bool>& interrupted)
    : link_(link), s_(s), progress_(progress), interrupted_(interrupted) {}

Updater::Call Updater::call(Step step, Mode mode, const Args& a, Bytes* answer, Report* rep) {
    const UpdateRow* row = findRow(s_.target, step);
    if (row == nullptr) {
        rep->error = "this boot loader has no such step";
        return Call::Failed;
    }
    Bytes data = encodeRequest(*row, a);
    Mode m = row->mode == Mode::Any ? mode : row->mode;
    for (int attempt = 1; attempt <= TRIES; ++attempt) {
        if (interrupted_) {
            rep->error = "interrupted";
            return Call::Failed;
        }
        answer->clear();
        int r = link_.exchange(*row, m, data, answer);
        bool full = answer->size() >= static_cast<size_t>(row->answerMin);
        if (r == MCU_RESULT_OK && row->status && !answer->empty() && (*answer)[0] != STATUS_OK) {
            rep->error = std::string(row->name) + ": refused: " + statusText((*answer)[0]);
            return Call::Failed;
        }
        // A write's answer names the address written: anything else is not its answer.
        bool mine = step != Step::Write || (full && le32(answer->data() + 1) == a.addr);
        if (r == MCU_RESULT_OK && full && mine) return Call::Ok;
        if (r == MCU_RESULT_WRITE_FAIL) {
            rep->error = std::string(row->name) + ": the request could not be written: link lost";
            return Call::Failed;
        }
        if (r != MCU_RESULT_OK && r != MCU_RESULT_NONE && r != MCU_RESULT_TIMEOUT) {
            rep->error = std::string(row->name) + ": exchange failed (" + std::to_string(r) + ")";
            return Call::Failed;
        }
        if (attempt < TRIES) ++rep->retries;
    }
    rep->error =
        std::string(row->name) + ": no usable answer after " + std::to_string(TRIES) + " tries";
    return Call::Failed;
}

bool Updater::enterBootLoader(Report* rep) {
    Bytes ans;
    // The application answers in its own framing; a board already in its boot loader
    // may only answer in the boot loader's.
    session_ = Mode::App;
    if (call(Step::Mode, Mode::App, {}, &ans, rep) != Call::Ok) {
        if (interrupted_) return false;
        session_ = Mode::Update;
        if (call(Step::Mode, Mode::Update, {}, &ans, rep) != Call::Ok) return false;
    }
    rep->error.clear();
    if (ans[0] == 2) {
        rep->resumed = true;
        rep->state = "boot loader";
        progress_.note(std::string("brdflash: the ") + targetName(s_.target) +
                       " controller is in its boot loader: starting again from erase");
    } else {
        rep->state = "application";
        if (call(Step::Request, Mode::App, {}, &ans, rep) != Call::Ok) return false;
    }
    session_ = Mode::Update;
    rep->state = "boot loader";
    Args start;
    start.flag = 1;
    if (findRow(s_.target, Step::Start) != nullptr &&
        call(Step::Start, Mode::Update, start, &ans, rep) != Call::Ok)
        return false;
    if (call(Step::Mode, Mode::Update, {}, &ans, rep) != Call::Ok) return false;
    if (ans[0] != 2) {
        rep->error = "the controller did not enter its boot loader";
        return false;
    }
    return true;
}

bool Updater::checkBootInfo(Report* rep) {
    Bytes ans;
    if (call(Step::Info, session_, {}, &ans, rep) != Call::Ok) return false;
    BootInfo& b = rep->boot;
    parseBootInfo(ans, &b);
    rep->hasBoot = true;
    struct Pair {
        const char* what;
        uint32_t board, config;
    };
    const Pair pairs[] = {{"flash start (MCU_startAddress)", b.flashStart, s_.flashStart},
                          {"flash end (MCU_endAddress)", b.flashEnd, s_.flashEnd},
                          {"application start (ProgramROM_startAddress)", b.appStart, s_.appStart},
                          {"RAM start (RAM_startAddress)", b.ramStart, s_.ramStart},
                          {"RAM end (RAM_endAddress)", b.ramEnd, s_.ramEnd}};
    for (const Pair& p : pairs) {
        if (p.board != p.config) {
            rep->error = std::string("the boot loader reports ") + p.what + " " + hexAddr(p.board) +
                         ", the configuration says " + hexAddr(p.config);
            return false;
        }
    }
    if (b.maxWrite < s_.writeSize) {
        rep->error = "the boot loader writes at most " + std::to_string(b.maxWrite) +
                     " bytes at a time, WRITE_SIZE is " + std::to_string(s_.writeSize);
        return false;
    }
    if (b.pageSize == 0 || (s_.appStart - b.flashStart) % b.pageSize != 0 ||
        (s_.flashEnd - b.flashStart) % b.pageSize != 0) {
        rep->error = "the application region does not fall on the boot loader's pages of " +
                     std::to_string(b.pageSize) + " bytes";
        return false;
    }
    return true;
}

bool Updater::firstDifference(const Block& page, const Image& img, Report* rep) {
    Bytes ans;
    for (uint32_t off = 0; off < page.len; off += static_cast<uint32_t>(s_.verifySize)) {
        Args a;
        a.addr = page.addr + off;
        a.len = std::min<uint32_t>(static_cast<uint32_t>(s_.verifySize), page.len - off);
        if (call(Step::Read, session_, a, &ans, rep) != Call::Ok) return false;
        if (ans.size() < 5 + static_cast<size_t>(a.len) || le32(ans.data() + 1) != a.addr) {
            rep->error = "the read-back of " + hexAddr(a.addr) + " came back short";
            return false;
        }
        const uint8_t* want = img.data.data() + (a.addr - img.start);
        for (uint32_t i = 0; i < a.len; ++i) {
            if (ans[5 + i] != want[i]) {
                rep->hasDifference = true;
                rep->firstDifference = a.addr + i;
                char buf[128];
                std::snprintf(buf, sizeof buf,
                              "verification failed: flash holds %02X at 0x%08X, the image %02X",
                              ans[5 + i], a.addr + i, want[i]);
                rep->error = buf;
                return false;
            }
        }
    }
    return true;
}

bool Updater::verify(const Plan& plan, const Image& img, Report* rep, bool reading) {
    uint64_t total = plan.imageBytes, done = 0;
    progress_.begin("verify", total);
    Bytes ans;
    for (const Block& b : plan.verify) {
        if (reading) {
            if (!firstDifference(b, img, rep)) return false;
        } else {
            Args a;
            a.addr = b.addr;
            a.len = b.len;
            if (call(Step::Check, session_, a, &ans, rep) != Call::Ok) return false;
            if (le32(ans.data() + 1) != crc32(expected(img, b), b.len)) {
                // Name the first differing address; a page that reads back equal after
                // all means the check code itself was wrong.
                if (!firstDifference(b, img, rep)) return false;
                rep->error = "verification failed: the check code of page " + hexAddr(b.addr) +
                             " differs, its bytes read back equal";
                return false;
            }
        }
        done += b.len;
        progress_.update(done);
    }
    progress_.end();
    rep->verified = true;
    return true;
}

int Updater::stop(Report* rep, int code) {
    progress_.end();
    rep->outcome = "failed";
    return code;
}

int Updater::update(const Image& img, Report* rep) {
    if (!enterBootLoader(rep)) return stop(rep, EXIT_BOARD);
    if (!checkBootInfo(rep)) return stop(rep, rep->hasBoot ? EXIT_CONFIG : EXIT_BOARD);
    Plan plan = makePlan(s_, img, rep->boot.pageSize);
    Bytes ans;
    if (call(Step::Unlock, Mode::Update, {}, &ans, rep) != Call::Ok) return stop(rep, EXIT_BOARD);
    Args erase;
    erase.addr = plan.eraseStart;
    erase.end = plan.eraseEnd;
    progress_.begin("erase", plan.eraseEnd - plan.eraseStart);
    if (call(Step::Erase, Mode::Update, erase, &ans, rep) != Call::Ok) return stop(rep, EXIT_BOARD);
    progress_.update(plan.eraseEnd - plan.eraseStart);
    progress_.end();

    uint64_t total = 0;
    for (const Block& b : plan.writes) total += b.len;
    progress_.begin("write", total);
    for (const Block& b : plan.writes) {
        Args w;
        w.addr = b.addr;
        w.data = expected(img, b);
        w.dataLen = b.len;
        if (call(Step::Write, Mode::Update, w, &ans, rep) != Call::Ok) return stop(rep, EXIT_BOARD);
        rep->bytesWritten += b.len;
        ++rep->blocksWritten;
        progress_.update(rep->bytesWritten);
    }
    progress_.end();

    bool hasCheck = findRow(s_.target, Step::Check) != nullptr;
    if (!verify(plan, img, rep, !hasCheck)) return stop(rep, EXIT_BOARD);

    // Only a fully verified application is started.
    if (call(Step::Reboot, Mode::Update, {}, &ans, rep) != Call::Ok) return stop(rep, EXIT_BOARD);
    rep->rebooted = true;
    rep->state = "application";
    session_ = Mode::App;
    if (call(Step::AppVersion, Mode::App, {}, &ans, rep) != Call::Ok) return stop(rep, EXIT_BOARD);
    rep->appVersion = versionText(s_.target, ans);
    std::string tag = tagText(img.data, s_.versionAddress - img.start);
    // The CAN MCU's application reports only its version numbers, not its model.
    std::string want = tag;
    if (s_.target == Target::Can)
        want = tag.size() > s_.model.size() ? tag.substr(s_.model.size() + 1) : "";
    if (rep->appVersion != want) {
        rep->error =
            "the application reports '" + rep->appVersion + "', the image carries '" + want + "'";
        return stop(rep, EXIT_BOARD);
    }
    rep->outcome = "updated";
    return EXIT_DONE;
}

// Asks the board which program runs, first as the application would be asked, then as
// the boot loader; sets the session and the reported state. False when neither answers.
bool Updater::askMode(Bytes* ans, Report* rep) {
    session_ = Mode::App;
    if (call(Step::Mode, Mode::App, {}, ans, rep) != Call::Ok) {
        session_ = Mode::Update;
        if (call(Step::Mode, Mode::Update, {}, ans, rep) != Call::Ok) return false;
    }
    rep->error.clear();
    bool boot = (*ans)[0] == 2;
    rep->state = boot ? "boot loader" : "application";
    if (boot) session_ = Mode::Update;
    return true;
}

int Updater::verifyOnly(const Image& img, Report* rep) {
    Bytes ans;
    if (!askMode(&ans, rep)) return stop(rep, EXIT_BOARD);
    if (!checkBootInfo(rep)) return stop(rep, rep->hasBoot ? EXIT_CONFIG : EXIT_BOARD);
    Plan plan = makePlan(s_, img, rep->boot.pageSize);
    bool hasCheck = findRow(s_.target, Step::Check) != nullptr;
    if (!verify(plan, img, rep, !hasCheck)) {
        progress_.end();
        rep->outcome = rep->hasDifference ? "differs" : "failed";
        return EXIT_BOARD;
    }
    rep->outcome = "verified";
    return EXIT_DONE;
}

int Updater::info(Report* rep) {
    Bytes ans;
    if (!askMode(&ans, rep)) return stop(rep, EXIT_BOARD);
    bool boot = session_ == Mode::Update;
    if (call(Step::Info, session_, {}, &ans, rep) != Call::Ok) return stop(rep, EXIT_BOARD);
    parseBootInfo(ans, &rep->boot);
    rep->hasBoot = true;
    const UpdateRow* v = findRow(s_.target, Step::AppVersion);
    if (v->mode == Mode::Any || !boot) {
        if (call(Step::AppVersion, session_, {}, &ans, rep) != Call::Ok)
            return stop(rep, EXIT_BOARD);
        rep->appVersion = versionText(s_.target, ans);
    }
    rep->outcome = "info";
    return EXIT_DONE;
}

}  // namespace update
