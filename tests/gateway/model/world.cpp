#include "tests/gateway/model/world.h"

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

bool World::isOpen(int client) const {
  const auto found = clients.find(client);
  return found != clients.end() && found->second.closeCode == 0;
}

void World::close(int client, uint16_t code, const std::string& reason) {
  if (!isOpen(client)) return;
  clients[client].closeCode = code;
  clients[client].closeReason = reason;
  clients[client].due.reset();
  ++counts[fmt::format("closes_total{{code=\"{}\"}}", code)];
}

void World::refuse(int client, const std::string& reason, const std::string& id, const std::string& topic,
                   const std::string& message) {
  ++counts["refusals_total{reason=\"" + reason + "\"}"];
  clients[client].inbox.push_back(answer(id, {topic, message, {}, {}}));
}

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
  for (const auto& [right, name] : {std::pair(kSee, "see"), std::pair(kCancel, "cancel"), std::pair(kTrade, "trade")}) {
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
