#include "decoding/members.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

namespace {

// Only `index` is required. The task decides between the two ids; `hashCode` is required, and read, only with the
// first.
bool readItem(MemberReader& members, MobileCancelOrder& order) {
  if (!members.require("index", order.account.index, kNoIndex)) return false;
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
  const FailureReporter reporter("parse cancelOrder error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  constexpr FailureTexts kNotArray{"has no Data member or not array", ",msg=has no Data member or not array"};

  return decodeItems(data, reporter, reporter, kNotArray, readItem, out);
}

}  // namespace orvane
