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

// Writes the JSON text of a reply with rapidjson's writer at its default settings. Strings go out byte for byte as C
// strings, escaped but not converted. Two things that are no JSON are wanted and kept: a NaN or infinite double leaves
// its key without a value, and a key written without a value puts all that follows in its object one place out of step.
// The stock writer asserts on the second, so the separators are set here.
class ReplyWriter : private rapidjson::Writer<rapidjson::StringBuffer> {
  using Base = rapidjson::Writer<rapidjson::StringBuffer>;

 public:
  explicit ReplyWriter(rapidjson::StringBuffer& buffer) : Base(buffer) {}

  // A key with no value. Keys are plain texts, which need no escape.
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

  // A key and an array of objects, whose members `writeRow(writer, row)` writes.
  template <size_t kSize, typename Rows, typename WriteRow>
  void memberRows(const char (&name)[kSize], const Rows& list, WriteRow writeRow) {
    key(name);
    rows(list, writeRow);
  }

  // An array of objects, the frame of every list.
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
      if (&row == &*list.begin()) {
        reserveRows(os_->GetSize() - start, list.size() - 1);
      }
    }
    end(']');
  }

 private:
  // Rows are much of a length: room for all of them saves the buffer from growing over and over. A first row that is
  // longer than lists have them, by a phone's own text, is no measure of the others.
  void reserveRows(size_t rowSize, size_t count) {
    constexpr size_t kLongRow = 2048;
    os_->Reserve(std::min(rowSize + rowSize / 8, kLongRow) * count);
  }

  // Separator, key and colon in one piece: members are nearly all that there is to write.
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
    if (std::isfinite(value)) {
      writeNumberText(value);
    }
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

  // What the stock writer puts in front of a value, by its place among keys and values alone.
  void separate() {
    if (level_stack_.Empty()) {
      return;
    }
    Level& level = *level_stack_.Top<Level>();
    if (level.valueCount > 0) {
      os_->Put(level.inArray || level.valueCount % 2 == 0 ? ',' : ':');
    }
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

// The text of a list: an array with one object for each row.
template <typename Rows, typename WriteRow>
std::string writeRows(const Rows& rows, WriteRow writeRow) {
  rapidjson::StringBuffer buffer;
  ReplyWriter(buffer).rows(rows, writeRow);
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace orvane
