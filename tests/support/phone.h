#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "pocketagent/mobileworker.h"
#include "tests/support/scriptedhost.h"

namespace orvane::test {

// A worker that runs each task at once, on the thread that pushes, so that a test needs no thread and no waiting.
class DirectWorker : public MobileWorker {
 public:
  int32_t enqueue(const std::shared_ptr<IRequestTask>& task) override {
    task->execute();
    return 1;
  }
};

// Asks the library and takes its answers from the host's mobile service.
class Phone {
 public:
  static constexpr int64_t kRequestId = 42;

  // All that came back for one request.
  std::vector<MobileMessage> askAll(const std::string& topic, const std::string& body, int32_t terminalType = 8) {
    const size_t before = ScriptedHost::current().sent().size();
    worker_.push(kRequestId, terminalType, topic, body);
    const std::vector<MobileMessage> sent = ScriptedHost::current().sent();
    return {sent.begin() + static_cast<std::ptrdiff_t>(before), sent.end()};
  }

  // The one reply.
  MobileMessage ask(const std::string& topic, const std::string& body = "", int32_t terminalType = 8) {
    const std::vector<MobileMessage> replies = askAll(topic, body, terminalType);
    if (replies.size() != 1) {
      throw std::logic_error(topic + " got " + std::to_string(replies.size()) + " replies");
    }
    return replies.front();
  }

 private:
  DirectWorker worker_;
};

}  // namespace orvane::test
