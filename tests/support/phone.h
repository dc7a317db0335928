#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "pocketagent/mobileworker.h"
#include "tests/support/scriptedhost.h"

namespace orvane::test {

// What nearly every test says.
using testing::_;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
  // All that came back for one request.
  std::vector<MobileMessage> askAll(const std::string& topic, const std::string& body, int32_t terminalType = 8) {
    const size_t before = ScriptedHost::current().sent().size();
    worker_.push(42, terminalType, topic, body);
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

  // The data of the one reply, which must be a good one.
  std::string data(const std::string& topic, const std::string& body) {
    const MobileMessage reply = ask(topic, body);
    EXPECT_THAT(reply, FieldsAre(42, topic, "", _, 8));
    return reply.data;
  }

 private:
  DirectWorker worker_;
};

}  // namespace orvane::test
