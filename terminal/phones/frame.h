#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/mobilemessage.h"
#include "terminal/phones/visitor.h"

namespace orvane::terminal {

// The last push that a client has seen.
struct PushPosition {
  std::string epoch;
  uint64_t seq = 0;
};

// One frame of a client, {"id": 7, "topic": "capital.list", "data": [0, 3]}. The views point into the frame's own
// text.
struct Frame {
  std::string_view id = "null";  // a JSON string or number, as written in the frame
  std::string topic;             // 1 to 64 printable ASCII characters
  std::string_view body;         // the bytes of `data`; empty if absent
  std::string token;             // empty if absent
  std::string key;               // the request's idempotency key, a plain name; empty if absent
  std::string device;            // the client's name for its device, at most 64 bytes
  std::optional<PushPosition> resume;
  int32_t terminalType = 8;
};

// Why a text is not a frame. `id` is the frame's own if it could be read, otherwise null.
struct FrameError {
  std::string_view id = "null";
  std::string topic;
  std::string message;  // UTF-8: what is wrong, and where
};

// Reads any text of at most 2 GiB in one pass, however deep its nesting.
std::variant<Frame, FrameError> readFrame(std::string_view text);

// Answers and pushes, as JSON in UTF-8. `id` is JSON text and is copied as it is.
std::string writeAnswer(std::string_view id, const MobileMessage& message);
std::string writePush(uint64_t seq, const MobileMessage& message);
std::string writeFailure(std::string_view id, std::string_view topic, std::string_view message);

// The answer to a login. `now` is the last push so far; `resumed` means that the missed pushes follow.
std::string writeWelcome(std::string_view id, const Visitor& visitor, const PushPosition& now, bool resumed);

}  // namespace orvane::terminal
