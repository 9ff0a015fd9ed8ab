// The update rows run one at a time from brdcmd.
#include "update_handlers.h"

#include <cstdio>
#include <cstring>
#include <sstream>

#include "context.h"
#include "exchange.h"
#include "flow.h"
#include "prompt.h"
#include "report.h"

namespace update {

namespace {

const char* yesNo(uint8_t v) {
    return v ? "yes" : "no";
}

// Reads the fields a row's request needs; false when the input ended.
bool askArgs(const UpdateRow& row, FILE* in, Args* a, Bytes* data) {
    for (Field f : row.request) {
        unsigned long v = 0;
        int n = 0;
        switch (f) {
            case Field::End:
                return true;
            case Field::Flag:  // the row says it: start 1, cancel 0
                a->flag = std::strcmp(row.name, "ST_IAP_CANCEL") == 0 ? 0 : 1;
                break;
            case Field::Key:
                break;
            case Field::Addr:
                std::printf("Address (hex): ");
                if (!core::readHexLine(in, &v, 0, 0xFFFFFFFFul)) return false;
                a->addr = static_cast<uint32_t>(v);
                break;
            case Field::Limit:
                std::printf("End address, the first byte after the range (hex): ");
                if (!core::readHexLine(in, &v, 0, 0xFFFFFFFFul)) return false;
                a->end = static_cast<uint32_t>(v);
                break;
            case Field::Len16:
            case Field::Len32:
                std::printf("Length in bytes (1-%d): ", f == Field::Len16 ? 500 : 0x1000000);
                if (!checkSelect(in, &n, 1, f == Field::Len16 ? 500 : 0x1000000)) return false;
                a->len = static_cast<uint32_t>(n);
                break;
            case Field::Data: {
                std::string text;
                std::printf("Data bytes (hex, separated by blanks): ");
                for (;;) {
                    if (!core::readTextLine(in, &text, 2048)) return false;
                    std::istringstream words(text);
                    std::string w;
                    data->clear();
                    bool ok = true;
                    while (ok && words >> w) {
                        char* end = nullptr;
                        unsigned long b = std::strtoul(w.c_str(), &end, 16);
                        ok = w.size() <= 2 && *end == '\0' && b <= 0xFF;
                        data->push_back(static_cast<uint8_t>(b));
                    }
                    if (ok && !data->empty() && data->size() <= 500) break;
                    std::printf("\nInput Error !!! Please input 1 to 500 hex bytes.\n");
                }
                a->data = data->data();
                a->dataLen = data->size();
                break;
            }
        }
    }
    return true;
}

// The pool entry of a row on a link, by its full name.
int poolIndex(const MCU_CONTENT* link, const char* name) {
    if (link == nullptr) return 0;
    for (int i = 0; i < link->cmd_count; ++i)
        if (std::strcmp(link->cmd_pool[i].funName, name) == 0) return link->cmd_pool[i].cmd_index;
    return 0;
}

// NXP_UPDATE_START and NXP_UPDATE_CANCEL carry no bytes: they move the link between the
// application's framing and the boot loader's.
int nxpSession(MCU_CONTENT* link, bool start, char* funName) {
    if (link == nullptr)
        return check_result(-1, REPORT_STANDARD, MCU_RESULT_OPEN_FAIL, "", 0, funName);
    if (!start) {
        link->nxpMode = NXP_MODE_AP;
        std::printf("fd(%d) link back in the application's framing\n", link->fd);
        return 1;
    }
    int index = poolIndex(link, "NXP_UPDATE_42_IS_REQUEST_UPDATE");
    core::Answer a = core::exchange(link, MCU_TYPE_NXP, NXP_MODE_AP, index);
    int verdict = core::report(link, REPORT_STANDARD, a, funName);
    if (verdict != 1) return verdict;
    link->nxpMode = NXP_MODE_UPDATE;
    std::printf("fd(%d) link in the boot loader's framing\n", link->fd);
    return 1;
}

}  // namespace

std::string renderUpdateAnswer(const UpdateRow& row, const Bytes& d) {
    std::string out;
    char buf[256];
    size_t at = 0;
    if (row.status) {
        if (d.empty()) return "no answer data\n";
        std::snprintf(buf, sizeof buf, "status: 0x%02X (%s)\n", d[0], statusText(d[0]));
        out += buf;
        if (d[0] != STATUS_OK) return out;
        at = 1;
    }
    switch (row.step) {
        case Step::Mode:
            if (d.size() < 2) break;
            std::snprintf(buf, sizeof buf, "mode: %s, application valid: %s\n",
                          d[0] == 2   ? "boot loader"
                          : d[0] == 1 ? "application"
                                      : "unknown",
                          yesNo(d[1]));
            return out + buf;
        case Step::State: {
            static const char* const states[] = {"locked", "unlocked", "erased", "written"};
            if (d.size() < 2) break;
            std::snprintf(buf, sizeof buf, "state: %s, application valid: %s\n",
                          d[0] < 4 ? states[d[0]] : "unknown", yesNo(d[1]));
            return out + buf;
        }
        case Step::Info: {
            BootInfo b;
            if (!parseBootInfo(d, &b)) break;
            std::snprintf(buf, sizeof buf,
                          "boot loader %u.%u\nflash %s-%s, application from %s\npages of %u "
                          "bytes, writes up to %u bytes\nRAM %s-%s\n",
                          b.major, b.minor, hexAddr(b.flashStart).c_str(),
                          hexAddr(b.flashEnd - 1).c_str(), hexAddr(b.appStart).c_str(), b.pageSize,
                          b.maxWrite, hexAddr(b.ramStart).c_str(), hexAddr(b.ramEnd - 1).c_str());
            return out + buf;
        }
        case Step::AppVersion: {
            std::string v = versionText(row.target, d);
            return out + "application: " + (v.empty() ? "(none)" : v) + "\n";
        }
        case Step::Write:
            if (d.size() < at + 4) break;
            return out + "written at " + hexAddr(le32(d.data() + at)) + "\n";
        case Step::Check:
            if (d.size() < at + 4) break;
            std::snprintf(buf, sizeof buf, "check code: 0x%08X\n", le32(d.data() + at));
            return out + buf;
        case Step::Read: {
            if (d.size() < at + 4) break;
            uint32_t addr = le32(d.data() + at);
            for (size_t i = at + 4; i < d.size(); i += 16) {
                std::snprintf(buf, sizeof buf,
                              "%s:", hexAddr(addr + static_cast<uint32_t>(i - at - 4)).c_str());
                out += buf;
                for (size_t k = i; k < d.size() && k < i + 16; ++k) {
                    std::snprintf(buf, sizeof buf, " %02X", d[k]);
                    out += buf;
                }
                out += "\n";
            }
            return out;
        }
        case Step::Request:
        case Step::Start:
        case Step::Unlock:
        case Step::Erase:
        case Step::Reboot:
        case Step::Cancel:
            return out;
    }
    return out + "answer too short to decode\n";
}

}  // namespace update

