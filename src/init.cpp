// Start-up and close-down: which product this is, its configuration file, and the
// links to the controllers the configuration names.
#include "init.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "UART_LIB.h"
#include "function_MAP.h"
#include "launch.h"

InitStatus initStatus = INIT_OK;
std::string g_configPath;
BrdConfig g_config;
char szArchitecture[65] = {};

std::string shownText(const std::string& text) {
    // What the file or the environment holds is echoed clipped and with control bytes
    // and bytes above 0x7E escaped, so it cannot flood or drive the user's terminal.
    constexpr size_t kLimit = 80;
    std::string out;
    size_t i = 0;
    for (; i < text.size() && i < kLimit; ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x20 && c < 0x7F && c != '\\') {
            out += static_cast<char>(c);
        } else {
            char esc[8];
            snprintf(esc, sizeof esc, "\\x%02x", c);
            out += esc;
        }
    }
    if (i < text.size()) out += "...";
    return out;
}

// 'TEXT' with TEXT shown as above; built by appending, which GCC 12 at -O3 does not
// mistake for an overlapping copy (-Wrestrict) as it does "'" + a temporary string.
std::string quotedText(const std::string& text) {
    std::string out(1, '\'');
    out.append(shownText(text)).push_back('\'');
    return out;
}

const char* productNameProblem(const std::string& bare) {
    // The name becomes part of a file path and is kept in a 64-byte buffer with its line
    // end and a NUL.
    if (bare.find('/') != std::string::npos) return "it contains '/'";
    if (!bare.empty() && bare[0] == '.') return "it starts with '.'";
    if (bare.size() > kMaxProductName) return "it is longer than 62 characters";
    return nullptr;
}

namespace {

std::string trim(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && (s[b] == ' ' || s[b] == '\t')) ++b;
    while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\t' || s[e - 1] == '\r' || s[e - 1] == '\n'))
        --e;
    return s.substr(b, e - b);
}

// Reads a small text file whole; empty when it cannot be read.
std::string readSmallFile(const char* path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return "";
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return text;
}

// Trailing blanks, line ends and NUL bytes go; one "\n" is appended.
std::string normaliseProduct(std::string name) {
    while (!name.empty()) {
        char c = name.back();
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0')
            name.pop_back();
        else
            break;
    }
    if (name.empty()) return "";
    return name + "\n";
}

bool parseNumber(const std::string& text, unsigned long* out) {
    if (text.empty()) return false;
    const char* s = text.c_str();
    char* end = nullptr;
    errno = 0;
    int base = (text.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) ? 16 : 10;
    if (text[0] == '-' || text[0] == '+') return false;
    unsigned long v = strtoul(s, &end, base);
    if (errno != 0 || *end != '\0') return false;
    *out = v;
    return true;
}

bool parseInt(const std::string& text, int* out) {
    unsigned long v;
    if (!parseNumber(text, &v) || v > 0x7FFFFFFFul) return false;
    *out = static_cast<int>(v);
    return true;
}

// The rates the port layer knows; anything else would silently become 115200.
bool supportedBaud(int baud) {
    static const int rates[] = {110,   300,   600,   1200,   2400,   4800,   9600,
                                19200, 38400, 57600, 115200, 230400, 460800, 1000000};
    for (int r : rates)
        if (r == baud) return true;
    return false;
}

// "path,baud,enabled"
bool parseDevice(const std::string& value, DeviceConfig* dev, std::string* why) {
    size_t c1 = value.find(',');
    size_t c2 = c1 == std::string::npos ? std::string::npos : value.find(',', c1 + 1);
    if (c2 == std::string::npos || value.find(',', c2 + 1) != std::string::npos) {
        *why = "expected PATH,BAUDRATE,ENABLED";
        return false;
    }
    dev->path = trim(value.substr(0, c1));
    std::string baud = trim(value.substr(c1 + 1, c2 - c1 - 1));
    std::string enabled = trim(value.substr(c2 + 1));
    if (dev->path.empty()) {
        *why = "empty device path";
        return false;
    }
    if (!parseInt(baud, &dev->baudrate) || !supportedBaud(dev->baudrate)) {
        *why = "bad baud rate " + quotedText(baud);
        return false;
    }
    if (enabled != "0" && enabled != "1") {
        *why = "enabled must be 0 or 1, not " + quotedText(enabled);
        return false;
    }
    dev->enabled = enabled == "1";
    return true;
}

