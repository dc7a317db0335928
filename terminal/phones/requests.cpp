#include "terminal/phones/requests.h"

#include <iterator>
#include <optional>
#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxWaiting = 1024;                         // requests of one client
constexpr size_t kMaxQueuedBytes = size_t{8} * 1024 * 1024;  // of one token's requests
constexpr size_t kMaxOverruns = 1024;                        // see Peer
constexpr std::chrono::seconds kNoticeTime{10};              // after a reply
constexpr const char* kNoAgent = "the terminal takes no requests now: this one was not taken";
constexpr const char* kStopping = "the terminal stops: this request was not taken";
constexpr const char* kRevoked = "the token was revoked: this request was not taken";

std::shared_ptr<const Action> makeAction(const Peer& peer, const Frame& frame, WallTime now) {
  const Visitor& visitor = peer.visitor;
  return std::make_shared<const Action>(Action{visitor.token, visitor.name, peer.session->address(), now,
                                               frame.terminalType, frame.topic, std::string(frame.body), frame.key});
}

MobileMessage failure(const std::string& topic, const std::string& text) {
  MobileMessage message;
  message.topic = topic;
  message.message = text;
  return message;
}

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

void Requests::add(Peer& peer, const Frame& frame, const Topic& topic) {
  if (isClosed_) return answers_.refuse(*peer.session, frame.id, frame.topic, {RefusalReason::Agent, kStopping});
  const int64_t id = ++lastId_;
  Session* session = peer.session.get();
  const int64_t token = peer.visitor.token;
  const bool isAction = topic.changesSomething();
  ++peer.waiting;
  if (topic.hasNotices) ++peer.noticing;
  pending_.emplace(id, Pending{{{session, std::string(frame.id)}}, session, token, &topic, clock_.bootTime()});
  queue_.add({id, token, session, frame.terminalType, frame.topic, std::string(frame.body), !isAction});
  isAction ? begin(id, makeAction(peer, frame, clock_.wallTime())) : dispatch();
}

void Requests::begin(int64_t requestId, const std::shared_ptr<const Action>& action) {
  keeper_.begin(requestId, action,
                [this, requestId, action](const Verdict& verdict) { onVerdict(requestId, action, verdict); });
}

void Requests::onVerdict(int64_t requestId, const std::shared_ptr<const Action>& action, const Verdict& verdict) {
  const Pending& request = pending_.at(requestId);
  const bool isLive = keeper_.isLive(request.token);
  if (std::holds_alternative<Fresh>(verdict) && isLive && !isClosed_) {
    queue_.setReady(request.token, request.origin, requestId);
    return dispatch();
  }
  const std::optional<Job> job = queue_.remove(request.token, request.origin, requestId);
  if (std::holds_alternative<Fresh>(verdict)) {
    isLive ? takeBack(*job, kStopping) : takeBack(*job, kRevoked, kRevoked);
  } else if (const auto* running = std::get_if<Running>(&verdict)) {
    join(requestId, running->requestId, action);
  } else if (const auto* rejected = std::get_if<Rejected>(&verdict)) {
    metrics_.countRefusal(RefusalReason::Key);
    answer(requestId, failure(action->topic, rejected->message));
  } else {
    answer(requestId, std::get<MobileMessage>(verdict));
  }
  dispatch();
}

// If the action that was running has been answered meanwhile, its reply is stored by now.
void Requests::join(int64_t requestId, int64_t running, const std::shared_ptr<const Action>& action) {
  const auto other = pending_.find(running);
  if (other == pending_.end()) {
    const Pending& request = pending_.at(requestId);
    queue_.add({requestId, request.token, request.origin, action->terminalType, action->topic, action->body, false});
    return begin(requestId, action);
  }
  const auto node = pending_.extract(requestId);
  for (Waiter& waiter : node.mapped().waiters) other->second.waiters.push_back(std::move(waiter));
}

// The agent runs one request after the other, in the order in which it gets them.
void Requests::dispatch() {
  if (isClosed_) return;
  const auto sizeOf = [this](const Job& job) {
    const auto request = pending_.find(job.requestId);
    return DispatchLimit::Request{job.token, job.size(),
                                  request != pending_.end() && request->second.topic->changesSomething(),
                                  peers_.isAlone(job.token)};
  };
  while (const std::optional<Job> job = queue_.next([&](const Job& each) { return limit_.mayAdd(sizeOf(each)); })) {
    const auto request = pending_.find(job->requestId);
    if (request == pending_.end() || !isWanted(request->second)) continue;
    limit_.add(job->requestId, sizeOf(*job), clock_.bootTime());
    if (!callAgent(*job)) takeBack(*job, kNoAgent);
  }
}

