#include "tests/gateway/model/texts.h"

#include <array>
#include <map>
#include <set>

#include <fmt/format.h>

namespace orvane::test::model {
namespace {

const std::map<std::string, Right> kActions{
    {"order.cancel", kCancel},          {"order.new", kTrade},
    {"monitor.sync.order.new", kTrade}, {"monitor.manual.update", kTrade},
    {"monitor.manual.clean", kTrade},   {"quote.set", kTrade},
};

// Of the topics that the test uses, those without an action.
const std::set<std::string> kLists{"account.list", "capital.list", "order.list", "monitor.list"};

}  // namespace

Right rightFor(const std::string& topic) {
  const auto found = kActions.find(topic);
  return found == kActions.end() ? kSee : found->second;
}

std::string label(const std::string& topic) {
  return fmt::format("{{topic=\"{}\"}}", kActions.contains(topic) || kLists.contains(topic) ? topic : "other");
}

bool isAction(const std::string& topic) { return rightFor(topic) != kSee; }

std::vector<std::string> namesOf(int rights) {
  std::vector<std::string> names;
  for (const auto& [right, name] :
       std::array<std::pair<int, const char*>, 3>{{{1, "see"}, {2, "cancel"}, {4, "trade"}}}) {
    if ((rights & right) != 0) names.emplace_back(name);
  }
  return names;
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

std::string orNull(const std::string& json) { return json.empty() ? "null" : json; }

std::string frame(const std::string& head, const Reply& reply) {
  return fmt::format(R"({{{},"topic":{},"message":{},"data":{}{}}})", head, quoted(reply.topic), quoted(reply.message),
                     orNull(reply.data), reply.text.empty() ? "" : ",\"text\":" + quoted(reply.text));
}

std::string answer(const std::string& id, const Reply& reply) { return frame("\"id\":" + id, reply); }

}  // namespace orvane::test::model
