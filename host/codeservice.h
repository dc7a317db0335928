#pragma once

#include <cstdint>

#include "host/instrument.h"
#include "host/resultstatus.h"

namespace orvane {

// The host's instruments. Called on the worker thread.
class ICodeService {
 public:
  virtual ~ICodeService() = default;

  // Code 0 with `property` filled. On any other code the caller goes on with an empty name and drops the text.
  // `version` is always INT64_MAX.
  virtual ResultStatus getCodeProperty(const SymbolCode& symbol, CodeProperty& property, int64_t version) = 0;

  // Code 0 with `symbol` filled. Any other code means that no instrument has this hash code; the text is dropped.
  virtual ResultStatus getCodeByHash(const int64_t& hashCode, SymbolCode& symbol) = 0;
};

}  // namespace orvane