// An action runs even if its client has gone.
bool Requests::isWanted(const Pending& request) {
  const Session* session = request.waiters.front().session;
  return request.topic->changesSomething() || (session != nullptr && !session->isClosing());
}

bool Requests::callAgent(const Job& job) try {
  if (!agent_.call(job.requestId, job.terminalType, job.topic, job.body)) return false;
  metrics_.countRequest(*pending_.at(job.requestId).topic);
  return true;
} catch (const std::exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "a request of {} could not be dispatched: {}", job.topic, error.what());
  return false;
}

void Requests::takeBack(const Job& job, const char* message, const std::string& refusal) {
  limit_.remove(job.requestId);
  const auto request = pending_.find(job.requestId);
  if (request == pending_.end()) return;
  if (request->second.topic->changesSomething()) keeper_.abandon(job.requestId, refusal);
  if (refusal.empty()) metrics_.countRefusal(RefusalReason::Agent);  // otherwise its connections are closed anyway
  answer(job.requestId, failure(job.topic, message));
}

// Jobs whose record is not stored yet follow when it is.
template <typename IsUnwanted>
void Requests::takeBackWhere(const IsUnwanted& isUnwanted, const char* message, const std::string& refusal) {
  std::vector<Job> jobs;
  queue_.dropWhere([&](const Job& job) {
    const bool isDropped = job.isReady && isUnwanted(job);
    if (isDropped) jobs.push_back(job);
    return isDropped;
  });
  for (const Job& job : jobs) takeBack(job, message, refusal);
}

void Requests::dropRevoked() {
  takeBackWhere([this](const Job& job) { return !keeper_.isLive(job.token); }, kRevoked, kRevoked);
}

void Requests::close(std::function<void()> done) {
  isClosed_ = true;
  takeBackWhere([](const Job& /*job*/) { return true; }, kStopping, {});
  onIdle_ = std::move(done);
  if (pending_.empty()) std::exchange(onIdle_, nullptr)();
}

void Requests::onReply(const MobileMessage& reply) {
  limit_.remove(reply.requestId);
  if (const auto found = pending_.find(reply.requestId); found != pending_.end()) {
    const Pending& request = found->second;
    if (request.topic->changesSomething()) keeper_.finish(reply.requestId, reply);
    metrics_.countAnswer(*request.topic, !reply.message.empty(), clock_.bootTime() - request.since);
    answer(reply.requestId, reply);
  } else {
    TERMINAL_LOG(gatewayLogger(), Debug, "nobody waits for the reply {} to {}", reply.requestId, reply.topic);
  }
  dispatch();
}

void Requests::answer(int64_t requestId, const MobileMessage& message) {
  const auto node = pending_.extract(requestId);
  for (const Waiter& waiter : node.mapped().waiters) {
    if (waiter.session == nullptr) continue;
    Peer& peer = peers_.of(*waiter.session);
    if (--peer.waiting < kMaxWaiting / 2) peer.overruns = 0;
    if (node.mapped().topic->hasNotices) {
      --peer.noticing;
      peer.noticesUntil = clock_.bootTime() + kNoticeTime;
    }
    if (waiter.session->isClosing()) continue;
    answers_.guard(*waiter.session, [&] { answers_.reply(*waiter.session, waiter.id, message); });
  }
  if (pending_.empty() && onIdle_) std::exchange(onIdle_, nullptr)();
}

void Requests::onClosed(const Session& session) {
  for (auto entry = pending_.begin(); entry != pending_.end();) {
    Pending& request = entry->second;
    for (Waiter& waiter : request.waiters) {
      if (waiter.session == &session) waiter.session = nullptr;
    }
    const bool isUnwanted = request.waiters.front().session == nullptr && !request.topic->changesSomething();
    entry = isUnwanted ? pending_.erase(entry) : std::next(entry);
  }
  queue_.dropWhere([this](const Job& job) { return !pending_.contains(job.requestId); });
  if (pending_.empty() && onIdle_) std::exchange(onIdle_, nullptr)();
}

}  // namespace orvane::terminal
