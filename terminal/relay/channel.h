#pragma once

#include <cstdint>
#include <string>

#include "terminal/eventloop.h"
#include "terminal/relay/bus.h"
#include "terminal/relay/message.h"

namespace orvane::terminal::relay {

inline constexpr std::chrono::milliseconds kBeatPeriod{1000};
inline constexpr std::chrono::milliseconds kSilence{5000};  // five missed heartbeats

// One side of the messages between one run of a terminal and one run of a relay. Both directions are numbered, and a
// beat each second shows the loss of the last messages too.
class Channel {
 public:
  // `clock` and `bus` must outlive it.
  Channel(const IClock& clock, IBus& bus, std::string subject, uint64_t id)
      : clock_(clock), bus_(bus), subject_(std::move(subject)), id_(id), heard_(clock.bootTime()) {}

  uint64_t id() const { return id_; }

  // Numbers the message and sends it.
  void send(Message message) {
    message.channel = id_;
    message.number = ++sent_;
    bus_.publish(subject_, encode(message));
  }

  // Ends the channel for the other side too.
  void reset() { bus_.publish(subject_, encode({.kind = Kind::Reset, .channel = id_})); }

  // A message of this channel has come. False if others are missing before it.
  bool receive(const Message& message) {
    heard_ = clock_.bootTime();
    return message.number == ++received_;
  }

  bool isSilent() const { return clock_.bootTime() - heard_ >= kSilence; }

 private:
  const IClock& clock_;
  IBus& bus_;
  const std::string subject_;
  const uint64_t id_;
  uint64_t sent_ = 0;
  uint64_t received_ = 0;
  BootTime heard_;
};

}  // namespace orvane::terminal::relay
