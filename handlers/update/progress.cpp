// Progress lines of an update.
#include "progress.h"

#include <cinttypes>
#include <cmath>

namespace update {

namespace {
constexpr int BAR_WIDTH = 20;
constexpr auto REDRAW_INTERVAL = std::chrono::milliseconds(100);
}  // namespace

std::string formatProgressLine(const std::string& phase, uint64_t done, uint64_t total,
                               double elapsedSeconds) {
    int percent = total == 0 ? 100 : static_cast<int>(done * 100 / total);
    int filled = total == 0 ? BAR_WIDTH : static_cast<int>(done * BAR_WIDTH / total);
    std::string bar(static_cast<size_t>(filled), '#');
    bar.append(static_cast<size_t>(BAR_WIDTH - filled), '.');
    char buf[160];
    double rate = elapsedSeconds > 0 ? static_cast<double>(done) / elapsedSeconds : 0;
    std::string left = "-:--";
    if (rate > 0 && done <= total) {
        long secs = std::lround(static_cast<double>(total - done) / rate);
        char l[32];
        std::snprintf(l, sizeof l, "%ld:%02ld", secs / 60, secs % 60);
        left = l;
    }
    std::snprintf(buf, sizeof buf,
                  "%-6s [%s] %3d%%  %" PRIu64 "/%" PRIu64 " B  %.1f KiB/s  %s left", phase.c_str(),
                  bar.c_str(), percent, done, total, rate / 1024.0, left.c_str());
    return buf;
}

std::string formatProgressStep(const std::string& phase, uint64_t done, uint64_t total) {
    int percent = total == 0 ? 100 : static_cast<int>(done * 100 / total);
    char buf[128];
    std::snprintf(buf, sizeof buf, "%s: %d%% (%" PRIu64 "/%" PRIu64 " bytes)", phase.c_str(),
                  percent, done, total);
    return buf;
}

Progress::Progress(FILE* out, bool terminal, bool quiet)
    : out_(quiet ? nullptr : out), terminal_(terminal) {}

Progress::~Progress() {
    end();
}

void Progress::begin(const std::string& phase, uint64_t total) {
    end();
    phase_ = phase;
    total_ = total;
    done_ = 0;
    lastTenth_ = -1;
    open_ = true;
    start_ = Clock::now();
    lastDraw_ = Clock::time_point{};
    update(0);
}

void Progress::update(uint64_t done) {
    if (!open_ || out_ == nullptr) return;
    done_ = done;
    Clock::time_point now = Clock::now();
    if (terminal_) {
        if (done < total_ && now - lastDraw_ < REDRAW_INTERVAL) return;
        lastDraw_ = now;
        double secs = std::chrono::duration<double>(now - start_).count();
        std::fprintf(out_, "\r%s\033[K", formatProgressLine(phase_, done, total_, secs).c_str());
        std::fflush(out_);
        return;
    }
    int tenth = total_ == 0 ? 10 : static_cast<int>(done * 10 / total_);
    if (tenth <= lastTenth_) return;
    lastTenth_ = tenth;
    std::fprintf(out_, "%s\n", formatProgressStep(phase_, done, total_).c_str());
    std::fflush(out_);
}

void Progress::end() {
    if (!open_) return;
    open_ = false;
    if (out_ != nullptr && terminal_) {
        double secs = std::chrono::duration<double>(Clock::now() - start_).count();
        std::fprintf(out_, "\r%s\033[K\n", formatProgressLine(phase_, done_, total_, secs).c_str());
        std::fflush(out_);
    }
}

void Progress::note(const std::string& text) {
    if (out_ == nullptr) return;
    if (open_ && terminal_) std::fputc('\n', out_);
    std::fprintf(out_, "%s\n", text.c_str());
    std::fflush(out_);
    lastDraw_ = Clock::time_point{};
}

}  // namespace update
