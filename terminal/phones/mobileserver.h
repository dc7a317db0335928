#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "host/mobilesrv.h"
#include "terminal/phones/phones.h"
#include "terminal/phones/replyhold.h"

namespace orvane::terminal {

// The mobile service that the agent sees. Requests reach the agent's callback on the thread of `phones`.
class MobileServer : public IMobileSrv {
 public:
  using Step = std::function<void()>;

  // `open` lets clients in; `close` ends all their sessions and the loop's thread. `phones` must outlive the server.
  MobileServer(Phones& phones, WhenStored whenStored, Step open, Step close);

  // Fails if it was started before.
  ResultStatus start(const MobileSrvInfo& info) override;

  ResultStatus registerSpi(const std::shared_ptr<IMobileSrvSpi>& spi, int32_t* handle) override;
  ResultStatus unregisterSpi(int32_t handle) override;
  void stop() override;
  ResultStatus send(const MobileMessage& message) override;
  bool isRunning() override { return running_; }

 private:
  Phones& phones_;
  ReplyHold hold_;
  const Step open_;
  const Step close_;
  std::atomic<bool> started_ = false;
  std::atomic<bool> running_ = false;
};

}  // namespace orvane::terminal
