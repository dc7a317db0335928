#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "terminal/eventloop.h"
#include "terminal/phones/answers.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/peers.h"
#include "terminal/phones/pushlog.h"

namespace orvane::terminal {

inline constexpr std::string_view kLoginTopic = "login";

struct LoginLimits {
  std::chrono::milliseconds time;  // for a client's first frame
  size_t maxOfToken;               // connections that are logged in with one token
};

// Logs clients in: the time limit of a login, wrong tokens, and the pushes that a client has missed. One thread.
class Login {
 public:
  Login(IEventLoop& loop, const LoginLimits& limits, Gatekeeper& keeper, Peers& peers, PushLog& pushes,
        Answers& answers, ISessionOwner& frames);

  // Starts the time limit of a new client.
  void expect(Peer& peer);

  // Answers a login frame. A client may log in again, also as somebody else.
  void onFrame(Peer& peer, const Frame& frame);

  // Keeps a frame for later. REQUIRES: the peer's isAwaited.
  static void hold(Peer& peer, std::string_view text);

 private:
  struct Attempt {
    std::shared_ptr<Session> session;
    std::string id;  // the frame's, as JSON text
    std::string device;
    std::optional<PushPosition> resume;
  };
  void onAdmission(const Attempt& attempt, const Gatekeeper::Admission& admission);
  void refuse(const Attempt& attempt, std::string message, CloseCode code, std::string_view reason);
  void onWrongToken(Peer& peer, const Attempt& attempt);
  void admit(Peer& peer, const Attempt& attempt, const Visitor& visitor);

  IEventLoop& loop_;
  const LoginLimits limits_;
  Gatekeeper& keeper_;
  Peers& peers_;
  PushLog& pushes_;
  Answers& answers_;
  ISessionOwner& frames_;  // gets those that were held
};

}  // namespace orvane::terminal
