#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace orvane::terminal {

// A request that is not dispatched yet.
struct Job {
  int64_t requestId = 0;
  int32_t terminalType = 0;
  std::string topic;
  std::string body;

  size_t size() const { return topic.size() + body.size(); }
};

// The requests that wait for the library: first in, first out for each token, round robin among tokens. A client that
// sends many delays only itself. One thread.
class FairQueue {
 public:
  void add(int64_t token, Job job);

  // Nothing if none waits.
  std::optional<Job> next();

  // Size of a token's waiting requests.
  size_t bytes(int64_t token) const;

  template <typename IsIdle>
  void dropWhere(const IsIdle& isIdle) {
    for (auto& [token, lane] : lanes_) {
      std::erase_if(lane.jobs, isIdle);
      lane.bytes = 0;
      for (const Job& job : lane.jobs) lane.bytes += sizeOf(job);
    }
    std::erase_if(lanes_, [](const auto& entry) { return entry.second.jobs.empty(); });
  }

 private:
  struct Lane {
    std::deque<Job> jobs;
    size_t bytes = 0;
  };
  static size_t sizeOf(const Job& job) { return sizeof job + job.size(); }

  std::map<int64_t, Lane> lanes_;  // by token; none is empty
  int64_t last_ = 0;               // the token whose turn it was
};

}  // namespace orvane::terminal
