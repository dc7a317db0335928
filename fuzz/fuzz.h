#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "decoding/jsonbody.h"
#include "decoding/members.h"
#include "pocketagent/mobileworker.h"
#include "terminal/json.h"
#include "tests/support/scriptedhost.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace orvane::fuzz {

inline const bool kQuiet = (agentLogger()->setLevel(log4cxx::Level::getOff()), true);

// libFuzzer keeps the input of a proof that fails.
#define PROVE(condition) ((condition) ? void() : (std::fprintf(stderr, "%s\n", #condition), std::abort()))

// Whether the library would end the process on a body, because it has something else in the place of an object. The
// gateway finds out while it reads; this checks the library's own document.
inline bool isFatal(const std::string& topicText, const std::string& data) {
  const OrvMobileTopic topic = topicFromName(topicText.c_str());
  const JsonBody body(data);
  if (body.isInvalid() || topic == kTopicUnknown) return false;
  const JsonValue* list = &body.root();
  if (topic == kTopicNewOrder) {
    if (!list->IsObject()) return true;
    list = findMember(*list, "orderList");
  } else if (topic != kTopicCancelOrder && topic != kTopicMarginRateList &&
             (topic < kTopicMonitorSyncOrderList || topic > kTopicMonitorManualClean)) {
    return false;
  }
  return list != nullptr && list->IsArray() &&
         !std::all_of(list->Begin(), list->End(), [](const JsonValue& each) { return each.IsObject(); });
}

// Runs each task at once, on the thread that pushes.
class DirectWorker : public MobileWorker {
  int32_t enqueue(const std::shared_ptr<IRequestTask>& task) override { return task->execute(), 1; }
};

// A host with a row in every list: the account 1, the instrument 10, the order 5. Each lever's bit is a failure.
class FuzzHost : public test::ScriptedHost {
 public:
  enum Lever { kRefuseUser = 1, kRefuseAccount = 2, kFailSend = 4, kFailOrders = 8, kKnowNothing = 16 };

  explicit FuzzHost(int levers) : levers_(levers) {
    if (has(kRefuseUser)) userRefusal = {1, "user"};
    if (has(kRefuseAccount)) accountRefusals[1] = {2, "account"};
    if (has(kFailSend)) sendStatus = {3, "send"};
    if (has(kFailOrders)) insertStatuses[10] = cancelStatuses[5] = {4, "order"};
    if (!has(kKnowNothing)) know(test::account(1, "u1"), test::symbol(10, "rb2405", 3));
  }

  // Sends a request to the library, checks all that it did and returns its replies.
  std::vector<MobileMessage> ask(const std::string& topic, const std::string& body, int32_t terminalType) {
    DirectWorker().push(42, terminalType, topic, body);
    const std::vector<MobileMessage> replies = sent();
    for (const MobileMessage& reply : replies) {
      PROVE(reply.requestId == 42 && reply.terminalType == 8 && (reply.message.empty() || reply.data.empty()));
      PROVE(reply.data.empty() || terminal::checkJson(reply.data).ok);
    }
    // A refused account gets two replies: the refusal, and the end of the request. The proxy answers later.
    PROVE(replies.size() == (called("requestAsync") ? 0U : called("checkAccount") && has(kRefuseAccount) ? 2U : 1U));
    // Nothing is done for a refused user, and nothing is traded but with the host's own, whole records.
    PROVE(!has(kRefuseUser) || !called("checkUser") || calls().size() == 2);  // the check and the refusal
    PROVE(!(called("insertOrder") || called("cancelOrder")) ||
          (levers_ & (kRefuseUser | kRefuseAccount | kKnowNothing)) == 0);
    for (const std::string& call : calls()) {
      PROVE(!call.starts_with("insertOrder") || call.starts_with("insertOrder(1,10,"));
      PROVE(!call.starts_with("cancelOrder") || call.substr(call.find(',')).starts_with(",1,"));
    }
    return replies;
  }

 private:
  bool has(Lever lever) const { return (levers_ & lever) != 0; }
  bool called(const std::string& name) const {
    return std::ranges::any_of(calls(), [&](const std::string& call) { return call.starts_with(name); });
  }

  void know(const TradingAccount& account, const SymbolCode& code) {
    accounts = {account};
    available = {1};
    symbols = {{10, code}};
    codeTypes = {{10, {"type", codeNames[10] = "name"}}};
    credits[1].resize(1);
    codeTypePositions.resize(1);
    marginRates[10].a = 0.1;
    const auto add = [&](auto& list) { list.emplace_back().account = account.id, list.back().code = code; };
    add(positions), add(orders), add(fills), add(monitorRecords), add(syncOrders), add(manualPositions);
    positions.back().longPosition = 1;
  }

  int levers_;
};

}  // namespace orvane::fuzz
