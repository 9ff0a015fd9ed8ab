// brdcmd: runs command handlers by name (`brdcmd NAME`), lists the commands
// (`brdcmd --list [TEXT]`), or offers them in a menu (`brdcmd` alone).
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "brdcmd_cli.h"
#include "function_MAP.h"
#include "init.h"
#include "launch.h"

namespace {

void printVersion() {
    BYTE version[16] = {};
    MCU_Library_Version(version);
    printf("brdcmd %s\nlink library %.10s\n", BRD_VERSION, reinterpret_cast<char*>(version));
}

void installInterruptHandler() {
    struct sigaction sa;
    memset(&sa, 0, sizeof sa);
    sa.sa_handler = handle_signal_from_keyevent;
    sigemptyset(&sa.sa_mask);
    // A prompt keeps waiting after Ctrl-C; only the receive loops watch EXIT_LOOP.
    sa.sa_flags = SA_RESTART;
    sigaction(SIGINT, &sa, nullptr);
}

// Whether the device the row needs is open; otherwise one line naming the configuration
// file and the missing device. The table's link column says where a row travels; the
// ST MCU's own CAN channels are pooled with the CAN rows but reach the board through the
// system MCU, so an ST-typed row always needs the system MCU and no CAN device.
bool devicesFor(const FUNCTION_MAP_ENTRY& row) {
    const bool stChannel = row.link == core::Link::CurrentCan && row.mcuType == MCU_TYPE_ST;
    const bool can = row.link == core::Link::CurrentCan && !stChannel;
    return LAUNCH_CHECK_DEVICES(!can, can);
}

// Runs the handler of `row` the way the system calls handlers: with the row's pool
// index and a writable copy of its full name.
int runHandler(const FUNCTION_MAP_ENTRY& row) {
    if (!devicesFor(row)) return 0;  // the check said which device is missing
    int index = 0;
    findCommandIndex(row.name, &index);
    char funName[128] = {};
    snprintf(funName, sizeof funName, "%s", row.name);
    int result = row.func(index, funName);
    fflush(stdout);
    return result;
}

int reportResolution(const std::string& typed, const brdcmd::Resolution& res) {
    if (res.match == brdcmd::Match::Unknown) {
        fprintf(stderr, "%s: unknown command '%s'\n", g_progName, typed.c_str());
    } else {
        fprintf(stderr, "%s: ambiguous name '%s': %zu candidates\n", g_progName, typed.c_str(),
                res.rows.size());
        for (const FUNCTION_MAP_ENTRY* row : res.rows) fprintf(stderr, "%s\n", row->name);
    }
    return brdcmd::EXIT_USAGE;
}

// Results that could not be written are a failure, not a success: status 1 (an error
// status already set stays), with one line on stderr.
int finish(int status) {
    errno = 0;
    if (fflush(stdout) == 0 && !ferror(stdout)) return status;
    fprintf(stderr, "%s: cannot write standard output: %s\n", g_progName,
            errno != 0 ? strerror(errno) : "write error");
    return status == brdcmd::EXIT_OK ? brdcmd::EXIT_COMMAND_FAILED : status;
}

int run(int argc, char** argv);

}  // namespace

int main(int argc, char** argv) {
    openStandardDescriptors();
    return finish(run(argc, argv));
}

namespace {

int run(int argc, char** argv) {
    g_progName = "brdcmd";
    const brdcmd::Table table = brdcmd::commandTable();
    const brdcmd::Options opts = brdcmd::parseArgs(std::vector<std::string>(argv + 1, argv + argc));

    // Everything that needs no board is settled before the start-up.
    const FUNCTION_MAP_ENTRY* row = nullptr;
    switch (opts.action) {
        case brdcmd::Options::Help:
            fputs(brdcmd::usageText().c_str(), stdout);
            return 0;
        case brdcmd::Options::Version:
            printVersion();
            return 0;
        case brdcmd::Options::UsageError:
            fprintf(stderr, "%s: %s\nTry '%s --help'.\n", g_progName, opts.error.c_str(),
                    g_progName);
            return brdcmd::EXIT_USAGE;
        case brdcmd::Options::List: {
            std::string text = brdcmd::formatList(opts.filter, table);
            if (text.empty()) {
                fprintf(stderr, "%s: no command contains '%s'\n", g_progName, opts.filter.c_str());
                return brdcmd::EXIT_USAGE;
            }
            fputs(text.c_str(), stdout);
            return 0;
        }
        case brdcmd::Options::Run: {
            brdcmd::Resolution res = brdcmd::resolveName(opts.name, table);
            if (res.match == brdcmd::Match::Unknown || res.match == brdcmd::Match::Ambiguous)
                return reportResolution(opts.name, res);
            row = res.rows.front();
            break;
        }
        case brdcmd::Options::Menu:
            break;
    }

    installInterruptHandler();
    FILE* fConfig = LAUNCH_INIT_CONFIG(1, callback_gotEventData);
    if (fConfig == nullptr) return brdcmd::EXIT_CONFIG;  // the start-up said why on stderr
    putchar('\n');  // ends the port layer's "Locking device ..." text

    if (row != nullptr && !devicesFor(*row)) {
        LAUNCH_EXIT("CONFIG_MAIN_EXIT", fConfig, 1);
        return brdcmd::EXIT_CONFIG;
    }
    int status;
    if (row != nullptr) {
        int result = runHandler(*row);
        // A handler whose link is not configured or not open reports a device error.
        status = result >= 1                      ? brdcmd::EXIT_OK
                 : result == MCU_RESULT_OPEN_FAIL ? brdcmd::EXIT_CONFIG
                                                  : brdcmd::EXIT_COMMAND_FAILED;
    } else {
        status = brdcmd::runMenu(g_input, stdout, stderr, table, runHandler);
    }
    LAUNCH_EXIT("CONFIG_MAIN_EXIT", fConfig, 1);
    return status;
}

}  // namespace
