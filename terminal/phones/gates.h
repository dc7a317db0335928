#pragma once

#include <cstdint>
#include <variant>

#include "host/mobilemessage.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/requests.h"
#include "terminal/phones/topics.h"

namespace orvane::terminal {

// The gates that a request of a logged-in client passes, in this order: topic, rights, whether a key is allowed, body,
// crowd, key begun. The key comes last, so that a request refused here does not use up its key. One thread.
class Gates {
 public:
  Gates(Gatekeeper& keeper, Requests& requests, Answers& answers)
      : keeper_(keeper), requests_(requests), answers_(answers) {}

  // Queues the request, or answers it.
  void onRequest(Peer& peer, const Frame& frame);

 private:
  struct Request {
    int64_t id = 0;  // the terminal's own
    Peer& peer;
    const Frame& frame;
    const Topic& topic;
  };
  struct Pass {};
  struct Later {};                                                    // another request's reply answers this one too
  using Passage = std::variant<Pass, Refused, MobileMessage, Later>;  // the message is the reply that is known

  Passage checkRights(const Request& request);
  Passage checkKeyAllowed(const Request& request);
  Passage checkBody(const Request& request);
  Passage checkCrowd(const Request& request);
  Passage beginKey(const Request& request);
  void answer(const Request& request, const Passage& passage);

  Gatekeeper& keeper_;
  Requests& requests_;
  Answers& answers_;
};

}  // namespace orvane::terminal
