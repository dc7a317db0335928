#pragma once

#include <cstdint>
#include <string>

namespace orvane {

// The result of a decoder, a lookup or a host call.
struct ResultStatus {
  int32_t code = 0;     // 0 means success
  std::string message;  // failure text, GBK; ignored on success
};

}  // namespace orvane
