#include "terminal/phones/phones.h"

#include <utility>
#include <variant>

#include "terminal/logging.h"
#include "terminal/phones/frame.h"

namespace orvane::terminal {
namespace {

constexpr std::chrono::seconds kTickPeriod{1};
constexpr std::string_view kNotice = "terminal.notice";

}  // namespace

Phones::Phones(IEventLoop& loop, GatewayStore& store, PhonesOptions options)
    : loop_(loop),
      keeper_(loop, store, [this] { onTokens(); }),
      requests_(loop, peers_, keeper_, metrics_, answers_, agent_),
      watch_(loop, options.prices, metrics_, answers_),
      alerts_(loop, store, options.prices, peers_, metrics_, answers_),
      login_(loop, {options.loginTime, options.maxOfToken}, keeper_, peers_, pushes_, answers_, *this),
      pages_(std::move(options.probe), std::move(options.figures), peers_, requests_, agent_, keeper_, metrics_) {}

void Phones::start() {
  alerts_.start();
  tickLater();
}

void Phones::tickLater() {
  tick_ = loop_.after(kTickPeriod, [this] { tick(); });
}

// The audit still lacks the refusals of the last second.
void Phones::stop() {
  tick_.reset();
  watch_.stop();
  alerts_.stop();
  keeper_.tick();
}

void Phones::tick() {
  keeper_.tick();
  onTokens();
  tickLater();
}

// Tokens were made or revoked, or expire.
void Phones::onTokens() {
  peers_.each([this](const Peer& peer) {
    if (peer.isLoggedIn && !keeper_.isLive(peer.visitor.token)) {
      peer.session->close(CloseCode::NotEntitled, "the token was revoked");
    }
  });
  requests_.dropRevoked();
  alerts_.dropRevoked(keeper_);
  confirmRevocations();
}

// A revocation is confirmed once the library has no request of the token either.
void Phones::confirmRevocations() {
  const std::vector<Revocation> revocations = keeper_.revocations();
  for (const Revocation& each : revocations) {
    if (!requests_.isUnderWay(each.token)) keeper_.confirm(each);
  }
}

void Phones::drain(std::function<void()> done) {
  keeper_.hurry();
  requests_.close(std::move(done));
}

void Phones::deliver(std::shared_ptr<const MobileMessage> message) {
  loop_.post([this, message = std::move(message)] {
    if (message->requestId == kNoRequestId) return push(*message);
    requests_.onReply(*message);
    confirmRevocations();
  });
}

void Phones::push(const MobileMessage& message) {
  metrics_.countPush();
  const PushLog::Text text = pushes_.add(message);
  peers_.each([&](const Peer& peer) {
    if (hears(peer, message)) peer.session->send(text);
  });
}

// A client without the right see gets the notices of its own refused requests.
bool Phones::hears(const Peer& peer, const MobileMessage& message) const {
  return peer.visitor.rights.has(Right::See) || (message.topic == kNotice && peer.expectsNotices(loop_.bootTime()));
}

void Phones::onOpened(std::shared_ptr<Session> session) { login_.expect(peers_.add(std::move(session))); }

void Phones::onFrame(Session& session, std::string_view text) {
  answers_.guard(session, [&] { read(peers_.of(session), text); });
}

void Phones::read(Peer& peer, std::string_view text) {
  Session& session = *peer.session;
  if (peer.isPunished || session.isClosing()) return;
  if (peer.isAwaited) return Login::hold(peer, text);
  const auto result = readFrame(text);
  const auto* frame = std::get_if<Frame>(&result);
  if (frame != nullptr && frame->topic == kLoginTopic) {
    watch_.forget(session);
    return login_.onFrame(peer, *frame);
  }
  if (frame != nullptr && peer.isLoggedIn) return gates_.onRequest(peer, *frame);
  if (const auto* error = std::get_if<FrameError>(&result)) {
    answers_.refuse(session, error->id, error->topic, {RefusalReason::Frame, error->message});
  } else {
    answers_.refuse(session, frame->id, frame->topic,
                    {RefusalReason::Login, R"(log in first: {"topic": "login", "token": ...})"});
  }
  if (!peer.isLoggedIn) session.close(CloseCode::NoLogin, "the first message must be a login");
}

void Phones::onClosed(Session& session) {
  TERMINAL_LOG(gatewayLogger(), Debug, "{} is gone", session.name());
  if (const auto code = session.closeCode()) metrics_.countClose(*code);
  watch_.forget(session);
  requests_.onClosed(session);
  peers_.remove(session);
}

void Phones::makePage(const HttpRequest& request, Answer answer) {
  try {
    pages_.make(request, answer);
  } catch (const std::exception& error) {
    TERMINAL_LOG(gatewayLogger(), Error, "the page {} could not be made: {}", request.path, error.what());
    metrics_.countRefusal(RefusalReason::Fault);
    answer(Page{.status = 500, .body = "The terminal failed inside; its log says more.\n"});
  }
}

}  // namespace orvane::terminal
