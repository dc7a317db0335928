#include "decoding/members.h"
#include "host/common.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

namespace {

constexpr int64_t kPlacedByHand = 0x10000;  // of orderFlagNames
constexpr int32_t kSpeculation = 1;         // of hedgeNames

// Wraps at 32 bits on purpose: hosts depend on these values.
int64_t wrappedMilliseconds(int32_t seconds) { return static_cast<int32_t>(static_cast<uint32_t>(seconds) * 1000U); }

bool readRequired(MemberReader& members, MobileNewOrderItem& item) {
  int32_t offset = 0;  // required but unused
  int32_t insertTimestamp = 0;
  std::string source;
  const bool complete =
      members.require("index", item.account.index,
                      {"has no Index member or not int", ",msg=has no index member or not int"}) &&
      members.require("hashCode", item.code.hashCode,
                      {"has no code member or not int64", ",msg=has no code member or not int64"}) &&
      members.require("side", item.side, {"has no side member or not int", ",msg=has no side member or not int"}) &&
      members.require("combOffset", item.combOffset,
                      {"OrderList has no combOffset member", ",msg=has no combOffset member or not int"}) &&
      members.require("priceType", item.priceType,
                      {"OrderList has no priceType member", ",msg=has no priceType member or not int"}) &&
      members.require("price", item.price, {"OrderList has no price member", ",msg=has no price member"},
                      {"price member must be double or int64", ",msg=price member must be double or int64"}) &&
      members.require("offset", offset, {"has no offset member or not int", ",msg=has no offset member or not int"}) &&
      members.require("volume", item.volume,
                      {"has no volume member or not int64", ",msg=has no volume member or not int64"}) &&
      members.require("insertTimestamp", insertTimestamp,
                      {"has no insertTimestamp member or not int", ",msg=has no insertTimestamp member or not int"}) &&
      members.require("source", source,
                      {"has no source member or not string", ",msg=has no source member or not string"});
  if (complete) {
    item.srcTimestamp = wrappedMilliseconds(insertTimestamp);
    item.orderSource.sourceText = CodeConvert::utf8_to_gbk(source);
    item.orderSource.sourceFlags = kPlacedByHand;
    item.hedge = kSpeculation;
  }
  return complete;
}

bool readItem(MemberReader& members, MobileNewOrderItem& item) {
  return readRequired(members, item) &&
         members.allow("instructionType", item.instructionType,
                       {"instructionType member must be int", ",msg=instructionType member not int"}) &&
         members.allow("orderType", item.orderType, {"orderType member must be int", ",msg=orderType member not int"});
}

}  // namespace

ResultStatus MobileWorker::parseNewOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                         MobileNewOrder& out) {
  const FailureReporter reporter("parse newOrder error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  const JsonBody body(data);
  if (body.isInvalid()) return reporter.fail(kInvalidJson);
  const JsonValue* orderList = findMember(body.root(), "orderList");
  if (orderList == nullptr || !orderList->IsArray()) {
    return reporter.fail({"has no orderList member or not array", ",msg=has no orderList member or not array"});
  }
  return parseOrderList(requestId, topic, *orderList, out);
}

ResultStatus MobileWorker::parseOrderList(int64_t requestId, OrvMobileTopic topic, const JsonValue& orderList,
                                          MobileNewOrder& out) {
  const FailureReporter reporter("parse orderList error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  return readItems(orderList, reporter, readItem, out.items);
}

}  // namespace orvane