// Strips a comment: '#' at the start of the line or after a blank.
std::string stripComment(const std::string& line) {
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t'))
            return line.substr(0, i);
    }
    return line;
}

enum class Section { None, McuInfo, McuUpdate, CanInfo, CanUpdate };

bool applyKey(Section sec, const std::string& key, const std::string& value, BrdConfig* cfg,
              std::string* why) {
    unsigned long number = 0;
    auto number32 = [&](unsigned long* dst) {
        if (!parseNumber(value, &number)) {
            *why = "bad number " + quotedText(value) + " for " + key;
            return false;
        }
        *dst = number;
        return true;
    };
    auto numberInt = [&](int* dst) {
        if (!parseInt(value, dst)) {
            *why = "bad number " + quotedText(value) + " for " + key;
            return false;
        }
        return true;
    };
    switch (sec) {
        case Section::McuInfo:
            if (key == "MCU_DEVICE") {
                cfg->hasMcu = true;
                return parseDevice(value, &cfg->mcu, why);
            }
            if (key == "DEBUG_LEVEL") {
                // A mask: any 32-bit pattern is taken, the top bit included.
                if (!parseNumber(value, &number) || number > 0xFFFFFFFFul) {
                    *why = "bad number " + quotedText(value) + " for " + key;
                    return false;
                }
                cfg->debugLevel = static_cast<int>(static_cast<uint32_t>(number));
                return true;
            }
            break;
        case Section::McuUpdate:
        case Section::CanUpdate: {
            update::UpdateInfo& u = sec == Section::McuUpdate ? cfg->mcuUpdate : cfg->canUpdate;
            auto address = [&](std::optional<unsigned long>* dst) {
                unsigned long v = 0;
                return number32(&v) && (*dst = v, true);
            };
            auto size = [&](std::optional<int>* dst) {
                int v = 0;
                return numberInt(&v) && (*dst = v, true);
            };
            if (key == "FILE_PATH") return (u.filePath = value, true);
            if (key == "MCU_startAddress") return address(&u.mcuStartAddress);
            if (key == "ProgramROM_startAddress") return address(&u.programRomStartAddress);
            if (key == "MCU_versionAddress") return address(&u.mcuVersionAddress);
            if (key == "MCU_endAddress") return address(&u.mcuEndAddress);
            if (key == "RAM_startAddress") return address(&u.ramStartAddress);
            if (key == "RAM_endAddress") return address(&u.ramEndAddress);
            if (key == "WRITE_SIZE") return size(&u.writeSize);
            if (key == "VERIFY_SIZE") return size(&u.verifySize);
            if (key == "FW_MODEL") return (u.fwModel = value, true);
            break;
        }
        case Section::CanInfo:
            if (key == "CAN_DEVICE") {
                DeviceConfig dev;
                if (!parseDevice(value, &dev, why)) return false;
                cfg->can.push_back(dev);
                return true;
            }
            break;
        case Section::None:
            *why = quotedText(key) + " outside any section";
            return false;
    }
    *why = "unknown key " + quotedText(key);
    return false;
}

// Opens the link of one configured device. A device that cannot be used gets one line on
// stderr naming it and the reason; the link library has logged it already.
MCU_CONTENT* openLink(const DeviceConfig& dev, int mcuType) {
    MCU_CONTENT* ctx = init_MCU(dev.path.c_str(), mcuType, dev.baudrate);
    if (ctx->result == MCU_RESULT_OPEN_FAIL)
        fprintf(stderr, "%s: cannot open %s: %s\n", g_progName, dev.path.c_str(),
                *UART_OpenFailure() ? UART_OpenFailure() : strerror(ctx->openError));
    else if (ctx->result != 1)
        fprintf(stderr, "%s: cannot open %s: link could not be started (%d)\n", g_progName,
                dev.path.c_str(), ctx->result);
    ctx->debugLevel = g_config.debugLevel;
    snprintf(ctx->szProductName, sizeof ctx->szProductName, "%s", szProductName);
    return ctx;
}

}  // namespace

