#include "decoding/members.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

namespace {

constexpr FailureTexts kNoHashCode{"has no hashCode member or not int64", ",msg=has no hashCode member or not int64"};

bool readPair(MemberReader& members, MobileCodeAccountPair& pair) {
  return members.require("index", pair.index, kNoIndex) && members.require("hashCode", pair.hashCode, kNoHashCode);
}

bool readManualPosition(MemberReader& members, MonitorManualPosition& manual) {
  return members.require("index", manual.account.index,
                         {"has no index member or not int64", ",msg=has no index member or not int"}) &&
         members.require("hashCode", manual.code.hashCode, kNoHashCode) &&
         members.require("longPos", manual.position.longPos,
                         {"has no longPos member or not int64", ",msg=has no longPos member or not int64"}) &&
         members.require("shortPos", manual.position.shortPos,
                         {"has no shortPos member or not int64", ",msg=has no shortPos member or not int64"});
}

bool readSyncOrder(MemberReader& members, MonitorSyncOrder& order) {
  return members.require("index", order.account.index, kNoIndex) &&
         members.require("hashCode", order.code.hashCode, kNoHashCode) &&
         members.require("volume", order.volume,
                         {"has no volume member or not int64", ",msg=has no volume member or not int64"}) &&
         members.require("price", order.price, {"has no price member", ",msg=has no price member"},
                         {"price member must be double or int64", nullptr}) &&
         members.require("side", order.side, {"has no side member or not int", ",msg=has no side member or not int"}) &&
         members.require("combOffsetFlag", order.combOffsetFlag,
                         {"has no combOffsetFlag member or not int", ",msg=has no combOffsetFlag member or not int"});
}

}  // namespace

ResultStatus MobileWorker::parseMonitorOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                             MobileSyncOrderReq& out) {
  const FailureReporter ofBody("parse monitorSync error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  return decodeItems(data, ofBody, ofBody.withPrefix("parse monitorManualList error,RequestID="), kDataNotArray,
                     readPair, out.items);
}

ResultStatus MobileWorker::parseMonitorManualList(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                                  PosMonitorManualListReq& out) {
  const FailureReporter reporter("parse monitorManualList error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  return decodeItems(data, reporter, reporter, kDataNotArray, readPair, out.items);
}

ResultStatus MobileWorker::parseMonitorManualClean(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                                   PosMonitorManualCleanReq& out) {
  const FailureReporter ofBody("parse monitorManualClean error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  return decodeItems(data, ofBody, ofBody.withPrefix("parse newOrder error,RequestID="), kDataNotArray, readPair,
                     out.items);
}

ResultStatus MobileWorker::parseMonitorManualUpdate(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                                    PosMonitorManualUpdateReq& out) {
  const FailureReporter reporter("parse manualUpdate error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  return decodeItems(data, reporter, reporter, kDataNotArray, readManualPosition, out.items);
}

ResultStatus MobileWorker::parseMonitorNewOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                                MobileSyncNewOrderReq& out) {
  const FailureReporter reporter("parse monitorNewOrder error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  return decodeItems(data, reporter, reporter, kDataNotArray, readSyncOrder, out.items);
}

}  // namespace orvane
