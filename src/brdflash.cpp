// brdflash: firmware update of the system MCU and the CAN MCU.
//   brdflash mcu [IMAGE] [options]
//   brdflash can [IMAGE] [--device N] [options]
// Progress and diagnostics go to stderr; stdout carries only the summary (or JSON).
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "UART_LIB.h"
#include "exchange.h"
#include "function_MAP.h"
#include "init.h"
#include "launch.h"
#include "update/flow.h"

namespace {

using namespace update;

const char kUsage[] =
    "usage: brdflash mcu|can [IMAGE] [options]\n"
    "Updates the firmware of the system MCU (mcu) or of a CAN MCU (can) from a raw binary,\n"
    "Intel HEX or Motorola S-record image (default: FILE_PATH of the update section).\n"
    "  --device N     the CAN MCU to update (default 0)\n"
    "  --info         show boot loader and application versions, mode and flash layout\n"
    "  --dry-run      check the image and show the plan; nothing is sent\n"
    "  --verify-only  compare the flash with the image; nothing is changed\n"
    "  --force        accept an image whose model tag is not FW_MODEL (with a warning)\n"
    "  --quiet        no progress lines\n"
    "  --json         one summary object on stdout\n"
    "  --help, --version\n"
    "Exit status: 0 done, 1 the board or link failed, 2 usage or a refused image,\n"
    "3 configuration or device error.\n";

std::atomic<bool> g_interrupted{false};

void onInterrupt(int) {
    static const char msg[] = "\nbrdflash: interrupted: stopping after the current request\n";
    g_interrupted = true;
    (void)!write(STDERR_FILENO, msg, sizeof msg - 1);
}

struct Options {
    Target target = Target::Mcu;
    std::string image;
    int device = 0;
    bool info = false, dryRun = false, verifyOnly = false, force = false, quiet = false,
         json = false;
};

int usageError(const std::string& what) {
    std::fprintf(stderr, "brdflash: %s (see brdflash --help)\n", what.c_str());
    return EXIT_REFUSED;
}

// Returns -1 when the options are fine, else the exit status.
int parseArgs(int argc, char** argv, Options* o) {
    bool haveTarget = false;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--help" || a == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (a == "--version") {
            BYTE version[16] = {};
            MCU_Library_Version(version);
            std::printf("brdflash %s\nlink library %.10s\n", BRD_VERSION,
                        reinterpret_cast<char*>(version));
            return 0;
        }
        if (a == "--info") {
            o->info = true;
        } else if (a == "--dry-run") {
            o->dryRun = true;
        } else if (a == "--verify-only") {
            o->verifyOnly = true;
        } else if (a == "--force") {
            o->force = true;
        } else if (a == "--quiet" || a == "-q") {
            o->quiet = true;
        } else if (a == "--json") {
            o->json = true;
        } else if (a == "--device" || a.rfind("--device=", 0) == 0) {
            std::string v;
            if (a == "--device") {
                if (i + 1 >= argc) return usageError("--device: missing number");
                v = argv[++i];
            } else {
                v = a.substr(9);
            }
            char* end = nullptr;
            long n = std::strtol(v.c_str(), &end, 10);
            if (v.empty() || *end != '\0' || n < 0 || n >= MAX_CAN_DEVICE)
                return usageError("--device: not a CAN device number: '" + v + "'");
            o->device = static_cast<int>(n);
        } else if (a.size() > 1 && a[0] == '-') {
            return usageError(a + ": unknown option");
        } else if (!haveTarget) {
            if (a != "mcu" && a != "can") return usageError(a + ": expected mcu or can");
            o->target = a == "mcu" ? Target::Mcu : Target::Can;
            haveTarget = true;
        } else if (o->image.empty()) {
            o->image = a;
        } else {
            return usageError(a + ": more than one image");
        }
    }
    if (!haveTarget) return usageError("missing mcu or can");
    int modes = o->info + o->dryRun + o->verifyOnly;
    if (modes > 1) return usageError("--info, --dry-run and --verify-only exclude each other");
    return -1;
}

