#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <SQLiteCpp/Database.h>

#include "terminal/phones/actionstore.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/loginlimit.h"
#include "terminal/phones/visitor.h"
#include "terminal/tokens.h"

namespace orvane::terminal {

// Who may come in, and do what; what was done. All that the gateway knows of `gateway.db`. One thread.
class Gatekeeper {
 public:
  // Throws std::runtime_error where the database cannot be used.
  explicit Gatekeeper(const std::filesystem::path& dataDir);

  // The visitor with this token, or nothing. Throws SQLite::Exception where the tokens cannot be read.
  std::optional<Visitor> admit(std::string_view token);

  // Whether a token may see; not where the tokens cannot be read.
  bool maySee(std::string_view token);

  // Counts a wrong login. False where it is one too many of this address.
  bool allowWrong(const std::string& address) { return limit_.allowWrong(address); }

  // Whether the visitor's token still holds, as of the last tick.
  bool isWelcome(const Visitor& visitor) const { return tokens_.isLive(visitor.token); }

  // Notes a request that went beyond the visitor's rights, where it would have changed something.
  void noteRefusal(const Visitor& visitor, const std::string& address, const Frame& frame, std::string_view message);

  // What to do with a request that changes something, see ActionStore.
  ActionStore::Verdict begin(int64_t requestId, const Visitor& visitor, const std::string& address, const Frame& frame);
  void finish(int64_t requestId, const MobileMessage& reply) { actions_.finish(requestId, reply); }
  void abandon(int64_t requestId) { actions_.abandon(requestId); }

  // To be called every second: looks for tokens that were revoked, and writes what could not be written before.
  void tick();

 private:
  SQLite::Database db_;
  TokenWatch tokens_{db_};
  ActionStore actions_;
  LoginLimit limit_;
};

}  // namespace orvane::terminal
