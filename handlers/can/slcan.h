// The serial-line CAN (Lawicel) protocol, as a pure engine: the bytes a client writes go
// in, the answers and what the bridge must do come out. Commands end with CR; the answer
// to a good command ends with CR, a bad or unknown one gets BEL.
#pragma once

#include <string>
#include <vector>

#include "can/can_frame.h"

namespace can {

struct SlcanAction {
    enum Kind { Reply, Open, Close, SetBitRate, Send } kind = Reply;
    std::string text;  // Reply: bytes to write back
    int rateCode = 0;  // SetBitRate: S0-S8
    Frame frame;       // Send
};

class SlcanEngine {
   public:
    // Takes what the client wrote (any split); returns what to do, in order. A Send or
    // SetBitRate is followed by the Reply for its success: a bridge whose request failed
    // writes BEL instead of that Reply.
    std::vector<SlcanAction> feed(const char* bytes, size_t n);
    bool open() const { return open_; }

    // The line a received frame goes to the client as: t1238DEADBEEF..., T..., r..., R...
    static std::string frameLine(const Frame& f);

   private:
    void command(const std::string& line, std::vector<SlcanAction>* out);
    std::string pending_;
    bool discarding_ = false;
    bool open_ = false;
};

}  // namespace can
