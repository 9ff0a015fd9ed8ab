// Progress of an update on stderr: one updating line on a terminal, one line per 10 %
// on a pipe or file.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace update {

// "write  [##########..........]  50%  32768/65536 B  10.9 KiB/s  0:03 left"
std::string formatProgressLine(const std::string& phase, uint64_t done, uint64_t total,
                               double elapsedSeconds);
// "write: 50% (32768/65536 bytes)"
std::string formatProgressStep(const std::string& phase, uint64_t done, uint64_t total);

class Progress {
   public:
    // `out` null or `quiet`: nothing is shown.
    Progress(FILE* out, bool terminal, bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void begin(const std::string& phase, uint64_t total);
    void update(uint64_t done);
    void end();  // closes the phase's line
    // A note between progress lines ("board found in its boot loader").
    void note(const std::string& text);

   private:
    using Clock = std::chrono::steady_clock;
    FILE* out_;
    bool terminal_;
    std::string phase_;
    uint64_t total_ = 0, done_ = 0;
    int lastTenth_ = -1;
    bool open_ = false;
    Clock::time_point start_, lastDraw_;
};

}  // namespace update