// The link: one pool row sent on the controller's link in the mode asked for.
class BoardLink : public UpdateLink {
   public:
    BoardLink(Target t, int device) : target_(t), device_(device) {}
    int exchange(const UpdateRow& row, Mode mode, const Bytes& data, Bytes* answer) override {
        MCU_CONTENT* ctx = target_ == Target::Mcu ? mcu_content : can_content[device_];
        if (ctx == nullptr) return MCU_RESULT_OPEN_FAIL;
        if (target_ == Target::Can) currentCANDevice = device_;
        int index = 0;
        findCommandIndex(row.name, &index);
        cmd* entry = getCommandByIndex(ctx, index);
        if (index == 0 || entry == nullptr) return MCU_RESULT_NO_COMMAND;
        bool update = mode == Mode::Update;
        int type = target_ == Target::Mcu ? MCU_TYPE_ST : MCU_TYPE_NXP;
        int linkMode = target_ == Target::Mcu ? (update ? ST_MODE_UPDATE : ST_MODE_AP)
                                              : (update ? NXP_MODE_UPDATE : NXP_MODE_AP);
        core::Answer a = core::exchange(ctx, type, linkMode, index, data);
        if (!a.ok()) return a.result;
        answer->assign(a.view().begin(), a.view().end());
        int r = a.result;
        if (target_ == Target::Can) {
            // The CAN MCU answers with its command code + 1 and a status; without them the
            // answer is not ours.
            if (answer->empty() || (*answer)[0] != static_cast<BYTE>(entry->cmd_data[0] + 1))
                return MCU_RESULT_NONE;
            answer->erase(answer->begin());
            if (!row.status) {
                if (answer->empty() || (*answer)[0] != STATUS_OK) return MCU_RESULT_NONE;
                answer->erase(answer->begin());
            }
        }
        return r;
    }

   private:
    Target target_;
    int device_;
};

std::string hexAddr(uint64_t v) {
    char b[24];
    std::snprintf(b, sizeof b, "0x%08llX", static_cast<unsigned long long>(v));
    return b;
}

