#pragma once

#include <csignal>

namespace orvane::terminal {

// Blocks SIGINT and SIGTERM in this thread and in all that it starts, and waits for them.
class StopSignals {
 public:
  StopSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  }
  void wait() const {
    int signal = 0;
    sigwait(&signals_, &signal);
  }

 private:
  sigset_t signals_{};
};

}  // namespace orvane::terminal
