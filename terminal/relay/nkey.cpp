#include "terminal/relay/nkey.h"

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>

namespace orvane::terminal::relay {
namespace {

constexpr size_t kRawBytes = 32;
constexpr unsigned kUserKind = 20U << 3U;
constexpr unsigned kSeedKind = 18U << 3U;
constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";

// The seed's two first bytes hold both kinds, five bits each.
const std::string kSeedPrefix{static_cast<char>(kSeedKind | kUserKind >> 5U),
                              static_cast<char>((kUserKind & 31U) << 3U)};
const std::string kPublicPrefix{static_cast<char>(kUserKind)};

void requireDone(bool done) {
  if (!done) throw std::runtime_error("cannot work with a key of Ed25519: OpenSSL failed");
}

std::string toBase32(std::string_view bytes) {
  std::string text;
  unsigned bits = 0;
  int count = 0;
  for (const char c : bytes) {
    bits = (bits << 8U | static_cast<unsigned char>(c)) & 0xFFFU;
    for (count += 8; count >= 5; count -= 5) text += kAlphabet[bits >> (count - 5) & 31U];
  }
  if (count > 0) text += kAlphabet[bits << (5 - count) & 31U];
  return text;
}

std::optional<std::string> fromBase32(std::string_view text) {
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    const size_t digit = kAlphabet.find(c);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = (bits << 5U | static_cast<unsigned>(digit)) & 0xFFFU;
    count += 5;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFFU);
  }
  return bytes;
}

// CRC-16/XMODEM, low byte first.
std::string checksum(std::string_view bytes) {
  unsigned crc = 0;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned>(static_cast<unsigned char>(c)) << 8U;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000U) != 0 ? crc << 1U ^ 0x1021U : crc << 1U;
  }
  return {static_cast<char>(crc & 0xFFU), static_cast<char>(crc >> 8U & 0xFFU)};
}

std::string write(const std::string& prefix, const std::array<unsigned char, kRawBytes>& raw) {
  std::string bytes = prefix;
  bytes.append(raw.begin(), raw.end());
  return toBase32(bytes + checksum(bytes));
}

}  // namespace

NKey NKey::make() {
  Key key(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), EVP_PKEY_free);
  requireDone(key != nullptr);
  return NKey(std::move(key));
}

NKey NKey::read(std::string_view seed) {
  const std::optional<std::string> bytes = fromBase32(seed);
  const size_t size = kSeedPrefix.size() + kRawBytes;
  if (!bytes || bytes->size() != size + 2 || !bytes->starts_with(kSeedPrefix) ||
      checksum(bytes->substr(0, size)) != bytes->substr(size)) {
    throw std::runtime_error("the seed is damaged: it must be the 58 characters that pocket-relay setup wrote");
  }
  const auto* raw = reinterpret_cast<const unsigned char*>(bytes->data()) + kSeedPrefix.size();
  Key key(EVP_PKEY_new_raw_private_key(EVP_PKEY_ED25519, nullptr, raw, kRawBytes), EVP_PKEY_free);
  requireDone(key != nullptr);
  return NKey(std::move(key));
}

std::string NKey::publicText() const {
  std::array<unsigned char, kRawBytes> raw{};
  size_t size = raw.size();
  requireDone(EVP_PKEY_get_raw_public_key(key_.get(), raw.data(), &size) == 1);
  return write(kPublicPrefix, raw);
}

std::string NKey::seed() const {
  std::array<unsigned char, kRawBytes> raw{};
  size_t size = raw.size();
  requireDone(EVP_PKEY_get_raw_private_key(key_.get(), raw.data(), &size) == 1);
  return write(kSeedPrefix, raw);
}

std::string NKey::sign(std::string_view text) const {
  const std::shared_ptr<EVP_MD_CTX> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  requireDone(context != nullptr && EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key_.get()) == 1);
  std::string signature(64, '\0');
  size_t size = signature.size();
  requireDone(EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                             reinterpret_cast<const unsigned char*>(text.data()), text.size()) == 1);
  return signature;
}

}  // namespace orvane::terminal::relay
