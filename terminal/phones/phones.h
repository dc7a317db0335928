#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "host/mobilemessage.h"
#include "terminal/eventloop.h"
#include "terminal/liveprices.h"
#include "terminal/pages.h"
#include "terminal/phones/agentcallback.h"
#include "terminal/phones/alerts.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/gates.h"
#include "terminal/phones/login.h"
#include "terminal/phones/metrics.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/pushlog.h"
#include "terminal/phones/quotewatch.h"
#include "terminal/phones/requests.h"
#include "terminal/phones/statuspages.h"
#include "terminal/session.h"

namespace orvane::terminal {

struct PhonesOptions {
  std::chrono::milliseconds loginTime{10'000};  // for a client's first frame
  size_t maxOfToken = 85;                       // connections that are open at once
  HealthProbe probe;                            // the host's checks for the health page; called on the loop's thread
  StatusPages::FiguresProbe figures;            // REQUIRED; the same thread
  const ILivePrices* prices = nullptr;          // what can be watched, if anything; must outlive the object
};

// What clients may say to this terminal, over whatever transport. Each request gets a new id, and each reply goes
// back to the session that asked. Everything but agent() and deliver() belongs to the loop's thread.
class Phones : public ISessionOwner, public IPageOwner {
 public:
  // Both must outlive the object.
  Phones(IEventLoop& loop, GatewayStore& store, PhonesOptions options);

  // Begins and ends the work of every second. After stop() the owner closes the sessions.
  void start();
  void stop();

  // Takes no more requests, and calls `done` once every request has its reply.
  void drain(std::function<void()> done);

  // Where the agent attaches its callback.
  AgentCallback& agent() { return agent_; }

  // Sends a message, all texts UTF-8, to the client that waits for it, or to all if it is a push. Any thread.
  void deliver(std::shared_ptr<const MobileMessage> message);

  void onOpened(std::shared_ptr<Session> session) override;
  void onFrame(Session& session, std::string_view text) override;
  void onClosed(Session& session) override;
  void makePage(const HttpRequest& request, Answer answer) override;

 private:
  void read(Peer& peer, std::string_view text);
  void push(const MobileMessage& message);
  bool hears(const Peer& peer, const MobileMessage& message) const;
  void tick();
  void tickLater();
  void onTokens();
  void confirmRevocations();

  IEventLoop& loop_;
  AgentCallback agent_;
  Gatekeeper keeper_;
  Metrics metrics_;
  Answers answers_{metrics_};
  Peers peers_;
  PushLog pushes_;
  Requests requests_;
  QuoteWatch watch_;
  Alerts alerts_;
  Gates gates_{keeper_, requests_, answers_, watch_, alerts_};
  Login login_;
  StatusPages pages_;
  std::unique_ptr<Timer> tick_;
};

}  // namespace orvane::terminal
