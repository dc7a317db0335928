#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "terminal/tokens.h"

namespace orvane::terminal {

// A revocation that waits for its confirmation.
struct Revocation {
  int64_t id = 0;
  int64_t token = 0;
};

// The tokens at one moment. Immutable, so that any thread may read it.
struct TokenSnapshot {
  std::vector<Token> tokens;
  std::vector<Revocation> revocations;

  // The token of this text that has not expired at `now`, in seconds since 1970, or null. A nearly right guess takes as
  // long as any other.
  const Token* find(std::string_view text, int64_t now) const;

  // False if the token is revoked or has expired.
  bool isLive(int64_t id, int64_t now) const;
};

}  // namespace orvane::terminal
