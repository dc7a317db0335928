#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <SQLiteCpp/Database.h>

#include "terminal/digest.h"
#include "terminal/rights.h"

namespace orvane::terminal {

// A secret that lets a phone in, 32 random bytes in base64url. The database knows its SHA-256 alone. Times are seconds
// since 1970.
struct Token {
  int64_t id = 0;  // never used again
  std::string name;
  Digest hash{};
  Rights rights;
  int64_t made = 0;
  std::optional<int64_t> lastUsed;
  std::optional<int64_t> expires;
};

// Makes a token and returns its text, which nobody can ask for again. Throws std::runtime_error where the name is taken
// or no name, or nothing can be written.
std::string addToken(SQLite::Database& db, const std::string& name, Rights rights);

// Throws std::runtime_error where no token has the name.
void revokeToken(SQLite::Database& db, const std::string& name);

// All that stay until they are revoked, by name.
std::vector<Token> listTokens(SQLite::Database& db);

// Whether any token was ever made.
bool hadTokens(SQLite::Database& db);

// A token with all rights for the process itself: gone with the object, or after a minute. Throws std::runtime_error.
class OwnToken {
 public:
  explicit OwnToken(const std::filesystem::path& dataDir);
  ~OwnToken();
  OwnToken(const OwnToken&) = delete;
  OwnToken& operator=(const OwnToken&) = delete;

  const std::string& text() const { return text_; }

 private:
  SQLite::Database db_;
  std::string name_;
  std::string text_;
};

// The tokens as the running terminal sees them, at once whatever another process adds or revokes. Throws
// SQLite::Exception where the database cannot be read.
class TokenWatch {
 public:
  explicit TokenWatch(SQLite::Database& db) : db_(db) {}

  // The token of this text, or null; takes as long for a nearly right guess as for any other. Valid until the next
  // call.
  const Token* find(std::string_view text);

  // Reads the tokens again where another process changed the database.
  void refresh();

  // Whether the token was, at the last refresh, neither revoked nor had run out.
  bool isLive(int64_t id) const;

  // Notes that the token was used, to the minute.
  void touch(const Token& token);

 private:
  SQLite::Database& db_;
  int64_t version_ = -1;
  std::vector<Token> tokens_;
};

}  // namespace orvane::terminal
