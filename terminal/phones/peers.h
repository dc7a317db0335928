#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "terminal/eventloop.h"
#include "terminal/phones/visitor.h"
#include "terminal/session.h"

namespace orvane::terminal {

// A client with a session.
struct Peer {
  std::shared_ptr<Session> session;
  Visitor visitor;  // token 0 before the login
  std::string device;
  size_t waiting = 0;   // requests without a reply
  size_t overruns = 0;  // requests refused since the backlog last fell below half its limit
  bool isLoggedIn = false;
  bool isPunished = false;        // for a wrong login: frames are ignored until it is answered
  size_t noticing = 0;            // requests without a reply that may cause notices
  BootTime noticesUntil{};        // and for a while after the reply: notices reach it even without the right see
  std::vector<std::string> held;  // frames that came while isAwaited
  size_t heldBytes = 0;
  bool isAwaited = false;        // its login waits for the tokens to be read again
  std::unique_ptr<Timer> timer;  // the login's limit, then the delay of a wrong login's answer

  bool expectsNotices(BootTime now) const { return noticing > 0 || now < noticesUntil; }
};

// All clients with a session. One thread.
class Peers {
 public:
  Peer& add(std::shared_ptr<Session> session);
  void remove(const Session& session);

  // Null once the session has ended.
  Peer* find(const Session& session);

  // REQUIRES: the session is open.
  Peer& of(const Session& session) { return peers_.at(&session); }

  void logIn(Peer& peer);   // REQUIRES: it is not logged in
  void logOut(Peer& peer);  // does nothing if it is not logged in

  size_t countLoggedIn() const;

  // Whether no client of another token is logged in.
  bool isAlone(int64_t token) const {
    return loggedIn_.empty() || (loggedIn_.size() == 1 && loggedIn_.contains(token));
  }

  size_t countOfToken(int64_t token) const;  // those that are closing not included

  // Closes older sessions of the same token and device: a client that connects again has given them up.
  void closeOlder(const Peer& newest);

  template <typename Function>
  void each(const Function& function) {
    for (auto& [session, peer] : peers_) function(peer);
  }

 private:
  std::unordered_map<const Session*, Peer> peers_;
  std::unordered_map<int64_t, size_t> loggedIn_;  // clients of each token; none is zero
};

}  // namespace orvane::terminal
