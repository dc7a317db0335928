#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "host/mobilemessage.h"

namespace orvane::terminal {

// Who did what. All texts are UTF-8, or become so.
struct AuditEntry {
  std::string_view token;    // its name; empty for a command
  std::string_view address;  // of the phone; "local" for a command
  std::string_view topic;
  std::string_view body;  // JSON text; may be empty
  std::string_view key;   // empty where the request has none
};

// The beginning of an audit line: the time that it is now and the entry. One of the ends makes it a whole JSON object
// without a line feed.
std::string auditHead(const AuditEntry& entry);
std::string auditReply(const MobileMessage& reply);
std::string auditRefusal(std::string_view message);
std::string auditLoss();

// `audit.log` in the data folder. Any process and thread; a line is there whole or not at all.
class AuditLog {
 public:
  explicit AuditLog(const std::filesystem::path& dataDir) : file_(dataDir / "audit.log") {}

  // Opens the file anew, so that it may be moved away. Throws std::runtime_error with the system's reason.
  void append(std::string line) const;

 private:
  std::filesystem::path file_;
};

}  // namespace orvane::terminal
