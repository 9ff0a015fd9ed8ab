// The tyre-pressure (TPMS) receiver as brdsim plays it: its ASCII display-mode command
// and the sensor records it sends unasked.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace brdsim {

using Bytes = std::vector<uint8_t>;

// The receiver's display-mode command, as ASCII on the line without framing.
inline constexpr char TPMS_DISPLAY_MODE[] = "ATB01";
// Its answer: 01, the command accepted.
Bytes tpmsDisplayModeAnswer();

// Finds the display-mode command in the bytes that arrive outside any framed request.
class AsciiCommandMatcher {
   public:
    // True when `b` completes the command.
    bool feed(uint8_t b);
    void reset() { seen_.clear(); }

   private:
    std::string seen_;
};

// One tyre sensor as the receiver reports it.
struct TpmsSensor {
    uint32_t id;
    uint16_t pressureKpa;
    int8_t temperatureC;
    uint8_t status;  // bit 0 low pressure, bit 1 high temperature, bit 2 low battery
};

// An 8-byte record: the sensor ID (most significant byte first), the pressure in kPa
// (most significant byte first), the temperature + 50 in degrees, the status bits.
Bytes encodeTpmsRecord(const TpmsSensor& s);

// The four sensors a simulated vehicle carries unless a test sets others.
std::vector<TpmsSensor> tpmsDefaultSensors();

// The record number `n` of a stream over `sensors`: the sensors in turn, the pressure
// drifting by a few kPa so that successive records differ.
Bytes tpmsStreamRecord(const std::vector<TpmsSensor>& sensors, uint32_t n);

class Simulator;

// Sends the records of tpmsStreamRecord on a simulator's line, `perSecond` a second,
// `count` of them (< 0: until stopped), as the receiver does once it runs. Stops and
// joins its thread when destroyed.
class TpmsStreamer {
   public:
    TpmsStreamer(Simulator& line, int perSecond, int count,
                 std::vector<TpmsSensor> sensors = tpmsDefaultSensors());
    ~TpmsStreamer();
    TpmsStreamer(const TpmsStreamer&) = delete;
    TpmsStreamer& operator=(const TpmsStreamer&) = delete;

   private:
    void run(Simulator& line, int perSecond, int count, std::vector<TpmsSensor> sensors);
    std::mutex mu_;
    std::condition_variable stopCond_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace brdsim
