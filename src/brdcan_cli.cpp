// brdcan's command line.
#include "brdcan_cli.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "can/can_layout.h"

const char kBrdcanUsage[] =
    "usage: brdcan COMMAND [ARGS]\n"
    "Channels: st1, st2 (the system MCU's CAN channels), nxp0, nxp1, ... (NXP CAN\n"
    "controllers, in the order configured).\n"
    "  list                               the channels and their state\n"
    "  dump [-n COUNT] [-T IDLE_MS] [-t a|A|d|z] [-L] [-l] CHANNEL[,ID:MASK|,ID~MASK|,j]...\n"
    "                                     show received frames as candump does\n"
    "  send CHANNEL FRAME                 send one frame: 123#DEADBEEF, 1F334455#11.22,\n"
    "                                     123#R, 123#R3\n"
    "  gen CHANNEL ID -g GAP_MS -n COUNT  run the link's timed series and print its summary\n"
    "  stop CHANNEL                       stop the controller's transmission\n"
    "  bitrate CHANNEL RATE               10k 20k 50k 100k 125k 250k 500k 800k 1M\n"
    "  filter CHANNEL ID:MASK | clear     set an acceptance filter, or clear them all\n"
    "  errors CHANNEL                     the controller's error state\n"
    "  info CHANNEL                       NXP firmware and boot-loader versions, input voltage\n"
    "  play -I FILE [-g GAP_MS] [OUT=IN]...  replay a candump log with its timing\n"
    "  slcan CHANNEL                      bridge the channel to a pseudo-terminal speaking the\n"
    "                                     serial-line CAN protocol; prints its path\n"
    "Exit status: 0 done, 1 link or controller failure, 2 usage error, 3 configuration or\n"
    "device error.\n";

namespace {

bool parseNumber(const char* s, long min, long max, long* out) {
    if (s == nullptr || *s == '\0') return false;
    char* end = nullptr;
    errno = 0;
    long v = strtol(s, &end, 10);
    if (errno != 0 || *end != '\0' || v < min || v > max) return false;
    *out = v;
    return true;
}

bool isChannelName(const std::string& s) {
    if (s.empty()) return false;
    for (char c : s)
        if (!((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))) return false;
    return true;
}

struct Command_ {
    const char* name;
    Command command;
};
const Command_ kCommands[] = {
    {"list", Command::List},     {"dump", Command::Dump},     {"send", Command::Send},
    {"gen", Command::Gen},       {"stop", Command::Stop},     {"bitrate", Command::Bitrate},
    {"filter", Command::Filter}, {"errors", Command::Errors}, {"info", Command::Info},
    {"play", Command::Play},     {"slcan", Command::Slcan},
};

}  // namespace

