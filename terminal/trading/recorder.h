#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "terminal/trading/quotecurves.h"

namespace orvane::terminal {

// Once a minute, on its own thread: keeps the accounts' figures and the instruments' prices.
class Recorder {
 public:
  // The others must outlive it.
  Recorder(Desk& desk, QuoteCurves& curves) : desk_(desk), curves_(curves) {}
  ~Recorder() { stop(); }
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // Records the present minute, too. REQUIRES: not started.
  void start();

  // Does nothing if not started.
  void stop();

 private:
  void run();
  void record();

  Desk& desk_;
  QuoteCurves& curves_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool running_ = false;
  std::thread thread_;
};

}  // namespace orvane::terminal
