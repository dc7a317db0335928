#pragma once

#include <cstdint>
#include <string>

#include "pocketagent/json.h"

namespace orvane::bench {

// Writes a list as rapidjson's manual shows it.
class NaiveWriter {
 public:
  void member(const char* name, int32_t value) { key(name).Int(value); }
  void member(const char* name, int64_t value) { key(name).Int64(value); }
  void member(const char* name, double value) { key(name).Double(value); }
  void member(const char* name, const std::string& value) { key(name).String(value.c_str()); }

  template <typename Rows, typename WriteRow>
  std::string rows(const Rows& list, WriteRow writeRow) {
    writer_.StartArray();
    for (const auto& row : list) {
      writer_.StartObject();
      writeRow(*this, row);
      writer_.EndObject();
    }
    writer_.EndArray();
    return buffer_.GetString();
  }

 private:
  rapidjson::Writer<rapidjson::StringBuffer>& key(const char* name) {
    writer_.Key(name);
    return writer_;
  }

  rapidjson::StringBuffer buffer_;
  rapidjson::Writer<rapidjson::StringBuffer> writer_{buffer_};
};

}  // namespace orvane::bench
