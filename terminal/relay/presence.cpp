#include "terminal/relay/presence.h"

#include <utility>

#include "terminal/relay/channel.h"

namespace orvane::terminal::relay {
namespace {

// Longer than the pause between two heartbeats.
constexpr std::chrono::milliseconds kListening{1500};

}  // namespace

Presence::Presence(IEventLoop& loop, IBus& bus, Party self, Events events)
    : loop_(loop),
      bus_(bus),
      self_(std::move(self)),
      subject_(presenceSubject(self_.name)),
      events_(std::move(events)) {}

// After a short break the name is still this terminal's.
void Presence::onUp() { isPresent_ ? show() : claim(kListening); }

void Presence::claim(std::chrono::milliseconds listening) {
  timer_ = loop_.after(listening, [this] {
    isPresent_ = true;
    lastShown_ = loop_.bootTime();
    show();
  });
}

// A terminal that was stopped for a while cannot know whether another has its name by now.
void Presence::show() {
  const BootTime now = loop_.bootTime();
  if (now - lastShown_ >= kSilence) {
    lose();
    return claim(kListening);
  }
  lastShown_ = now;
  bus_.publish(subject_, encode({.kind = Kind::Here, .payload = self_.epoch}));
  timer_ = loop_.after(kBeatPeriod, [this] { show(); });
}

void Presence::onHeard(std::string_view epoch) {
  if (epoch == self_.epoch || (isPresent_ && self_.epoch < epoch)) return;
  lose();
  events_.onTaken();
  claim(kSilence);
}

void Presence::lose() {
  if (std::exchange(isPresent_, false)) events_.onLost();
}

void Presence::leave() {
  timer_.reset();
  if (std::exchange(isPresent_, false)) bus_.publish(subject_, encode({.kind = Kind::Leaving, .payload = self_.epoch}));
}

}  // namespace orvane::terminal::relay
