// brdsim: serves a simulated board on a pseudo-terminal until interrupted.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "brdsim.h"
#include "can_bus.h"
#include "nxp_controller.h"
#include "tpms.h"

namespace {

const char kUsage[] =
    "usage: brdsim [--product NAME] [--write-config DIR] [--can-rate N] [--line-rate BAUD]\n"
    "              [--nxp N] [--bus-gen RATE] [--gen-count N] [--gen-id HEX]\n"
    "              [--flash-timing] [--flash-fault KIND@N]... [--tpms-rate N]\n"
    "Opens a pseudo-terminal that answers as the board's system MCU and one for each\n"
    "NXP CAN controller, prints their paths (one a line, the MCU first) and serves\n"
    "them until SIGINT or SIGTERM. A simulated CAN bus joins the MCU's two CAN channels\n"
    "and the NXP controllers.\n"
    "  --product NAME       the product model to answer as (default KX07)\n"
    "  --write-config DIR   write DIR/NAME.conf naming the pseudo-terminal\n"
    "  --can-rate N         send N unsolicited CAN frames per second\n"
    "  --line-rate BAUD     pace both directions as a serial line at BAUD (10 bits a byte)\n"
    "  --nxp N              number of NXP CAN controllers (0-4, default 1)\n"
    "  --bus-gen RATE       put RATE frames per second on the CAN bus (max: as fast as\n"
    "                       the lines take them), 8 bytes with a running counter\n"
    "  --gen-count N        stop the generator after N frames (default: no end)\n"
    "  --gen-id HEX         identifier of the generated frames (default 123; 8 digits:\n"
    "                       extended)\n"
    "  --flash-timing       flash erase and writes take the time a real part needs\n"
    "  --flash-fault KIND@N a fault at the N-th write of an update (KIND: lost, corrupt,\n"
    "                       nowrite, restart; KIND@NxC for C writes in a row); the\n"
    "                       system MCU's boot loader, or an NXP one with nxp:KIND@N\n"
    "  --tpms-rate N        the TPMS receiver sends N sensor records a second on the\n"
    "                       first NXP controller's line (the CAN-side link)\n"
    "  --help               show this text\n";

int g_stopPipe[2] = {-1, -1};

void onSignal(int) {
    int saved = errno;
    char c = 1;
    (void)!write(g_stopPipe[1], &c, 1);
    errno = saved;
}

int usageError(const char* what, const char* why) {
    std::fprintf(stderr, "brdsim: %s: %s (see brdsim --help)\n", what, why);
    return 2;
}

int fail(const char* what, const char* why) {
    std::fprintf(stderr, "brdsim: %s: %s\n", what, why);
    return 1;
}

bool parseCount(const std::string& s, int* out) {
    if (s.empty()) return false;
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(s.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || v < 0 || v > 100000) return false;
    *out = static_cast<int>(v);
    return true;
}

bool parseBaud(const std::string& s, long* out) {
    if (s.empty()) return false;
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(s.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || v < 300 || v > 4000000) return false;
    *out = v;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::string product = "KX07";
    std::string configDir;
    int canRate = 0;
    int tpmsRate = 0;
    long lineRate = 0;
    int nxpCount = 1;
    int genRate = -1;  // -1 off, 0 as fast as the lines take
    long genCount = -1;
    uint32_t genId = 0x123;
    bool genExt = false;
    bool flashTiming = false;
    std::vector<brdsim::FlashFault> mcuFaults, nxpFaults;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        std::string value;
        bool hasValue = false;
        size_t eq = arg.find('=');
        if (arg.rfind("--", 0) == 0 && eq != std::string::npos) {
            value = arg.substr(eq + 1);
            arg.resize(eq);
            hasValue = true;
        }
        if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (arg == "--flash-timing") {
            flashTiming = true;
            continue;
        }
        static const char* const kOptions[] = {
            "--product", "--write-config", "--can-rate", "--line-rate",   "--nxp",
            "--bus-gen", "--gen-count",    "--gen-id",   "--flash-fault", "--tpms-rate"};
        bool known = false;
        for (const char* o : kOptions) known = known || arg == o;
        if (!known) return usageError(argv[i], "unknown option");
        if (!hasValue) {
            if (i + 1 >= argc) return usageError(arg.c_str(), "missing value");
            value = argv[++i];
        }
        if (arg == "--product") {
            if (value.empty() || value.find('/') != std::string::npos)
                return usageError("--product", "not a product name");
            product = value;
        } else if (arg == "--write-config") {
            if (value.empty()) return usageError("--write-config", "empty directory");
            configDir = value;
        } else if (arg == "--nxp") {
            if (!parseCount(value, &nxpCount) || nxpCount > 4)
                return usageError("--nxp", "not a number of controllers (0-4)");
        } else if (arg == "--bus-gen") {
            if (value == "max")
                genRate = 0;
            else if (!parseCount(value, &genRate) || genRate == 0)
                return usageError("--bus-gen", "not a rate (1-100000 frames/s, or max)");
        } else if (arg == "--gen-count") {
            int n = 0;
            if (!parseCount(value, &n)) return usageError("--gen-count", "not a count");
            genCount = n;
        } else if (arg == "--gen-id") {
            char* end = nullptr;
            unsigned long v = std::strtoul(value.c_str(), &end, 16);
            genExt = value.size() == 8;
            if (value.empty() || *end != '\0' || (value.size() != 3 && !genExt) ||
                v > (genExt ? 0x1FFFFFFFUL : 0x7FFUL))
                return usageError("--gen-id", "not a CAN identifier (3 or 8 hex digits)");
            genId = static_cast<uint32_t>(v);
        } else if (arg == "--flash-fault") {
            bool nxpFault = value.rfind("nxp:", 0) == 0;
            brdsim::FlashFault f;
            if (!brdsim::parseFlashFault(nxpFault ? value.substr(4) : value, &f))
                return usageError("--flash-fault",
                                  "expected [nxp:]lost, corrupt, nowrite or restart @N");
            (nxpFault ? nxpFaults : mcuFaults).push_back(f);
        } else if (arg == "--line-rate") {
            if (!parseBaud(value, &lineRate))
                return usageError("--line-rate", "not a line rate (300-4000000 bits/s)");
        } else if (arg == "--tpms-rate") {
            if (!parseCount(value, &tpmsRate) || tpmsRate > 1000)
                return usageError("--tpms-rate", "not a number of records per second (0-1000)");
        } else if (!parseCount(value, &canRate)) {
            return usageError("--can-rate", "not a number of frames per second (0-100000)");
        }
    }

