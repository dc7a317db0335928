#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "host/mobilesrv.h"
#include "terminal/phones/gateway.h"

namespace orvane::terminal {

// The mobile service as the agent sees it, on top of a gateway, which must outlive it. Requests reach the callback on
// the gateway's thread.
class MobileServer : public IMobileSrv {
 public:
  explicit MobileServer(Gateway& gateway) : gateway_(gateway) {}

  // Fails when it was started before.
  ResultStatus start(const MobileSrvInfo& info) override;

  // One callback at a time: a second one takes the first one's place, so that no request runs twice.
  ResultStatus registerSpi(const std::shared_ptr<IMobileSrvSpi>& spi, int32_t* handle) override;

  ResultStatus unregisterSpi(int32_t handle) override;
  void stop() override;
  ResultStatus send(const MobileMessage& message) override;
  bool isRunning() override { return running_; }

 private:
  bool isTaking();
  bool receive(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data);

  Gateway& gateway_;
  std::atomic<bool> started_ = false;
  std::atomic<bool> running_ = false;
  std::mutex spiMutex_;  // held while the callback runs, so that unregisterSpi waits for it
  std::shared_ptr<IMobileSrvSpi> spi_;
  int32_t handle_ = 0;
};

}  // namespace orvane::terminal
