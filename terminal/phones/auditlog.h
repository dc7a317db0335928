#pragma once

#include <filesystem>
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

// `audit.log` in the data folder. Any process and thread may append; a line is written whole or not at all.
class AuditLog {
 public:
  explicit AuditLog(const std::filesystem::path& dataDir) : file_(dataDir / "audit.log") {}

  // Opens the file each time, so that it may be moved away. Throws std::runtime_error with the system's reason.
  void append(std::string line) const;

 private:
  std::filesystem::path file_;
};

}  // namespace orvane::terminal
