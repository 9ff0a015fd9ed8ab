// The CAN request routine and the pool entries it uses.
#include "can/can_link.h"

namespace can {

namespace {

// Pool indices of the CAN requests, clear of the command table's.
constexpr int POOL_BASE = 4000;
constexpr int OPS = 16;

int opIndex(Op op) {
    return static_cast<int>(op);
}

}  // namespace

int requestIndex(const Channel& c, Op op) {
    return POOL_BASE + (c.controller == Controller::St ? c.stChannel * OPS : 0) + opIndex(op);
}

void prepareLink(MCU_CONTENT* link, Controller controller) {
    if (link == nullptr) return;
    for (int ch = controller == Controller::St ? 1 : 0;
         ch <= (controller == Controller::St ? 2 : 0); ++ch) {
        Channel c;
        c.controller = controller;
        c.stChannel = ch;
        for (const RequestLayout& l : requestLayouts()) {
            if (l.controller != controller) continue;
            int index = requestIndex(c, l.op);
            if (getCommandByIndex(link, index) != nullptr) continue;
            if (controller == Controller::St)
                pushCommandToPool(link, index, stDevice(c), l.command, l.address);
            else
                pushCommandToPool(link, index, l.command, 0, 0);
        }
    }
    if (controller == Controller::St)
        link->stMode = ST_MODE_AP;
    else
        link->nxpMode = NXP_MODE_AP;
}

int canExchange(const Channel& c, Op op, const Bytes& data, Bytes* payload, core::Answer* raw) {
    const RequestLayout* layout = findLayout(c.controller, op);
    if (layout == nullptr || c.link == nullptr) return MCU_RESULT_NO_COMMAND;
    int type = c.controller == Controller::St ? MCU_TYPE_ST : MCU_TYPE_NXP;
    core::Answer a = core::exchange(c.link, type, core::apModeOf(type), requestIndex(c, op),
                                    std::span<const BYTE>(data.data(), data.size()));
    if (raw != nullptr) *raw = a;
    if (!a.ok()) return a.result < 0 ? a.result : CAN_NO_ANSWER;
    const BYTE* out = a.bytes.data();
    int outLen = a.length;
    Bytes scratch;
    return answerOk(c.controller, *layout, out, outLen, payload ? payload : &scratch) ? CAN_OK
                                                                                      : CAN_REFUSED;
}

const char* linkResultText(int result) {
    switch (result) {
        case CAN_REFUSED:
            return "the controller refused the request";
        case MCU_RESULT_WRITE_FAIL:
            return "writing to the line failed";
        case MCU_RESULT_TIMEOUT:
            return "no answer from the controller";
        case MCU_RESULT_BUSY:
            return "the link is busy";
        case MCU_RESULT_NO_COMMAND:
            return "the controller has no such request";
        default:
            return "no usable answer";
    }
}

}  // namespace can
