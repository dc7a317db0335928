#include "terminal/json.h"

#include <array>

#include <fmt/format.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "terminal/utf8.h"

namespace orvane::terminal {

std::string_view kindName(JsonKind kind) {
  static constexpr std::array<std::string_view, 7> kNames{"nothing",  "null",      "true or false", "a number",
                                                          "a string", "an object", "an array"};
  return kNames.at(static_cast<size_t>(kind));
}

JsonResult jsonResult(const rapidjson::ParseResult& result, bool readAll) {
  if (result.IsError()) {
    return {false, fmt::format("{} at byte {}", rapidjson::GetParseError_En(result.Code()), result.Offset())};
  }
  // The reader takes a NUL as the end of the text.
  if (!readAll) return {false, "A NUL follows the value."};
  return {};
}

JsonResult checkJson(std::string_view text) {
  if (!isUtf8(text)) return {false, "The text is not UTF-8."};
  // In place, which saves a copy of each string: every reply of the library goes through here.
  constexpr unsigned kFlags =
      rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
  std::string scratch(text);
  rapidjson::InsituStringStream stream(scratch.data());
  rapidjson::BaseReaderHandler<> handler;
  rapidjson::Reader reader;
  const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, handler);
  return jsonResult(result, stream.Tell() == text.size());
}

std::string jsonString(std::string_view text) {
  const std::string repaired = repairUtf8(text);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.String(repaired.data(), static_cast<rapidjson::SizeType>(repaired.size()));
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace orvane::terminal