std::string jsonString(const std::string& s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char b[8];
            std::snprintf(b, sizeof b, "\\u%04x", c);
            out += b;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

struct Summary {
    const Options& o;
    const Settings& s;
    const Image* img = nullptr;
    const Plan* plan = nullptr;
    std::string imagePath, tag;
    double seconds = 0;
    int baud = 0;
};

void printJson(const Summary& m, const Report& r, int status) {
    std::string j = "{\"target\":" + jsonString(targetName(m.s.target));
    auto field = [&](const char* k, const std::string& v) {
        j += ",\"" + std::string(k) + "\":" + v;
    };
    field("outcome", jsonString(r.outcome));
    field("exit_status", std::to_string(status));
    if (m.img) {
        field("image", jsonString(m.imagePath));
        field("format", jsonString(formatName(m.img->format)));
        field("start", jsonString(hexAddr(m.img->start)));
        field("end", jsonString(hexAddr(static_cast<uint64_t>(m.img->end()) - 1)));
        field("bytes", std::to_string(m.img->data.size()));
        field("model_tag", jsonString(m.tag));
    }
    if (m.plan) {
        field("blocks", std::to_string(m.plan->writes.size()));
        field("line_bytes", std::to_string(m.plan->lineBytes));
        char b[32];
        std::snprintf(b, sizeof b, "%.2f", m.plan->lineSeconds(m.baud));
        field("expected_seconds", b);
    }
    field("state", jsonString(r.state));
    field("verified", r.verified ? "true" : "false");
    field("rebooted", r.rebooted ? "true" : "false");
    field("resumed", r.resumed ? "true" : "false");
    field("retries", std::to_string(r.retries));
    field("bytes_written", std::to_string(r.bytesWritten));
    if (!r.appVersion.empty() || r.outcome == "info" || r.outcome == "updated")
        field("app_version", jsonString(r.appVersion));
    if (r.hasBoot) {
        char v[16];
        std::snprintf(v, sizeof v, "%u.%u", r.boot.major, r.boot.minor);
        field("boot_loader_version", jsonString(v));
        field("flash_start", jsonString(hexAddr(r.boot.flashStart)));
        field("flash_end", jsonString(hexAddr(r.boot.flashEnd)));
        field("app_start", jsonString(hexAddr(r.boot.appStart)));
        field("page_size", std::to_string(r.boot.pageSize));
    }
    if (r.hasDifference) field("first_difference", jsonString(hexAddr(r.firstDifference)));
    if (!r.error.empty()) field("error", jsonString(r.error));
    char secs[32];
    std::snprintf(secs, sizeof secs, "%.2f", m.seconds);
    field("seconds", secs);
    std::printf("%s}\n", j.c_str());
}

void printInfo(const Summary& m, const Report& r) {
    const char* t = targetName(m.s.target);
    std::printf("%s: %s running\n", t, r.state == "boot loader" ? "boot loader" : "application");
    std::printf("boot loader version: %u.%u\n", r.boot.major, r.boot.minor);
    std::printf("application: %s\n", r.appVersion.empty() ? "(none)" : r.appVersion.c_str());
    std::printf("flash: %s-%s, application from %s, pages of %u bytes, writes up to %u bytes\n",
                hexAddr(r.boot.flashStart).c_str(),
                hexAddr(static_cast<uint64_t>(r.boot.flashEnd) - 1).c_str(),
                hexAddr(r.boot.appStart).c_str(), r.boot.pageSize, r.boot.maxWrite);
    std::printf("RAM: %s-%s\n", hexAddr(r.boot.ramStart).c_str(),
                hexAddr(static_cast<uint64_t>(r.boot.ramEnd) - 1).c_str());
}

void printPlan(const Summary& m) {
    const Plan& p = *m.plan;
    const Image& img = *m.img;
    uint32_t page = defaultPageSize(m.s.target);
    std::printf("%s: plan for %s (%s, model tag '%s')\n", targetName(m.s.target),
                m.imagePath.c_str(), formatName(img.format), m.tag.c_str());
    std::printf("  image:  %s-%s (%zu bytes)\n", hexAddr(img.start).c_str(),
                hexAddr(static_cast<uint64_t>(img.end()) - 1).c_str(), img.data.size());
    std::printf("  erase:  %s-%s (%u pages of %u bytes)\n", hexAddr(p.eraseStart).c_str(),
                hexAddr(static_cast<uint64_t>(p.eraseEnd) - 1).c_str(),
                (p.eraseEnd - p.eraseStart) / page, page);
    std::printf("  write:  %zu blocks of up to %d bytes\n", p.writes.size(), m.s.writeSize);
    if (m.s.target == Target::Mcu)
        std::printf("  verify: %zu check codes, one a page\n", p.verify.size());
    else
        std::printf("  verify: %zu read-backs of up to %d bytes\n", p.verify.size(),
                    m.s.verifySize);
    std::printf("  expected time: %.1f s at %d baud (%llu bytes on the line)\n",
                p.lineSeconds(m.baud), m.baud, static_cast<unsigned long long>(p.lineBytes));
    std::printf("  nothing was sent\n");
}

void printDone(const Summary& m, const Report& r) {
    const char* t = targetName(m.s.target);
    std::string range =
        hexAddr(m.img->start) + "-" + hexAddr(static_cast<uint64_t>(m.img->end()) - 1);
    if (r.outcome == "verified") {
        std::printf("%s: flash matches %s: %s verified\n", t, m.imagePath.c_str(), range.c_str());
        return;
    }
    std::printf(
        "%s: updated from %s (%s): %s, %llu bytes in %d blocks, verified; application '%s' "
        "running (%.1f s, %d retries)\n",
        t, m.imagePath.c_str(), formatName(m.img->format), range.c_str(),
        static_cast<unsigned long long>(r.bytesWritten), r.blocksWritten, r.appVersion.c_str(),
        m.seconds, r.retries);
}

}  // namespace

