#include "terminal/phones/bodycheck.h"

#include <fmt/format.h>

#include "terminal/json.h"

namespace orvane::terminal {
namespace {

constexpr std::string_view kOrderList = "orderList";

// The library answers each element, repeated ones too, and serves nobody else until it has finished.
constexpr int kMaxElements = 1000;

// Checks the elements of one array: the root, or the first member `orderList` of a root object.
class ElementReader : public JsonHandler<ElementReader> {
 public:
  explicit ElementReader(const Topic& topic)
      : mustBeObjects_(topic.hasObjects),
        wantedRoot_(topic.shape == BodyShape::OrderList ? JsonKind::Object : JsonKind::Array),
        elementDepth_(wantedRoot_ == JsonKind::Object ? 2 : 1) {}

  const std::string& fault() const { return fault_; }

  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    atList_ = depth() == 1 && !listSeen_ && std::string_view(text, length) == kOrderList;
    listSeen_ = listSeen_ || atList_;
    return true;
  }

  bool value(JsonKind kind) {
    if (depth() == 0) return checkRoot(kind);
    if (depth() == elementDepth_ && inList_) return checkElement(kind);
    if (depth() == 1 && wantedRoot_ == JsonKind::Object) inList_ = atList_ && kind == JsonKind::Array;
    return true;
  }

  bool end() {
    if (depth() < elementDepth_) inList_ = false;
    return true;
  }

 private:
  bool checkRoot(JsonKind kind) {
    inList_ = wantedRoot_ == JsonKind::Array && kind == JsonKind::Array;
    if (wantedRoot_ == JsonKind::Object && kind != JsonKind::Object) {
      fault_ = fmt::format("data must be an object with the array \"{}\", not {}", kOrderList, kindName(kind));
    }
    return kind == wantedRoot_;
  }

  bool checkElement(JsonKind kind) {
    const std::string_view list = wantedRoot_ == JsonKind::Object ? kOrderList : "data";
    if (++elements_ > kMaxElements) {
      fault_ = fmt::format("{} has more than {} elements: ask in parts", list, kMaxElements);
    } else if (mustBeObjects_ && kind != JsonKind::Object) {
      fault_ = fmt::format("element {} of {} must be an object, not {}", elements_, list, kindName(kind));
    }
    return fault_.empty();
  }

  bool mustBeObjects_;
  JsonKind wantedRoot_;
  int elementDepth_;
  bool listSeen_ = false;
  bool atList_ = false;
  bool inList_ = false;
  int elements_ = 0;
  std::string fault_;
};

}  // namespace

std::string findBodyFault(const Topic& topic, std::string_view body) {
  if (body.empty()) return {};
  ElementReader reader(topic);
  rapidjson::MemoryStream stream(body.data(), body.size());
  readJson(stream, reader);
  return reader.fault();
}

}  // namespace orvane::terminal
