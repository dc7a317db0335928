#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <utility>

namespace orvane::bench {

// Makes the compiler believe that the value is used.
template <typename Value>
void keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

// Nanoseconds that this thread has run: what other processes take does not count.
inline double threadTime() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// Nanoseconds on the wall's clock.
inline double wallTime() {
  return static_cast<double>(std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1));
}

// A slice that repeats `call` for about two milliseconds and measures the nanoseconds of one.
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
