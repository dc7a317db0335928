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

inline constexpr FailureTexts kInvalidJson{"invalid json string", ",msg=invalid json string"};
inline constexpr FailureTexts kDataNotArray{"Data member not array", ",msg=Data member not array"};

// Parses a body whose root must be an array and hands that to `readRoot`, whose status is the result.
template <typename ReadRoot>
ResultStatus decodeArray(const std::string& data, const FailureTeller& teller, const FailureTexts& notArray,
                         ReadRoot readRoot, const SourcePlace& place = SourcePlace::current()) {
  const JsonBody body(data);
  if (body.isInvalid()) {
    return teller.fail(kInvalidJson, place);
  }
  if (!body.root().IsArray()) {
    return teller.fail(notArray, place);
  }
  return readRoot(body.root());
}

}  // namespace orvane