bool parseConfigFile(FILE* f, const std::string& fileName, BrdConfig* cfg, std::string* error) {
    *cfg = BrdConfig{};
    Section sec = Section::None;
    char* raw = nullptr;
    size_t cap = 0;
    int lineNo = 0;
    bool ok = true;
    std::map<std::pair<Section, std::string>, int> firstSeen;  // key -> line it was set on
    ssize_t got;
    while (ok && (got = getline(&raw, &cap, f)) >= 0) {
        ++lineNo;
        if (memchr(raw, '\0', static_cast<size_t>(got)) != nullptr) {
            *error = fileName + ":" + std::to_string(lineNo) + ": NUL byte in the line";
            ok = false;
            break;
        }
        std::string line = trim(stripComment(raw));
        if (line.empty()) continue;
        std::string why;
        if (line.front() == '<') {
            if (line == "<MCU_INFO>")
                sec = Section::McuInfo;
            else if (line == "<MCU_UPDATE_INFO>")
                sec = Section::McuUpdate, cfg->mcuUpdate.present = true;
            else if (line == "<CAN_INFO>")
                sec = Section::CanInfo;
            else if (line == "<CAN_UPDATE_INFO>")
                sec = Section::CanUpdate, cfg->canUpdate.present = true;
            else
                why = "unknown section " + quotedText(line);
        } else {
            size_t eq = line.find('=');
            if (eq == std::string::npos)
                why = "expected KEY=VALUE";
            else {
                std::string key = trim(line.substr(0, eq));
                std::string value = trim(line.substr(eq + 1));
                auto seen = firstSeen.find({sec, key});
                if (key.empty())
                    why = "expected KEY=VALUE";
                else if (seen != firstSeen.end() && key != "CAN_DEVICE")
                    why = quotedText(key) + " repeated (first set on line " +
                          std::to_string(seen->second) + ")";
                else if (applyKey(sec, key, value, cfg, &why))
                    firstSeen.emplace(std::make_pair(sec, key), lineNo);
            }
        }
        if (!why.empty()) {
            *error = fileName + ":" + std::to_string(lineNo) + ": " + why;
            ok = false;
        }
    }
    free(raw);
    return ok;
}

std::string detectProductName() {
    const char* env = getenv("BRDCTL_PRODUCT");
    if (env != nullptr && *env != '\0') return normaliseProduct(env);
    std::string name = normaliseProduct(readSmallFile("/sys/class/dmi/id/product_name"));
    if (!name.empty()) return name;
    return normaliseProduct(readSmallFile("/sys/firmware/devicetree/base/product"));
}

std::string findConfigFile(const std::string& product, std::string* searched) {
    std::string bare = product;
    if (!bare.empty() && bare.back() == '\n') bare.pop_back();
    std::vector<std::string> dirs;
    const char* env = getenv("BRDCTL_CONFIG_DIR");
    if (env != nullptr && *env != '\0') dirs.push_back(env);
    dirs.push_back("./configs");
    dirs.push_back("/etc/brdctl/configs");
    searched->clear();
    for (const std::string& dir : dirs) {
        std::string path = dir + "/" + bare + ".conf";
        struct stat st;
        if (stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode)) return path;
        if (!searched->empty()) *searched += ", ";
        *searched += dir;
    }
    return "";
}

void openStandardDescriptors() {
    // A descriptor below 3 left free would be handed to the serial port, and the program's
    // own text would then go down the line.
    for (int fd = 0; fd < 3; ++fd) {
        if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
        int opened = open("/dev/null", fd == 0 ? O_RDONLY : O_WRONLY);
        if (opened < 0) _exit(127);  // not even /dev/null: nothing sensible can run
        if (opened != fd) {
            if (dup2(opened, fd) != fd) _exit(127);
            close(opened);
        }
    }
}

int LAUNCH_INIT_DEV() {
    UART_SetProgramName(g_progName);
    UART_RestoreOnTermination();
    if (g_config.hasMcu && g_config.mcu.enabled) {
        mcu_content = openLink(g_config.mcu, MCU_TYPE_ST);
        if (mcu_content->result != 1) return 0;
        nMCUDevice = 1;
    }
    nCANDevice = 0;
    for (const DeviceConfig& dev : g_config.can) {
        if (!dev.enabled || nCANDevice >= MAX_CAN_DEVICE) continue;
        MCU_CONTENT* ctx = openLink(dev, MCU_TYPE_NXP);
        can_content[nCANDevice++] = ctx;
        if (ctx->result != 1) return 0;
        ctx->nxpMode = NXP_MODE_AP;
    }
    currentCANDevice = 0;
    return 1;
}

