#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include <SQLiteCpp/Database.h>

#include "terminal/eventloop.h"
#include "terminal/tokens.h"

namespace orvane::terminal {

// The tokens of a running terminal. What another process adds or revokes is seen by the next call that reads. Throws
// SQLite::Exception if the database cannot be read. Not thread-safe.
class TokenWatch {
 public:
  TokenWatch(SQLite::Database& db, const IClock& clock) : db_(db), clock_(clock) {}

  // The token of this text, or null. A nearly right guess takes as long as any other. Valid until the next call.
  const Token* find(std::string_view text);

  // Reads the tokens again if another process has changed the database.
  void refresh();

  // False if, at the last refresh, the token was revoked, or if it has expired.
  bool isLive(int64_t id) const;

  // Stores that the token was used, at most once a minute.
  void touch(const Token& token);

 private:
  int64_t now() const { return std::chrono::system_clock::to_time_t(clock_.wallTime()); }
  bool isExpired(const Token& token) const { return token.expires && *token.expires <= now(); }

  SQLite::Database& db_;
  const IClock& clock_;
  int64_t version_ = -1;
  std::vector<Token> tokens_;
};

}  // namespace orvane::terminal
