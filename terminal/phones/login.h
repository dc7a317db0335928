#pragma once

#include <chrono>
#include <string>

#include "terminal/eventloop.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/pushlog.h"

namespace orvane::terminal {

inline constexpr std::string_view kLoginTopic = "login";

// Lets clients in: the time limit of a login, wrong tokens, and what a client that logs in again has missed. One
// thread.
class Login {
 public:
  Login(IEventLoop& loop, std::chrono::milliseconds limit, Gatekeeper& keeper, Peers& peers, PushLog& pushes,
        Answers& answers);

  // Starts the time limit of a new client.
  void expect(Peer& peer);

  // Answers a login frame. A client may log in again, also as somebody else.
  void onFrame(Peer& peer, const Frame& frame);

 private:
  void refuse(Peer& peer, std::string_view id, std::string message, CloseCode code, std::string_view reason);
  void onWrongToken(Peer& peer, const Frame& frame);
  void admit(Peer& peer, const Frame& frame, const Visitor& visitor);

  IEventLoop& loop_;
  const std::chrono::milliseconds limit_;
  Gatekeeper& keeper_;
  Peers& peers_;
  PushLog& pushes_;
  Answers& answers_;
};

}  // namespace orvane::terminal
