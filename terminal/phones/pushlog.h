#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "host/mobilemessage.h"

namespace orvane::terminal {

// Numbers the pushes, 1, 2, 3, …, and keeps the last for clients that reconnect: at most 1024 with 2 MiB, half of a
// session's send queue. Not thread-safe.
class PushLog {
 public:
  using Text = std::shared_ptr<const std::string>;

  PushLog();

  // A text that differs in each run of the terminal.
  const std::string& epoch() const { return epoch_; }

  // The number of the last push; 0 before the first.
  uint64_t last() const { return last_; }

  // Numbers a push and returns its frame.
  Text add(const MobileMessage& message);

  // Whether all pushes after this number of this epoch are kept.
  bool canResume(std::string_view epoch, uint64_t seq) const;

  // Calls `send` with each push after `seq`, in order. REQUIRES: canResume.
  template <typename Send>
  void resume(uint64_t seq, const Send& send) const {
    for (auto it = kept_.end() - static_cast<std::ptrdiff_t>(last_ - seq); it != kept_.end(); ++it) send(*it);
  }

 private:
  std::string epoch_;
  uint64_t last_ = 0;
  std::deque<Text> kept_;
  size_t keptBytes_ = 0;
};

}  // namespace orvane::terminal
