#pragma once

#include <cstdint>

#include "host/instrument.h"
#include "host/resultstatus.h"

namespace orvane {

// The host's instruments. Worker thread only.
class ICodeService {
 public:
  virtual ~ICodeService() = default;

  // Fills `property` and returns code 0. Any other code means that the instrument has no name; the message is ignored.
  // `version` is always INT64_MAX.
  virtual ResultStatus getCodeProperty(const SymbolCode& symbol, CodeProperty& property, int64_t version) = 0;

  // Fills `symbol` and returns code 0. Any other code means that no instrument has this hash code; the message is
  // ignored.
  virtual ResultStatus getCodeByHash(const int64_t& hashCode, SymbolCode& symbol) = 0;
};

}  // namespace orvane
