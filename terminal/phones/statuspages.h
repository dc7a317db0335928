#pragma once

#include <functional>
#include <string>
#include <vector>

#include "terminal/health.h"
#include "terminal/pages.h"
#include "terminal/phones/agentcallback.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/metrics.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/requests.h"

namespace orvane::terminal {

// `/health`, `/health/live`, `/health/ready` and `/metrics`. One thread.
class StatusPages {
 public:
  using FiguresProbe = std::function<TransportFigures()>;

  // `probe` may be empty; `figures` may not.
  StatusPages(HealthProbe probe, FiguresProbe figures, const Peers& peers, const Requests& requests,
              const AgentCallback& agent, Gatekeeper& keeper, const Metrics& metrics);

  // Answers with nothing for every other path, and for another method than GET.
  void make(const HttpRequest& request, const IPageOwner::Answer& answer);

 private:
  std::vector<HealthCheck> readiness() const;
  Page metricsPage() const;
  Page metricsPage(const Gatekeeper::Admission& admission, const std::string& network);

  const HealthProbe probe_;
  const FiguresProbe figures_;
  const Peers& peers_;
  const Requests& requests_;
  const AgentCallback& agent_;
  Gatekeeper& keeper_;
  const Metrics& metrics_;
};

}  // namespace orvane::terminal
