#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "terminal/eventloop.h"
#include "terminal/relay/presence.h"
#include "terminal/relay/relayline.h"
#include "terminal/session.h"

namespace orvane::terminal::relay {

struct PortOptions {
  std::string name{};
  SessionLimits limits{};
  // Another terminal of this name was present at the start, see Presence. The loop's thread.
  std::function<void()> onRefused{};
};

// Where clients of relays come into a terminal. Shows the terminal's presence, and makes sessions of what relays send.
// Everything belongs to the loop's thread.
class TerminalPort : public IBusOwner {
 public:
  // All references must outlive it.
  TerminalPort(IEventLoop& loop, IBus& bus, ISessionOwner& owner, PortOptions options);

  // Starts the bus.
  void start();

  // Closes all sessions with 1001, then gives the name up and stops the bus. The loop has no work of the port any more
  // when that is done.
  void stop();

  // Why no client of a relay can come in, UTF-8; empty if they can.
  std::string fault() const;

  TransportFigures figures() const { return {.connections = countSessions()}; }

  void onUp() override;
  void onDown() override;
  void onMessage(std::string_view subject, std::string_view bytes) override;

 private:
  using Lines = std::map<Party, std::unique_ptr<RelayLine>>;

  void onRelay(const Party& relay, const Message& message);
  void onTaken();
  void endAll();
  bool makeRoom();
  void onBacklog(size_t before, size_t now);
  size_t countSessions() const;
  void tick();
  void leaveOnceEmpty();

  IEventLoop& loop_;
  IBus& bus_;
  const PortOptions options_;
  const Party self_;
  Presence presence_;
  LineContext context_;
  Lines lines_;
  size_t backlogBytes_ = 0;
  bool isTaken_ = false;  // another terminal has the name
  bool isStopping_ = false;
  std::unique_ptr<Timer> tick_;
};

}  // namespace orvane::terminal::relay
