#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "terminal/eventloop.h"
#include "terminal/liveprices.h"
#include "terminal/phones/alert.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/gatewaystore.h"
#include "terminal/phones/metrics.h"
#include "terminal/phones/peers.h"

namespace orvane::terminal {

// The price alerts of all tokens. One that fires is sent to the clients of its token, and kept until one of them has
// cleared it, so that a client that was away learns of it. The loop's thread.
class Alerts {
 public:
  // All must outlive the object; without `prices` there is nothing to set an alert on.
  Alerts(IEventLoop& loop, GatewayStore& store, const ILivePrices* prices, Peers& peers, Metrics& metrics,
         Answers& answers);

  // Begins and ends the comparison with prices, four times a second.
  void start();
  void stop() { tick_.reset(); }

  // "alert.list", "alert.set" or "alert.clear": answered with all alerts of the client's token, once they are stored.
  void onRequest(const Peer& peer, const Frame& frame);

  // Forgets the alerts of tokens that have been revoked or have expired.
  void dropRevoked(const Gatekeeper& keeper);

 private:
  struct Kept : Alert {
    bool isStored = true;
  };
  // Who asked, until the store has answered.
  struct Asker {
    std::shared_ptr<Session> session;
    int64_t token = 0;
    std::string id;
    std::string topic;
  };

  void set(const Asker& asker, std::string_view body);
  void clear(const Asker& asker, std::string_view body);
  std::variant<Alert, std::string> read(int64_t token, std::string_view body) const;
  size_t countOf(int64_t token) const;
  void replyAll(const Asker& asker);
  void refuse(const Asker& asker, RefusalReason reason, std::string message);
  void tick();
  void fire(Alert& alert, double last);

  IEventLoop& loop_;
  GatewayStore& store_;
  const ILivePrices* prices_;
  Peers& peers_;
  Metrics& metrics_;
  Answers& answers_;
  std::map<int64_t, Kept> alerts_;  // by id
  int64_t lastId_ = 0;
  uint64_t version_ = 0;  // of the prices that were compared
  std::unique_ptr<Timer> tick_;
};

}  // namespace orvane::terminal
