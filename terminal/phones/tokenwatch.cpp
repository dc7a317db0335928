#include "terminal/phones/tokenwatch.h"

#include <algorithm>

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>
#include <openssl/crypto.h>

namespace orvane::terminal {
namespace {

constexpr int64_t kTouchSeconds = 60;

}  // namespace

// Looks at every token, and at every byte of each hash, so that the time says nothing about how near a guess is.
const Token* TokenWatch::find(std::string_view text) {
  refresh();
  const Digest hash = sha256(text);
  const Token* found = nullptr;
  for (const Token& token : tokens_) {
    if (CRYPTO_memcmp(hash.data(), token.hash.data(), hash.size()) == 0) found = &token;
  }
  return found == nullptr || isExpired(*found) ? nullptr : found;
}

bool TokenWatch::isLive(int64_t id) const {
  const auto token = std::find_if(tokens_.begin(), tokens_.end(), [&](const Token& each) { return each.id == id; });
  return token != tokens_.end() && !isExpired(*token);
}

void TokenWatch::touch(const Token& token) {
  if (token.expires || (token.lastUsed && now() - *token.lastUsed < kTouchSeconds)) return;
  SQLite::Statement statement(db_, "UPDATE token SET used = ? WHERE id = ?");
  SQLite::bind(statement, now(), token.id);
  statement.exec();
  version_ = -1;  // data_version does not change with this connection's own writes
}

// data_version changes with each commit of another connection.
void TokenWatch::refresh() {
  const int64_t version = db_.execAndGet("PRAGMA data_version").getInt64();
  if (version == version_) return;
  tokens_ = readTokens(db_);
  version_ = version;
}

}  // namespace orvane::terminal