    if (tpmsRate > 0 && nxpCount < 1)
        return usageError("--tpms-rate", "the records need an NXP controller's line (--nxp 1)");
    if (pipe2(g_stopPipe, O_CLOEXEC) != 0) return fail("pipe", std::strerror(errno));
    struct sigaction sa;
    std::memset(&sa, 0, sizeof sa);
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);

    brdsim::CanBus bus;
    brdsim::Simulator sim(product);
    sim.setLineRate(lineRate);
    sim.bootLoader().setFlashTiming(flashTiming);
    for (const brdsim::FlashFault& f : mcuFaults) sim.bootLoader().queueFault(f);
    brdsim::attachStChannels(sim, bus);
    if (!sim.start()) return fail("cannot open a pseudo-terminal", std::strerror(errno));
    std::vector<std::unique_ptr<brdsim::NxpController>> nxp;
    std::vector<std::string> canPtys;
    for (int i = 0; i < nxpCount; ++i) {
        nxp.push_back(std::make_unique<brdsim::NxpController>(bus));
        nxp.back()->setLineRate(lineRate);
        nxp.back()->bootLoader().setFlashTiming(flashTiming);
        if (i == 0)
            for (const brdsim::FlashFault& f : nxpFaults) nxp.back()->bootLoader().queueFault(f);
        if (!nxp.back()->start())
            return fail("cannot open a pseudo-terminal", std::strerror(errno));
        canPtys.push_back(nxp.back()->ptyPath());
    }
    if (!configDir.empty() &&
        brdsim::writeConfig(configDir, product, sim.ptyPath(), 0, canPtys).empty()) {
        std::string what = "cannot write " + configDir + "/" + product + ".conf";
        return fail(what.c_str(), std::strerror(errno));
    }
    std::printf("%s\n", sim.ptyPath().c_str());
    for (const std::string& p : canPtys) std::printf("%s\n", p.c_str());
    std::fflush(stdout);
    if (canRate > 0) sim.startCanStream(canRate, -1);
    std::unique_ptr<brdsim::TpmsStreamer> tpms;
    if (tpmsRate > 0) tpms = std::make_unique<brdsim::TpmsStreamer>(nxp[0]->port(), tpmsRate, -1);
    if (genRate >= 0)
        bus.startGenerator(genRate, genCount, genId, genExt, brdsim::CanBus::DEFAULT_RATE_CODE);

    char c;
    while (read(g_stopPipe[0], &c, 1) < 0 && errno == EINTR) {
    }
    bus.stopGenerator();
    tpms.reset();
    for (auto& c : nxp) c->stop();
    sim.stop();
    return 0;
}