FILE* LAUNCH_INIT_CONFIG(int mode, void (*eventCallback)(CALLBACK_DATA)) {
    initStatus = INIT_OK;
    struct utsname uts;
    if (uname(&uts) == 0) snprintf(szArchitecture, sizeof szArchitecture, "%s", uts.machine);
    std::string product = detectProductName();
    std::string bare = product.empty() ? "" : product.substr(0, product.size() - 1);
    if (const char* problem = productNameProblem(bare)) {
        syslog(LOG_ERR, "Product name refused");
        fprintf(stderr, "%s: product name '%s' refused: %s\n", g_progName, shownText(bare).c_str(),
                problem);
        initStatus = INIT_NO_CONFIG;
        return nullptr;
    }
    snprintf(szProductName, sizeof szProductName, "%s", product.c_str());
    const char* dirEnv = getenv("BRDCTL_CONFIG_DIR");
    if (dirEnv != nullptr && *dirEnv != '\0') {
        // A directory named on purpose that cannot be searched is a mistake to report,
        // not a reason to fall back silently to the next place.
        struct stat st;
        const char* why = nullptr;
        bool found = stat(dirEnv, &st) == 0;
        if (found && !S_ISDIR(st.st_mode))
            why = "not a directory";
        else if (!found || access(dirEnv, X_OK) != 0)
            why = strerror(errno);
        if (why != nullptr) {
            fprintf(stderr, "%s: BRDCTL_CONFIG_DIR %s: cannot search: %s\n", g_progName,
                    shownText(dirEnv).c_str(), why);
            initStatus = INIT_BAD_CONFIG;
            return nullptr;
        }
    }
    std::string searched;
    std::string path = product.empty() ? "" : findConfigFile(product, &searched);
    if (path.empty()) {
        syslog(LOG_ERR,
               "Can't find any menu configuration file, please check menu configuration file "
               "exist or not");
        syslog(LOG_INFO, "MCU AP close ...");
        if (product.empty())
            fprintf(stderr,
                    "%s: cannot tell the product: set BRDCTL_PRODUCT (no DMI or device-tree "
                    "product name)\n",
                    g_progName);
        else
            fprintf(stderr, "%s: no configuration file %s.conf for product %s in %s\n", g_progName,
                    shownText(bare).c_str(), shownText(bare).c_str(), shownText(searched).c_str());
        initStatus = INIT_NO_CONFIG;
        return nullptr;
    }
    g_configPath = path;
    FILE* f = fopen(path.c_str(), "r");
    if (f == nullptr) {
        fprintf(stderr, "%s: cannot read %s: %s\n", g_progName, shownText(path).c_str(),
                strerror(errno));
        initStatus = INIT_BAD_CONFIG;
        return nullptr;
    }
    std::string error;
    if (!parseConfigFile(f, path, &g_config, &error)) {
        fprintf(stderr, "%s: %s\n", g_progName, error.c_str());
        fclose(f);
        initStatus = INIT_BAD_CONFIG;
        return nullptr;
    }
    // The callback must be in place before a receive thread can see unsolicited data.
    if (eventCallback != nullptr) Register_MCU_EventCallBack(0, 0, eventCallback);
    if (!LAUNCH_INIT_DEV()) {
        LAUNCH_EXIT("CONFIG_MAIN_EXIT", f, 1);
        initStatus = INIT_DEVICE_ERROR;
        return nullptr;
    }
    INIT_CMD_POOL();
    return f;
}

bool LAUNCH_CHECK_DEVICES(bool needsMcu, bool needsCan) {
    const char* missing = nullptr;
    if (needsMcu && mcu_content == nullptr)
        missing = "no enabled MCU_DEVICE in <MCU_INFO>, which this command needs";
    else if (needsCan && nCANDevice < 1)
        missing = "no enabled CAN_DEVICE in <CAN_INFO>, which this command needs";
    if (missing == nullptr) return true;
    fprintf(stderr, "%s: %s: %s\n", g_progName, g_configPath.c_str(), missing);
    return false;
}

int LAUNCH_EXIT(const char* mode, FILE* fConfig, int flag) {
    if (mcu_content != nullptr) {
        exit_LIB(mcu_content);
        mcu_content = nullptr;
    }
    nMCUDevice = 0;
    for (int i = 0; i < nCANDevice; ++i) {
        exit_LIB(can_content[i]);
        can_content[i] = nullptr;
    }
    nCANDevice = 0;
    if (fConfig != nullptr) fclose(fConfig);
    return 1;
}
