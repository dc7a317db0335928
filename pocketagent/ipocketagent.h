#pragma once

#include "host/mobilemessage.h"
#include "host/mobilesrv.h"

// Marks what the shared library exports: this class and nothing else.
#define POCKETAGENT_API __attribute__((visibility("default")))

namespace orvane {

// The library's one public face: the host gets the agent by getInstance and drives it from its control threads. All
// operations may be called from any thread but the agent's own worker: a host service that the worker is in, and the
// mobile service's send, must not call back into the agent. No operation reports a failure to its caller: start, stop
// and getServerStatus write it to the log, and do nothing while the host's base or mobile service is down.
class POCKETAGENT_API IPocketAgent {
 public:
  // The one agent of the process, made at the first call and destroyed at exit. Nothing of the host is touched yet.
  static IPocketAgent* getInstance();

  IPocketAgent(const IPocketAgent& other);
  IPocketAgent& operator=(const IPocketAgent& other);
  virtual ~IPocketAgent();

  // Starts the worker, then the host's mobile service, and attaches the callback for requests. Needs `url` and
  // `userid`. Where the service does not come up, the worker stays running and no request arrives: start it again.
  // Once started, stop it first: a second callback would be attached, and the first could not be detached any more.
  virtual void start(const MobileSrvInfo& info) = 0;

  // Queues a message of the host's for the phones. `message` and `data` are GBK and leave as UTF-8; the other fields
  // leave as they are. What is queued while the agent is stopped waits for the next start.
  virtual void pushNotify(const MobileMessage& message) = 0;

  // Detaches the callback, ends the worker (the running request finishes, waiting ones are dropped) and stops the
  // mobile service. Returns when the worker has ended. While the host's services are down the worker keeps running.
  virtual void stop() = 0;

  // Leaves `status` as it is while the host's services are down.
  virtual void getServerStatus(MobileServerStatus& status) = 0;

 protected:
  IPocketAgent();
};

}  // namespace orvane
