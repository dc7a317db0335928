#include "decoding/members.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

namespace {

// Only the account must be named. Which of the two ids counts is the task's affair; an instrument is wanted, and looked
// at, only beside the first.
bool readItem(MemberReader& members, MobileCancelOrder& order) {
  if (!members.require("index", order.account.index, kNoIndex)) {
    return false;
  }
  if (members.readIf("localOrderId", order.localOrderId) &&
      !members.require("hashCode", order.code.hashCode,
                       {"has no code member or not int64", ",msg=has no code member or not int64"})) {
    return false;
  }
  members.readIf("strategyId", order.strategyId);
  return true;
}

}  // namespace

ResultStatus MobileWorker::parseCancelOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                            std::vector<MobileCancelOrder>& out) {
  const FailureTeller teller("parse cancelOrder error,RequestID=", requestId, topic);
  constexpr FailureTexts kNotArray{"has no Data member or not array", ",msg=has no Data member or not array"};

  return decodeItems(data, teller, teller, kNotArray, readItem, out);
}

}  // namespace orvane
