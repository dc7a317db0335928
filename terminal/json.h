#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace orvane::terminal {

enum class JsonKind : uint8_t { Missing, Null, Bool, Number, String, Object, Array };

// "a number", "an object", and so on.
std::string_view kindName(JsonKind kind);

// Whether a text is JSON; if not, why and where.
struct JsonResult {
  bool ok = true;
  std::string message;  // such as "Missing a name for object member. at byte 3"
};

// Base of a handler that needs each value's kind and depth, but not the value of numbers. `Derived` has
// `bool value(JsonKind kind)`, called at the start of each value, and `bool end()`, called at the end of each object
// and array. In both, depth() is that of the container. False stops the reader.
template <typename Derived>
class JsonHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Derived> {
 public:
  bool Null() { return self().value(JsonKind::Null); }
  bool Bool(bool /*value*/) { return self().value(JsonKind::Bool); }
  bool RawNumber(const char* /*text*/, rapidjson::SizeType /*length*/, bool /*copy*/) {
    return self().value(JsonKind::Number);
  }
  bool String(const char* /*text*/, rapidjson::SizeType /*length*/, bool /*copy*/) {
    return self().value(JsonKind::String);
  }
  bool StartObject() { return enter(JsonKind::Object); }
  bool EndObject(rapidjson::SizeType /*members*/) { return leave(); }
  bool StartArray() { return enter(JsonKind::Array); }
  bool EndArray(rapidjson::SizeType /*elements*/) { return leave(); }

 protected:
  int depth() const { return depth_; }

 private:
  Derived& self() { return static_cast<Derived&>(*this); }
  bool enter(JsonKind kind) {
    const bool go = self().value(kind);
    ++depth_;
    return go;
  }
  bool leave() {
    --depth_;
    return self().end();
  }

  int depth_ = 0;
};

JsonResult jsonResult(const rapidjson::ParseResult& result, bool readAll);

// Reads the stream as exactly one JSON value of any depth, and checks the encoding. Numbers are passed as text.
template <typename Handler>
JsonResult readJson(rapidjson::MemoryStream& stream, Handler& handler) {
  constexpr unsigned kFlags =
      rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseNumbersAsStringsFlag;
  rapidjson::Reader reader;
  const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, handler);
  return jsonResult(result, stream.Tell() == stream.size_);
}

JsonResult checkJson(std::string_view text);

// `text` as a JSON string with its quotes; bytes that are not UTF-8 become U+FFFD.
std::string jsonString(std::string_view text);

}  // namespace orvane::terminal
