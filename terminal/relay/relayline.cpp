#include "terminal/relay/relayline.h"

#include <utility>

#include <fmt/format.h>

namespace orvane::terminal::relay {
namespace {

// So that the list of a push to very many clients leaves room for its text in a message.
constexpr size_t kMaxCast = 4096;

}  // namespace

RelayLine::RelayLine(LineContext& context, const Party& self, const Party& relay, uint64_t channel)
    : context_(context), relay_(relay.name), channel_(context.loop, context.bus, downSubject(relay, self), channel) {}

bool RelayLine::onMessage(const Message& message) {
  if (!channel_.receive(message)) return false;
  if (message.kind == Kind::Open) {
    open(message);
    return true;
  }
  const auto found = sessions_.find(message.session);
  if (found == sessions_.end()) return true;  // it has ended here, and the relay will hear of that
  const std::shared_ptr<RelaySession> session = found->second;
  session->onMessage(message);
  return true;
}

void RelayLine::open(const Message& message) {
  const auto refuse = [&](CloseCode code, std::string_view reason) {
    send({.kind = Kind::Close, .value = static_cast<uint32_t>(code), .session = message.session, .payload = reason});
  };
  std::optional<Origin> origin = readOrigin(message.payload);
  if (!origin || sessions_.contains(message.session)) return refuse(CloseCode::Fault, "the relay's message is invalid");
  if (!context_.makeRoom()) return refuse(CloseCode::TryLater, "the terminal has no room for another phone");
  const auto session = std::make_shared<RelaySession>(
      context_.loop, *this, context_.owner, context_.limits, message.session,
      fmt::format("phone {} of relay {}", ++context_.lastNumber, relay_), std::move(*origin));
  sessions_.emplace(message.session, session);
  context_.owner.onOpened(session);
}

void RelayLine::send(const Message& message) {
  flushCast();
  channel_.send(message);
}

// The same text for several sessions comes in a row, in one turn of the loop.
void RelayLine::cast(uint64_t session, const Session::Text& text) {
  if (castText_ != text || castSessions_.size() >= kMaxCast) flushCast();
  if (castText_ == nullptr) {
    castText_ = text;
    context_.loop.post([this, alive = std::weak_ptr(isAlive_)] {
      if (!alive.expired()) flushCast();
    });
  }
  castSessions_.push_back(session);
}

void RelayLine::flushCast() {
  const Session::Text text = std::exchange(castText_, nullptr);
  if (text == nullptr) return;
  const std::vector<uint64_t> sessions = std::exchange(castSessions_, {});
  if (sessions.size() == 1) {
    channel_.send({.kind = Kind::Data, .session = sessions.front(), .payload = *text});
  } else {
    channel_.send({.kind = Kind::Cast, .payload = writeCast(sessions, *text)});
  }
}

void RelayLine::breakOff() {
  castText_ = nullptr;
  castSessions_.clear();
  channel_.reset();
  end();
}

void RelayLine::stop() {
  const auto sessions = sessions_;
  for (const auto& [id, session] : sessions) session->close(CloseCode::GoingAway, "the terminal stops");
}

void RelayLine::end() {
  const auto sessions = std::exchange(sessions_, {});
  for (const auto& [id, session] : sessions) session->end();
}

}  // namespace orvane::terminal::relay
