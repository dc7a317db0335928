#include "decoding/jsonbody.h"
#include "pocketagent/mobileworker.h"

namespace orvane {

ResultStatus MobileWorker::parseTid(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                    AccountSelector& out) {
  const FailureReporter reporter("parse tid error,RequestID=", requestId, topic, LOG4CXX_LOCATION);
  // The reply of a body that is no array, but a log text of its own.
  constexpr FailureTexts kElementNotInt{kDataNotArray.reply, ",msg=Data element not int"};

  return decodeArray(data, reporter, kDataNotArray, [&](const JsonValue& root) -> ResultStatus {
    for (const JsonValue& element : root.GetArray()) {
      if (!element.IsInt()) return reporter.fail(kElementNotInt);
      out.push_back(element.GetInt());
    }
    return {};
  });
}

}  // namespace orvane
