// The CAN request table and the request and answer layouts it describes.
#include "can_layout.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace can {

namespace {

constexpr uint8_t GET = 0x02;
constexpr uint8_t SET = 0x03;

const std::vector<RequestLayout> kLayouts = {
    // ST channels: device 6 (st1) / 7 (st2), command byte, address.
    {Op::BitRate, Controller::St, SET, 0x01, "ST_CAN%d_SET_01_01_SPEED"},
    {Op::Filter, Controller::St, SET, 0x02, "ST_CAN%d_SET_02_01_FILTER"},
    {Op::ClearFilters, Controller::St, SET, 0x02,
     "ST_CAN%d_SET_02_01_DISABLE_AND_CLEAR_ALL_FILTER"},
    {Op::Send, Controller::St, SET, 0x03, "ST_CAN%d_SET_03_01_SEND_MESSAGE"},
    {Op::Series, Controller::St, SET, 0x03, "ST_CAN%d_SET_03_02_AUTO_SEND"},
    {Op::Stop, Controller::St, SET, 0x04, "ST_CAN%d_SET_04_01_STOP_TRANSMIT"},
    {Op::ClearFifo, Controller::St, SET, 0x05, "ST_CAN%d_SET_05_01_CLEAR_RECEIVE_FIFO"},
    {Op::ErrorCode, Controller::St, GET, 0x01, "ST_CAN%d_GET_01_01_ERROR_CODE"},
    // NXP controller: command code.
    {Op::FwVersion, Controller::Nxp, 0x02, 0, "NXP_CAN_AP_02_READ_FW_VERSION"},
    {Op::BlVersion, Controller::Nxp, 0x04, 0, "NXP_CAN_AP_04_READ_BL_VERSION"},
    {Op::BitRate, Controller::Nxp, 0x10, 0, "NXP_CAN_AP_10_SET_SPEED"},
    {Op::Filter, Controller::Nxp, 0x12, 0, "NXP_CAN_AP_12_SET_FILTER"},
    {Op::ClearFilters, Controller::Nxp, 0x12, 0, "NXP_CAN_AP_12_DISABLE_AND_CLEAR_ALL_FILTER"},
    {Op::Send, Controller::Nxp, 0x20, 0, "NXP_CAN_AP_20_EDIT_MESSAGE_TO_SENDING"},
    {Op::Series, Controller::Nxp, 0x20, 0, "NXP_CAN_AP_20_EDIT_MESSAGE_TO_SENDING"},
    {Op::Stop, Controller::Nxp, 0x22, 0, "NXP_CAN_AP_22_STOP_TRANSMIT"},
    {Op::ErrorCode, Controller::Nxp, 0x34, 0, "NXP_CAN_AP_34_GET_ERROR_CODE"},
    {Op::InputVoltage, Controller::Nxp, 0x50, 0, "NXP_CAN_AP_50_READ_INPUT_VOLTAGE"},
};

const std::vector<BitRate> kBitRates = {
    {10000, 0},  {20000, 1},  {50000, 2},  {100000, 3},  {125000, 4},
    {250000, 5}, {500000, 6}, {800000, 7}, {1000000, 8},
};

void putLe32(Bytes* b, uint32_t v) {
    for (int k = 0; k < 4; ++k) b->push_back(static_cast<uint8_t>(v >> (8 * k)));
}

}  // namespace

const std::vector<RequestLayout>& requestLayouts() {
    return kLayouts;
}

const RequestLayout* findLayout(Controller controller, Op op) {
    for (const RequestLayout& l : kLayouts)
        if (l.controller == controller && l.op == op) return &l;
    return nullptr;
}

std::string rowName(const RequestLayout& layout, int stChannel) {
    char buf[96];
    snprintf(buf, sizeof buf, layout.row, stChannel);
    return buf;
}

FrameCoding frameCoding(Controller controller) {
    // The ST channels use the bit positions of their controller's identifier register
    // (extended 4, remote 2); the NXP firmware uses plain flags (extended 1, remote 1).
    if (controller == Controller::St) return {0, 4, 0, 2};
    return {0, 1, 0, 1};
}

const std::vector<BitRate>& bitRates() {
    return kBitRates;
}

int bitRateCode(const std::string& text) {
    if (text.empty()) return -1;
    char* end = nullptr;
    long v = strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || v <= 0) return -1;
    std::string unit = end;
    if (unit == "k" || unit == "K")
        v *= 1000;
    else if (unit == "M" || unit == "m")
        v *= 1000000;
    else if (!unit.empty())
        return -1;
    for (const BitRate& r : kBitRates)
        if (r.rate == v) return r.code;
    return -1;
}

long bitRateOfCode(int code) {
    for (const BitRate& r : kBitRates)
        if (r.code == code) return r.rate;
    return 0;
}

Bytes bitRateData(uint8_t code) {
    return {code};
}

Bytes filterData(Controller controller, const Filter& f) {
    FrameCoding c = frameCoding(controller);
    Bytes b = {1};
    putLe32(&b, f.id & EFF_MASK);
    putLe32(&b, f.mask & EFF_MASK);
    b.push_back(static_cast<uint8_t>((f.id & EFF_FLAG) ? c.ideExtended : c.ideStandard));
    return b;
}

Bytes clearFiltersData() {
    return {0};
}

Bytes messageData(Controller controller, const Frame& f) {
    FrameCoding c = frameCoding(controller);
    Bytes b;
    putLe32(&b, f.id);
    b.push_back(static_cast<uint8_t>(f.ext ? c.ideExtended : c.ideStandard));
    b.push_back(static_cast<uint8_t>(f.rtr ? c.rtrRemote : c.rtrData));
    b.push_back(f.dlc);
    for (int k = 0; k < 8; ++k) b.push_back(f.rtr ? 0 : f.data[k]);
    return b;
}

bool answerOk(Controller controller, const RequestLayout& layout, const uint8_t* answer, int length,
              Bytes* payload) {
    payload->clear();
    if (controller == Controller::Nxp) {
        if (length < 2 || answer[0] != static_cast<uint8_t>(layout.command + 1) || answer[1] != 1)
            return false;
        payload->assign(answer + 2, answer + length);
        return true;
    }
    if (layout.command == GET) {
        if (length < 1) return false;
        payload->assign(answer, answer + length);
        return true;
    }
    return length >= 1 && answer[0] == 1;
}

Frame frameFromController(Controller controller, uint32_t id, uint16_t ide, uint16_t rtr,
                          uint16_t dlc, const uint8_t* data) {
    FrameCoding c = frameCoding(controller);
    Frame f;
    f.ext = ide != c.ideStandard;
    f.rtr = rtr == c.rtrRemote;
    f.id = id & (f.ext ? EFF_MASK : SFF_MASK);
    f.dlc = static_cast<uint8_t>(dlc > 8 ? 8 : dlc);
    if (!f.rtr) memcpy(f.data, data, f.dlc);
    return f;
}

}  // namespace can
