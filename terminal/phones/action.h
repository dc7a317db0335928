#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "host/mobilemessage.h"
#include "terminal/eventloop.h"

namespace orvane::terminal {

// A request that changes something.
struct Action {
  int64_t token = 0;      // its id
  std::string tokenName;  // in the audit
  std::string address;    // of the client
  WallTime time{};        // at which it came
  int32_t terminalType = 0;
  std::string topic;
  std::string body;  // JSON text; may be empty
  std::string key;   // empty if the request has none
};

struct Fresh {};  // to be dispatched
struct Running {
  int64_t requestId = 0;  // of the same action, under way; its reply answers this one too
};
struct Rejected {
  std::string message;  // UTF-8
};

// What to do with an action; the message is the stored reply.
using Verdict = std::variant<Fresh, Running, MobileMessage, Rejected>;

}  // namespace orvane::terminal
