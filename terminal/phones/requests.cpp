#include "terminal/phones/requests.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxWaiting = 1024;                         // requests of one client
constexpr size_t kMaxQueuedBytes = size_t{8} * 1024 * 1024;  // of one token's requests
constexpr size_t kMaxOverruns = 1024;                        // see Peer
constexpr size_t kMaxDispatched = 32;         // keeps the agent busy, and keeps the wait of a fair turn short
constexpr size_t kMaxDispatchedBytes = 4096;  // at which no more are dispatched: long requests take long

}  // namespace

Requests::Requests(const IClock& clock, Peers& peers, Gatekeeper& keeper, Metrics& metrics, Answers& answers,
                   AgentCallback& agent)
    : clock_(clock), peers_(peers), keeper_(keeper), metrics_(metrics), answers_(answers), agent_(agent) {}

std::string Requests::crowdFault(const Peer& peer) const {
  if (peer.waiting >= kMaxWaiting) return fmt::format("{} requests wait for their reply already", peer.waiting);
  if (queue_.bytes(peer.visitor.token) < kMaxQueuedBytes) return {};
  return "requests of this token with 8 MiB wait already";
}

void Requests::countOverrun(Peer& peer) const {
  if (++peer.overruns >= kMaxOverruns) {
    peer.session->close(CloseCode::TooMany, "too many requests wait for their reply");
  }
}

void Requests::add(int64_t requestId, Peer& peer, const Frame& frame, const Topic& topic) {
  pending_.emplace(requestId, Pending{{peer.session.get(), std::string(frame.id)}, {}, &topic, clock_.bootTime()});
  ++peer.waiting;
  queue_.add(peer.visitor.token, {requestId, frame.terminalType, frame.topic, std::string(frame.body)});
  dispatch();
}

void Requests::join(int64_t requestId, Peer& peer, std::string_view id) {
  pending_.at(requestId).others.push_back({peer.session.get(), std::string(id)});
  ++peer.waiting;
}

// The agent runs one request after the other, in the order in which it gets them. It gets few at a time, and those of
// each token in turn.
void Requests::dispatch() {
  while (dispatched_.size() < kMaxDispatched && dispatchedBytes_ < kMaxDispatchedBytes) {
    const std::optional<Job> job = queue_.next();
    if (!job) return;
    if (isWanted(*job) && !callAgent(*job)) takeBack(*job);
  }
}

// An action runs even if its client has gone.
bool Requests::isWanted(const Job& job) const {
  const auto request = pending_.find(job.requestId);
  if (request == pending_.end()) return false;
  const auto& [first, others, topic, since] = request->second;
  return topic->changesSomething() || (first.session != nullptr && !first.session->isClosing());
}

bool Requests::callAgent(const Job& job) try {
  if (!agent_.call(job.requestId, job.terminalType, job.topic, job.body)) return false;
  dispatched_.emplace(job.requestId, Dispatched{clock_.bootTime(), job.size()});
  dispatchedBytes_ += job.size();
  metrics_.countRequest(*pending_.at(job.requestId).topic);
  return true;
} catch (const std::exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "a request of {} could not be dispatched: {}", job.topic, error.what());
  return false;
}

void Requests::takeBack(const Job& job) {
  keeper_.abandon(job.requestId);
  const auto node = pending_.extract(job.requestId);
  if (node.empty()) return;
  metrics_.countRefusal(RefusalReason::Agent);
  MobileMessage refusal;
  refusal.topic = job.topic;
  refusal.message = "the terminal takes no requests now: this one was not taken";
  answerAll(node.mapped(), refusal);
}

void Requests::onReply(const MobileMessage& reply) {
  if (const auto node = dispatched_.extract(reply.requestId); !node.empty()) dispatchedBytes_ -= node.mapped().bytes;
  if (const auto node = pending_.extract(reply.requestId); !node.empty()) {
    const Pending& request = node.mapped();
    if (request.topic->changesSomething()) keeper_.finish(reply.requestId, reply);
    metrics_.countAnswer(*request.topic, !reply.message.empty(), clock_.bootTime() - request.since);
    answerAll(request, reply);
  } else {
    TERMINAL_LOG(gatewayLogger(), Debug, "nobody waits for the reply {} to {}", reply.requestId, reply.topic);
  }
  dispatch();
}

void Requests::answerAll(const Pending& request, const MobileMessage& message) {
  answer(request.first, message);
  for (const Waiter& waiter : request.others) answer(waiter, message);
}

void Requests::answer(const Waiter& waiter, const MobileMessage& message) {
  if (waiter.session == nullptr) return;
  Peer& peer = peers_.of(*waiter.session);
  if (--peer.waiting < kMaxWaiting / 2) peer.overruns = 0;
  if (waiter.session->isClosing()) return;
  answers_.guard(*waiter.session, [&] { answers_.reply(*waiter.session, waiter.id, message); });
}

void Requests::onClosed(const Session& session) {
  for (auto entry = pending_.begin(); entry != pending_.end();) {
    Pending& pending = entry->second;
    std::erase_if(pending.others, [&](const Waiter& waiter) { return waiter.session == &session; });
    if (pending.first.session == &session) pending.first.session = nullptr;
    const bool isUnwanted = pending.first.session == nullptr && !pending.topic->changesSomething();
    entry = isUnwanted ? pending_.erase(entry) : std::next(entry);
  }
  queue_.dropWhere([this](const Job& job) { return !pending_.contains(job.requestId); });
}

BootTime Requests::oldestAge() const {
  const BootTime now = clock_.bootTime();
  BootTime oldest = now;
  for (const auto& [id, dispatched] : dispatched_) oldest = std::min(oldest, dispatched.since);
  return now - oldest;
}

}  // namespace orvane::terminal
