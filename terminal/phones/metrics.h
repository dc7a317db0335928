#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "terminal/phones/topics.h"
#include "terminal/session.h"

namespace orvane::terminal {

// Why a client's frame or request was refused.
enum class RefusalReason : uint8_t { Login, Frame, Body, Rights, Key, Crowd, Agent, Fault, kCount };

// Current values, beside what is counted.
struct Gauges {
  TransportFigures transport;
  size_t loggedIn = 0;
  size_t waiting = 0;  // requests without a reply
};

// The counters of /metrics. Their size does not depend on what clients send. Not thread-safe.
class Metrics {
 public:
  Metrics();

  void countRequest(const Topic& topic) { ++topics_[topicIndex(topic)].requests; }
  void countAnswer(const Topic& topic, bool failed, std::chrono::duration<double> latency);
  void countRefusal(RefusalReason reason) { ++refusals_[static_cast<size_t>(reason)]; }
  void countPush() { ++pushes_; }
  void countClose(CloseCode code) { ++closes_[static_cast<int>(code)]; }

  // All of them as Prometheus text.
  std::string write(const Gauges& now) const;

 private:
  static constexpr std::array<double, 12> kBounds{0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5, 10};
  struct Counts {
    uint64_t requests = 0;
    uint64_t failures = 0;
    double seconds = 0;
    std::array<uint64_t, kBounds.size() + 1> buckets{};  // the last is above all bounds
  };

  void writeTopics(std::string& text) const;
  void writeLatency(std::string& text) const;

  std::vector<Counts> topics_;  // by topicIndex
  std::array<uint64_t, static_cast<size_t>(RefusalReason::kCount)> refusals_{};
  std::map<int, uint64_t> closes_;  // by close code
  uint64_t pushes_ = 0;
};

}  // namespace orvane::terminal
