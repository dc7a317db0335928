#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/mobilemessage.h"
#include "terminal/phones/visitor.h"

namespace orvane::terminal {

// The push that a phone saw last.
struct PushPosition {
  std::string epoch;
  uint64_t seq = 0;
};

// One frame of a phone, {"id": 7, "topic": "capital.list", "data": [0, 3]}, taken apart. The views point into the
// frame's own text.
struct Frame {
  std::string_view id = "null";  // a JSON string or number as it stands in the frame
  std::string topic;             // UTF-8; may hold a NUL
  std::string_view body;         // the bytes of `data`; empty where it was left out
  std::string token;             // empty where it was left out
  std::string key;               // the client's key of the request, a plain name; likewise
  std::string device;            // the phone's own name for itself, at most 64 bytes
  std::optional<PushPosition> resume;
  int32_t terminalType = 8;
};

// Why a text is no frame. `id` is the frame's own where it could be read, otherwise null.
struct FrameError {
  std::string_view id = "null";
  std::string topic;
  std::string message;  // UTF-8: what was wrong, and where
};

// Reads any text that is at most 2 GiB, however deep its nesting, in one pass.
std::variant<Frame, FrameError> readFrame(std::string_view text);

// Answers and pushes, as JSON in UTF-8. `id` is JSON text and goes out as it stands.
std::string writeAnswer(std::string_view id, const MobileMessage& message);
std::string writePush(uint64_t seq, const MobileMessage& message);
std::string writeFailure(std::string_view id, std::string_view topic, std::string_view message);

// The answer to a login. `now` is the last push so far; `resumed` where those that the phone missed follow.
std::string writeWelcome(std::string_view id, const Visitor& visitor, const PushPosition& now, bool resumed);

}  // namespace orvane::terminal
