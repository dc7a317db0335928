#pragma once

#include <optional>

#include "terminal/phones/alerts.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/quotewatch.h"
#include "terminal/phones/requests.h"
#include "terminal/phones/topics.h"

namespace orvane::terminal {

// The gates that a request of a logged-in client passes, in this order: topic, rights, whether a key is allowed, body,
// crowd. The key itself is begun after the last, so that a request refused here does not use it up. One thread.
class Gates {
 public:
  Gates(Gatekeeper& keeper, Requests& requests, Answers& answers, QuoteWatch& watch, Alerts& alerts)
      : keeper_(keeper), requests_(requests), answers_(answers), watch_(watch), alerts_(alerts) {}

  // Queues the request, or answers it.
  void onRequest(Peer& peer, const Frame& frame);

 private:
  struct Request {
    Peer& peer;
    const Frame& frame;
    const Topic& topic;
  };
  using Fault = std::optional<Refused>;

  Fault checkRights(const Request& request);
  Fault checkKeyAllowed(const Request& request);
  Fault checkBody(const Request& request);
  Fault checkCrowd(const Request& request);

  Gatekeeper& keeper_;
  Requests& requests_;
  Answers& answers_;
  QuoteWatch& watch_;
  Alerts& alerts_;
};

}  // namespace orvane::terminal
