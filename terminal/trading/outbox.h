#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "host/mobilemessage.h"

namespace orvane::terminal {

// Delivers messages on its own thread, in the order of posting. Thread-safe.
class Outbox {
 public:
  using Notify = std::function<void(const MobileMessage&)>;

  ~Outbox() { stop(); }

  // REQUIRES: not started.
  void start(Notify notify);

  // No `notify` runs after this returns. Undelivered messages are dropped. Does nothing if not started.
  void stop();

  // Messages posted before the start are kept; those posted after the stop are dropped.
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
