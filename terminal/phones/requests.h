#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/mobilemessage.h"
#include "terminal/eventloop.h"
#include "terminal/phones/agentcallback.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/fairqueue.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/topics.h"

namespace orvane::terminal {

// The requests without a reply: queues them, dispatches them to the agent a few at a time, and brings each reply to
// the clients that wait for it. One thread.
class Requests {
 public:
  Requests(const IClock& clock, Peers& peers, Gatekeeper& keeper, Metrics& metrics, Answers& answers,
           AgentCallback& agent);

  int64_t nextId() { return ++lastId_; }

  // Why the client may not have one more request; empty if it may.
  std::string crowdFault(const Peer& peer) const;

  // Counts a request that was refused for that, and closes a client that does not stop.
  void countOverrun(Peer& peer) const;

  // Queues a request.
  void add(int64_t requestId, Peer& peer, const Frame& frame, const Topic& topic);

  // Lets `peer` wait for the reply to a request that is under way already. `id` is its frame's.
  void join(int64_t requestId, Peer& peer, std::string_view id);

  // REQUIRES: `reply` is no push.
  void onReply(const MobileMessage& reply);

  // The session has ended. Its requests are dropped unless they change something or have been dispatched.
  void onClosed(const Session& session);

  size_t count() const { return pending_.size(); }

  // How long the agent has had the oldest request that it has not answered; 0 without one.
  BootTime oldestAge() const;

 private:
  struct Waiter {
    Session* session = nullptr;  // null once it has ended
    std::string id;              // the frame's, as JSON text
  };
  struct Pending {
    Waiter first;
    std::vector<Waiter> others;  // that sent the same action
    const Topic* topic = nullptr;
    BootTime since{};
  };
  struct Dispatched {
    BootTime since{};
    size_t bytes = 0;
  };

  void dispatch();
  bool isWanted(const Job& job) const;
  bool callAgent(const Job& job);
  void takeBack(const Job& job);
  void answerAll(const Pending& request, const MobileMessage& message);
  void answer(const Waiter& waiter, const MobileMessage& message);

  const IClock& clock_;
  Peers& peers_;
  Gatekeeper& keeper_;
  Metrics& metrics_;
  Answers& answers_;
  AgentCallback& agent_;
  std::unordered_map<int64_t, Pending> pending_;
  FairQueue queue_;
  std::unordered_map<int64_t, Dispatched> dispatched_;
  size_t dispatchedBytes_ = 0;
  int64_t lastId_ = 0;
};

}  // namespace orvane::terminal
