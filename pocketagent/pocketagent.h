#pragma once

#include <cstdint>
#include <shared_mutex>

#include "pocketagent/ipocketagent.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

// The agent behind IPocketAgent. Its lock orders the control operations against each other; requests take none of it.
class PocketAgent final : public IPocketAgent {
 public:
  void start(const MobileSrvInfo& info) override;
  void pushNotify(const MobileMessage& message) override;
  void stop() override;
  void getServerStatus(MobileServerStatus& status) override;

 private:
  std::shared_mutex lock_;
  MobileSrvInfo info_;  // stays empty: start keeps no copy of what it was given
  MobileWorker worker_;
  int32_t callbackHandle_ = 0;
};

}  // namespace orvane