int FUNC_UPDATE_STEP(int cmdIndex, char* funName) {
    using namespace update;
    core::HandlerContext ctx = core::handlerContext();
    bool nxp = std::strncmp(funName, "NXP_", 4) == 0;
    MCU_CONTENT* link = nxp ? ctx.canLink : ctx.systemLink;
    if (std::strcmp(funName, "NXP_UPDATE_START") == 0) return nxpSession(link, true, funName);
    if (std::strcmp(funName, "NXP_UPDATE_CANCEL") == 0) return nxpSession(link, false, funName);
    const UpdateRow* row = findRowByName(funName);
    if (row == nullptr) return 0;
    Args args;
    Bytes data;
    if (!askArgs(*row, ctx.input, &args, &data)) return 0;
    Bytes request = encodeRequest(*row, args);
    // The boot loader's rows go in update mode, the application's in its own; rows both
    // answer go as the link is, and for the CAN MCU in the other framing when that
    // brings no answer.
    bool updateMode = row->mode == Mode::Update;
    if (row->mode == Mode::Any && nxp && link != nullptr)
        updateMode = link->nxpMode == NXP_MODE_UPDATE;
    int type = nxp ? MCU_TYPE_NXP : MCU_TYPE_ST;
    int mode = nxp ? (updateMode ? NXP_MODE_UPDATE : NXP_MODE_AP)
                   : (updateMode ? ST_MODE_UPDATE : ST_MODE_AP);
    core::Answer a = core::exchange(link, type, mode, cmdIndex, request);
    if (!a.ok() && nxp && row->mode == Mode::Any) {
        // Nothing understood that framing: the controller is on the other side.
        mode = mode == NXP_MODE_AP ? NXP_MODE_UPDATE : NXP_MODE_AP;
        a = core::exchange(link, type, mode, cmdIndex, request);
    }
    int verdict = core::report(link, REPORT_STANDARD, a, funName);
    if (!a.ok()) return verdict;
    Bytes d(a.view().begin(), a.view().end());
    if (nxp) {
        // The CAN MCU's answer code (request code + 1) and, for rows without a status of
        // their own, the status every CAN answer carries.
        if (!d.empty()) d.erase(d.begin());
        if (!row->status && !d.empty()) d.erase(d.begin());
    }
    std::istringstream lines(renderUpdateAnswer(*row, d));
    for (std::string line; std::getline(lines, line);)
        std::printf("fd(%d) %s\n", link ? link->fd : -1, line.c_str());
    return verdict;
}
