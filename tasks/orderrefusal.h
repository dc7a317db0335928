#pragma once

#include <cstdint>
#include <string>

#include "host/resultstatus.h"
#include "vocabulary/gbk.h"

namespace orvane {

// Failures common to placing and cancelling orders. GBK.

inline ResultStatus accountNotFound(int32_t index) {
  return {-1, "can not find tid by index:" + std::to_string(index)};
}

inline ResultStatus conditionalOrder() { return {-1, std::string("暂不支持条件单"_gbk)}; }

}  // namespace orvane
