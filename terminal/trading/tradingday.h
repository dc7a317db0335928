#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "terminal/clocks.h"

namespace orvane::terminal {

// Which trading day it is by local time. Thread-safe.
class TradingDay {
 public:
  // `clock` must outlive it.
  explicit TradingDay(const IClock& clock) : watch_(clock) {}

  // Days since 1970. Nothing after a jump of the wall clock of more than ten minutes, until it is undone: a day that
  // changes cancels orders and charges interest, which cannot be taken back.
  std::optional<int64_t> today() const;

  // Milliseconds since 1970.
  int64_t now() const;

  // The start of the last minute of a trading day, in milliseconds since 1970.
  static int64_t lastMinute(int64_t day);

  // Why the day does not change at present, English; empty if it does.
  std::string fault() const;

 private:
  ClockWatch watch_;
};

}  // namespace orvane::terminal
