#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "decoding/failure.h"
#include "decoding/quickreader.h"
#include "host/resultstatus.h"
#include "pocketagent/json.h"

namespace orvane {

// The document of one body. The body is a text up to its first NUL; what stands behind the root value is not looked at.
// Strings may point into `data`, which must outlive this. A small body's document takes no memory of the heap.
class JsonBody {
 public:
  explicit JsonBody(const std::string& data) {
    bool complete = false;
    auto quick = [&](Document& document) {
      complete = QuickReader<Document>(data.c_str(), document).read();
      return complete;
    };
    document_.Populate(quick);
    if (!complete) {
      document_.Parse<kParseFlags>(data.c_str());
    }
  }
  JsonBody(const JsonBody&) = delete;
  JsonBody& operator=(const JsonBody&) = delete;

  bool isInvalid() const { return document_.HasParseError(); }
  const JsonValue& root() const { return document_; }

 private:
  using Pool = rapidjson::MemoryPoolAllocator<>;
  using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, Pool>;

  alignas(std::max_align_t) std::array<char, 2048> valueMemory_;
  alignas(std::max_align_t) std::array<char, 2048> stackMemory_;
  Pool values_{valueMemory_.data(), valueMemory_.size()};
  Pool stack_{stackMemory_.data(), stackMemory_.size()};
  Document document_{&values_, 1024, &stack_};
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
