#pragma once

#include <string>

#include "decoding/failure.h"
#include "host/resultstatus.h"
#include "pocketagent/json.h"

namespace orvane {

// The document of one body. The body is a text up to its first NUL; what stands behind the root value is not looked at.
class JsonBody {
 public:
  explicit JsonBody(const std::string& data) { document_.Parse<kParseFlags>(data.c_str()); }

  bool isInvalid() const { return document_.HasParseError(); }
  const JsonValue& root() const { return document_; }

 private:
  rapidjson::Document document_;
};

// Walks a body whose root is an array: `readElement` takes each element and returns its status, and the first failure
// ends the walk.
template <typename ReadElement>
ResultStatus decodeArray(const std::string& data, const FailureTeller& teller, const FailureTexts& notArray,
                         ReadElement readElement, const SourcePlace& place = SourcePlace::current()) {
  const JsonBody body(data);
  if (body.isInvalid()) {
    return teller.fail({"invalid json string", ",msg=invalid json string"}, place);
  }
  if (!body.root().IsArray()) {
    return teller.fail(notArray, place);
  }
  for (const JsonValue& element : body.root().GetArray()) {
    if (ResultStatus status = readElement(element); status.code != 0) {
      return status;
    }
  }
  return {};
}

}  // namespace orvane
