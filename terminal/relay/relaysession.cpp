#include "terminal/relay/relaysession.h"

#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal::relay {
namespace {

constexpr std::chrono::milliseconds kCloseTime{3000};
constexpr std::chrono::milliseconds kStopTime{500};  // shorter: the terminal's end waits for it

}  // namespace

RelaySession::RelaySession(IEventLoop& loop, ISessionLine& line, ISessionOwner& owner, const SessionLimits& limits,
                           uint64_t id, std::string name, Origin origin)
    : loop_(loop),
      line_(line),
      owner_(owner),
      limits_(limits),
      id_(id),
      name_(std::move(name)),
      origin_(std::move(origin)) {}

void RelaySession::sendPart(Text text, bool isLast) {
  if (closing_) return;
  if (!isLast || !partial_.empty()) {
    partial_ += *text;
    if (!isLast) return;
    text = std::make_shared<const std::string>(std::exchange(partial_, {}));
  }
  if (out_.waitingBytes() > limits_.maxQueuedBytes) {
    TERMINAL_LOG(gatewayLogger(), Warn, "{} reads too slowly: {} bytes wait", name_, out_.queuedBytes());
    out_.keepFirst();
    return close(CloseCode::TooSlow, "too slow");
  }
  if (out_.takeWhole(text->size())) return line_.cast(id_, text);
  out_.add(std::move(text));
  pump();
}

void RelaySession::close(CloseCode code, std::string_view reason) {
  if (closing_) return;
  TERMINAL_LOG(gatewayLogger(), Info, "{} is closed with {}: {}", name_, static_cast<unsigned>(code), reason);
  closing_ = true;
  closeCode_ = code;
  reason_ = reason;
  if (out_.isEmpty()) return finish();
  account();
  closeTimer_ = loop_.after(code == CloseCode::GoingAway ? kStopTime : kCloseTime, [this] { finish(); });
}

void RelaySession::admit() {
  if (!ended_ && !std::exchange(admitted_, true)) line_.send({.kind = Kind::Admit, .session = id_});
}

void RelaySession::onMessage(const Message& message) {
  if (message.kind == Kind::Close) return end();
  if (message.kind == Kind::Credit) {
    out_.grant(message.value);
    pump();
  } else if (message.kind == Kind::Data && !closing_) {
    onData(message);
  }
}

// The relay keeps to the limits; one that does not is broken or hostile.
void RelaySession::onData(const Message& message) {
  if (!in_.take(message.payload.size()) || frame_.size() + message.payload.size() > limits_.maxFrameBytes) {
    return close(CloseCode::TooMany, "the frame is too long");
  }
  if (const uint32_t credit = in_.release(message.payload.size()); credit > 0) {
    line_.send({.kind = Kind::Credit, .value = credit, .session = id_});
  }
  if (!message.isLast || !frame_.empty()) frame_ += message.payload;
  if (!message.isLast) return;
  const std::string joined = std::exchange(frame_, {});
  owner_.onFrame(*this, joined.empty() ? message.payload : joined);
}

void RelaySession::pump() {
  if (ended_) return;
  while (const auto piece = out_.next()) {
    line_.send({.kind = Kind::Data, .isLast = piece->isLast, .session = id_, .payload = piece->bytes});
  }
  if (closing_ && out_.isEmpty()) return finish();
  account();
}

void RelaySession::account() {
  const size_t before = std::exchange(accountedBytes_, out_.queuedBytes());
  if (before != accountedBytes_) line_.onBacklog(before, accountedBytes_);
}

void RelaySession::cutBacklog() {
  TERMINAL_LOG(gatewayLogger(), Warn,
               "{} reads too slowly: of all that waits for clients, more than --max-backlog allows, its {} bytes are "
               "the most",
               name_, out_.queuedBytes());
  closing_ = true;
  if (!closeCode_) closeCode_ = CloseCode::TooSlow;
  finish();
}

// Tells the relay, with what is left of the backlog given up.
void RelaySession::finish() {
  if (ended_) return;
  line_.send({.kind = Kind::Close,
              .value = static_cast<uint32_t>(closeCode_.value_or(CloseCode::Fault)),
              .session = id_,
              .payload = reason_});
  end();
}

void RelaySession::end() {
  if (std::exchange(ended_, true)) return;
  closing_ = true;
  closeTimer_.reset();
  out_.clear();
  account();
  loop_.post([self = shared_from_this()] { self->owner_.onClosed(*self); });
  line_.onEnded(id_);
}

}  // namespace orvane::terminal::relay
