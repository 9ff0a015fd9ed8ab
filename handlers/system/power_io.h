// The data rows of the power, I/O, fan and radio handlers and the renders of the ones
// that decode their answer themselves, for checks that walk them (the handlers are
// declared in system_bespoke.h).
#pragma once

#include <span>

#include "shapes/rows.h"

namespace system_power_io {

extern const shapes::SetRow SET_POWER_TYPE;
extern const shapes::SetRow SET_FAN_VALUE;
extern const shapes::SetRow SET_GPI_ACTIVE_MODE;
extern const shapes::SetRow SET_GPO_PULLUP_MODE;

// Every GET row (radios, SIM card, GPO and GPI lines), with its handler.
extern const std::span<const shapes::GetRef> rows;
// Every one-menu SET row, with its handler.
extern const std::span<const shapes::MenuRef> menus;
// Every other SET row, with its handler.
extern const std::span<const shapes::SetRef> setRows;
// Every render of a handler that decodes its answer itself (an indexed record with a
// fixed index), with its handler.
extern const std::span<const shapes::RenderRef> renders;

}  // namespace system_power_io
