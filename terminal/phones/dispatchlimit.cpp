#include "terminal/phones/dispatchlimit.h"

#include <algorithm>

namespace orvane::terminal {
namespace {

constexpr size_t kMaxLists = 32;
constexpr size_t kMaxListsOfToken = 2;           // beside others: one runs, the next is there when it ends
constexpr size_t kMaxActions = 64;               // more would place more orders, but delay the next cancel
constexpr size_t kMaxBytes = size_t{64} * 1024;  // at which no more are dispatched: long requests take long

}  // namespace

bool DispatchLimit::mayAdd(const Request& request) const {
  if (bytes_ >= kMaxBytes) return false;
  if (request.isAction) return all_.actions < kMaxActions;
  if (all_.lists >= kMaxLists) return false;
  const auto count = ofToken_.find(request.token);
  return request.isAlone || count == ofToken_.end() || count->second.lists < kMaxListsOfToken;
}

void DispatchLimit::add(int64_t requestId, const Request& request, BootTime now) {
  requests_.emplace(requestId, Entry{request, now});
  ++ofToken_[request.token].of(request);
  ++all_.of(request);
  bytes_ += request.bytes;
}

void DispatchLimit::remove(int64_t requestId) {
  const auto node = requests_.extract(requestId);
  if (node.empty()) return;
  const Request& request = node.mapped().request;
  --ofToken_[request.token].of(request);
  if (count(request.token) == 0) ofToken_.erase(request.token);
  --all_.of(request);
  bytes_ -= request.bytes;
}

size_t DispatchLimit::count(int64_t token) const {
  const auto count = ofToken_.find(token);
  return count == ofToken_.end() ? 0 : count->second.actions + count->second.lists;
}

BootTime DispatchLimit::oldestAge(BootTime now) const {
  BootTime oldest = now;
  for (const auto& [id, entry] : requests_) oldest = std::min(oldest, entry.since);
  return now - oldest;
}

}  // namespace orvane::terminal
