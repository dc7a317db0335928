#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "terminal/eventloop.h"

namespace orvane::terminal {

// Rate limit of wrong logins, by network. One thread.
class LoginLimit {
 public:
  // Counts one more. False if that makes more than 10 of the network within a minute.
  bool allowWrong(const std::string& network, BootTime now);

 private:
  struct Count {
    BootTime since{};
    int wrong = 0;
  };

  std::unordered_map<std::string, Count> counts_;
  size_t sweepSize_ = 0;  // of counts_; doubling it keeps sweeps amortised O(1)
};

}  // namespace orvane::terminal
