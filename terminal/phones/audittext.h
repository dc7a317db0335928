#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/mobilemessage.h"
#include "terminal/eventloop.h"

namespace orvane::terminal {

// Who did what. Bytes that are not UTF-8 are replaced when it is written.
struct AuditEntry {
  std::string_view token;    // its name; empty for a command
  std::string_view address;  // of the client; "local" for a command
  std::string_view topic;
  std::string_view body;  // JSON text; may be empty
  std::string_view key;   // empty if the request has none
};

// The head of an audit line. Head and one of the tails together are one JSON object without a line feed.
std::string auditHead(const AuditEntry& entry, WallTime now);
std::string auditReply(const MobileMessage& reply);
std::string auditRefusal(std::string_view message);
std::string auditLoss();

// The whole line for `count` refused requests of a token that have no lines of their own.
std::string auditSummary(std::string_view token, uint64_t count, WallTime now);

}  // namespace orvane::terminal
