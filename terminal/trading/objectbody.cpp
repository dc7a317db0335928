#include "terminal/trading/objectbody.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace orvane::terminal {

ObjectBody::ObjectBody(std::string topic, const std::string& text, const std::string& wanted)
    : topic_(std::move(topic)) {
  root_.Parse<rapidjson::kParseIterativeFlag>(text.c_str());
  if (root_.HasParseError() || !root_.IsObject()) note(fmt::format("{} 需要 {}", topic_, wanted));
}

void ObjectBody::note(const std::string& fault) {
  if (fault_.empty()) fault_ = fault;
}

template <typename Fits>
const rapidjson::Value* ObjectBody::find(const char* name, const char* kind, const Fits& fits) {
  if (!fault_.empty()) return nullptr;
  const rapidjson::Value& object = root_;
  const auto found = object.FindMember(name);
  if (found != object.MemberEnd() && fits(found->value)) return &found->value;
  note(fmt::format("{} 缺少{} {}", topic_, kind, name));
  return nullptr;
}

int32_t ObjectBody::int32(const char* name) {
  const rapidjson::Value* value = find(name, "整数", [](const rapidjson::Value& it) { return it.IsInt(); });
  return value == nullptr ? 0 : value->GetInt();
}

int64_t ObjectBody::int64(const char* name) {
  const rapidjson::Value* value = find(name, "整数", [](const rapidjson::Value& it) { return it.IsInt64(); });
  return value == nullptr ? 0 : value->GetInt64();
}

double ObjectBody::number(const char* name) {
  const rapidjson::Value* value = find(name, "数值", [](const rapidjson::Value& it) { return it.IsNumber(); });
  return value == nullptr ? 0 : value->GetDouble();
}

std::vector<int64_t> ObjectBody::int64s(const char* name, size_t max) {
  const rapidjson::Value* array = find(name, "整数数组", [](const rapidjson::Value& it) {
    return it.IsArray() && std::all_of(it.Begin(), it.End(), [](const auto& each) { return each.IsInt64(); });
  });
  std::vector<int64_t> values;
  if (array == nullptr) return values;
  if (array->Size() > max) note(fmt::format("{} 的 {} 最多 {} 个", topic_, name, max));
  for (const auto& each : array->GetArray()) values.push_back(each.GetInt64());
  return values;
}

size_t ObjectBody::size(const char* name, size_t min, size_t max) {
  const int64_t value = int64(name);
  if (value < static_cast<int64_t>(min) || value > static_cast<int64_t>(max)) {
    note(fmt::format("{} 的 {} 须在 {} 至 {} 之间", topic_, name, min, max));
  }
  return static_cast<size_t>(value);
}

}  // namespace orvane::terminal
