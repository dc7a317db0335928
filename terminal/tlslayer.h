#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream_base.hpp>
#include <functional>
#include <memory>
#include <span>

#include <openssl/ssl.h>

namespace orvane::terminal {

// TLS on a TCP connection. OpenSSL reads and writes the socket itself and gives its buffers back, so an idle connection
// holds none; Asio's stream keeps four of 17 KiB. One read and one write may run at a time. `done` is called later, on
// the socket's executor, and must keep the layer alive.
class TlsLayer {
 public:
  using Done = std::function<void(boost::system::error_code, size_t)>;
  using Socket = boost::asio::ip::tcp::socket;

  // Both must outlive the layer.
  TlsLayer(Socket& socket, boost::asio::ssl::context& context);

  // REQUIRES: the socket is connected.
  void handshake(boost::asio::ssl::stream_base::handshake_type type, Done done);

  void readSome(boost::asio::mutable_buffer buffer, Done done);
  void writeSome(std::span<const boost::asio::const_buffer> buffers, Done done);

  // Says the end, and waits for the peer's.
  void shutdown(Done done);

 private:
  // An operation of OpenSSL, which is repeated until it returns more than 0 or fails.
  using Step = std::function<int(SSL*)>;
  void run(const Step& step, Done done);

  Socket& socket_;
  std::unique_ptr<SSL, decltype(&SSL_free)> ssl_;
};

}  // namespace orvane::terminal
