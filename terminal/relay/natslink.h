#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "terminal/eventloop.h"
#include "terminal/relay/bus.h"
#include "terminal/relay/credentials.h"

namespace orvane::terminal::relay {

struct LinkOptions {
  std::vector<std::string> urls;  // nats://HOST:PORT or tls://HOST:PORT
  Credentials credentials;
};

// Throws std::runtime_error that says which URL is invalid and why. Beyond loopback only tls:// is taken.
void checkUrls(const std::vector<std::string>& urls);

// The bus over a NATS cluster. Its own thread connects and sends, since both can wait for the server, so the loop's
// thread never does. After a break it connects anew by itself, to any of the servers, with back-off.
class NatsLink final : public IBus {
 public:
  // `loop` must outlive the link. Throws std::runtime_error if an option is invalid.
  NatsLink(IEventLoop& loop, LinkOptions options);
  ~NatsLink() override;
  NatsLink(const NatsLink&) = delete;
  NatsLink& operator=(const NatsLink&) = delete;

  void start(std::vector<std::string> subscriptions, IBusOwner& owner) override;
  void stop() override;
  void publish(std::string subject, std::string bytes) override;
  const std::string& fault() const override { return fault_; }

 private:
  struct Outgoing {
    std::string subject;
    std::string bytes;
  };
  struct Shared;     // what the library's threads see
  class Connection;  // one connection, until it breaks

  void run();
  std::string serve(Connection& connection);
  void noteBreak(const std::string& why);

  IEventLoop& loop_;
  const LinkOptions options_;
  const std::shared_ptr<Shared> shared_;
  std::vector<std::string> subscriptions_;
  std::string fault_ = "not connected yet";  // the loop's thread
  bool isUp_ = false;                        // the loop's thread
  std::thread thread_;
};

}  // namespace orvane::terminal::relay
