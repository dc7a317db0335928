#include "terminal/relay/message.h"

#include <algorithm>

namespace orvane::terminal::relay {
namespace {

constexpr char kVersion = 1;
constexpr size_t kMaxAddress = 64;

template <typename Number>
void put(std::string& bytes, Number value) {
  for (int shift = 8 * (static_cast<int>(sizeof value) - 1); shift >= 0; shift -= 8) {
    bytes += static_cast<char>(value >> shift & 0xFF);
  }
}

template <typename Number>
Number take(std::string_view& bytes) {
  Number value = 0;
  for (size_t i = 0; i < sizeof value; ++i) {
    value = static_cast<Number>(value << 8U) | static_cast<unsigned char>(bytes[i]);
  }
  bytes.remove_prefix(sizeof value);
  return value;
}

// These go to the log and the audit.
bool isAddress(std::string_view text) {
  return !text.empty() && text.size() <= kMaxAddress &&
         text.find_first_not_of("0123456789abcdefABCDEF.:/%") == std::string_view::npos;
}

}  // namespace

std::string encode(const Message& message) {
  std::string bytes;
  bytes.reserve(kHeadBytes + message.payload.size());
  bytes += kVersion;
  bytes += static_cast<char>(message.kind);
  put(bytes, static_cast<uint16_t>(message.isLast ? 1 : 0));
  put(bytes, message.value);
  put(bytes, message.channel);
  put(bytes, message.number);
  put(bytes, message.session);
  return bytes.append(message.payload);
}

std::optional<Message> decode(std::string_view bytes) {
  if (bytes.size() < kHeadBytes || bytes[0] != kVersion) return std::nullopt;
  const auto kind = static_cast<uint8_t>(bytes[1]);
  if (kind < static_cast<uint8_t>(Kind::Here) || kind >= static_cast<uint8_t>(Kind::kEnd)) return std::nullopt;
  bytes.remove_prefix(2);
  Message message{.kind = static_cast<Kind>(kind)};
  const auto flags = take<uint16_t>(bytes);
  if (flags > 1) return std::nullopt;
  message.isLast = flags == 1;
  message.value = take<uint32_t>(bytes);
  message.channel = take<uint64_t>(bytes);
  message.number = take<uint64_t>(bytes);
  message.session = take<uint64_t>(bytes);
  message.payload = bytes;
  return message;
}

std::string writeOrigin(const Origin& origin) { return origin.address + ' ' + origin.network; }

std::optional<Origin> readOrigin(std::string_view payload) {
  const size_t space = payload.find(' ');
  if (space == std::string_view::npos) return std::nullopt;
  const std::string_view address = payload.substr(0, space);
  const std::string_view network = payload.substr(space + 1);
  if (!isAddress(address) || !isAddress(network)) return std::nullopt;
  return Origin{std::string(address), std::string(network)};
}

std::string writeCast(std::span<const uint64_t> sessions, std::string_view text) {
  std::string payload;
  payload.reserve(sizeof(uint32_t) + sessions.size_bytes() + text.size());
  put(payload, static_cast<uint32_t>(sessions.size()));
  for (const uint64_t each : sessions) put(payload, each);
  return payload.append(text);
}

std::optional<Cast> readCast(std::string_view payload) {
  if (payload.size() < sizeof(uint32_t)) return std::nullopt;
  const auto count = take<uint32_t>(payload);
  if (payload.size() / sizeof(uint64_t) < count) return std::nullopt;
  Cast cast;
  cast.sessions.resize(count);
  for (uint64_t& each : cast.sessions) each = take<uint64_t>(payload);
  cast.text = payload;
  return cast;
}

}  // namespace orvane::terminal::relay
