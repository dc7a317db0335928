#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace orvane {

// The request id of a message that is not a reply.
inline constexpr int64_t kNoRequestId = std::numeric_limits<int64_t>::max();

// The terminal type of every reply. The library gives it no meaning.
inline constexpr int32_t kReplyTerminalType = 8;

// A reply or a push. All texts are UTF-8 in IMobileSrv::send; `message` and `data` are GBK in
// IPocketAgent::pushNotify and IUIProxyMgr::requestSync.
struct MobileMessage {
  int64_t requestId = kNoRequestId;
  std::string topic;
  std::string message;                        // failure text; empty means success, there is no status code
  std::string data;                           // JSON text; empty on failure
  int32_t terminalType = kReplyTerminalType;  // a push keeps the host's value
};

}  // namespace orvane
