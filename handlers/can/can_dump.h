// What brdcan dump does with each received frame: picks the channel it came from, applies
// the channel's filters and writes candump lines or log lines. Runs on the links' receive
// threads; each link has its own output buffer, so the threads share only atomics.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "can/can_frame.h"
#include "can/can_link.h"

namespace can {

struct DumpOptions {
    Stamp stamp = Stamp::None;
    bool logFormat = false;     // candump log lines instead of candump lines
    bool lineBuffered = false;  // write every line at once (a terminal)
    long maxCount = -1;         // stop after this many frames (-1: no limit)
    int outFd = 1;
};

class Dump {
   public:
    // `channels` are the dumped channels with their filters; `resolved` the matching
    // channels (same order). Links named by the channels get an output buffer each.
    Dump(DumpOptions options, std::vector<ChannelSpec> specs, std::vector<Channel> resolved);
    ~Dump();
    Dump(const Dump&) = delete;
    Dump& operator=(const Dump&) = delete;

    // A received record (on the receive thread of `link`). `device` is the ST device
    // byte of the frame (6 or 7) on the system MCU link.
    void onFrame(MCU_CONTENT* link, int device, const can_msg_t& msg, int64_t epochUs);
    // Writes what the buffers still hold; after the links' threads have stopped.
    void flush();

    // Frames written, and whether maxCount is reached.
    unsigned long written() const { return written_; }
    bool done() const { return done_; }
    int64_t lastFrameUs() const { return lastUs_; }
    bool writeFailed() const { return writeFailed_; }

   private:
    struct LinkOut {
        MCU_CONTENT* link = nullptr;
        std::string buf;
    };
    void emit(LinkOut& out, bool force);

    DumpOptions opt_;
    std::vector<ChannelSpec> specs_;
    std::vector<Channel> channels_;
    int nameWidth_ = 0;
    std::vector<std::unique_ptr<LinkOut>> outs_;
    std::atomic<unsigned long> written_{0};
    std::atomic<bool> done_{false};
    std::atomic<int64_t> lastUs_{0};
    std::atomic<int64_t> firstUs_{0};
    std::atomic<bool> writeFailed_{false};
};

}  // namespace can
