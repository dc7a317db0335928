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
  // The reader takes a NUL for the end of the text.
  if (!readAll) return {false, "A NUL stands behind the value."};
  return {};
}

JsonResult checkJson(std::string_view text) {
  rapidjson::MemoryStream stream(text.data(), text.size());
  rapidjson::BaseReaderHandler<> handler;
  return readJson(stream, handler);
}

std::string jsonString(std::string_view text) {
  const std::string repaired = repairUtf8(text);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.String(repaired.data(), static_cast<rapidjson::SizeType>(repaired.size()));
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace orvane::terminal
