#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane::terminal::relay {

// Gets the events of a bus, on the loop's thread.
class IBusOwner {
 public:
  virtual ~IBusOwner() = default;

  // Messages can be published and come in from now on.
  virtual void onUp() = 0;

  // The connection is lost, and messages with it.
  virtual void onDown() = 0;

  // A message of one of the subscriptions. Untrusted; valid during the call.
  virtual void onMessage(std::string_view subject, std::string_view bytes) = 0;
};

// What carries messages between relays and terminals. It may lose any of them.
class IBus {
 public:
  virtual ~IBus() = default;

  // Connects, and again after each break for ever, until stop(). `owner` must outlive the bus. May be called once.
  virtual void start(std::vector<std::string> subscriptions, IBusOwner& owner) = 0;

  // Sends what was published, then disconnects. Nothing reaches the owner any more. Does not wait: the loop has work
  // until that is done. The loop's thread.
  virtual void stop() = 0;

  // Never waits. The message is lost if the bus is down. The loop's thread.
  virtual void publish(std::string subject, std::string bytes) = 0;

  // Why the bus is down, UTF-8; empty if it is up. The loop's thread.
  virtual const std::string& fault() const = 0;
};

}  // namespace orvane::terminal::relay
