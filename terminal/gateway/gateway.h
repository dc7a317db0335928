#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>

#include "host/mobilemessage.h"
#include "terminal/gateway/frame.h"
#include "terminal/gateway/session.h"

namespace orvane::terminal {

struct GatewayOptions {
  uint16_t port = 8700;  // on 127.0.0.1; 0 is any free one
  std::string token;     // what a phone must know
  SessionLimits limits;
};

// The phones' side of the terminal: takes their connections and frames, gives each request an id of its own, and
// brings every reply back to the connection that asked. One life: start, stop. Its thread runs everything but the
// operations below.
class Gateway : private ISessionOwner {
 public:
  // Takes one request over; topic and data are UTF-8. False where nobody is there to answer it. Called on the
  // gateway's thread.
  using Receive =
      std::function<bool(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data)>;

  // Takes the port, but no connection yet. Throws std::runtime_error where it is not to be had.
  explicit Gateway(GatewayOptions options);
  ~Gateway() override;
  Gateway(const Gateway&) = delete;
  Gateway& operator=(const Gateway&) = delete;

  uint16_t port() const { return port_; }

  // Takes connections from now on. REQUIRES: not started before.
  void start(Receive receive);

  // Closes every connection with 1001 and ends the thread. Does nothing when not started.
  void stop();

  // Brings a message, all texts UTF-8, to the connection that waits for it, or to all where it belongs to no request.
  // Any thread.
  void deliver(const MobileMessage& message);

 private:
  struct Peer {
    std::shared_ptr<Session> session;
    size_t waiting = 0;  // requests without a reply
  };
  struct Pending {
    Session* session = nullptr;
    std::string id;  // the phone's own, as JSON text
  };

  void accept();
  void onAccept(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);
  void retryAccept(const std::string& reason);
  void onFrame(Session& session, std::string_view text) override;
  void onClosed(Session& session) override;
  void onLogin(Session& session, const Frame& frame);
  void onRequest(Session& session, const Frame& frame);
  void onMessage(const MobileMessage& message);
  void push(const MobileMessage& message);
  void closeAll();

  const GatewayOptions options_;
  boost::asio::io_context io_{1};
  boost::asio::ip::tcp::acceptor acceptor_{io_};
  boost::asio::steady_timer acceptTimer_{io_};
  uint16_t port_ = 0;
  Receive receive_;
  std::unordered_map<Session*, Peer> peers_;
  std::unordered_map<int64_t, Pending> pending_;
  int64_t connections_ = 0;
  int64_t lastRequestId_ = 0;
  std::thread thread_;
};

}  // namespace orvane::terminal
