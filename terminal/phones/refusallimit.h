#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane::terminal {

// Limits the audit lines of refused requests to ten a second for each token, so that a client without rights cannot
// fill the disk. One thread.
class RefusalLimit {
 public:
  struct Sum {
    std::string name;    // the token's
    uint64_t count = 0;  // refusals without a line
  };

  // Whether this refusal gets a line of its own.
  bool allow(int64_t token, const std::string& name);

  // To be called every second: begins a new one, and returns what is to be summed up in a line for each token.
  std::vector<Sum> takeSums();

 private:
  struct Count {
    std::string name;
    uint64_t refused = 0;
  };

  std::unordered_map<int64_t, Count> counts_;
};

}  // namespace orvane::terminal
