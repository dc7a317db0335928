#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "host/mobilesrv.h"
#include "pocketagent/mobileworker.h"

namespace orvane::bench {

// The library without its thread: runs each task inside push().
class DirectWorker : public MobileWorker {
 public:
  int32_t enqueue(const std::shared_ptr<IRequestTask>& task) override {
    task->execute();
    return 1;
  }

  // One request, as the gateway passes that of a phone.
  void ask(const std::string& topic, const std::string& body) {
    constexpr int32_t kPhone = 8;
    push(1, kPhone, topic, body);
  }
};

// A mobile service without clients, always up.
class LocalServer : public IMobileSrv {
 public:
  ResultStatus start(const MobileSrvInfo& /*info*/) override { return {}; }
  ResultStatus registerSpi(const std::shared_ptr<IMobileSrvSpi>& /*spi*/, int32_t* /*handle*/) override { return {}; }
  ResultStatus unregisterSpi(int32_t /*handle*/) override { return {}; }
  void stop() override {}
  bool isRunning() override { return true; }
};

// Records the last reply.
class LastReply : public LocalServer {
 public:
  ResultStatus send(const MobileMessage& message) override {
    bytes = message.data.size();
    if (keepsData) data = message.data;
    return {};
  }

  bool keepsData = false;  // a copy would count as the library's memory and time
  size_t bytes = 0;
  std::string data;
};

}  // namespace orvane::bench
