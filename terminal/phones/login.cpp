#include "terminal/phones/login.h"

#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxOfToken = 192;  // of the transport's 256 connections, so that one token cannot take all
constexpr std::chrono::seconds kPenalty{1};

}  // namespace

Login::Login(IEventLoop& loop, std::chrono::milliseconds limit, Gatekeeper& keeper, Peers& peers, PushLog& pushes,
             Answers& answers)
    : loop_(loop), limit_(limit), keeper_(keeper), peers_(peers), pushes_(pushes), answers_(answers) {}

void Login::expect(Peer& peer) {
  peer.timer =
      loop_.after(limit_, [&session = *peer.session] { session.close(CloseCode::NoLogin, "no login in time"); });
}

void Login::onFrame(Peer& peer, const Frame& frame) {
  const std::optional<Visitor> visitor = keeper_.admit(frame.token);
  if (!visitor) return onWrongToken(peer, frame);
  if (!visitor->rights.empty()) return admit(peer, frame, *visitor);
  refuse(peer, frame.id, "this token has no rights: make another", CloseCode::NotEntitled, "no rights");
}

void Login::refuse(Peer& peer, std::string_view id, std::string message, CloseCode code, std::string_view reason) {
  answers_.refuse(*peer.session, id, kLoginTopic, {RefusalReason::Login, std::move(message)});
  peer.session->close(code, reason);
}

// The answer is delayed, to slow down guessing.
void Login::onWrongToken(Peer& peer, const Frame& frame) {
  const Session& session = *peer.session;
  TERMINAL_LOG(gatewayLogger(), Warn, "{} from {} sent a wrong token", session.name(), session.address());
  if (!keeper_.allowWrong(session.network())) {
    return refuse(peer, frame.id, fmt::format("too many wrong logins from {}: wait a minute", session.address()),
                  CloseCode::TooMany, "too many wrong logins");
  }
  peer.isPunished = true;
  peer.timer = loop_.after(kPenalty, [this, &peer, id = std::string(frame.id)] {
    refuse(peer, id, "wrong token: take one that pocket-terminal token add printed", CloseCode::NoLogin, "wrong token");
  });
}

void Login::admit(Peer& peer, const Frame& frame, const Visitor& visitor) {
  Session& session = *peer.session;
  peer.visitor = visitor;
  peer.device = frame.device;
  peers_.closeOlder(peer);
  if (peers_.countOfToken(visitor.token) > kMaxOfToken) {
    return refuse(peer, frame.id, fmt::format("{} connections with this token are open already", kMaxOfToken),
                  CloseCode::TooMany, "too many connections with this token");
  }
  TERMINAL_LOG(gatewayLogger(), Info, "{} is logged in as {} from {}", session.name(), visitor.name, session.address());
  peer.timer.reset();
  peer.isLoggedIn = true;
  session.admit();
  const bool resumes = frame.resume && pushes_.canResume(frame.resume->epoch, frame.resume->seq);
  answers_.send(session, writeWelcome(frame.id, visitor, {pushes_.epoch(), pushes_.last()}, resumes));
  if (resumes && visitor.rights.has(Right::See)) {
    pushes_.resume(frame.resume->seq, [&](const PushLog::Text& text) { session.send(text); });
  }
}

}  // namespace orvane::terminal
