#pragma once

#include <boost/beast/websocket/option.hpp>
#include <chrono>
#include <cstddef>
#include <string_view>

namespace orvane::terminal {

// A number of bytes that is used together.
class MemoryShare {
 public:
  explicit MemoryShare(size_t bytes) : free_(bytes) {}

  bool take(size_t bytes) {
    if (bytes > free_) return false;
    free_ -= bytes;
    return true;
  }
  void giveBack(size_t bytes) { free_ += bytes; }

 private:
  size_t free_;
};

// What all sessions of a listener may use for compression. The clients that only could be sent something compressed,
// which are nearly all browsers, must leave room for those that are.
struct CompressionMemory {
  explicit CompressionMemory(size_t bytes) : agreements(bytes / 4), compressors(bytes - bytes / 4) {}

  MemoryShare agreements;
  MemoryShare compressors;
};

// Decides which of a session's messages are compressed. Most clients get nothing that is worth a compressor, which
// takes 160 KiB: the first long message takes one, if there is room, and a session without long messages gives it up.
class SessionCompression {
  using Clock = std::chrono::steady_clock;

 public:
  // `memory` must outlive the object.
  SessionCompression(CompressionMemory& memory, std::chrono::milliseconds idle) : memory_(memory), idle_(idle) {}
  ~SessionCompression();
  SessionCompression(const SessionCompression&) = delete;
  SessionCompression& operator=(const SessionCompression&) = delete;

  // The terms for a client whose header Sec-WebSocket-Extensions is `offer`. To be called once.
  boost::beast::websocket::permessage_deflate agree(std::string_view offer);

  // Whether the message is to be compressed that begins with a part of so many bytes.
  bool begin(size_t bytes, Clock::time_point now);

  // True if the compressor has been given up: its memory must be freed.
  bool endIdle(Clock::time_point now);

 private:
  CompressionMemory& memory_;
  const std::chrono::milliseconds idle_;
  size_t agreedBytes_ = 0;  // 0: nothing is compressed
  bool hasCompressor_ = false;
  Clock::time_point lastLong_;
};

}  // namespace orvane::terminal
