#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "host/account.h"
#include "host/instrument.h"
#include "host/mobilemessage.h"
#include "host/resultstatus.h"
#include "pocketagent/topic.h"

namespace orvane {

// One request. `execute` calls the host's services and sends one reply, which reports a failure too. A task is built on
// the service's thread, owns its payload, and is used only by the worker thread once queued. An exception that leaves
// `execute` ends the process.
class IRequestTask {
 public:
  IRequestTask() = default;
  IRequestTask(int64_t id, OrvMobileTopic value) : requestId(id), topic(value) {}
  IRequestTask(const IRequestTask&) = delete;
  IRequestTask& operator=(const IRequestTask&) = delete;
  virtual ~IRequestTask() = default;

  virtual void execute() = 0;

  // Sends a message, all texts UTF-8, through the host's mobile service. If that fails, the error is logged and the
  // message is lost.
  static void send(const MobileMessage& message);

  // Look-ups of the host's records by the numbers in a request. Each calls the host and logs nothing.

  // Appends the selected accounts; an empty selector means every account. Always code 0.
  static ResultStatus findAccounts(const std::list<int32_t>& selector, std::vector<TradingAccountID>& accounts);
  // Code 41 if the host has no such account; `account` is then unchanged. It may be the record that holds `index`.
  static ResultStatus findAccount(int32_t index, TradingAccountID& account);
  // The host fills `symbol`. Code -1 if it has no such instrument.
  static ResultStatus findCode(int64_t hashCode, SymbolCode& symbol);
  // The code type and the name of an instrument, UTF-8. Code -1 if the host has none; both texts are then unchanged.
  static ResultStatus findCodeType(int64_t hashCode, std::string& typeText, std::string& nameText);

 protected:
  // Whether the user may use this task's topic. If not, the refusal has been sent.
  bool checkEntitlement() const;
  // The same for one account.
  bool checkEntitlement(const TradingAccountID& account) const;

  // A reply with the task's request id and topic.
  MobileMessage makeReply() const;
  // Sends a success; `data` is JSON text in UTF-8.
  void reply(std::string data) const;
  // Sends the message of `status` if it is a failure, otherwise a success without data.
  void reply(const ResultStatus& status) const;

  int64_t requestId = kNoRequestId;
  OrvMobileTopic topic = kTopicUnknown;

 private:
  // Sends `status` if it is a failure; true if it is not.
  bool sendRefusal(const ResultStatus& status) const;
};

}  // namespace orvane
