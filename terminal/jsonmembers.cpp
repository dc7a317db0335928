#include "terminal/jsonmembers.h"

#include <algorithm>

#include <fmt/format.h>

namespace orvane::terminal {

JsonMembers::JsonMembers(std::string_view text, std::span<const std::string_view> names)
    : text_(text), names_(names), stream_(text.data(), text.size()), members_(names.size()) {}

JsonResult JsonMembers::read() {
  JsonResult result = readJson(stream_, *this);
  if (!doubled_.empty()) result.message = fmt::format("\"{}\" appears twice, at byte {}", doubled_, stream_.Tell());
  return result;
}

bool JsonMembers::Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
  if (depth() != 1) return true;
  const auto name = std::find(names_.begin(), names_.end(), std::string_view(text, length));
  current_ = name == names_.end() ? nullptr : &members_[static_cast<size_t>(name - names_.begin())];
  if (current_ != nullptr && current_->kind != JsonKind::Missing) {
    doubled_ = *name;
    return false;
  }
  begin_ = text_.find_first_not_of(" \t\r\n:", stream_.Tell());
  return true;
}

bool JsonMembers::String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
  if (depth() == 1 && current_ != nullptr) current_->text.assign(text, length);
  return value(JsonKind::String);
}

bool JsonMembers::value(JsonKind kind) {
  if (depth() == 0) root_ = kind;
  if (depth() != 1 || current_ == nullptr) return true;
  current_->kind = kind;
  if (kind != JsonKind::Object && kind != JsonKind::Array) endAt(stream_.Tell());
  return true;
}

// The reader has not consumed the closing bracket yet.
bool JsonMembers::end() {
  if (depth() == 1) endAt(stream_.Tell() + 1);
  return true;
}

void JsonMembers::endAt(size_t end) {
  if (current_ != nullptr) current_->raw = text_.substr(begin_, end - begin_);
}

}  // namespace orvane::terminal
