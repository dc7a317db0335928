#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "decoding/failure.h"
#include "host/resultstatus.h"
#include "pocketagent/json.h"

namespace orvane {

// The document of one body. The body ends at its first NUL; text behind the root value is ignored. The document of a
// body of a few orders fits in the memory here; a larger one continues on the heap.
class JsonBody {
 public:
  explicit JsonBody(const std::string& data) { document_.Parse<kParseFlags>(data.c_str()); }
  JsonBody(const JsonBody&) = delete;
  JsonBody& operator=(const JsonBody&) = delete;

  bool isInvalid() const { return document_.HasParseError(); }
  const JsonValue& root() const { return document_; }

 private:
  using Pool = rapidjson::MemoryPoolAllocator<>;

  alignas(std::max_align_t) std::array<char, 2048> valueMemory_;
  alignas(std::max_align_t) std::array<char, 2048> stackMemory_;
  Pool values_{valueMemory_.data(), valueMemory_.size()};
  Pool stack_{stackMemory_.data(), stackMemory_.size()};
  // 1024: the parser's stack starts at half of its memory, so that it can double once before it needs the heap.
  rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, Pool> document_{&values_, 1024, &stack_};
};

inline constexpr FailureTexts kInvalidJson{"invalid json string", ",msg=invalid json string"};
inline constexpr FailureTexts kDataNotArray{"Data member not array", ",msg=Data member not array"};

// Parses a body whose root must be an array and passes it to `readRoot`, whose status is the result.
template <typename ReadRoot>
ResultStatus decodeArray(const std::string& data, const FailureReporter& reporter, const FailureTexts& notArray,
                         ReadRoot readRoot) {
  const JsonBody body(data);
  if (body.isInvalid()) return reporter.fail(kInvalidJson);
  if (!body.root().IsArray()) return reporter.fail(notArray);
  return readRoot(body.root());
}

}  // namespace orvane
