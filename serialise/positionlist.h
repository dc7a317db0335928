#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/position.h"

namespace orvane {

// One row: a position and the members that its record lacks. Texts are UTF-8.
struct PositionEntry {
  Position position;
  std::string codeType;
  std::string codeName;
  std::string exchangeName;
  double marginRate = 0;
  int32_t accountStatus = 0;  // 1 if the account is available, else 0
};

std::string serializePositionList(const std::vector<PositionEntry>& entries);

}  // namespace orvane