int main(int argc, char** argv) {
    g_progName = "brdflash";
    UART_SetMessageStream(stderr);
    Options o;
    int early = parseArgs(argc, argv, &o);
    if (early >= 0) return early;

    struct sigaction sa;
    std::memset(&sa, 0, sizeof sa);
    sa.sa_handler = onInterrupt;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, nullptr);

    FILE* fConfig = LAUNCH_INIT_CONFIG(1, nullptr);
    if (fConfig == nullptr) return EXIT_CONFIG;
    auto finish = [&](int status) {
        LAUNCH_EXIT("CONFIG_MAIN_EXIT", fConfig, 1);
        return status;
    };

    const UpdateInfo& info = o.target == Target::Mcu ? g_config.mcuUpdate : g_config.canUpdate;
    const char* section = o.target == Target::Mcu ? "<MCU_UPDATE_INFO>" : "<CAN_UPDATE_INFO>";
    if (!info.present) {
        std::fprintf(stderr, "brdflash: configuration: no %s section\n", section);
        return finish(EXIT_CONFIG);
    }
    Settings s;
    std::string why;
    if (!resolveSettings(o.target, info, szProductName, &s, &why)) {
        std::fprintf(stderr, "brdflash: configuration: %s: %s\n", section, why.c_str());
        return finish(EXIT_CONFIG);
    }
    int baud = 0;
    if (o.target == Target::Mcu) {
        if (mcu_content == nullptr) {
            std::fprintf(stderr, "brdflash: configuration: the system MCU device is not enabled\n");
            return finish(EXIT_CONFIG);
        }
        baud = g_config.mcu.baudrate;
    } else {
        if (o.device >= nCANDevice || can_content[o.device] == nullptr) {
            std::fprintf(stderr, "brdflash: configuration: no enabled CAN device %d\n", o.device);
            return finish(EXIT_CONFIG);
        }
        int seen = 0;
        for (const DeviceConfig& d : g_config.can)
            if (d.enabled && seen++ == o.device) baud = d.baudrate;
    }

    Summary m{o, s, nullptr, nullptr, {}, {}, 0, 0};
    m.baud = baud;
    Image img;
    Plan plan;
    if (!o.info) {
        m.imagePath = o.image.empty() ? s.filePath : o.image;
        if (m.imagePath.empty()) {
            std::fprintf(stderr, "brdflash: no image given and no FILE_PATH in %s\n", section);
            return finish(EXIT_REFUSED);
        }
        // A refused image: one line on stderr, and the summary object when asked for.
        auto refuse = [&](const std::string& text) {
            std::fprintf(stderr, "brdflash: %s: %s\n", m.imagePath.c_str(), text.c_str());
            if (o.json) {
                Report r;
                r.outcome = "refused";
                r.state = "unchanged";
                r.error = text;
                printJson(m, r, EXIT_REFUSED);
            }
            return finish(EXIT_REFUSED);
        };
        if (!readImageFile(m.imagePath, s.appStart, &img, &why)) return refuse(why);
        Validation v = validateImage(img, s.limits());
        if (!v.ok || (v.modelMismatch && !o.force)) {
            return refuse(v.why + (v.ok ? " (--force accepts it)" : ""));
        }
        if (v.modelMismatch)
            std::fprintf(stderr, "brdflash: warning: %s: %s; going on (--force)\n",
                         m.imagePath.c_str(), v.why.c_str());
        m.img = &img;
        m.tag = v.tag;
        plan = makePlan(s, img, defaultPageSize(s.target));
        m.plan = &plan;
    }

    if (o.dryRun) {
        Report r;
        r.outcome = "planned";
        if (o.json)
            printJson(m, r, EXIT_DONE);
        else
            printPlan(m);
        return finish(EXIT_DONE);
    }

    Progress progress(stderr, isatty(STDERR_FILENO) == 1, o.quiet);
    BoardLink link(o.target, o.device);
    Updater up(link, s, progress, g_interrupted);
    Report r;
    auto t0 = std::chrono::steady_clock::now();
    int status = o.info ? up.info(&r) : o.verifyOnly ? up.verifyOnly(img, &r) : up.update(img, &r);
    m.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();

    if (status != EXIT_DONE) {
        const char* t = targetName(o.target);
        std::fprintf(stderr, "brdflash: %s: %s\n", t, r.error.c_str());
        if (!o.info && !o.verifyOnly && r.state == "boot loader") {
            std::fprintf(stderr,
                         "brdflash: the %s controller waits in its boot loader; no unverified "
                         "application was started.\nbrdflash: run 'brdflash %s %s' again to start "
                         "again from erase.\n",
                         t, t, m.imagePath.c_str());
        }
    }
    if (o.json)
        printJson(m, r, status);
    else if (status == EXIT_DONE && o.info)
        printInfo(m, r);
    else if (status == EXIT_DONE)
        printDone(m, r);
    return finish(status);
}
