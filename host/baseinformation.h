#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace orvane {

// The host's names of exchanges, by SymbolCode::exchangeId. A missing key gives an empty name. Read on the worker
// thread without a lock, so the host must not change it while the agent runs.
struct BaseInformationMap {
  std::map<int32_t, std::string> exchangeNames;      // short name, appended to an instrument's code byte for byte
  std::map<int32_t, std::string> exchangeFullNames;  // display name, GBK
};

// Must not be null while the agent runs.
extern std::shared_ptr<BaseInformationMap> gBaseInformationMap;

}  // namespace orvane
