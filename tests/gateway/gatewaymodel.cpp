#include "tests/gateway/gatewaymodel.h"

#include <algorithm>

#include <fmt/format.h>

namespace orvane::test {

void GatewayModel::pass(int64_t seconds, int64_t untilTimers) {
  audit.endSecond(world.now + untilTimers);
  world.now += seconds;
  sessions.closeDue();
  requests.forgetKeys();
}

void GatewayModel::restart() {
  sessions.restart();
  requests.restart();
  audit.endSecond(world.now);
  world.counts.clear();
  world.epoch.clear();
  world.hasAgent = true;
}

std::map<std::string, double> GatewayModel::metrics() const {
  std::map<std::string, double> all = world.counts;
  for (const char* reason :
       {"login", "frame", "body", "rights", "key", "crowd", "agent", "fault", "connection", "origin"}) {
    all.try_emplace(fmt::format("refusals_total{{reason=\"{}\"}}", reason));
  }
  for (const int code : {1001, 1003, 1011, 4401, 4403, 4408, 4409, 4429}) {
    all.try_emplace(fmt::format("closes_total{{code=\"{}\"}}", code));
  }
  all.try_emplace("pushes_total");
  all["phones"] = static_cast<double>(std::count_if(world.clients.begin(), world.clients.end(), [](const auto& entry) {
    return entry.second.token >= 0 && entry.second.closeCode == 0;
  }));
  all["requests_waiting"] = static_cast<double>(requests.countWaiting());
  all["connections"] = static_cast<double>(world.clients.size()) + 1;  // that of the page itself
  return all;
}

}  // namespace orvane::test
