// A program run as a child for a conversation: the test writes its input a piece at a
// time, reads its output (stdout and stderr together) as it comes, and can interrupt it.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

class InteractiveProgram {
   public:
    // Starts `path` with `args` and the current environment with `env` ("NAME=value")
    // taking precedence.
    InteractiveProgram(const std::string& path, std::vector<std::string> args,
                       std::vector<std::string> env);
    ~InteractiveProgram();  // kills a program still running
    InteractiveProgram(const InteractiveProgram&) = delete;
    InteractiveProgram& operator=(const InteractiveProgram&) = delete;

    // Writes `text` to its input; false when not all of it went.
    bool type(const std::string& text);
    // Reads until the output holds `text` `times` times; false after 10 s or at its end.
    bool waitFor(const std::string& text, size_t times = 1);
    // Sends SIGINT.
    void interrupt();
    // Closes its input, reads to the end and returns its exit status (-1: a signal).
    int finish();

    std::string out;  // everything read so far

   private:
    bool pump();  // one read; false at the end of the output or after 10 s of silence

    pid_t pid_ = -1;
    int in_ = -1, out_ = -1;
};
