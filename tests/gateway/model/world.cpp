#include "tests/gateway/model/world.h"

#include <fmt/format.h>

#include "tests/gateway/model/texts.h"

namespace orvane::test::model {

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

}  // namespace orvane::test::model
