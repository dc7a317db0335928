#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "pocketagent/json.h"
#include "serialise/valuetext.h"

namespace orvane {

// Writes the JSON text of a reply as rapidjson's writer does with default settings. Strings end at their first NUL and
// are escaped but not converted. Two outputs are invalid JSON on purpose: a NaN or infinite double leaves its key
// without a value, and after a key without a value the rest of the object swaps keys and values. The stock writer
// asserts on the second, so the separators are written here.
class ReplyWriter : private rapidjson::Writer<rapidjson::StringBuffer> {
  using Base = rapidjson::Writer<rapidjson::StringBuffer>;

 public:
  explicit ReplyWriter(rapidjson::StringBuffer& buffer) : Base(buffer) {}

  // A key without a value. Keys need no escaping.
  template <size_t kSize>
  void key(const char (&name)[kSize]) {
    separate();
    WriteString(name, kSize - 1);
  }

  // A key and its value.
  template <size_t kSize, typename Value>
  void member(const char (&name)[kSize], const Value& value) {
    Level& level = *level_stack_.Top<Level>();
    if (level.valueCount % 2 == 0) {
      writeKeyInStep(name, kSize - 1, level.valueCount == 0);
      level.valueCount += 2;
    } else {
      key(name);
      separate();
    }
    write(value);
  }

  // A key and an array of objects; `writeRow(writer, row)` writes the members of one.
  template <size_t kSize, typename Rows, typename WriteRow>
  void memberRows(const char (&name)[kSize], const Rows& list, WriteRow writeRow) {
    key(name);
    rows(list, writeRow);
  }

  // An array of objects.
  template <typename Rows, typename WriteRow>
  void rows(const Rows& list, WriteRow writeRow) {
    separate();
    begin('[', true);
    const size_t start = os_->GetSize();
    for (const auto& row : list) {
      separate();
      begin('{', false);
      writeRow(*this, row);
      end('}');
      if (&row == &*list.begin()) reserveRows(os_->GetSize() - start, list.size() - 1);
    }
    end(']');
  }

 private:
  // Rows are similar in length, so the first one sizes the buffer for all. An unusually long one, which a client's text
  // can cause, is no measure of the others.
  void reserveRows(size_t rowSize, size_t count) {
    constexpr size_t kLongRow = 2048;
    os_->Reserve(std::min(rowSize + rowSize / 8, kLongRow) * count);
  }

  // Separator, key and colon in one piece, because nearly all of a reply is members.
  void writeKeyInStep(const char* name, size_t size, bool isFirst) {
    char* out = os_->Push(size + 4);
    if (isFirst) {
      os_->Pop(1);
    } else {
      *out++ = ',';
    }
    *out++ = '"';
    std::memcpy(out, name, size);
    out += size;
    *out++ = '"';
    *out = ':';
  }

  void write(bool value) { WriteBool(value); }
  void write(int32_t value) { writeNumberText(value); }
  void write(int64_t value) { writeNumberText(value); }
  void write(double value) {
    if (std::isfinite(value)) writeNumberText(value);
  }
  void write(const char* value) { write(std::string_view(value)); }
  void write(const std::string& value) { write(std::string_view(value)); }

  void write(std::string_view value) {
    if (!isPlain(value)) {
      WriteString(value.data(), static_cast<rapidjson::SizeType>(value.substr(0, value.find('\0')).size()));
      return;
    }
    char* out = os_->Push(value.size() + 2);
    *out++ = '"';
    value.copy(out, value.size());
    out[value.size()] = '"';
  }

  template <typename Number>
  void writeNumberText(Number value) {
    char* const begin = os_->Push(kMaxNumberText);
    os_->Pop(kMaxNumberText - static_cast<size_t>(writeNumber(begin, value) - begin));
  }

  // The comma or colon before a key or value, as the stock writer chooses it.
  void separate() {
    if (level_stack_.Empty()) return;
    Level& level = *level_stack_.Top<Level>();
    if (level.valueCount > 0) os_->Put(level.inArray || level.valueCount % 2 == 0 ? ',' : ':');
    ++level.valueCount;
  }

  void begin(char bracket, bool inArray) {
    new (level_stack_.Push<Level>()) Level(inArray);
    os_->Put(bracket);
  }

  void end(char bracket) {
    level_stack_.Pop<Level>(1);
    os_->Put(bracket);
  }
};

// The JSON text of a list: an array with one object for each row.
template <typename Rows, typename WriteRow>
std::string writeRows(const Rows& rows, WriteRow writeRow) {
  rapidjson::StringBuffer buffer;
  ReplyWriter(buffer).rows(rows, writeRow);
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace orvane
