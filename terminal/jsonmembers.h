#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "terminal/json.h"

namespace orvane::terminal {

struct JsonMember {
  JsonKind kind = JsonKind::Missing;
  std::string_view raw;  // the value's bytes in the text
  std::string text;      // the value of a string, decoded
};

// Finds the members with the given names in an object, in one pass and at any depth of nesting of their values. Other
// members are ignored.
class JsonMembers : public JsonHandler<JsonMembers> {
 public:
  // `names` and `text` must outlive the reader.
  JsonMembers(std::string_view text, std::span<const std::string_view> names);

  // Stops at the first error: a repeated member, or text that is not JSON. The members before it are kept.
  JsonResult read();

  // The member of the name at `index`.
  const JsonMember& operator[](size_t index) const { return members_[index]; }
  JsonKind root() const { return root_; }

  // Called by the reader.
  bool Key(const char* text, rapidjson::SizeType length, bool copy);
  bool String(const char* text, rapidjson::SizeType length, bool copy);
  bool value(JsonKind kind);
  bool end();

 private:
  void endAt(size_t end);

  std::string_view text_;
  std::span<const std::string_view> names_;
  rapidjson::MemoryStream stream_;
  std::vector<JsonMember> members_;
  JsonMember* current_ = nullptr;
  size_t begin_ = 0;
  JsonKind root_ = JsonKind::Missing;
  std::string_view doubled_;
};

}  // namespace orvane::terminal
