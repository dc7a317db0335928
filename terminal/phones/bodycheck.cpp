#include "terminal/phones/bodycheck.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "terminal/json.h"

namespace orvane::terminal {
namespace {

struct Rule {
  std::string_view topic;
  JsonKind root;  // what the library reads without asking: the root's members, or those of its elements
};

constexpr std::array<Rule, 8> kRules{{
    {"order.new", JsonKind::Object},
    {"order.cancel", JsonKind::Array},
    {"monitor.sync.order.list", JsonKind::Array},
    {"monitor.sync.order.new", JsonKind::Array},
    {"monitor.manual.list", JsonKind::Array},
    {"monitor.manual.update", JsonKind::Array},
    {"monitor.manual.clean", JsonKind::Array},
    {"marginrate.list", JsonKind::Array},
}};

constexpr std::string_view kOrderList = "orderList";

// The library answers each element, a repeated one too, and while it does nobody else is answered.
constexpr int kMaxElements = 1000;

// Looks at the elements of one array: the root, or the member `orderList` of a root object, the first of that name.
class ElementReader : public JsonHandler<ElementReader> {
 public:
  // `rule` is null where elements may be of any kind.
  explicit ElementReader(const Rule* rule)
      : mustBeObjects_(rule != nullptr),
        wantedRoot_(rule == nullptr ? JsonKind::Array : rule->root),
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

std::string findBodyFault(const std::string& topic, std::string_view body) {
  const std::string_view name = topic.c_str();
  const auto* rule = std::find_if(kRules.begin(), kRules.end(), [&](const Rule& row) { return row.topic == name; });
  if (body.empty()) return {};
  ElementReader reader(rule == kRules.end() ? nullptr : &*rule);
  rapidjson::MemoryStream stream(body.data(), body.size());
  readJson(stream, reader);
  return reader.fault();
}

}  // namespace orvane::terminal
