#include "terminal/relay/directory.h"

#include <algorithm>
#include <utility>

#include "terminal/relay/channel.h"

namespace orvane::terminal::relay {
namespace {

// Another run shows itself only once it has not heard of this one for longer than a heartbeat's period.
constexpr std::chrono::milliseconds kLate{1300};

}  // namespace

void Directory::onHere(const std::string& name, std::string_view epoch) {
  Entry& entry = entries_[name];
  const BootTime now = clock_.bootTime();
  if (entry.isPresent && entry.epoch != epoch) {
    if (now - entry.heard < kLate) return;  // two of one name; the younger will give way
    entry.isPresent = false;
    onGone_(name, true);
  }
  entry = {.epoch = std::string(epoch), .isPresent = true, .heard = now, .seen = clock_.wallTime()};
}

void Directory::onLeaving(const std::string& name, std::string_view epoch) {
  const auto found = entries_.find(name);
  if (found == entries_.end() || found->second.epoch != epoch) return;
  if (std::exchange(found->second.isPresent, false)) onGone_(name, false);
}

void Directory::tick() {
  const BootTime now = clock_.bootTime();
  for (auto& [name, entry] : entries_) {
    if (!entry.isPresent || now - entry.heard < kSilence) continue;
    entry.isPresent = false;
    onGone_(name, false);
  }
}

void Directory::forgetPresence() {
  for (auto& [name, entry] : entries_) entry.isPresent = false;
}

const Directory::Entry* Directory::find(const std::string& name) const {
  const auto found = entries_.find(name);
  return found == entries_.end() ? nullptr : &found->second;
}

size_t Directory::countPresent() const {
  return static_cast<size_t>(
      std::count_if(entries_.begin(), entries_.end(), [](const auto& each) { return each.second.isPresent; }));
}

}  // namespace orvane::terminal::relay
