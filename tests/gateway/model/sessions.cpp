#include "tests/gateway/model/sessions.h"

#include <algorithm>

#include <fmt/format.h>

namespace orvane::test::model {
namespace {

constexpr int64_t kLoginTime = 10;
constexpr int64_t kPenalty = 1;
constexpr int64_t kWrongWindow = 60;
constexpr int kMaxWrong = 10;
constexpr std::ptrdiff_t kMaxOfToken = 85;
constexpr size_t kKeptPushes = 1024;
constexpr const char* kRevoked = "the token was revoked";

}  // namespace

void Sessions::connect(int client, const std::string& address) {
  world_.clients[client].address = address;
  world_.clients[client].due = world_.now + kLoginTime;
}

void Sessions::badFrame(int client, const std::string& id, const std::string& topic, const std::string& message) {
  if (!world_.isOpen(client) || world_.clients[client].isPunished) return;
  world_.refuse(client, "frame", id, topic, message);
  if (world_.clients[client].token < 0) world_.close(client, 4401, kNoLogin);
}

void Sessions::login(int client, const Login& login) {
  if (!world_.isOpen(client) || world_.clients[client].isPunished) return;
  for (const auto& [number, token] : world_.tokens) {
    if (token.text != login.token || !token.isValid || (token.expires && *token.expires <= world_.now)) continue;
    if (token.rights != 0) return admit(client, login, number);
    world_.refuse(client, "login", login.id, "login", "this token has no rights: make another");
    return world_.close(client, 4403, "no rights");
  }
  refuseToken(client, login);
}

void Sessions::refuseToken(int client, const Login& login) {
  Client& self = world_.clients[client];
  auto& [since, count] = wrong_[self.address];
  if (count == 0 || world_.now - since >= kWrongWindow) {
    since = world_.now;
    count = 0;
  }
  if (++count > kMaxWrong) {
    world_.refuse(client, "login", login.id, "login",
                  fmt::format("too many wrong logins from {}: wait a minute", self.address));
    return world_.close(client, 4429, "too many wrong logins");
  }
  self.isPunished = true;
  self.loginId = login.id;
  self.due = world_.now + kPenalty;
}

void Sessions::admit(int client, const Login& login, int token) {
  Client& self = world_.clients[client];
  self.token = token;
  self.device = login.device;
  for (const auto& [number, other] : world_.clients) {
    if (number != client && other.token == token && other.device == login.device && !login.device.empty()) {
      world_.close(number, 4409, "the same device has logged in anew");
    }
  }
  const auto ofToken = std::count_if(world_.clients.begin(), world_.clients.end(), [token](const auto& entry) {
    return entry.second.token == token && entry.second.closeCode == 0;
  });
  if (ofToken > kMaxOfToken) {
    world_.refuse(client, "login", login.id, "login",
                  fmt::format("{} connections with this token are open already", kMaxOfToken));
    return world_.close(client, 4429, "too many connections with this token");
  }
  self.due.reset();
  const Token& known = world_.tokens.at(token);
  const uint64_t seen = login.resume ? login.resume->second : 0;
  const bool resumed =
      login.resume && login.resume->first == world_.epoch && seen <= lastPush() && lastPush() - seen <= kKeptPushes;
  self.inbox.push_back(
      answer(login.id, {"login",
                        "",
                        fmt::format(R"({{"name":"{}","rights":["{}"],"epoch":"{}","seq":{},"resumed":{}}})", known.name,
                                    fmt::join(namesOf(known.rights), "\",\""), world_.epoch, lastPush(), resumed),
                        {}}));
  if (!resumed || (known.rights & kSee) == 0) return;
  for (uint64_t seq = seen; seq < lastPush(); ++seq) self.inbox.push_back(pushes_[seq]);
}

void Sessions::push(const Reply& push) {
  ++world_.counts["pushes_total"];
  pushes_.push_back(frame(fmt::format("\"seq\":{}", lastPush() + 1), push));
  for (auto& [number, client] : world_.clients) {
    if (world_.isOpen(number) && client.token >= 0 && hears(client, push.topic)) client.inbox.push_back(pushes_.back());
  }
}

bool Sessions::hears(const Client& client, const std::string& topic) const {
  if ((world_.tokens.at(client.token).rights & kSee) != 0) return true;
  return topic == "terminal.notice" && (client.noticing > 0 || world_.now < client.noticesUntil);
}

void Sessions::closeDue() {
  for (auto& [number, client] : world_.clients) {
    if (world_.isOpen(number) && client.due && *client.due <= world_.now) {
      if (client.isPunished) {
        world_.refuse(number, "login", client.loginId, "login",
                      "wrong token: take one that pocket-terminal token add printed");
      }
      world_.close(number, 4401, client.isPunished ? "wrong token" : "no login in time");
    }
    if (client.token < 0) continue;
    const Token& token = world_.tokens.at(client.token);
    if (token.expires && *token.expires <= world_.now) world_.close(number, 4403, kRevoked);
  }
}

void Sessions::revoke(int token) {
  world_.tokens.at(token).isValid = false;
  for (const auto& [number, client] : world_.clients) {
    if (client.token == token) world_.close(number, 4403, kRevoked);
  }
}

void Sessions::restart() {
  for (const auto& [number, client] : world_.clients) world_.close(number, 1001, "the terminal stops");
  pushes_.clear();
  wrong_.clear();
}

}  // namespace orvane::test::model
