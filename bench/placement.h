#pragma once

#include <sched.h>

namespace orvane::bench {

// While it lives, reserves the last processor for one consumer thread, so that every hand-off crosses processors. Does
// nothing on a machine with one processor.
class Placement {
 public:
  Placement() {
    sched_getaffinity(0, sizeof(all_), &all_);
    for (size_t cpu = 0; cpu < CPU_SETSIZE; ++cpu) last_ = CPU_ISSET(cpu, &all_) ? cpu : last_;
    others_ = all_;
    if (CPU_COUNT(&all_) > 1) CPU_CLR(last_, &others_);
    sched_setaffinity(0, sizeof(others_), &others_);
  }
  ~Placement() { sched_setaffinity(0, sizeof(all_), &all_); }
  Placement(const Placement&) = delete;
  Placement& operator=(const Placement&) = delete;

  // Call on the consumer thread.
  void placeConsumer() const {
    cpu_set_t last;
    CPU_ZERO(&last);
    CPU_SET(last_, &last);
    sched_setaffinity(0, sizeof(last), &last);
  }

 private:
  cpu_set_t all_{};
  cpu_set_t others_{};
  size_t last_ = 0;
};

}  // namespace orvane::bench