bool parseCli(int argc, char** argv, CliOptions* out, std::string* error) {
    CliOptions o;
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) {
        *error = "no command given";
        return false;
    }
    if (args[0] == "--help" || args[0] == "-h") {
        o.help = true;
        *out = std::move(o);
        return true;
    }
    for (const Command_& c : kCommands)
        if (args[0] == c.name) o.command = c.command;
    if (o.command == Command::None) {
        *error = "unknown command '" + args[0] + "'";
        return false;
    }
    const std::string cmd = args[0];
    // Options (-x VALUE or -x) and the remaining words.
    std::vector<std::string> words;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a.size() < 2 || a[0] != '-') {
            words.push_back(a);
            continue;
        }
        char flag = a[1];
        std::string value;
        bool takesValue = std::strchr("nTtgI", flag) != nullptr;
        if (a.size() > 2 && !takesValue) {
            *error = cmd + ": unknown option '" + a + "'";
            return false;
        }
        if (takesValue) {
            if (a.size() > 2) {
                value = a.substr(2);
            } else if (i + 1 < args.size()) {
                value = args[++i];
            } else {
                *error = cmd + ": option -" + std::string(1, flag) + " needs a value";
                return false;
            }
        }
        bool dump = o.command == Command::Dump, gen = o.command == Command::Gen,
             play = o.command == Command::Play;
        if (flag == 'n' && (dump || gen)) {
            if (!parseNumber(value.c_str(), gen ? 0 : 1, 1000000000L, &o.count)) {
                *error = cmd + ": -n: not a count: '" + value + "'";
                return false;
            }
        } else if (flag == 'T' && dump) {
            if (!parseNumber(value.c_str(), 1, 86400000L, &o.idleMs)) {
                *error = "dump: -T: not a time in milliseconds: '" + value + "'";
                return false;
            }
        } else if (flag == 't' && dump) {
            if (value == "a")
                o.stamp = can::Stamp::Absolute;
            else if (value == "A")
                o.stamp = can::Stamp::Date;
            else if (value == "d")
                o.stamp = can::Stamp::Delta;
            else if (value == "z")
                o.stamp = can::Stamp::Zero;
            else {
                *error = "dump: -t: timestamp must be a, A, d or z";
                return false;
            }
        } else if (flag == 'L' && dump) {
            o.logFormat = true;
        } else if (flag == 'l' && dump) {
            o.logFile = true;
        } else if (flag == 'g' && (gen || play)) {
            if (!parseNumber(value.c_str(), 0, 3600000L, &o.gapMs)) {
                *error = cmd + ": -g: not a gap in milliseconds: '" + value + "'";
                return false;
            }
        } else if (flag == 'I' && play) {
            o.logPath = value;
        } else {
            *error = cmd + ": unknown option '" + a + "'";
            return false;
        }
    }

    auto wantWords = [&](size_t n, const char* shape) {
        if (words.size() == n) return true;
        *error = cmd + ": expected " + shape;
        return false;
    };
    switch (o.command) {
        case Command::List:
            if (!wantWords(0, "no arguments")) return false;
            break;
        case Command::Dump:
            if (words.empty()) {
                *error = "dump: expected at least one CHANNEL";
                return false;
            }
            for (const std::string& w : words) {
                can::ChannelSpec spec;
                if (!can::parseChannelSpec(w, &spec, error) || !isChannelName(spec.name)) {
                    if (error->empty()) *error = "not a channel name";
                    *error = "dump: '" + w + "': " + *error;
                    return false;
                }
                o.specs.push_back(std::move(spec));
            }
            break;
        case Command::Send:
            if (!wantWords(2, "CHANNEL FRAME")) return false;
            o.channel = words[0];
            if (!can::parseFrame(words[1], &o.frame, error)) {
                *error = "send: bad frame '" + words[1] + "': " + *error;
                return false;
            }
            break;
        case Command::Gen: {
            if (!wantWords(2, "CHANNEL ID -g GAP_MS -n COUNT")) return false;
            if (o.gapMs < 0 || o.count < 0) {
                *error = "gen: -g GAP_MS and -n COUNT are required";
                return false;
            }
            o.channel = words[0];
            can::Frame f;
            if (!can::parseFrame(words[1] + "#", &f, error)) {
                *error = "gen: bad identifier '" + words[1] + "': " + *error;
                return false;
            }
            o.genId = f.id;
            break;
        }
        case Command::Stop:
        case Command::Slcan:
        case Command::Errors:
        case Command::Info:
            if (!wantWords(1, "CHANNEL")) return false;
            o.channel = words[0];
            break;
        case Command::Bitrate:
            if (!wantWords(2, "CHANNEL RATE")) return false;
            o.channel = words[0];
            o.rateCode = can::bitRateCode(words[1]);
            if (o.rateCode < 0) {
                *error = "bitrate: '" + words[1] +
                         "' is not offered (10k 20k 50k 100k 125k 250k 500k 800k 1M)";
                return false;
            }
            break;
        case Command::Filter:
            if (!wantWords(2, "CHANNEL ID:MASK | clear")) return false;
            o.channel = words[0];
            if (words[1] == "clear") {
                o.clearFilters = true;
            } else if (!can::parseFilter(words[1], &o.filter, error) || o.filter.inverted) {
                if (o.filter.inverted) *error = "the controllers take ID:MASK filters only";
                *error = "filter: bad filter '" + words[1] + "': " + *error;
                return false;
            }
            break;
        case Command::Play: {
            if (o.logPath.empty()) {
                *error = "play: -I FILE is required";
                return false;
            }
            for (const std::string& w : words) {
                size_t eq = w.find('=');
                if (eq == std::string::npos || !isChannelName(w.substr(0, eq)) ||
                    w.substr(eq + 1).empty()) {
                    *error = "play: '" + w + "': expected OUT=IN";
                    return false;
                }
                o.mappings.push_back({w.substr(0, eq), w.substr(eq + 1)});
            }
            FILE* f = o.logPath == "-" ? stdin : fopen(o.logPath.c_str(), "r");
            if (f == nullptr) {
                *error = "play: cannot read " + o.logPath + ": " + strerror(errno);
                return false;
            }
            std::string why;
            bool ok = can::readLog(f, &o.records, &why);
            if (f != stdin) fclose(f);
            if (!ok) {
                *error = "play: " + o.logPath + ": " + why;
                return false;
            }
            break;
        }
        case Command::None:
            break;
    }
    *out = std::move(o);
    return true;
}
