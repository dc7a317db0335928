#pragma once

#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/websocket/teardown.hpp>
#include <optional>
#include <utility>

namespace orvane::terminal {

// A TCP connection with or without TLS on it: one type for both, so that what runs on it is compiled once. Give
// deadlines to next_layer(); they hold for both.
class SecureStream {
 public:
  using next_layer_type = boost::beast::tcp_stream;
  using executor_type = next_layer_type::executor_type;

  // Plain where there is no `context`, which must outlive the stream.
  SecureStream(next_layer_type tcp, boost::asio::ssl::context* context) : tcp_(std::move(tcp)) {
    if (context != nullptr) tls_.emplace(tcp_, *context);
  }
  SecureStream(const SecureStream&) = delete;
  SecureStream& operator=(const SecureStream&) = delete;

  executor_type get_executor() { return tcp_.get_executor(); }
  next_layer_type& next_layer() { return tcp_; }
  const next_layer_type& next_layer() const { return tcp_; }
  bool isSecure() const { return tls_.has_value(); }

  // REQUIRES: isSecure().
  template <typename Handler>
  void handshake(boost::asio::ssl::stream_base::handshake_type type, Handler&& handler) {
    tls_->async_handshake(type, std::forward<Handler>(handler));
  }

  // Says the end, and with TLS waits for the peer's.
  template <typename Handler>
  void shutdown(boost::beast::role_type role, Handler&& handler) {
    using boost::beast::websocket::async_teardown;
    if (tls_) return tls_->async_shutdown(std::forward<Handler>(handler));
    async_teardown(role, tcp_, std::forward<Handler>(handler));
  }

  // What Asio and Beast ask of a stream.
  template <typename Buffers, typename Handler>
  void async_read_some(const Buffers& buffers, Handler&& handler) {
    if (tls_) return tls_->async_read_some(buffers, std::forward<Handler>(handler));
    tcp_.async_read_some(buffers, std::forward<Handler>(handler));
  }
  template <typename Buffers, typename Handler>
  void async_write_some(const Buffers& buffers, Handler&& handler) {
    if (tls_) return tls_->async_write_some(buffers, std::forward<Handler>(handler));
    tcp_.async_write_some(buffers, std::forward<Handler>(handler));
  }

 private:
  next_layer_type tcp_;
  std::optional<boost::asio::ssl::stream<next_layer_type&>> tls_;
};

// How Beast ends the connection below a closed WebSocket.
template <typename Handler>
void async_teardown(boost::beast::role_type role, SecureStream& stream, Handler&& handler) {
  stream.shutdown(role, std::forward<Handler>(handler));
}

}  // namespace orvane::terminal
