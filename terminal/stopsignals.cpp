#include "terminal/stopsignals.h"

#include <chrono>
#include <cstdlib>

#include <unistd.h>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr std::chrono::milliseconds kEndTime{2600};
constexpr std::chrono::milliseconds kLogTime{100};  // for the last line

}  // namespace

StopSignals::StopSignals() {
  sigemptyset(&signals_);
  sigaddset(&signals_, SIGINT);
  sigaddset(&signals_, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  thread_ = std::thread([this] { watch(); });
}

StopSignals::~StopSignals() {
  {
    const std::lock_guard lock(mutex_);
    isEnded_ = true;
  }
  ended_.notify_one();
  pthread_kill(thread_.native_handle(), SIGINT);  // it may still wait for one
  thread_.join();
}

void StopSignals::watch() {
  int signal = 0;
  sigwait(&signals_, &signal);
  signal_.set_value();
  std::unique_lock lock(mutex_);
  if (ended_.wait_for(lock, kEndTime, [this] { return isEnded_; })) return;
  TERMINAL_LOG(gatewayLogger(), Error,
               "the end takes too long, probably because a disk does not answer: the process ends without it, and the "
               "next start takes outcomes that are not stored for unknown");
  std::this_thread::sleep_for(kLogTime);
  _exit(EXIT_FAILURE);
}

}  // namespace orvane::terminal
