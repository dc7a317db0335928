#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace orvane {

// The request id of a message that answers no request.
inline constexpr int64_t kNoRequestId = std::numeric_limits<int64_t>::max();

// The terminal type of every reply that a task builds.
inline constexpr int32_t kReplyTerminalType = 8;

// One message to a phone: the reply to a request, or a push. All texts of a message that reaches
// IMobileSrv::send are UTF-8; a message given to IPocketAgent::pushNotify has `message` and `data` in GBK.
struct MobileMessage {
  int64_t requestId = kNoRequestId;
  std::string topic;
  std::string message;                        // the failure's text; empty is success, there is no status number
  std::string data;                           // the reply's JSON text; empty on failure
  int32_t terminalType = kReplyTerminalType;  // a push keeps what the host gave it
};

}  // namespace orvane
