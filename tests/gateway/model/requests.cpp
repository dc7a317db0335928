#include "tests/gateway/model/requests.h"

#include <algorithm>
#include <set>

#include <fmt/format.h>

namespace orvane::test::model {
namespace {

constexpr size_t kMaxWaiting = 1024;
constexpr size_t kMaxWaitingBytes = size_t{8} * 1024 * 1024;
constexpr size_t kMaxRefused = 1024;
constexpr int64_t kNoticeTime = 10;
constexpr int64_t kKeyTime = int64_t{7} * 24 * 3600;
constexpr std::ptrdiff_t kMaxLists = 32;  // that the library has
constexpr std::ptrdiff_t kMaxActions = 64;

constexpr std::string_view kUnknown =
    "the outcome of this request is not known: look at order.list before sending it anew under another key";

std::string printOf(const Request& request) {
  return fmt::format("{}\n{}\n{}", request.terminalType, request.topic, request.data);
}

bool hasNotices(const std::string& topic) { return topic == "monitor.sync.order.new"; }

}  // namespace

void Requests::request(int client, const Request& request) {
  Client& self = world_.clients[client];
  if (!world_.isOpen(client) || self.isPunished) return;
  if (self.token < 0) {
    refuse(client, request, "login", R"(log in first: {"topic": "login", "token": ...})");
    return world_.close(client, 4401, kNoLogin);
  }
  if (!passesGates(client, request)) return;
  ++self.waiting;
  if (hasNotices(request.topic)) ++self.noticing;
  if (!request.key.empty() && !passesKey(client, request)) return;
  if (!world_.hasAgent) {
    end(self, request.topic);
    refuse(client, request, "agent", "the terminal takes no requests now: this one was not taken");
    return;
  }
  const int number = ++lastNumber_;
  if (!request.key.empty()) keys_[{self.token, request.key}] = {printOf(request), world_.now, number, {}};
  running_[number] = {
      client, self.token, request, {{client, request.id}}, false, world_.now, audit_.head(client, request)};
}

bool Requests::refuse(int client, const Request& request, const char* reason, std::string_view message) {
  world_.refuse(client, reason, request.id, request.topic, std::string(message));
  return false;
}

bool Requests::passesGates(int client, const Request& request) {
  Client& self = world_.clients[client];
  const Right right = rightFor(request.topic);
  const int rights = world_.tokens.at(self.token).rights;
  if ((rights & right) == 0) {
    const std::string fault = fmt::format("this token may not {}: its rights are {}", namesOf(right).front(),
                                          fmt::join(namesOf(rights), ", "));
    if (isAction(request.topic)) audit_.refused(client, request, fault);
    return refuse(client, request, "rights", fault);
  }
  if (!request.key.empty() && !isAction(request.topic)) {
    return refuse(client, request, "key", "only a request that changes something takes a key");
  }
  if (!request.bodyFault.empty()) return refuse(client, request, "body", request.bodyFault);
  const bool isCrowd = self.waiting >= kMaxWaiting;
  if (!isCrowd && waitingBytes(self.token) < kMaxWaitingBytes) return true;
  refuse(client, request, "crowd",
         isCrowd ? fmt::format("{} requests wait for their reply already", kMaxWaiting)
                 : "requests of this token with 8 MiB wait already");
  if (++self.refused == kMaxRefused) world_.close(client, 4429, "too many requests wait for their reply");
  return false;
}

// Whether the request is to run; otherwise it is answered, or waits for the reply of the one that runs.
bool Requests::passesKey(int client, const Request& request) {
  Client& self = world_.clients[client];
  const auto found = keys_.find({self.token, request.key});
  if (found == keys_.end()) return true;
  const Key& key = found->second;
  const bool isSame = key.print == printOf(request);
  if (isSame && key.number != 0) {
    running_.at(key.number).waiters.push_back({client, request.id});
    return false;
  }
  end(self, request.topic);
  if (!isSame) return refuse(client, request, "key", fmt::format("the key {} belongs to another request", request.key));
  if (!key.reply) return refuse(client, request, "key", kUnknown);
  self.inbox.push_back(answer(request.id, *key.reply));
  return false;
}

void Requests::end(Client& client, const std::string& topic) {
  if (--client.waiting < kMaxWaiting / 2) client.refused = 0;
  if (!hasNotices(topic)) return;
  --client.noticing;
  client.noticesUntil = world_.now + kNoticeTime;
}

// A list is dropped with its client, an action runs.
bool Requests::isWanted(const Running& running) const {
  return isAction(running.request.topic) || world_.isOpen(running.client);
}

size_t Requests::waitingBytes(int token) const {
  size_t bytes = 0;
  for (const auto& [number, each] : running_) {
    if (each.token == token && !each.isCalled && isWanted(each)) {
      bytes += each.request.topic.size() + each.request.data.size();
    }
  }
  return bytes;
}

bool Requests::hasPlace(bool isForAction) const {
  return std::count_if(running_.begin(), running_.end(), [&](const auto& entry) {
           return entry.second.isCalled && isAction(entry.second.request.topic) == isForAction;
         }) < (isForAction ? kMaxActions : kMaxLists);
}

std::optional<int> Requests::called(int32_t terminalType, const std::string& topic, const std::string& data) {
  std::set<std::pair<int, int>> earlier;  // clients, and their tokens, with a request that must come first
  for (auto& [number, each] : running_) {
    if (each.isCalled) continue;
    const Request& request = each.request;
    if (request.terminalType == terminalType && request.topic == topic && request.data == data) {
      if (earlier.contains({each.client, each.token}) || !hasPlace(isAction(topic))) return std::nullopt;
      each.isCalled = true;
      ++world_.counts["requests_total" + label(topic)];
      return number;
    }
    if (isWanted(each)) earlier.insert({each.client, each.token});
  }
  return std::nullopt;
}

void Requests::reply(int number, const Reply& reply) {
  const Running done = running_.at(number);
  running_.erase(number);
  if (!isWanted(done)) return;
  const std::string topic = label(done.request.topic);
  world_.counts["failures_total" + topic] += reply.message.empty() ? 0 : 1;
  world_.counts["request_seconds_count" + topic] += 1;
  world_.counts["request_seconds_sum" + topic] += static_cast<double>(world_.now - done.since);
  for (const Waiter& waiter : done.waiters) {
    if (!world_.isOpen(waiter.client)) continue;
    Client& client = world_.clients[waiter.client];
    end(client, done.request.topic);
    client.inbox.push_back(answer(waiter.id, reply));
  }
  if (!isAction(done.request.topic)) return;
  audit_.answered(done.auditHead, reply);
  const auto key = keys_.find({done.token, done.request.key});
  if (key == keys_.end()) return;
  key->second.number = 0;
  key->second.reply = reply;
}

void Requests::forgetKeys() {
  std::erase_if(keys_, [this](const auto& entry) {
    return entry.second.number == 0 && world_.now - entry.second.since > kKeyTime;
  });
}

// What ran has no known outcome.
void Requests::restart() {
  for (const auto& [number, each] : running_) {
    if (!isAction(each.request.topic)) continue;
    audit_.unknown(each.auditHead);
    if (const auto key = keys_.find({each.token, each.request.key}); key != keys_.end()) key->second.number = 0;
  }
  running_.clear();
}

size_t Requests::countWaiting() const {
  return static_cast<size_t>(
      std::count_if(running_.begin(), running_.end(), [this](const auto& entry) { return isWanted(entry.second); }));
}

bool Requests::hasCall() const {
  return std::any_of(running_.begin(), running_.end(),
                     [this](const auto& entry) { return !entry.second.isCalled && isWanted(entry.second); });
}

}  // namespace orvane::test::model
