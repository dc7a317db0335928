#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <SQLiteCpp/Database.h>

#include "terminal/eventloop.h"
#include "terminal/phones/actionstore.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/loginlimit.h"
#include "terminal/phones/tokenwatch.h"
#include "terminal/phones/visitor.h"

namespace orvane::terminal {

// Decides who may log in and act, and records what was done: tokens, keys, the audit. Nothing else in phones/ uses
// `gateway.db`. One thread.
class Gatekeeper {
 public:
  // Throws std::runtime_error if the database cannot be used.
  Gatekeeper(const std::filesystem::path& dataDir, const IClock& clock);

  // The visitor with this token, or nothing. Throws SQLite::Exception if the tokens cannot be read.
  std::optional<Visitor> admit(std::string_view token);

  // Whether a token has the right see; false if the tokens cannot be read.
  bool maySee(std::string_view token);

  // Counts a wrong login. False if it exceeds the limit of its network, see Session.
  bool allowWrong(const std::string& network) { return limit_.allowWrong(network, clock_.bootTime()); }

  // False if the visitor's token was revoked before the last tick.
  bool isWelcome(const Visitor& visitor) const { return tokens_.isLive(visitor.token); }

  // Writes the audit line of a request that the visitor's rights do not allow.
  void noteRefusal(const Visitor& visitor, const std::string& address, const Frame& frame, std::string_view message);

  // What to do with a request that changes something, see ActionStore.
  ActionStore::Verdict begin(int64_t requestId, const Visitor& visitor, const std::string& address, const Frame& frame);
  void finish(int64_t requestId, const MobileMessage& reply) { actions_.finish(requestId, reply); }
  void abandon(int64_t requestId) { actions_.abandon(requestId); }

  // To be called every second: looks for revoked tokens, and writes what could not be written before.
  void tick();

 private:
  const IClock& clock_;
  SQLite::Database db_;
  TokenWatch tokens_;
  ActionStore actions_;
  LoginLimit limit_;
};

}  // namespace orvane::terminal
