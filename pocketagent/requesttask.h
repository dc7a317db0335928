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

// One request on the worker thread: it runs against the host's services and sends at most one reply, besides a refusal.
// A task is built complete on the callback thread and touched by the worker alone from then on. It owns its payload and
// reports failure by its reply; an exception that leaves `execute` ends the process.
class IRequestTask {
 public:
  IRequestTask() = default;
  IRequestTask(int64_t id, OrvMobileTopic value) : requestId(id), topic(value) {}
  IRequestTask(const IRequestTask&) = delete;
  IRequestTask& operator=(const IRequestTask&) = delete;
  virtual ~IRequestTask() = default;

  virtual void execute() = 0;

  // Hands a message, all texts UTF-8, to the host's mobile service. A failure is logged and the message is lost.
  static void send(const MobileMessage& message);

  // The host's records behind the numbers of a request. Each asks the host afresh and writes no log.

  // Appends the selected accounts; an empty selector means every account. Always code 0.
  static ResultStatus findAccounts(const std::list<int32_t>& selector, std::vector<TradingAccountID>& accounts);
  // Assigns `account`; code 41 where the host knows no such account. `account` may be the record that holds `index`.
  static ResultStatus findAccount(int32_t index, TradingAccountID& account);
  // The host fills `symbol`; code -1 where it knows no such instrument.
  static ResultStatus findCode(int64_t hashCode, SymbolCode& symbol);
  // The code type and the name of an instrument, UTF-8; code -1 leaves both texts as they were.
  static ResultStatus findCodeType(int64_t hashCode, std::string& typeText, std::string& nameText);

 protected:
  // May the user use this topic's function? If not, the refusal has been sent.
  bool checkEntitlement() const;
  // May the user use it on this account?
  bool checkEntitlement(const TradingAccountID& account) const;

  // The start of this task's reply: its request id and the name of its topic.
  MobileMessage makeReply() const;
  // Sends the reply of a success; `data` is JSON text in UTF-8, or empty.
  void reply(std::string data) const;
  // Sends the reply of a request that ended in `status`, without data: the status's text, if it is a failure.
  void reply(const ResultStatus& status) const;

  int64_t requestId = kNoRequestId;
  OrvMobileTopic topic = kTopicUnknown;

 private:
  bool sendRefusal(const ResultStatus& status) const;
};

}  // namespace orvane
