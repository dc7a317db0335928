#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <openssl/evp.h>

namespace orvane::terminal::relay {

// A key pair of Ed25519 in the texts of NATS: the server keeps the public key, and the client signs what the server
// sends it. Throws std::runtime_error if OpenSSL fails.
class NKey {
 public:
  static NKey make();

  // Throws std::runtime_error if the text is no seed of a user.
  static NKey read(std::string_view seed);

  std::string publicText() const;  // "U…", 56 characters
  std::string seed() const;        // "SU…", 58 characters; secret
  std::string sign(std::string_view text) const;

 private:
  using Key = std::shared_ptr<EVP_PKEY>;
  explicit NKey(Key key) : key_(std::move(key)) {}

  Key key_;
};

}  // namespace orvane::terminal::relay
