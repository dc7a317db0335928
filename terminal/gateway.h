#pragma once

#include <chrono>
#include <string>

#include "host/mobilesrv.h"
#include "terminal/net/asioloop.h"
#include "terminal/net/listener.h"
#include "terminal/phones/diskthread.h"
#include "terminal/phones/gatewaystore.h"
#include "terminal/phones/mobileserver.h"
#include "terminal/phones/phones.h"

namespace orvane::terminal {

// The terminal's side towards clients: `gateway.db`, the listener, and what clients may do. May be started and stopped
// once, by the agent through the mobile service, which starts and joins the loop's thread.
class Gateway {
 public:
  // Opens `gateway.db` and takes the port. `loop` must not be started and must outlive the gateway. `phones.figures` is
  // filled in. Throws std::runtime_error.
  Gateway(AsioLoop& loop, ListenOptions listen, const StoreOptions& store, PhonesOptions phones, WhenStored whenStored);
  ~Gateway() { stop(); }
  Gateway(const Gateway&) = delete;
  Gateway& operator=(const Gateway&) = delete;

  std::string url() const { return listener_.url(); }
  IMobileSrv& mobileService() { return server_; }

  // Takes no more requests, and waits at most two seconds for the replies to those that the agent has. Call it before
  // the agent stops. Any thread but the loop's.
  void drain();

  // Stores url() for the command `token`. If that takes more than a second, because a file is locked or the disk full,
  // it is stored later. To be called after the start. Any thread but the loop's.
  void noteUrl();

  // Waits until the disk's thread has done all work that was queued before; false if it takes longer than `limit`. Any
  // thread but the loop's.
  bool awaitDisk(std::chrono::seconds limit);

 private:
  void start();
  void stop();

  AsioLoop& loop_;
  GatewayStore store_;
  DiskThread disk_{store_};
  Phones phones_;
  Listener listener_;
  MobileServer server_;
};

}  // namespace orvane::terminal
