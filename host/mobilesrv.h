#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/mobilemessage.h"
#include "host/resultstatus.h"

namespace orvane {

// What the host tells the agent, and the agent the mobile service, at the start.
struct MobileSrvInfo {
  std::string url;     // where the mobile service listens; the agent refuses to start on an empty one
  std::string userid;  // the terminal's user; likewise
  std::string reserved3;
  std::string reserved4;
  std::string reserved5;
  std::string reserved6;
};

// What IPocketAgent::getServerStatus reports. UTF-8.
struct MobileServerStatus {
  std::string url;  // this and the next are always empty: the agent keeps no copy of what start was given
  std::string userid;
  std::string reserved3;  // never written
  std::string reserved4;  // always empty
  std::string reserved5;  // never written
  std::string reserved6;  // never written
  std::string serviceName;
  std::string serviceKind;
  bool running = false;  // IMobileSrv::isRunning at the time of the question
};

// The callback by which the mobile service hands over requests. The service owns it between registerSpi and
// unregisterSpi and calls it on threads of its own; calls may overlap.
class IMobileSrvSpi {
 public:
  virtual ~IMobileSrvSpi() = default;

  // One request of a phone. `topic` and `data` are UTF-8; `data` is the JSON body and may be empty. Bit 16 of
  // `terminalType` asks for a synchronous answer from the user interface proxy on topics that only it knows.
  virtual void onRequest(int64_t requestId, int32_t terminalType, const std::string& topic,
                         const std::string& data) = 0;
};

// The host's mobile server. The agent calls start, registerSpi, unregisterSpi, stop and isRunning on the host's
// control thread and send on its worker thread, so send must bear a concurrent call of any other operation.
class IMobileSrv {
 public:
  virtual ~IMobileSrv() = default;

  // Brings the service up. Code 0 when it came up; otherwise the message is logged and no callback is attached.
  virtual ResultStatus start(const MobileSrvInfo& info) = 0;

  // Keeps a reference of its own to `spi` and writes the handle that unregisterSpi takes. The status is ignored.
  virtual ResultStatus registerSpi(const std::shared_ptr<IMobileSrvSpi>& spi, int32_t* handle) = 0;

  // No request reaches the callback once this has returned. The status is ignored.
  virtual ResultStatus unregisterSpi(int32_t handle) = 0;

  virtual void stop() = 0;

  // Delivers one message, all texts UTF-8. On any code but 0 the agent writes an error line and the message is lost.
  virtual ResultStatus send(const MobileMessage& message) = 0;

  virtual bool isRunning() = 0;
};

}  // namespace orvane
