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

// A client's credential, 32 random bytes in base64url. The database holds only its SHA-256. Times are seconds since
// 1970, UTC.
struct Token {
  int64_t id = 0;  // never reused
  std::string name;
  Digest hash{};
  Rights rights;
  int64_t made = 0;
  std::optional<int64_t> lastUsed;
  std::optional<int64_t> expires;
};

// Makes a token and returns its text, which cannot be read again later. Throws std::runtime_error if the name is taken
// or invalid, or if nothing can be written.
std::string addToken(SQLite::Database& db, const std::string& name, Rights rights);

// Returns the number of the revocation, whose row the running terminal deletes once no further request of the token
// begins. Throws std::runtime_error if no token has the name.
int64_t revokeToken(SQLite::Database& db, const std::string& name);

// Whether the running terminal has confirmed a revocation. Throws SQLite::Exception.
bool isConfirmed(SQLite::Database& db, int64_t revocation);

// Gives up waiting for that.
void forgetRevocation(SQLite::Database& db, int64_t revocation);

// All that do not expire, by name.
std::vector<Token> listTokens(SQLite::Database& db);

// All, those that expire included. Throws SQLite::Exception.
std::vector<Token> readTokens(SQLite::Database& db);

// Whether any token was ever made.
bool hadTokens(SQLite::Database& db);

// A token with all rights for this process. It is deleted with the object, and expires after a minute if the process is
// killed. The constructor throws std::runtime_error.
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

}  // namespace orvane::terminal
