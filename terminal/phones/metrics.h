#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::terminal {

// Why something that a phone or a browser asked for was not done.
enum class Refusal : uint8_t { Connection, Origin, Login, Frame, Body, Rights, Key, Crowd, Agent, Fault, kCount };

// What stands now, rather than what was counted.
struct Gauges {
  size_t connections = 0;
  size_t loggedIn = 0;
  size_t waiting = 0;  // requests without a reply
};

// What the gateway counts. Its size does not depend on what phones send. One thread at a time.
class Metrics {
 public:
  Metrics();

  // A topic's number in the calls below; all that are not known share one.
  static size_t topicNumber(std::string_view topic);

  void countRequest(size_t topic) { ++topics_[topic].requests; }
  void countAnswer(size_t topic, bool failed, std::chrono::duration<double> latency);
  void countRefusal(Refusal reason) { ++refusals_[static_cast<size_t>(reason)]; }
  void countPush() { ++pushes_; }
  void countClose(int code) { ++closes_[code]; }

  // All of it as Prometheus text.
  std::string write(const Gauges& now) const;

 private:
  static constexpr std::array<double, 12> kBounds{0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5, 10};
  struct Topic {
    uint64_t requests = 0;
    uint64_t failures = 0;
    double seconds = 0;
    std::array<uint64_t, kBounds.size() + 1> buckets{};  // the last is behind all bounds
  };

  void writeTopics(std::string& text) const;
  void writeLatency(std::string& text) const;

  std::vector<Topic> topics_;
  std::array<uint64_t, static_cast<size_t>(Refusal::kCount)> refusals_{};
  std::map<int, uint64_t> closes_;  // by close code, all of which are the gateway's own
  uint64_t pushes_ = 0;
};

}  // namespace orvane::terminal
