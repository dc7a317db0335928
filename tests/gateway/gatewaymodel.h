#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "tests/gateway/model/audit.h"
#include "tests/gateway/model/requests.h"
#include "tests/gateway/model/sessions.h"
#include "tests/gateway/model/world.h"

namespace orvane::test {

// What each client of the gateway may know and do, written from docs/gateway.md alone: it shares no code with the
// terminal. Each operation is an event at the gateway, and adds what the clients must get to their inboxes, what must
// be in the audit, and what /metrics must count.
class GatewayModel {
 public:
  GatewayModel() = default;
  GatewayModel(const GatewayModel&) = delete;
  GatewayModel& operator=(const GatewayModel&) = delete;

  model::World world;
  model::Audit audit{world};
  model::Sessions sessions{world};
  model::Requests requests{world, audit};

  // Time has passed. The first timers ran after `untilTimers` of these seconds: after a sleep of the machine, at its
  // end.
  void pass(int64_t seconds, int64_t untilTimers);

  // Ends what is under way. What is counted begins anew.
  void restart();

  // The values of /metrics by name.
  std::map<std::string, double> metrics() const;
};

}  // namespace orvane::test
