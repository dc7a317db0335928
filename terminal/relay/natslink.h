#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "terminal/net/asioloop.h"
#include "terminal/relay/bus.h"
#include "terminal/relay/serverconnection.h"

namespace orvane::terminal::relay {

// For CLI::Validator: what is wrong with a server's URL. Beyond loopback only tls:// is taken.
std::string checkUrl(const std::string& url);

// The bus over a NATS cluster. Its own thread connects and asks each second whether the server still answers, since
// both can wait; messages never pass through it. After a break it connects anew by itself, to any of the servers, with
// back-off.
class NatsLink final : public IBus {
 public:
  // `loop` must outlive the link, and must have ended when a link that was started is destroyed. REQUIRES: valid URLs.
  NatsLink(AsioLoop& loop, LinkOptions options) : loop_(loop), options_(std::move(options)) {}
  ~NatsLink() override;
  NatsLink(const NatsLink&) = delete;
  NatsLink& operator=(const NatsLink&) = delete;

  void start(std::vector<std::string> subscriptions, IBusOwner& owner) override;
  void stop() override;
  void publish(std::string subject, std::string bytes) override;
  const std::string& fault() const override { return fault_; }

 private:
  void run();
  std::string serve(const std::shared_ptr<ServerConnection>& connection);
  void take(std::shared_ptr<ServerConnection> connection);
  void noteBreak(const std::string& why);

  AsioLoop& loop_;
  const LinkOptions options_;
  std::vector<std::string> subscriptions_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isStopping_ = false;  // under the mutex
  // The loop's thread.
  IBusOwner* owner_ = nullptr;  // null once stopped
  std::shared_ptr<ServerConnection> connection_;
  std::string fault_ = "not connected yet";
  bool isUp_ = false;
  std::thread thread_;
};

}  // namespace orvane::terminal::relay
