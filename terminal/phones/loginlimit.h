#pragma once

#include <chrono>
#include <string>
#include <unordered_map>

namespace orvane::terminal {

// Counts the wrong logins of each address.
class LoginLimit {
 public:
  // Counts one more. False where it is more than 10 of the address within a minute.
  bool allowWrong(const std::string& address);

 private:
  using Clock = std::chrono::steady_clock;
  struct Count {
    Clock::time_point since;
    int wrong = 0;
  };

  std::unordered_map<std::string, Count> counts_;
  size_t sweepSize_ = 0;  // doubles with what is left, so that a sweep costs a call but little
};

}  // namespace orvane::terminal
