#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "terminal/session.h"

namespace orvane::terminal {

// A request that is not dispatched yet.
struct Job {
  int64_t requestId = 0;
  int64_t token = 0;                 // its id
  const Session* session = nullptr;  // tells sessions apart; it may have ended
  int32_t terminalType = 0;
  std::string topic;
  std::string body;
  bool isReady = true;  // false while its write-ahead record is not stored

  size_t size() const { return topic.size() + body.size(); }
};

// The requests that wait for the library: first in, first out for each session, round robin among tokens, and among the
// sessions of a token. A client that sends many delays only itself, and so does one whose record is not stored yet. One
// thread.
class FairQueue {
 public:
  void add(Job job);

  // The next job that is ready and may go now; nothing if none may. `mayGo` is asked for the first job of a session.
  template <typename MayGo>
  std::optional<Job> next(const MayGo& mayGo) {
    return takeNext(lanes_, lastToken_, [&](Lane& lane) -> std::optional<Job> {
      auto job = takeNext(lane.sessions, lane.last, [&](std::deque<Job>& jobs) -> std::optional<Job> {
        if (!jobs.front().isReady || !mayGo(std::as_const(jobs.front()))) return std::nullopt;
        std::optional<Job> first(std::move(jobs.front()));
        jobs.pop_front();
        return first;
      });
      if (job) lane.bytes -= sizeOf(*job);
      return job;
    });
  }

  // The job's record is stored. REQUIRES: it is here.
  void setReady(int64_t token, const Session* session, int64_t requestId);

  // Takes out a job; nothing if it is not here.
  std::optional<Job> remove(int64_t token, const Session* session, int64_t requestId);

  // Size of a token's waiting requests.
  size_t bytes(int64_t token) const;

  template <typename IsUnwanted>
  void dropWhere(const IsUnwanted& isUnwanted) {
    for (auto& [token, lane] : lanes_) {
      lane.bytes = 0;
      for (auto& [session, jobs] : lane.sessions) {
        std::erase_if(jobs, isUnwanted);
        for (const Job& job : jobs) lane.bytes += sizeOf(job);
      }
      std::erase_if(lane.sessions, [](const auto& entry) { return entry.second.empty(); });
    }
    std::erase_if(lanes_, [](const auto& entry) { return entry.second.empty(); });
  }

 private:
  struct Lane {
    std::map<const Session*, std::deque<Job>> sessions;  // none is empty
    const Session* last = nullptr;                       // whose turn it was
    size_t bytes = 0;

    bool empty() const { return sessions.empty(); }
  };
  static size_t sizeOf(const Job& job) { return sizeof job + job.size(); }

  // Asks each entry in turn, beginning behind the last that gave something, and deletes it once it is empty.
  template <typename Map, typename Take>
  static std::optional<Job> takeNext(Map& map, typename Map::key_type& last, const Take& take) {
    auto turn = map.upper_bound(last);
    for (size_t left = map.size(); left > 0; --left, ++turn) {
      if (turn == map.end()) turn = map.begin();
      std::optional<Job> job = take(turn->second);
      if (!job) continue;
      last = turn->first;
      if (turn->second.empty()) map.erase(turn);
      return job;
    }
    return std::nullopt;
  }

  std::map<int64_t, Lane> lanes_;  // by token; none is empty
  int64_t lastToken_ = 0;          // whose turn it was
};

}  // namespace orvane::terminal
