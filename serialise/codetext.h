#pragma once

#include <string>

#include "host/instrument.h"

namespace orvane {

// "codeExch": the instrument's code, a dot, the exchange's short text, unconverted. An unknown exchange leaves the dot
// last.
std::string formatCodeKey(const SymbolCode& symbol);

// "codeName": the host's name of the instrument in UTF-8, empty where it has none. One host call each time.
std::string instrumentName(const SymbolCode& symbol);

}  // namespace orvane
