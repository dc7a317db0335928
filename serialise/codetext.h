#pragma once

#include <string>

#include "host/instrument.h"

namespace orvane {

// "codeExch": code, dot, short name of the exchange, all byte for byte. The name of an unknown exchange is empty.
std::string formatCodeKey(const SymbolCode& symbol);

// "codeName": the host's name of the instrument in UTF-8, empty if it has none. Calls the host.
std::string instrumentName(const SymbolCode& symbol);

}  // namespace orvane
