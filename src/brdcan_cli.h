// brdcan's command line: the subcommands and their options, checked before anything is
// opened or sent.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "can/can_frame.h"

enum class Command {
    None,
    List,
    Dump,
    Send,
    Gen,
    Stop,
    Bitrate,
    Filter,
    Errors,
    Info,
    Play,
    Slcan
};

struct CliOptions {
    Command command = Command::None;
    bool help = false;
    std::string channel;
    // dump
    std::vector<can::ChannelSpec> specs;
    can::Stamp stamp = can::Stamp::None;
    bool logFormat = false;  // -L
    bool logFile = false;    // -l
    long count = -1;         // -n (dump, gen)
    long idleMs = 0;         // -T
    // send
    can::Frame frame;
    // gen
    uint32_t genId = 0;
    long gapMs = -1;  // -g (gen, play)
    // bitrate
    int rateCode = -1;
    // filter
    can::Filter filter;
    bool clearFilters = false;
    // play
    std::string logPath;
    std::vector<can::LogRecord> records;
    std::vector<std::pair<std::string, std::string>> mappings;  // OUT=IN
};

extern const char kBrdcanUsage[];

// Parses argv; false with one line saying what is wrong in *error. `play` reads its log
// file here, so that a bad log is refused before anything is opened.
bool parseCli(int argc, char** argv, CliOptions* out, std::string* error);
