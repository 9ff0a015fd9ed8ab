// The system MCU's control rows, for checks that walk them (the handlers are declared
// in system_handlers.h).
#pragma once

#include <span>

#include "shapes/rows.h"

namespace system_control {

// Every one-menu row of the control handlers, with its handler.
extern const std::span<const shapes::MenuRef> menus;
// Every other control row, with its handler.
extern const std::span<const shapes::SetRef> rows;

}  // namespace system_control
