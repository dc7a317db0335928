#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::terminal::relay {

// What a message between a relay and a terminal is for.
enum class Kind : uint8_t {
  Here = 1,  // presence of a terminal; payload: its epoch
  Leaving,   // its end; payload: its epoch
  Open,      // relay: a new session; payload: writeOrigin
  Data,      // a piece of a text frame
  Cast,      // terminal: a whole text frame for several sessions; payload: writeCast
  Credit,    // `value` more bytes may be sent in this session
  Admit,     // terminal: the client has logged in
  Close,     // ends a session; `value`: close code, payload: reason
  Beat,      // shows that the channel is alive and complete
  Reset,     // ends a channel with all its sessions; carries no number
  kEnd
};

// One message. Integers are big-endian on the wire; the head has 32 bytes.
struct Message {
  Kind kind = Kind::Beat;
  bool isLast = true;          // of a frame's pieces
  uint32_t value = 0;          // of Credit and Close
  uint64_t channel = 0;        // chosen by the relay, grows with each new channel to the same terminal
  uint64_t number = 0;         // 1, 2, 3, … in each direction of a channel; a gap ends it
  uint64_t session = 0;        // chosen by the relay; 0 if the message is for no session
  std::string_view payload{};  // untrusted
};

inline constexpr size_t kHeadBytes = 32;

std::string encode(const Message& message);

// Empty for bytes that encode() does not write. The payload points into `bytes`.
std::optional<Message> decode(std::string_view bytes);

// Where a client comes from, as the relay has seen it.
struct Origin {
  std::string address;  // IPv4-mapped addresses are written as IPv4
  std::string network;  // rate-limit key, see Session
};

std::string writeOrigin(const Origin& origin);

// Empty unless both are addresses or networks of at most 64 characters.
std::optional<Origin> readOrigin(std::string_view payload);

// A frame for several sessions.
struct Cast {
  std::vector<uint64_t> sessions;
  std::string_view text;
};

std::string writeCast(std::span<const uint64_t> sessions, std::string_view text);

// Empty if the payload is shorter than its list. `text` points into it.
std::optional<Cast> readCast(std::string_view payload);

}  // namespace orvane::terminal::relay
