#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "terminal/eventloop.h"

namespace orvane::terminal::relay {

// The terminals that a relay has heard of since its start, by name. One thread.
class Directory {
 public:
  struct Entry {
    std::string epoch;  // of the run that is, or was last, present
    bool isPresent = false;
    BootTime heard{};
    WallTime seen{};  // for people
  };

  // `onGone`: that run of the terminal is no longer present; `isReplaced` if another run is.
  using OnGone = std::function<void(const std::string& name, bool isReplaced)>;

  // `clock` must outlive it.
  Directory(const IClock& clock, OnGone onGone) : clock_(clock), onGone_(std::move(onGone)) {}

  void onHere(const std::string& name, std::string_view epoch);
  void onLeaving(const std::string& name, std::string_view epoch);

  // To be called every second: terminals that missed five heartbeats are away.
  void tick();

  // The bus is down: nobody knows who is present.
  void forgetPresence();

  // Null if this relay has never heard of the terminal.
  const Entry* find(const std::string& name) const;

  size_t countPresent() const;

 private:
  const IClock& clock_;
  const OnGone onGone_;
  std::map<std::string, Entry> entries_;
};

}  // namespace orvane::terminal::relay
