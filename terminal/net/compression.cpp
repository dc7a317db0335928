#include "terminal/net/compression.h"

namespace orvane::terminal {
namespace {

constexpr size_t kLongBytes = 4096;
constexpr size_t kCompressorBytes = size_t{160} * 1024;

// What an agreement takes for the client's own messages, which are short: with as small a window as the client lets the
// terminal choose, and with the largest.
constexpr size_t kSmallBytes = size_t{20} * 1024;
constexpr size_t kLargeBytes = size_t{52} * 1024;
constexpr int kSmallWindowBits = 9;

// Level 8 would take twice the time for a tenth fewer bytes. A higher memory level saves nothing.
constexpr int kLevel = 6;
constexpr int kMemoryLevel = 4;

}  // namespace

SessionCompression::~SessionCompression() {
  memory_.agreements.giveBack(agreedBytes_);
  if (hasCompressor_) memory_.compressors.giveBack(kCompressorBytes);
}

boost::beast::websocket::permessage_deflate SessionCompression::agree(std::string_view offer) {
  boost::beast::websocket::permessage_deflate terms;
  if (offer.find("permessage-deflate") == std::string_view::npos) return terms;
  const bool isSmall = offer.find("client_max_window_bits") != std::string_view::npos;
  const size_t bytes = isSmall ? kSmallBytes : kLargeBytes;
  if (!memory_.agreements.take(bytes)) return terms;
  agreedBytes_ = bytes;
  terms.server_enable = true;
  if (isSmall) terms.client_max_window_bits = kSmallWindowBits;
  terms.compLevel = kLevel;
  terms.memLevel = kMemoryLevel;
  return terms;
}

bool SessionCompression::begin(size_t bytes, Clock::time_point now) {
  if (agreedBytes_ == 0) return false;
  if (bytes >= kLongBytes) {
    lastLong_ = now;
    hasCompressor_ = hasCompressor_ || memory_.compressors.take(kCompressorBytes);
  }
  return hasCompressor_;
}

bool SessionCompression::endIdle(Clock::time_point now) {
  if (!hasCompressor_ || now - lastLong_ < idle_) return false;
  hasCompressor_ = false;
  memory_.compressors.giveBack(kCompressorBytes);
  return true;
}

}  // namespace orvane::terminal
