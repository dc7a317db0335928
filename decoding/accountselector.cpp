#include "decoding/jsonbody.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

ResultStatus MobileWorker::parseTid(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                    AccountSelector& out) {
  const FailureTeller teller("parse tid error,RequestID=", requestId, topic);
  constexpr FailureTexts kElementNotInt{"Data member not array", ",msg=Data element not int"};  // the reply is the same

  const SourcePlace place = SourcePlace::current();
  return decodeArray(data, teller, kDataNotArray, [&](const JsonValue& root) -> ResultStatus {
    for (const JsonValue& element : root.GetArray()) {
      if (!element.IsInt()) {
        return teller.fail(kElementNotInt, place);
      }
      out.push_back(element.GetInt());
    }
    return {};
  });
}

}  // namespace orvane
