#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "host/mobilemessage.h"

namespace orvane::terminal {

// Delivers messages on a thread of its own, in the order in which they were posted.
class Outbox {
 public:
  using Notify = std::function<void(const MobileMessage&)>;

  ~Outbox() { stop(); }

  // REQUIRES: not started.
  void start(Notify notify);

  // No `notify` runs after this has returned; what is left is dropped. Does nothing when not started.
  void stop();

  // Any thread. Waits for the start; dropped once stopped.
  void post(MobileMessage message);

 private:
  void run(const Notify& notify);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<MobileMessage> queue_;
  bool open_ = true;
  std::thread thread_;
};

}  // namespace orvane::terminal
