#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "terminal/eventloop.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatewaystore.h"
#include "terminal/phones/loginlimit.h"
#include "terminal/phones/refusallimit.h"
#include "terminal/phones/visitor.h"

namespace orvane::terminal {

// Decides who may log in and act, and has the store record what was done. The loop's thread, which never waits for the
// store: answers come later, on the same thread.
class Gatekeeper {
 public:
  struct Unknown {};                                              // no such token
  using Admission = std::variant<Visitor, Unknown, std::string>;  // the text: why the tokens cannot be read
  using OnAdmission = std::function<void(Admission)>;
  using OnChange = std::function<void()>;

  // Both must outlive the object. `onChange` is called when tokens have been made or revoked.
  Gatekeeper(IEventLoop& loop, GatewayStore& store, OnChange onChange);

  // Finds the owner of this token. Answers at once if the token is known; otherwise it reads the tokens again first,
  // because this one may be new.
  void admit(std::string token, OnAdmission answer);

  // Counts a wrong login. False if it exceeds the limit of its network, see Session.
  bool allowWrong(const std::string& network) { return limit_.allowWrong(network, loop_.bootTime()); }

  // False if the token was revoked or has expired.
  bool isLive(int64_t token) const { return tokens_->isLive(token, wallTime()); }

  // Revocations that a command waits for.
  const std::vector<Revocation>& revocations() const { return revocations_; }

  // No further request of the token begins.
  void confirm(const Revocation& revocation);

  // Writes the audit line of a request that the visitor's rights do not allow.
  void noteRefusal(const Visitor& visitor, const std::string& address, const Frame& frame, std::string_view message);

  // What to do with a request that changes something, see GatewayStore.
  void begin(int64_t requestId, std::shared_ptr<const Action> action, std::function<void(Verdict)> answer);
  void finish(int64_t requestId, const MobileMessage& reply) { store_.finish(requestId, reply); }
  void abandon(int64_t requestId, const std::string& refusal) { store_.abandon(requestId, refusal); }

  // What is wrong with the files.
  StoreHealth health() const;

  // To be called every second.
  void tick();

  // The terminal is stopping.
  void hurry() { store_.hurry(); }

 private:
  int64_t wallTime() const { return std::chrono::system_clock::to_time_t(loop_.wallTime()); }
  std::optional<Visitor> find(const std::string& token);
  void touch(const Token& token);
  void setTokens(std::shared_ptr<const TokenSnapshot> tokens);

  IEventLoop& loop_;
  GatewayStore& store_;
  const OnChange onChange_;
  std::shared_ptr<const TokenSnapshot> tokens_;
  std::vector<Revocation> revocations_;
  std::unordered_map<int64_t, int64_t> touched_;  // when a token's use was last stored, by its id
  StoreHealth health_;
  LoginLimit limit_;
  RefusalLimit refusals_;
};

}  // namespace orvane::terminal
