#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "pocketagent/mobileworker.h"
#include "tests/support/scriptedhost.h"

namespace orvane::test {

// What nearly every test uses.
using testing::_;
using testing::Contains;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

// A worker that runs each task at once, on the thread that pushes, so that most tests need no thread.
class DirectWorker : public MobileWorker {
 public:
  int32_t enqueue(const std::shared_ptr<IRequestTask>& task) override {
    task->execute();
    return 1;
  }
};

// Sends requests to the library and takes its answers from the scripted host.
class Phone {
 public:
  // All answers to one request.
  static std::vector<MobileMessage> askAll(const std::string& topic, const std::string& body,
                                           int32_t terminalType = 8) {
    const auto before = static_cast<std::ptrdiff_t>(ScriptedHost::current().sent().size());
    DirectWorker().push(42, terminalType, topic, body);
    const std::vector<MobileMessage> sent = ScriptedHost::current().sent();
    return {sent.begin() + before, sent.end()};
  }

  // The only answer.
  static MobileMessage ask(const std::string& topic, const std::string& body = "", int32_t terminalType = 8) {
    const std::vector<MobileMessage> replies = askAll(topic, body, terminalType);
    EXPECT_EQ(replies.size(), 1U) << topic;
    return replies.empty() ? MobileMessage() : replies.front();
  }

  // The data of the only answer, which must be a success.
  static std::string data(const std::string& topic, const std::string& body) {
    const MobileMessage reply = ask(topic, body);
    EXPECT_THAT(reply, FieldsAre(42, topic, "", _, 8));
    return reply.data;
  }
};

}  // namespace orvane::test
