// Runs a program as a child process for the end-to-end tests: feeds its standard
// input, captures standard output and standard error, and kills it after a time-out.
#pragma once

#include <string>
#include <utility>
#include <vector>

struct ProgramResult {
    std::string out;        // everything the program wrote on standard output
    std::string err;        // everything it wrote on standard error
    int status = -1;        // exit code, or -1 when it timed out or died of a signal
    bool timedOut = false;  // killed because it outlived the time-out
    int termSignal = 0;     // the signal that ended it, if any
};

// Starts `path` with `args` (argv[1]...), the current environment plus `env` (a pair
// replaces a variable of the same name), writes `stdinText` to its standard input and
// closes it. Waits at most `timeoutMs` (monotonic clock) for the program to end; a
// program still running then is killed and reported with status -1 and timedOut set.
ProgramResult runProgram(const std::string& path, const std::vector<std::string>& args,
                         const std::string& stdinText,
                         const std::vector<std::pair<std::string, std::string>>& env,
                         int timeoutMs);
