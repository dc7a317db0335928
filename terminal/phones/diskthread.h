#pragma once

#include <atomic>
#include <thread>

#include "terminal/phones/gatewaystore.h"

namespace orvane::terminal {

// The thread that does a store's work. May be started once.
class DiskThread {
 public:
  explicit DiskThread(GatewayStore& store) : store_(store) {}
  ~DiskThread() { stop(); }
  DiskThread(const DiskThread&) = delete;
  DiskThread& operator=(const DiskThread&) = delete;

  void start();

  // Does what was added, as far as no lock prevents it, and joins the thread.
  void stop();

 private:
  GatewayStore& store_;
  std::atomic<bool> isStopping_ = false;
  std::thread thread_;
};

}  // namespace orvane::terminal
