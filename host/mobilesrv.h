#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/mobilemessage.h"
#include "host/resultstatus.h"

namespace orvane {

// The host passes it to IPocketAgent::start, which passes it to IMobileSrv::start. The library reads only the first two
// fields. UTF-8.
struct MobileSrvInfo {
  std::string url;     // must not be empty
  std::string userid;  // must not be empty
  std::string reserved3;
  std::string reserved4;
  std::string reserved5;
  std::string reserved6;
};

// What IPocketAgent::getServerStatus reports. UTF-8.
struct MobileServerStatus {
  std::string url;        // always empty: the agent does not keep the MobileSrvInfo
  std::string userid;     // always empty
  std::string reserved3;  // never written
  std::string reserved4;  // always empty
  std::string reserved5;  // never written
  std::string reserved6;  // never written
  std::string serviceName;
  std::string serviceKind;
  bool running = false;  // IMobileSrv::isRunning at the time of the call
};

// The callback for requests, implemented by the library. The service owns it from registerSpi to unregisterSpi and
// calls it on its own threads; calls may overlap.
class IMobileSrvSpi {
 public:
  virtual ~IMobileSrvSpi() = default;

  // One request of a client. `topic` and `data` are UTF-8; `data` is the JSON body and may be empty. For topics that
  // the library does not know, the bit with value 16 in `terminalType` selects IUIProxyMgr::requestSync.
  virtual void onRequest(int64_t requestId, int32_t terminalType, const std::string& topic,
                         const std::string& data) = 0;
};

// The host's mobile server. `send` is called on the worker thread, the other operations on the host's control thread,
// so `send` must be safe to call concurrently with each of them.
class IMobileSrv {
 public:
  virtual ~IMobileSrv() = default;

  // Starts the service. On any code but 0 the agent logs the message and attaches no callback.
  virtual ResultStatus start(const MobileSrvInfo& info) = 0;

  // Keeps its own reference to `spi` and writes the handle for unregisterSpi. The status is ignored.
  virtual ResultStatus registerSpi(const std::shared_ptr<IMobileSrvSpi>& spi, int32_t* handle) = 0;

  // No request may reach the callback after this returns. The status is ignored.
  virtual ResultStatus unregisterSpi(int32_t handle) = 0;

  // Stops the service.
  virtual void stop() = 0;

  // Delivers one message, all texts UTF-8. On any code but 0 the agent logs an error and the message is lost.
  virtual ResultStatus send(const MobileMessage& message) = 0;

  // For MobileServerStatus.
  virtual bool isRunning() = 0;
};

}  // namespace orvane
