#pragma once

#include "host/mobilemessage.h"
#include "host/mobilesrv.h"

// Exported from the shared library: this class and nothing else.
#define POCKETAGENT_API __attribute__((visibility("default")))

namespace orvane {

// The library's public interface. Thread-safe, but never call it from the agent's worker thread, that is, from a host
// service that the library is calling: stop waits for the worker and would deadlock. No operation returns a failure.
// start, stop and getServerStatus log it, and do nothing while the host's base or mobile service is down.
class POCKETAGENT_API IPocketAgent {
 public:
  // The one agent of the process, created by the first call and destroyed at exit. Does not call the host.
  static IPocketAgent* getInstance();

  IPocketAgent(const IPocketAgent& other);
  IPocketAgent& operator=(const IPocketAgent& other);
  virtual ~IPocketAgent();

  // Starts the worker, then the host's mobile service, then attaches the callback for requests. `url` and `userid` must
  // not be empty. If the service fails to start, the worker keeps running and no request arrives; call start again.
  // Do not start a started agent: it would attach a second callback and lose the handle of the first.
  virtual void start(const MobileSrvInfo& info) = 0;

  // Queues a message from the host to clients. `message` and `data` are GBK and are converted to UTF-8; the other
  // fields are sent unchanged. While the agent is stopped, messages wait for the next start.
  virtual void pushNotify(const MobileMessage& message) = 0;

  // Detaches the callback, ends the worker and stops the mobile service, in this order. The running request finishes;
  // waiting ones are dropped without a reply. If the host's services are down the worker keeps running.
  virtual void stop() = 0;

  // Leaves `status` unchanged while the host's services are down.
  virtual void getServerStatus(MobileServerStatus& status) = 0;

 protected:
  IPocketAgent();
};

}  // namespace orvane
