#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>

#include <fmt/format.h>

namespace orvane::terminal {

// How long the thread that writes a file has been at one write. A disk that hangs reports no error: this shows it.
class WriteTimer {
 public:
  // One write, for as long as the object lives. One thread.
  class Write {
   public:
    explicit Write(WriteTimer& timer) : timer_(timer) { timer_.since_ = Clock::now(); }
    ~Write() { timer_.since_ = kNone; }
    Write(const Write&) = delete;
    Write& operator=(const Write&) = delete;

   private:
    WriteTimer& timer_;
  };

  // Names the file and the remedy if the write has taken more than three seconds, UTF-8; empty otherwise. Any thread.
  std::string fault(const std::filesystem::path& file) const {
    constexpr std::chrono::seconds kLong{3};
    const Clock::time_point since = since_;
    if (since == kNone || Clock::now() - since <= kLong) return {};
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - since).count();
    return fmt::format("a write to {} has taken {} s so far: check its disk", file.string(), seconds);
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr Clock::time_point kNone = Clock::time_point::max();

  std::atomic<Clock::time_point> since_ = kNone;
};

}  // namespace orvane::terminal
