#pragma once

#include <string>
#include <vector>

#include "host/uiproxymgr.h"

namespace orvane {

std::string serializeCodeTypeList(const std::vector<CodeTypePosition>& positions);

}  // namespace orvane
