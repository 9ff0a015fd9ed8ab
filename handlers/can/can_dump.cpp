// Received frames to candump lines or log lines.
#include "can/can_dump.h"

#include <unistd.h>

#include <cerrno>

namespace can {

namespace {

// A buffer is written out once it holds this much (block-buffered output).
constexpr size_t FLUSH_AT = 60 * 1024;

}  // namespace

Dump::Dump(DumpOptions options, std::vector<ChannelSpec> specs, std::vector<Channel> resolved)
    : opt_(options), specs_(std::move(specs)), channels_(std::move(resolved)) {
    for (const ChannelSpec& s : specs_)
        if (static_cast<int>(s.name.size()) > nameWidth_)
            nameWidth_ = static_cast<int>(s.name.size());
    for (const Channel& c : channels_) {
        bool have = false;
        for (auto& o : outs_) have = have || o->link == c.link;
        if (have) continue;
        auto o = std::make_unique<LinkOut>();
        o->link = c.link;
        o->buf.reserve(FLUSH_AT + 512);
        outs_.push_back(std::move(o));
    }
}

Dump::~Dump() = default;

void Dump::emit(LinkOut& out, bool force) {
    if (out.buf.empty() || (!force && out.buf.size() < FLUSH_AT)) return;
    const char* p = out.buf.data();
    size_t left = out.buf.size();
    while (left > 0) {
        ssize_t n = ::write(opt_.outFd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            writeFailed_ = true;
            break;
        }
        p += n;
        left -= static_cast<size_t>(n);
    }
    out.buf.clear();
}

void Dump::onFrame(MCU_CONTENT* link, int device, const can_msg_t& msg, int64_t epochUs) {
    if (done_) return;
    for (size_t i = 0; i < channels_.size(); ++i) {
        const Channel& c = channels_[i];
        if (c.link != link) continue;
        if (c.controller == Controller::St && stDevice(c) != device) continue;
        Frame f = frameFromController(c.controller, msg.id, msg.ide, msg.rtr, msg.dlc, msg.data);
        if (!specs_[i].passes(f)) continue;
        if (opt_.maxCount >= 0) {
            unsigned long n = written_.fetch_add(1);
            if (n >= static_cast<unsigned long>(opt_.maxCount)) {
                done_ = true;
                return;
            }
            if (n + 1 == static_cast<unsigned long>(opt_.maxCount)) done_ = true;
        } else {
            written_++;
        }
        int64_t prev = lastUs_.exchange(epochUs);
        int64_t first = 0;
        if (firstUs_.compare_exchange_strong(first, epochUs)) first = epochUs;
        LinkOut* out = nullptr;
        for (auto& o : outs_)
            if (o->link == link) out = o.get();
        if (out == nullptr) return;
        if (opt_.logFormat) {
            formatLogLine(&out->buf, epochUs, specs_[i].name, f);
        } else {
            int64_t stampUs = epochUs;
            if (opt_.stamp == Stamp::Delta) stampUs = prev == 0 ? 0 : epochUs - prev;
            if (opt_.stamp == Stamp::Zero) stampUs = epochUs - first;
            formatLine(&out->buf, opt_.stamp, stampUs, specs_[i].name, nameWidth_, f);
            out->buf.push_back('\n');
        }
        emit(*out, opt_.lineBuffered || done_);
        return;  // a frame is shown once, on the first channel it matches
    }
}

void Dump::flush() {
    for (auto& o : outs_) emit(*o, true);
}

}  // namespace can
