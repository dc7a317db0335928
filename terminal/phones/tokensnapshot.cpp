#include "terminal/phones/tokensnapshot.h"

#include <algorithm>

#include <openssl/crypto.h>

namespace orvane::terminal {
namespace {

bool hasExpired(const Token& token, int64_t now) { return token.expires && *token.expires <= now; }

}  // namespace

// Looks at every token, and at every byte of each hash, so that the time does not reveal how close a guess is.
const Token* TokenSnapshot::find(std::string_view text, int64_t now) const {
  const Digest hash = sha256(text);
  const Token* found = nullptr;
  for (const Token& token : tokens) {
    if (CRYPTO_memcmp(hash.data(), token.hash.data(), hash.size()) == 0) found = &token;
  }
  return found == nullptr || hasExpired(*found, now) ? nullptr : found;
}

bool TokenSnapshot::isLive(int64_t id, int64_t now) const {
  const auto token = std::find_if(tokens.begin(), tokens.end(), [id](const Token& each) { return each.id == id; });
  return token != tokens.end() && !hasExpired(*token, now);
}

}  // namespace orvane::terminal
