#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "terminal/eventloop.h"
#include "terminal/liveprices.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/metrics.h"
#include "terminal/session.h"

namespace orvane::terminal {

// Sends clients the prices that they watch: at most four times a second, and only what has changed. A client that is
// slow to read gets the latest ones once its backlog is gone. One thread.
class QuoteWatch {
 public:
  // All must outlive the object; without `prices` there is nothing to watch.
  QuoteWatch(IEventLoop& loop, const ILivePrices* prices, Metrics& metrics, Answers& answers)
      : loop_(loop), prices_(prices), metrics_(metrics), answers_(answers) {}

  // Watches the instruments of the frame's body instead of those before, and answers with their prices. An empty list
  // ends it.
  void onRequest(Session& session, const Frame& frame);

  // The session has ended, or begins anew.
  void forget(Session& session) { watches_.erase(&session); }

  // No more prices are sent.
  void stop();

 private:
  struct Watch {
    std::vector<int64_t> hashCodes;
    uint64_t version = 0;  // what the client has been sent
  };

  std::variant<Watch, std::string> read(std::string_view body) const;
  std::string rowsSince(Watch& watch) const;
  void tick();

  IEventLoop& loop_;
  const ILivePrices* prices_;
  Metrics& metrics_;
  Answers& answers_;
  std::map<Session*, Watch> watches_;
  std::unique_ptr<Timer> tick_;  // null while nobody watches
};

}  // namespace orvane::terminal
