#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/mobilemessage.h"
#include "terminal/eventloop.h"
#include "terminal/phones/agentcallback.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/dispatchlimit.h"
#include "terminal/phones/fairqueue.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/topics.h"

namespace orvane::terminal {

// The requests without a reply: queues them, those that change something until their record is stored, dispatches them
// to the agent a few at a time, and sends each reply to the clients that wait for it. One thread.
class Requests {
 public:
  Requests(const IClock& clock, Peers& peers, Gatekeeper& keeper, Metrics& metrics, Answers& answers,
           AgentCallback& agent);

  // Why the client may not have one more request; empty if it may.
  std::string crowdFault(const Peer& peer) const;

  // Counts a request refused for that reason, and closes a client that keeps sending.
  void countOverrun(Peer& peer) const;

  // Queues a request.
  void add(Peer& peer, const Frame& frame, const Topic& topic);

  // REQUIRES: `reply` is not a push.
  void onReply(const MobileMessage& reply);

  // The session has ended. Its requests are dropped unless they change something or have been dispatched.
  void onClosed(const Session& session);

  // Drops the waiting requests of tokens that have been revoked or have expired.
  void dropRevoked();

  // Whether the agent has a request of the token.
  bool isUnderWay(int64_t token) const { return limit_.count(token) > 0; }

  // Takes no more, and drops what is not dispatched. Calls `done` once no request is without a reply.
  void close(std::function<void()> done);

  size_t count() const { return pending_.size(); }

  // How long the agent has had the oldest request that it has not answered; 0 without one.
  BootTime oldestAge() const { return limit_.oldestAge(clock_.bootTime()); }

 private:
  struct Waiter {
    Session* session = nullptr;  // null once it has ended
    std::string id;              // the frame's, as JSON text
  };
  struct Pending {
    std::vector<Waiter> waiters;      // those behind the first sent the same action
    const Session* origin = nullptr;  // of the job; it may have ended
    int64_t token = 0;
    const Topic* topic = nullptr;
    BootTime since{};
  };

  void begin(int64_t requestId, const std::shared_ptr<const Action>& action);
  void onVerdict(int64_t requestId, const std::shared_ptr<const Action>& action, const Verdict& verdict);
  void join(int64_t requestId, int64_t running, const std::shared_ptr<const Action>& action);
  void dispatch();
  static bool isWanted(const Pending& request);
  bool callAgent(const Job& job);

  // `refusal` goes to the audit, unless it is empty.
  void takeBack(const Job& job, const char* message, const std::string& refusal = {});
  template <typename IsUnwanted>
  void takeBackWhere(const IsUnwanted& isUnwanted, const char* message, const std::string& refusal);
  void answer(int64_t requestId, const MobileMessage& message);

  const IClock& clock_;
  Peers& peers_;
  Gatekeeper& keeper_;
  Metrics& metrics_;
  Answers& answers_;
  AgentCallback& agent_;
  std::unordered_map<int64_t, Pending> pending_;
  FairQueue queue_;
  DispatchLimit limit_;
  int64_t lastId_ = 0;
  bool isClosed_ = false;
  std::function<void()> onIdle_;  // empty unless close() waits
};

}  // namespace orvane::terminal
