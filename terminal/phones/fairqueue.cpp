#include "terminal/phones/fairqueue.h"

#include <algorithm>

namespace orvane::terminal {

void FairQueue::add(Job job) {
  Lane& lane = lanes_[job.token];
  lane.bytes += sizeOf(job);
  lane.sessions[job.session].push_back(std::move(job));
}

void FairQueue::setReady(int64_t token, const Session* session, int64_t requestId) {
  auto& jobs = lanes_.at(token).sessions.at(session);
  const auto job =
      std::find_if(jobs.begin(), jobs.end(), [requestId](const Job& each) { return each.requestId == requestId; });
  job->isReady = true;
}

std::optional<Job> FairQueue::remove(int64_t token, const Session* session, int64_t requestId) {
  const auto lane = lanes_.find(token);
  if (lane == lanes_.end()) return std::nullopt;
  const auto jobs = lane->second.sessions.find(session);
  if (jobs == lane->second.sessions.end()) return std::nullopt;
  const auto job = std::find_if(jobs->second.begin(), jobs->second.end(),
                                [requestId](const Job& each) { return each.requestId == requestId; });
  if (job == jobs->second.end()) return std::nullopt;
  Job removed = std::move(*job);
  jobs->second.erase(job);
  lane->second.bytes -= sizeOf(removed);
  if (jobs->second.empty()) lane->second.sessions.erase(jobs);
  if (lane->second.empty()) lanes_.erase(lane);
  return removed;
}

size_t FairQueue::bytes(int64_t token) const {
  const auto lane = lanes_.find(token);
  return lane == lanes_.end() ? 0 : lane->second.bytes;
}

}  // namespace orvane::terminal
