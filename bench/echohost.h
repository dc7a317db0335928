#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "terminal/net/asioloop.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/terminalport.h"
#include "tests/relay/cluster.h"

namespace orvane::test {

// A terminal in the test's own process that answers each frame with as many bytes as the number after its "size":.
class EchoHost : public terminal::ISessionOwner {
 public:
  EchoHost(const Cluster& cluster, const std::string& name, size_t maxSessions = 256)
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
  void onFrame(terminal::Session& session, std::string_view text) override {
    const size_t at = text.find("\"size\":");
    const size_t size = at == std::string_view::npos ? 0 : std::stoul(std::string(text.substr(at + 7, 9)));
    session.send(std::make_shared<const std::string>(R"({"id":1,"topic":"echo","message":"","data":")" +
                                                     std::string(size, 'x') + "\"}"));
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

}  // namespace orvane::test
