#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace orvane {

// The host's master data. Read on the worker thread without a lock: the host sets it up before it starts the agent and
// leaves it alone while the agent runs.
struct BaseInformationMap {
  std::map<int32_t, std::string> exchangeNames;      // short text, joined to an instrument's code as it stands
  std::map<int32_t, std::string> exchangeFullNames;  // display name, GBK
};

extern std::shared_ptr<BaseInformationMap> gBaseInformationMap;

}  // namespace orvane
