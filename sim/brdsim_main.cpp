// brdsim: serves a simulated board on a pseudo-terminal until interrupted.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "brdsim.h"

namespace {

const char kUsage[] =
    "usage: brdsim [--product NAME] [--write-config DIR] [--can-rate N] [--line-rate BAUD]\n"
    "Opens a pseudo-terminal that answers as the board's system MCU, prints its path\n"
    "and serves it until SIGINT or SIGTERM.\n"
    "  --product NAME       the product model to answer as (default KX07)\n"
    "  --write-config DIR   write DIR/NAME.conf naming the pseudo-terminal\n"
    "  --can-rate N         send N unsolicited CAN frames per second\n"
    "  --line-rate BAUD     pace both directions as a serial line at BAUD (10 bits a byte)\n"
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
    long lineRate = 0;
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
        if (arg != "--product" && arg != "--write-config" && arg != "--can-rate" &&
            arg != "--line-rate")
            return usageError(argv[i], "unknown option");
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
        } else if (arg == "--line-rate") {
            if (!parseBaud(value, &lineRate))
                return usageError("--line-rate", "not a line rate (300-4000000 bits/s)");
        } else if (!parseCount(value, &canRate)) {
            return usageError("--can-rate", "not a number of frames per second (0-100000)");
        }
    }

    if (pipe2(g_stopPipe, O_CLOEXEC) != 0) return fail("pipe", std::strerror(errno));
    struct sigaction sa;
    std::memset(&sa, 0, sizeof sa);
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);

    brdsim::Simulator sim(product);
    sim.setLineRate(lineRate);
    if (!sim.start()) return fail("cannot open a pseudo-terminal", std::strerror(errno));
    if (!configDir.empty() && brdsim::writeConfig(configDir, product, sim.ptyPath()).empty()) {
        std::string what = "cannot write " + configDir + "/" + product + ".conf";
        return fail(what.c_str(), std::strerror(errno));
    }
    std::printf("%s\n", sim.ptyPath().c_str());
    std::fflush(stdout);
    if (canRate > 0) sim.startCanStream(canRate, -1);

    char c;
    while (read(g_stopPipe[0], &c, 1) < 0 && errno == EINTR) {
    }
    sim.stop();
    return 0;
}
