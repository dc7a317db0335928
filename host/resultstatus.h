#pragma once

#include <cstdint>
#include <string>

namespace orvane {

// Outcome of a decoder, a lookup or a host call.
struct ResultStatus {
  int32_t code = 0;     // 0 is success, anything else is failure
  std::string message;  // the failure's text, GBK; a success may carry one too, which nobody reads
};

}  // namespace orvane
