#include "terminal/relay/terminalport.h"

#include <chrono>
#include <utility>

#include <fmt/format.h>

#include "terminal/logging.h"

namespace orvane::terminal::relay {
namespace {

constexpr std::chrono::milliseconds kStopLook{10};

}  // namespace

TerminalPort::TerminalPort(IEventLoop& loop, IBus& bus, ISessionOwner& owner, PortOptions options)
    : loop_(loop),
      bus_(bus),
      options_(std::move(options)),
      self_(startParty(options_.name, loop.wallTime())),
      presence_(loop, bus, self_, {[this] { endAll(); }, [this] { onTaken(); }}),
      context_{loop,
               bus,
               owner,
               options_.limits,
               [this] { return makeRoom(); },
               [this](size_t before, size_t now) { onBacklog(before, now); }} {}

void TerminalPort::start() {
  bus_.start({allUpSubjects(self_), presenceSubject(self_.name)}, *this);
  tick_ = loop_.after(kBeatPeriod, [this] { tick(); });
}

void TerminalPort::tick() {
  std::erase_if(lines_, [](auto& each) {
    if (each.second->isSilent()) {
      TERMINAL_LOG(gatewayLogger(), Warn, "relay {} is silent: its phones are gone", each.first.name);
      each.second->breakOff();
      return true;
    }
    each.second->beat();
    return false;
  });
  tick_ = loop_.after(kBeatPeriod, [this] { tick(); });
}

void TerminalPort::stop() {
  isStopping_ = true;
  for (const auto& [relay, line] : lines_) line->stop();
  leaveOnceEmpty();
}

void TerminalPort::leaveOnceEmpty() {
  if (countSessions() > 0) {
    tick_ = loop_.after(kStopLook, [this] { leaveOnceEmpty(); });
    return;
  }
  tick_.reset();
  presence_.leave();
  bus_.stop();
}

void TerminalPort::onUp() {
  if (!isStopping_) presence_.onUp();
}

// Messages may be lost, so no session can go on.
void TerminalPort::onDown() {
  presence_.onDown();
  endAll();
}

void TerminalPort::onMessage(std::string_view subject, std::string_view bytes) {
  const auto sender = senderOf(subject);
  const auto message = decode(bytes);
  if (!sender || !message) {
    TERMINAL_LOG(gatewayLogger(), Warn, "a message with {} bytes on {} cannot be read", bytes.size(), subject);
  } else if (message->kind == Kind::Here) {
    if (!isStopping_ && sender->epoch.empty()) presence_.onHeard(message->payload);
  } else if (!sender->epoch.empty()) {
    onRelay(*sender, *message);
  }
}

void TerminalPort::onRelay(const Party& relay, const Message& message) {
  auto found = lines_.find(relay);
  const bool isKnown = found != lines_.end() && found->second->channel() == message.channel;
  if (message.kind == Kind::Reset) {
    if (!isKnown) return;
    found->second->end();
    lines_.erase(found);
    return;
  }
  if (!isKnown) {
    const bool isNew = found == lines_.end() || found->second->channel() < message.channel;
    if (message.number != 1 || !isNew || isStopping_ || !presence_.isPresent()) {
      return bus_.publish(downSubject(relay, self_), encode({.kind = Kind::Reset, .channel = message.channel}));
    }
    if (found != lines_.end()) found->second->end();
    found = lines_.insert_or_assign(relay, std::make_unique<RelayLine>(context_, self_, relay, message.channel)).first;
  }
  if (found->second->onMessage(message)) return;
  TERMINAL_LOG(gatewayLogger(), Warn, "messages of relay {} are lost: its phones must connect again", relay.name);
  found->second->breakOff();
  lines_.erase(found);
}

std::string TerminalPort::fault() const {
  if (!bus_.fault().empty() || presence_.isPresent()) return bus_.fault();
  return isTaken_ ? fmt::format("another terminal with the name {} is present", self_.name)
                  : "the name is being claimed";
}

void TerminalPort::onTaken() {
  isTaken_ = true;
  if (!presence_.wasPresent()) return options_.onRefused();
  TERMINAL_LOG(gatewayLogger(), Error,
               "another terminal with the name {} is present: no phone reaches this one through a relay until that one "
               "ends",
               self_.name);
}

void TerminalPort::endAll() {
  for (const auto& [relay, line] : lines_) line->breakOff();
  lines_.clear();
}

// As for direct connections, the oldest client without a login gives way.
bool TerminalPort::makeRoom() {
  if (countSessions() < options_.limits.maxSessions) return true;
  for (const auto& [relay, line] : lines_) {
    RelaySession* oldest = nullptr;
    line->each([&](RelaySession& session) {
      if (oldest == nullptr && session.mayGiveWay()) oldest = &session;
    });
    if (oldest == nullptr) continue;
    oldest->close(CloseCode::TryLater, "it gives way to a new one");
    return true;
  }
  return false;
}

void TerminalPort::onBacklog(size_t before, size_t now) {
  backlogBytes_ = backlogBytes_ - before + now;
  while (backlogBytes_ > options_.limits.maxBacklogBytes) {
    RelaySession* largest = nullptr;
    for (const auto& [relay, line] : lines_) {
      line->each([&](RelaySession& session) {
        if (largest == nullptr || session.backlogBytes() > largest->backlogBytes()) largest = &session;
      });
    }
    if (largest == nullptr) return;
    largest->cutBacklog();
  }
}

size_t TerminalPort::countSessions() const {
  size_t count = 0;
  for (const auto& [relay, line] : lines_) count += line->countSessions();
  return count;
}

}  // namespace orvane::terminal::relay
