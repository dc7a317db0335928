#pragma once

#include <condition_variable>
#include <csignal>
#include <future>
#include <mutex>
#include <thread>

namespace orvane::terminal {

// SIGINT and SIGTERM. The program must end within three seconds of the first: if this object is not destroyed by then,
// because a disk does not answer, the process ends without waiting for it. Whatever was acknowledged is on the disk by
// then, as after a kill.
class StopSignals {
 public:
  // Blocks the signals in this thread and in all that it starts. Construct it before any other thread.
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Returns after the first signal, also one that came before the call.
  void wait() const { received_.wait(); }

 private:
  void watch();

  sigset_t signals_{};
  std::promise<void> signal_;
  std::shared_future<void> received_ = signal_.get_future().share();
  std::mutex mutex_;
  std::condition_variable ended_;
  bool isEnded_ = false;
  std::thread thread_;
};

}  // namespace orvane::terminal
