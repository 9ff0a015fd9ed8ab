// What every handler includes: the core's exchange, report, prompts, product sets and
// text helpers.
#pragma once

#include "context.h"
#include "exchange.h"
#include "product.h"
#include "prompt.h"
#include "report.h"
#include "text.h"

using core::printText;
using core::rowprintf;
using core::strprintf;
