#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "terminal/net/asioloop.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/terminalport.h"
#include "tests/relay/cluster.h"

namespace orvane::bench {

// A terminal in this process that answers each frame with the same reply.
class EchoHost : public terminal::ISessionOwner {
 public:
  EchoHost(const test::Cluster& cluster, const std::string& name, size_t maxSessions)
      : link_(loop_, {cluster.urlList(), terminal::relay::readCredentials(cluster.credentials(name))}),
        port_(loop_, link_, *this, {.name = name, .limits = {.maxSessions = maxSessions}, .onRefused = [] {}}) {
    port_.start();
    loop_.start();
  }
  ~EchoHost() override {
    loop_.post([this] { port_.stop(); });
    loop_.join();
  }
  EchoHost(const EchoHost&) = delete;
  EchoHost& operator=(const EchoHost&) = delete;

  void onOpened(std::shared_ptr<terminal::Session> session) override { sessions_.push_back(std::move(session)); }
  void onFrame(terminal::Session& session, std::string_view /*text*/) override {
    session.send(std::make_shared<const std::string>(R"({"id":1,"topic":"echo","message":"","data":""})"));
  }
  void onClosed(terminal::Session& session) override {
    std::erase_if(sessions_, [&](const auto& each) { return each.get() == &session; });
  }

 private:
  terminal::AsioLoop loop_;
  terminal::relay::NatsLink link_;
  terminal::relay::TerminalPort port_;
  std::vector<std::shared_ptr<terminal::Session>> sessions_;
};

}  // namespace orvane::bench
