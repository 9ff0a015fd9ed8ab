// The system MCU's status rows and the renders of the status handlers that decode
// their answer themselves, for checks that walk them (the handlers are declared in
// system_handlers.h).
#pragma once

#include <span>
#include <string>

#include "shapes/rows.h"

namespace system_status {

// Every data row of the status handlers, with its handler.
extern const std::span<const shapes::GetRef> rows;
// Every status handler with a decoding of its own, with its render.
extern const std::span<const shapes::RenderRef> renders;

std::string renderTemperature(std::span<const BYTE> answer, int fd, const char* product);
std::string renderPulseCount(std::span<const BYTE> answer, int fd, const char* product);
std::string renderStartupCount(std::span<const BYTE> answer, int fd, const char* product);
std::string renderBootTime(std::span<const BYTE> answer, int fd, const char* product);
std::string renderAst(std::span<const BYTE> answer, int fd, const char* product);
std::string renderHeartbeat(std::span<const BYTE> answer, int fd, const char* product);

}  // namespace system_status
