#include "tests/gateway/gatewaymodel.h"

#include <algorithm>

#include <fmt/format.h>

#include "tests/gateway/modeltexts.h"

namespace orvane::test {
namespace {

constexpr int64_t kLoginTime = 10;
constexpr int64_t kPenalty = 1;
constexpr int64_t kWrongWindow = 60;
constexpr int kMaxWrong = 10;
constexpr size_t kMaxWaiting = 1024;
constexpr size_t kMaxRefused = 1024;
constexpr size_t kKeptPushes = 1024;
constexpr int64_t kKeyTime = int64_t{7} * 24 * 3600;
constexpr size_t kMaxRefusedBody = 1024;

constexpr std::string_view kUnknown =
    "the outcome of this request is not known: look at order.list before sending it anew under another key";

std::string printOf(const GatewayModel::Request& request) {
  return fmt::format("{}\n{}\n{}", request.terminalType, request.topic, request.data);
}

}  // namespace

void GatewayModel::connect(int client, const std::string& address) {
  clients[client].address = address;
  clients[client].due = now + kLoginTime;
}

void GatewayModel::hangUp(int client) {
  drop(client);
  clients.erase(client);
}

void GatewayModel::close(int client, uint16_t code) {
  if (!isOpen(client)) return;
  clients[client].closeCode = code;
  clients[client].due.reset();
  ++counts_[fmt::format("closes_total{{code=\"{}\"}}", code)];
  drop(client);
}

// Its lists are dropped, its actions run.
void GatewayModel::drop(int client) {
  for (auto& [number, each] : running_) {
    std::erase_if(each.waiters, [&](const Waiter& waiter) { return waiter.client == client; });
    if (each.client == client && !isAction(each.request.topic)) each.isWanted = false;
  }
}

void GatewayModel::refuse(int client, const std::string& reason, const std::string& id, const std::string& topic,
                          const std::string& message) {
  ++counts_["refusals_total{reason=\"" + reason + "\"}"];
  clients[client].inbox.push_back(answer(id, {topic, message, {}, {}}));
}

void GatewayModel::badFrame(int client, const std::string& id, const std::string& topic, const std::string& message) {
  if (!isOpen(client) || clients[client].isPunished) return;
  refuse(client, "frame", id, topic, message);
  if (clients[client].token < 0) close(client, 4401);
}

void GatewayModel::login(int client, const Login& login) {
  if (!isOpen(client) || clients[client].isPunished) return;
  for (const auto& [number, token] : tokens) {
    if (token.text != login.token || !token.isValid || (token.expires && *token.expires <= now)) continue;
    if (token.rights != 0) return admit(client, login, number);
    refuse(client, "login", login.id, "login", "this token has no rights: make another");
    return close(client, 4403);
  }
  wrongToken(client, login);
}

void GatewayModel::wrongToken(int client, const Login& login) {
  Client& self = clients[client];
  auto& [since, count] = wrong_[self.address];
  if (count == 0 || now - since >= kWrongWindow) {
    since = now;
    count = 0;
  }
  if (++count > kMaxWrong) {
    refuse(client, "login", login.id, "login",
           fmt::format("too many wrong logins from {}: wait a minute", self.address));
    return close(client, 4429);
  }
  self.isPunished = true;
  self.loginId = login.id;
  self.due = now + kPenalty;
}

void GatewayModel::admit(int client, const Login& login, int token) {
  Client& self = clients[client];
  self.token = token;
  self.device = login.device;
  self.due.reset();
  for (const auto& [number, other] : clients) {
    if (number != client && other.token == token && other.device == login.device && !login.device.empty()) {
      close(number, 4409);
    }
  }
  const uint64_t seen = login.resume ? login.resume->second : 0;
  const bool resumed =
      login.resume && login.resume->first == epoch && seen <= lastPush() && lastPush() - seen <= kKeptPushes;
  self.inbox.push_back(answer(
      login.id,
      {"login",
       "",
       fmt::format(R"({{"name":"{}","rights":["{}"],"epoch":"{}","seq":{},"resumed":{}}})", tokens.at(token).name,
                   fmt::join(namesOf(tokens.at(token).rights), "\",\""), epoch, lastPush(), resumed),
       {}}));
  if (!resumed || (tokens.at(token).rights & kSee) == 0) return;
  for (uint64_t seq = seen; seq < lastPush(); ++seq) self.inbox.push_back(pushes_[seq]);
}

void GatewayModel::push(const std::string& topic, const std::string& data) {
  ++counts_["pushes_total"];
  pushes_.push_back(frame(fmt::format("\"seq\":{}", lastPush() + 1), {topic, "", data, {}}));
  for (auto& [number, client] : clients) {
    if (isOpen(number) && client.token >= 0 && (tokens.at(client.token).rights & kSee) != 0) {
      client.inbox.push_back(pushes_.back());
    }
  }
}

void GatewayModel::request(int client, const Request& request) {
  Client& self = clients[client];
  if (!isOpen(client) || self.isPunished) return;
  const auto no = [&](const char* reason, const std::string& message) {
    refuse(client, reason, request.id, request.topic, message);
  };
  if (self.token < 0) {
    no("login", R"(log in first: {"topic": "login", "token": ...})");
    return close(client, 4401);
  }
  const Right right = rightFor(request.topic);
  const int rights = tokens.at(self.token).rights;
  if ((rights & right) == 0) {
    const std::string fault = fmt::format("this token may not {}: its rights are {}", namesOf(right).front(),
                                          fmt::join(namesOf(rights), ", "));
    if (isAction(request.topic)) {
      Request noted = request;
      if (noted.data.size() > kMaxRefusedBody) noted.data.clear();
      audit_.insert(
          fmt::format(R"({},"outcome":"refused","message":{},"data":null}})", auditHead(client, noted), quoted(fault)));
    }
    return no("rights", fault);
  }
  if (!request.key.empty() && !isAction(request.topic)) {
    return no("key", "only a request that changes something takes a key");
  }
  if (!request.bodyFault.empty()) return no("body", request.bodyFault);
  if (self.waiting >= kMaxWaiting) return refuseCrowd(client, request);
  if (!request.key.empty() && !passesKey(client, request)) return;
  if (!hasAgent) return no("agent", "the terminal takes no requests now: this one was not taken");
  const int number = ++lastNumber_;
  if (!request.key.empty()) keys_[{self.token, request.key}] = {printOf(request), now, number, {}};
  running_[number] = {client, self.token, request, {{client, request.id}},
                      true,   false,      now,     auditHead(client, request)};
  ++self.waiting;
}

void GatewayModel::refuseCrowd(int client, const Request& request) {
  refuse(client, "crowd", request.id, request.topic,
         fmt::format("{} requests wait for their reply already", kMaxWaiting));
  if (++clients[client].refused == kMaxRefused) close(client, 4429);
}

// Whether the request is to run; otherwise it is answered, or waits for the reply of the one that runs.
bool GatewayModel::passesKey(int client, const Request& request) {
  const auto found = keys_.find({clients[client].token, request.key});
  if (found == keys_.end()) return true;
  const Key& key = found->second;
  const auto no = [&](std::string_view message) {
    refuse(client, "key", request.id, request.topic, std::string(message));
    return false;
  };
  if (key.print != printOf(request)) return no(fmt::format("the key {} belongs to another request", request.key));
  if (key.reply) {
    clients[client].inbox.push_back(answer(request.id, *key.reply));
  } else if (key.number != 0) {
    running_.at(key.number).waiters.push_back({client, request.id});
    ++clients[client].waiting;
  } else {
    return no(kUnknown);
  }
  return false;
}

std::optional<int> GatewayModel::called(int32_t terminalType, const std::string& topic, const std::string& data) {
  std::set<std::pair<int, int>> earlier;  // clients, and their tokens, with a request that must come first
  for (auto& [number, each] : running_) {
    if (each.isCalled) continue;
    const Request& request = each.request;
    if (request.terminalType == terminalType && request.topic == topic && request.data == data) {
      if (earlier.contains({each.client, each.token})) return std::nullopt;
      each.isCalled = true;
      ++counts_["requests_total" + label(topic)];
      return number;
    }
    if (each.isWanted) earlier.insert({each.client, each.token});
  }
  return std::nullopt;
}

void GatewayModel::reply(int number, const Reply& reply) {
  const Running done = running_.at(number);
  running_.erase(number);
  if (!done.isWanted) return;
  const std::string topic = label(done.request.topic);
  counts_["failures_total" + topic] += reply.message.empty() ? 0 : 1;
  counts_["request_seconds_count" + topic] += 1;
  counts_["request_seconds_sum" + topic] += static_cast<double>(now - done.since);
  for (const Waiter& waiter : done.waiters) {
    Client& client = clients.at(waiter.client);
    if (--client.waiting < kMaxWaiting / 2) client.refused = 0;
    client.inbox.push_back(answer(waiter.id, reply));
  }
  if (!isAction(done.request.topic)) return;
  audit_.insert(fmt::format(R"({},"outcome":"answered","message":{},"data":{}}})", done.auditHead,
                            quoted(reply.message), reply.text.empty() ? orNull(reply.data) : quoted(reply.text)));
  const auto key = keys_.find({done.token, done.request.key});
  if (key == keys_.end()) return;
  key->second.number = 0;
  key->second.reply = reply;
}

std::string GatewayModel::auditHead(int client, const Request& request) const {
  const Client& self = clients.at(client);
  return fmt::format(R"({{"token":"{}","address":"{}","topic":"{}","body":{},"key":{})", tokens.at(self.token).name,
                     self.address, request.topic, orNull(request.data),
                     request.key.empty() ? "null" : quoted(request.key));
}

void GatewayModel::advance(int64_t seconds) {
  now += seconds;
  for (auto& [number, client] : clients) {
    if (isOpen(number) && client.due && *client.due <= now) {
      if (client.isPunished) {
        refuse(number, "login", client.loginId, "login",
               "wrong token: take one that pocket-terminal token add printed");
      }
      close(number, 4401);
    }
    if (isOpen(number) && client.token >= 0 && tokens.at(client.token).expires &&
        *tokens.at(client.token).expires <= now) {
      close(number, 4403);
    }
  }
  std::erase_if(keys_,
                [&](const auto& entry) { return entry.second.number == 0 && now - entry.second.since > kKeyTime; });
}

void GatewayModel::revoke(int token) {
  tokens.at(token).isValid = false;
  for (const auto& [number, client] : clients) {
    if (client.token == token) close(number, 4403);
  }
}

// What ran has no known outcome. What is counted begins anew.
void GatewayModel::restart() {
  for (const auto& [number, client] : clients) close(number, 1001);
  for (const auto& [number, each] : running_) {
    if (!isAction(each.request.topic)) continue;
    audit_.insert(each.auditHead +
                  R"(,"outcome":"unknown","message":"the terminal ended before the reply was known","data":null})");
    if (const auto key = keys_.find({each.token, each.request.key}); key != keys_.end()) key->second.number = 0;
  }
  running_.clear();
  pushes_.clear();
  wrong_.clear();
  counts_.clear();
  epoch.clear();
}

size_t GatewayModel::countLoggedIn() const {
  return static_cast<size_t>(std::count_if(clients.begin(), clients.end(), [](const auto& entry) {
    return entry.second.token >= 0 && entry.second.closeCode == 0;
  }));
}

size_t GatewayModel::countWaiting() const {
  return static_cast<size_t>(
      std::count_if(running_.begin(), running_.end(), [](const auto& entry) { return entry.second.isWanted; }));
}

bool GatewayModel::hasCall() const {
  return std::any_of(running_.begin(), running_.end(),
                     [](const auto& entry) { return entry.second.isWanted && !entry.second.isCalled; });
}

std::map<std::string, double> GatewayModel::metrics() const {
  std::map<std::string, double> all = counts_;
  for (const char* reason :
       {"login", "frame", "body", "rights", "key", "crowd", "agent", "fault", "connection", "origin"}) {
    all.try_emplace(fmt::format("refusals_total{{reason=\"{}\"}}", reason));
  }
  for (const int code : {1001, 1003, 1011, 4401, 4403, 4408, 4409, 4429}) {
    all.try_emplace(fmt::format("closes_total{{code=\"{}\"}}", code));
  }
  all.try_emplace("pushes_total");
  all["phones"] = static_cast<double>(countLoggedIn());
  all["requests_waiting"] = static_cast<double>(countWaiting());
  all["connections"] = static_cast<double>(clients.size()) + 1;  // that of the page itself
  return all;
}

}  // namespace orvane::test
