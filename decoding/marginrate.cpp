#include "decoding/members.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

namespace {

bool readHashCodes(MemberReader& members, std::vector<int64_t>& hashCodes) {
  const JsonValue* list = members.find("hashCodes");
  if (list == nullptr || !list->IsArray()) {
    return members.fail({"has no hashCodes member or not array", ",msg=has no hashCodes member or not array"});
  }
  hashCodes.reserve(list->Size());
  for (const JsonValue& element : list->GetArray()) {
    if (!read(element, hashCodes.emplace_back())) {
      return members.fail({"hashCodes element not int64", ",msg=hashCodes element not int64"});
    }
  }
  return true;
}

bool readQuery(MemberReader& members, MobileMarginRateQuery& query) {
  return members.require("index", query.index, kNoIndex) && readHashCodes(members, query.hashCodes);
}

}  // namespace

ResultStatus MobileWorker::parseSymbolMarginRate(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                                 SymbolMarginRateReq& out) {
  const FailureReporter ofBody("parse symbolMarginRate error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  const FailureReporter ofElement = ofBody.withPrefix("parse marginRate error,RequestID=");
  return decodeItems(data, ofBody, ofElement, kDataNotArray, readQuery, out.queries);
}

}  // namespace orvane
