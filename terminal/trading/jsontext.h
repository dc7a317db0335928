#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace orvane::terminal {

// Writes JSON members; texts are UTF-8.
class JsonText {
 public:
  void member(const char* name, int32_t value) { key(name).Int(value); }
  void member(const char* name, int64_t value) { key(name).Int64(value); }
  void member(const char* name, double value) { key(name).Double(value); }
  void member(const char* name, const std::string& value) {
    key(name).String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
  }

  template <typename Value>
  void member(const char* name, const std::vector<Value>& values) {
    key(name).StartArray();
    for (const Value value : values) element(value);
    endArray();
  }

  void beginObject() { writer_.StartObject(); }
  void endObject() { writer_.EndObject(); }
  void beginArray() { writer_.StartArray(); }
  void endArray() { writer_.EndArray(); }
  std::string text() const { return {buffer_.GetString(), buffer_.GetSize()}; }

 private:
  void element(int64_t value) { writer_.Int64(value); }
  void element(double value) { writer_.Double(value); }
  rapidjson::Writer<rapidjson::StringBuffer>& key(const char* name) {
    writer_.Key(name);
    return writer_;
  }

  rapidjson::StringBuffer buffer_;
  rapidjson::Writer<rapidjson::StringBuffer> writer_{buffer_};
};

// An array with one object per record. `write(row, record)` writes its members.
template <typename Records, typename Write>
std::string jsonRows(const Records& records, const Write& write) {
  JsonText json;
  json.beginArray();
  for (const auto& record : records) {
    json.beginObject();
    write(json, record);
    json.endObject();
  }
  json.endArray();
  return json.text();
}

}  // namespace orvane::terminal
