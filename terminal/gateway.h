#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "host/mobilesrv.h"
#include "terminal/net/asioloop.h"
#include "terminal/net/listener.h"
#include "terminal/phones/diskthread.h"
#include "terminal/phones/gatewaystore.h"
#include "terminal/phones/mobileserver.h"
#include "terminal/phones/phones.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/terminalport.h"

namespace orvane::terminal {

// How clients come in through relays.
struct RelayEntrance {
  relay::LinkOptions link;
  relay::PortOptions port;
};

// How clients come in. REQUIRES: at least one way.
struct Entrances {
  std::optional<ListenOptions> listen;
  std::optional<RelayEntrance> relay;
};

// The terminal's side towards clients: `gateway.db`, the listener, and what clients may do. May be started and stopped
// once, by the agent through the mobile service, which starts and joins the loop's thread.
class Gateway {
 public:
  // Opens `gateway.db` and takes the port. `loop` must not be started and must outlive the gateway. `phones.figures` is
  // filled in. Throws std::runtime_error.
  Gateway(AsioLoop& loop, Entrances entrances, const StoreOptions& store, PhonesOptions phones, WhenStored whenStored);
  ~Gateway() { stop(); }
  Gateway(const Gateway&) = delete;
  Gateway& operator=(const Gateway&) = delete;

  // What clients connect to: the relay's if they come in through one, otherwise the gateway's own.
  std::string url() const;

  // The link of the page, to which a token can be added.
  std::string link() const;

  IMobileSrv& mobileService() { return server_; }

  // Takes no more requests, and waits at most 1.5 seconds for the replies to those that the agent has. Call it before
  // the agent stops. Any thread but the loop's.
  void drain();

  // Stores link() for the command `token`. If that takes more than a second, because a file is locked or the disk full,
  // it is stored later. To be called after the start. Any thread but the loop's.
  void noteLink();

  // Waits until the disk's thread has done all work that was queued before; false if it takes longer than `limit`. Any
  // thread but the loop's.
  bool awaitDisk(std::chrono::seconds limit);

 private:
  TransportFigures figures() const;
  std::vector<HealthCheck> check(const HealthProbe& probe) const;
  void start();
  void stop();

  AsioLoop& loop_;
  GatewayStore store_;
  DiskThread disk_{store_};
  Phones phones_;
  std::optional<Listener> listener_;
  std::string page_;  // of the relays
  std::string name_;  // at the relays
  std::unique_ptr<relay::NatsLink> link_;
  std::unique_ptr<relay::TerminalPort> port_;
  MobileServer server_;
};

}  // namespace orvane::terminal
