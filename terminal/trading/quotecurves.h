#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "terminal/trading/desk.h"

namespace orvane::terminal {

// The last prices of the trading day, one a minute, for the curves beside the instruments. In memory only: after a
// restart they begin anew. Thread-safe.
class QuoteCurves {
 public:
  // Adds the book's last prices, and drops those of another day. `now` is in milliseconds since 1970. The caller keeps
  // the book locked.
  void sample(const Book& book, int64_t now);

  // The reply to "quote.curve", or why there is none; UTF-8.
  struct Answer {
    std::string fault;
    std::string text;
  };
  Answer answer(Desk& desk, const std::string& body) const;

 private:
  mutable std::mutex mutex_;
  int64_t day_ = 0;
  std::vector<int64_t> times_;
  std::map<int64_t, std::vector<double>> prices_;  // by hash code, one for each of times_
};

}  // namespace orvane::terminal
