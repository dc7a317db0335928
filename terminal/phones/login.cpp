#include "terminal/phones/login.h"

#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxHeld = 256;  // frames
constexpr size_t kMaxHeldBytes = size_t{256} * 1024;
constexpr std::chrono::seconds kPenalty{1};

}  // namespace

Login::Login(IEventLoop& loop, const LoginLimits& limits, Gatekeeper& keeper, Peers& peers, PushLog& pushes,
             Answers& answers, ISessionOwner& frames)
    : loop_(loop),
      limits_(limits),
      keeper_(keeper),
      peers_(peers),
      pushes_(pushes),
      answers_(answers),
      frames_(frames) {}

void Login::expect(Peer& peer) {
  peer.timer =
      loop_.after(limits_.time, [&session = *peer.session] { session.close(CloseCode::NoLogin, "no login in time"); });
}

void Login::onFrame(Peer& peer, const Frame& frame) {
  peer.isAwaited = true;
  keeper_.admit(frame.token, [this, attempt = Attempt{peer.session, std::string(frame.id), frame.device, frame.resume}](
                                 const Gatekeeper::Admission& admission) {
    answers_.guard(*attempt.session, [&] { onAdmission(attempt, admission); });
  });
}

void Login::hold(Peer& peer, std::string_view text) {
  peer.heldBytes += text.size();
  if (peer.held.size() >= kMaxHeld || peer.heldBytes > kMaxHeldBytes) {
    return peer.session->close(CloseCode::TooMany, "too much was sent before the login was answered");
  }
  peer.held.emplace_back(text);
}

void Login::onAdmission(const Attempt& attempt, const Gatekeeper::Admission& admission) {
  Peer* peer = peers_.find(*attempt.session);
  if (peer == nullptr || attempt.session->isClosing()) return;
  peer->isAwaited = false;
  peer->heldBytes = 0;
  const std::vector<std::string> held = std::exchange(peer->held, {});
  if (std::holds_alternative<Gatekeeper::Unknown>(admission)) return onWrongToken(*peer, attempt);
  if (const auto* fault = std::get_if<std::string>(&admission)) {
    return refuse(attempt, "the tokens cannot be read: " + *fault, CloseCode::Fault, "the tokens cannot be read");
  }
  const auto& visitor = std::get<Visitor>(admission);
  if (visitor.rights.empty()) {
    return refuse(attempt, "this token has no rights: make another", CloseCode::NotEntitled, "no rights");
  }
  admit(*peer, attempt, visitor);
  for (const std::string& text : held) frames_.onFrame(*attempt.session, text);
}

void Login::refuse(const Attempt& attempt, std::string message, CloseCode code, std::string_view reason) {
  answers_.refuse(*attempt.session, attempt.id, kLoginTopic, {RefusalReason::Login, std::move(message)});
  attempt.session->close(code, reason);
}

// The answer is delayed, to slow down guessing.
void Login::onWrongToken(Peer& peer, const Attempt& attempt) {
  const Session& session = *peer.session;
  TERMINAL_LOG(gatewayLogger(), Warn, "{} from {} sent a wrong token", session.name(), session.address());
  if (!keeper_.allowWrong(session.network())) {
    return refuse(attempt, fmt::format("too many wrong logins from {}: wait a minute", session.address()),
                  CloseCode::TooMany, "too many wrong logins");
  }
  peer.isPunished = true;
  peer.timer = loop_.after(kPenalty, [this, attempt] {
    refuse(attempt, "wrong token: take one that pocket-terminal token add printed", CloseCode::NoLogin, "wrong token");
  });
}

void Login::admit(Peer& peer, const Attempt& attempt, const Visitor& visitor) {
  Session& session = *peer.session;
  peers_.logOut(peer);  // a client may log in anew
  peer.visitor = visitor;
  peer.device = attempt.device;
  peers_.closeOlder(peer);
  if (peers_.countOfToken(visitor.token) > limits_.maxOfToken) {
    return refuse(attempt, fmt::format("{} connections with this token are open already", limits_.maxOfToken),
                  CloseCode::TooMany, "too many connections with this token");
  }
  TERMINAL_LOG(gatewayLogger(), Info, "{} is logged in as {} from {}", session.name(), visitor.name, session.address());
  peer.timer.reset();
  peers_.logIn(peer);
  session.admit();
  const bool resumes = attempt.resume && pushes_.canResume(attempt.resume->epoch, attempt.resume->seq);
  answers_.send(session, writeWelcome(attempt.id, visitor, {pushes_.epoch(), pushes_.last()}, resumes));
  if (resumes && visitor.rights.has(Right::See)) {
    pushes_.resume(attempt.resume->seq, [&](const PushLog::Text& text) { session.send(text); });
  }
}

}  // namespace orvane::terminal
