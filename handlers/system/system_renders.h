// The pure parts of the system MCU's power, version, I/O, fan and radio handlers: what a
// GET prints for its answer bytes on a product, and how a SET packs its answers into the
// request. No serial line, no prompts: the handlers call these after their exchange.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "answer_view.h"

namespace sysrender {

// ---------------------------------------------------------------- power

std::string renderPowerType(const Answer& a);
std::string renderDelayTime(const Answer& a);
std::string renderStartupShutdown(const Answer& a);
std::string renderPowerRange(const Answer& a);
std::string renderWatchdog(const Answer& a);

// The delay-time byte: off code in bits 0-2, on code in bits 3-5, enables in bits 6 and 7.
Byte delayTimeByte(bool offEnabled, int offCode, bool onEnabled, int onCode);

// ---------------------------------------------------------------- version and identity

std::string renderMcuVersion(const Answer& a);
std::string renderEventLog(const Answer& a);
// One record of the system parameters (index 0 MAC, 1 SoM serial, 2 carrier/assembly).
std::string renderSystemParameter(int index, const Answer& a);
// One machine-parameter record: `shownIndex` is the number in its header line.
std::string renderMachineParameter(int shownIndex, const Answer& a, bool framed);
std::string renderModuleName(const Answer& a);
std::string renderBoardId(const Answer& a);
std::string renderIoBoardId(const Answer& a);
std::string renderExpansionBoardId(const Answer& a);

// The 17-byte system-parameter request: index 0 takes a MAC typed as hex pairs,
// 1 and 2 a serial number of at most 16 characters.
std::array<Byte, 17> systemParameterRequest(int index, std::string_view typed);
// The 65-byte machine-parameter request, or nothing when the hex text has an odd length.
std::optional<std::array<Byte, 65>> machineParameterRequest(int index, std::string_view hex);
// A pair (or the last single character) of hex digits as a C library's base-16 reading
// takes it: the leading hex digits, 0 when there are none.
Byte hexPair(std::string_view pair);

// ---------------------------------------------------------------- I/O lines and keys

std::string renderMdioMode(const Answer& a);
std::string renderGpioMode(const Answer& a);
std::string renderGpiActiveMode(const Answer& a);
std::string renderGpoPullupMode(const Answer& a);
std::string renderMdoStatus(const Answer& a);
std::string renderMdiStatus(const Answer& a);
// The number of MDO lines a product's SET asks for without asking (0: ask for a count).
int mdoControlLines(std::string_view model);
std::string renderGsensor(unsigned typedIndex, const Answer& a);
bool gsensorWritable(unsigned index);
std::string renderIButtonKey(unsigned typedIndex, const Answer& a);
std::string renderRfidKey(unsigned typedIndex, const Answer& a);
// family, unique codes 1-6, crc as typed -> the 11-byte request in its travelling order.
std::array<Byte, 11> iButtonRequest(unsigned index, unsigned family,
                                    const std::array<unsigned, 6>& codes, unsigned crc);
std::array<Byte, 15> rfidRequest(unsigned index, std::string_view text);

// ---------------------------------------------------------------- fans, transceivers, keys

std::string renderFanValue(const Answer& a);
std::string renderFanRpm(const Answer& a);
std::string renderSp339aMode(const Answer& a);
std::string renderKeyLock(const Answer& a);

// ---------------------------------------------------------------- AST

// The AST request: at most 16 characters, zero-padded.
std::array<Byte, 16> astRequest(std::string_view text);

}  // namespace sysrender
