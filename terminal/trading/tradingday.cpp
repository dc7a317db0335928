#include "terminal/trading/tradingday.h"

#include <chrono>
#include <ctime>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

constexpr int64_t kDay = 86400;

// Seconds by which local time is ahead at `time`.
int64_t aheadOfUtc(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local.tm_gmtoff;
}

}  // namespace

std::optional<int64_t> TradingDay::today() const {
  if (!watch_.agrees()) return std::nullopt;
  const std::time_t now = std::chrono::system_clock::to_time_t(watch_.wall());
  return (now + aheadOfUtc(now)) / kDay;
}

int64_t TradingDay::lastMinute(int64_t day) {
  const std::time_t local = (day + 1) * kDay - 60;
  const std::time_t near = local - aheadOfUtc(local);
  return (local - aheadOfUtc(near)) * 1000;
}

int64_t TradingDay::now() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(watch_.wall().time_since_epoch()).count();
}

std::string TradingDay::fault() const {
  if (watch_.agrees()) return {};
  const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(watch_.jump()).count();
  return fmt::format(
      "the wall clock jumped {} minutes {}: the trading day does not change until the clock is set right"
      " or the terminal is restarted",
      std::abs(minutes), minutes > 0 ? "forward" : "back");
}

}  // namespace orvane::terminal
