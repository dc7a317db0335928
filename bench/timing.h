#pragma once

#include <cstddef>
#include <ctime>
#include <functional>
#include <utility>

namespace orvane::bench {

// Keeps the compiler from removing the work behind an unused value.
template <typename Value>
void keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

// Nanoseconds on one of the system's clocks.
inline double clockTime(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// Processor time of this thread: other processes do not count.
inline double threadTime() { return clockTime(CLOCK_THREAD_CPUTIME_ID); }

inline double wallTime() { return clockTime(CLOCK_MONOTONIC); }

// A slice that repeats `call` for about two milliseconds and returns the nanoseconds of one call.
template <typename Call>
std::function<double()> timed(Call call) {
  constexpr double kSlice = 2e6;
  return [call = std::move(call), times = size_t{0}]() mutable {
    const double begin = threadTime();
    size_t done = 0;
    do {
      call();
      ++done;
    } while (times == 0 ? threadTime() - begin < kSlice : done < times);
    times = done;
    return (threadTime() - begin) / static_cast<double>(done);
  };
}

}  // namespace orvane::bench
