#include "terminal/digest.h"

#include <stdexcept>

#include <openssl/evp.h>

namespace orvane::terminal {

Digest sha256(std::string_view bytes) {
  Digest digest{};
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1) {
    throw std::runtime_error("cannot compute a SHA-256: OpenSSL does not offer it");
  }
  return digest;
}

}  // namespace orvane::terminal
