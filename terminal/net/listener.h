#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "terminal/net/compression.h"
#include "terminal/net/connection.h"
#include "terminal/net/originpolicy.h"
#include "terminal/tls.h"

namespace orvane::terminal {

struct ListenOptions {
  std::string address = "127.0.0.1";  // an IP address of this machine, or a wildcard address
  uint16_t port = 8700;               // 0: any free port
  std::optional<TlsFiles> tls;        // REQUIRED beyond loopback
  std::vector<std::string> allowedOrigins;
  size_t maxConnections = 256;
  NetLimits limits;
};

// The rate-limit key of a client at this address: an IPv6 client owns its whole /64.
std::string networkOf(const boost::asio::ip::address& address);

// Accepts TCP connections and owns them: HTTP, pages and WebSocket sessions. Everything but the constructor and url()
// belongs to the loop's thread.
class Listener : private IConnectionOwner {
 public:
  // Takes the port, but no connection yet. Throws std::runtime_error if the port is unavailable or a TLS file is
  // invalid. All references must outlive the listener.
  Listener(boost::asio::io_context& context, ListenOptions options, ISessionOwner& sessions, IPageOwner& pages);

  // The link for a browser, "http://127.0.0.1:8700".
  std::string url() const;

  // Accepts connections from now on. May be called once.
  void start();

  // Stops accepting and ends all connections, sessions with 1001.
  void stop();

  TransportFigures figures() const;

 private:
  struct Entry {
    std::shared_ptr<Connection> connection;
    Remote remote;
    int64_t number = 0;  // in the order of their arrival
  };

  void accept();
  void onAccept(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);
  void retryAccept(const std::string& reason);
  bool makeRoom();
  void open(boost::asio::ip::tcp::socket socket);
  void onRequestHead(const HttpRequest& request, IPageOwner::Answer answer) override;
  void onUpgrade(Connection& connection, std::unique_ptr<SecureStream> stream, UpgradeRequest request) override;
  void onBacklog(size_t before, size_t now) override;
  void onEnded(Connection& connection) override;

  const ListenOptions options_;
  ISessionOwner& sessions_;
  IPageOwner& pages_;
  const std::shared_ptr<boost::asio::ssl::context> tls_;  // null without TLS
  const OriginPolicy origins_;
  CompressionMemory compressionMemory_;
  boost::asio::ip::tcp::acceptor acceptor_;
  boost::asio::steady_timer retryTimer_;
  uint16_t port_ = 0;
  std::unordered_map<const Connection*, Entry> connections_;
  size_t backlogBytes_ = 0;  // of all connections
  int64_t lastNumber_ = 0;
  uint64_t refusedConnections_ = 0;
  uint64_t refusedOrigins_ = 0;
};

}  // namespace orvane::terminal
