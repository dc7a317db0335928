#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "host/mobilemessage.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// The reply to an invalid body. Its topic is always "unknown.topic".
class ErrorReqTask final : public IRequestTask {
 public:
  // `text` is GBK.
  ErrorReqTask(int64_t id, std::string text) : IRequestTask(id, kTopicUnknown), error(std::move(text)) {}
  void execute() override;

 private:
  std::string error;
};

// "order.condition.list": replies that conditional orders are not supported.
class CondOrderListTask final : public IRequestTask {
 public:
  using IRequestTask::IRequestTask;
  void execute() override;
};

// Passes a request with an unknown topic to the host's user interface proxy.
class UIRequestTask final : public IRequestTask {
 public:
  UIRequestTask(int64_t id, int32_t terminal, std::string name, std::string body)
      : IRequestTask(id, kTopicUnknown), data(std::move(body)), topicText(std::move(name)), terminalType(terminal) {}
  void execute() override;

 private:
  std::string data;
  std::string topicText;
  int32_t terminalType;
};

// Sends a message from the host to clients.
class PushNotifyListTask final : public IRequestTask {
 public:
  // `message` and `data` of `notice` are GBK.
  explicit PushNotifyListTask(MobileMessage notice) : message(std::move(notice)) {}
  void execute() override;

 private:
  MobileMessage message;
};

}  // namespace orvane
