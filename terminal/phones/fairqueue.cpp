#include "terminal/phones/fairqueue.h"

namespace orvane::terminal {

void FairQueue::add(int64_t token, Job job) {
  Lane& lane = lanes_[token];
  lane.bytes += sizeOf(job);
  lane.jobs.push_back(std::move(job));
}

std::optional<Job> FairQueue::next() {
  if (lanes_.empty()) return std::nullopt;
  auto turn = lanes_.upper_bound(last_);
  if (turn == lanes_.end()) turn = lanes_.begin();
  auto& [token, lane] = *turn;
  last_ = token;
  Job job = std::move(lane.jobs.front());
  lane.jobs.pop_front();
  lane.bytes -= sizeOf(job);
  if (lane.jobs.empty()) lanes_.erase(turn);
  return job;
}

size_t FairQueue::bytes(int64_t token) const {
  const auto lane = lanes_.find(token);
  return lane == lanes_.end() ? 0 : lane->second.bytes;
}

}  // namespace orvane::terminal
