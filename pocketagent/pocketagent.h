#pragma once

#include <cstdint>
#include <shared_mutex>

#include "pocketagent/ipocketagent.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

// Implements IPocketAgent.
class PocketAgent final : public IPocketAgent {
 public:
  void start(const MobileSrvInfo& info) override;
  void pushNotify(const MobileMessage& message) override;
  void stop() override;
  void getServerStatus(MobileServerStatus& status) override;

 private:
  std::shared_mutex lock_;  // serialises the control operations; pushes share it, requests do not take it
  MobileSrvInfo info_;      // always empty: start does not copy its argument
  MobileWorker worker_;
  int32_t callbackHandle_ = 0;
};

}  // namespace orvane
