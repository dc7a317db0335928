#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <rapidjson/document.h>

namespace orvane::terminal {

// The body of a request: an object whose members are read by name. fault() keeps the first error; what is read after it
// has no meaning.
class ObjectBody {
 public:
  // `wanted` shows an example of the body.
  ObjectBody(std::string topic, const std::string& text, const std::string& wanted);

  int32_t int32(const char* name);
  int64_t int64(const char* name);
  double number(const char* name);

  // `max` elements at most.
  std::vector<int64_t> int64s(const char* name, size_t max);

  // Within the limits.
  size_t size(const char* name, size_t min, size_t max);

  // For clients, UTF-8; empty if there is none.
  const std::string& fault() const { return fault_; }

 private:
  // Null after noting that `kind` is missing.
  template <typename Fits>
  const rapidjson::Value* find(const char* name, const char* kind, const Fits& fits);
  void note(const std::string& fault);

  std::string topic_;
  rapidjson::Document root_;
  std::string fault_;
};

}  // namespace orvane::terminal
