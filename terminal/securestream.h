#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream_base.hpp>
#include <boost/beast/core/role.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/container/static_vector.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "terminal/tlslayer.h"

namespace orvane::terminal {

// A TCP connection with or without TLS. It has no deadlines: close next_layer() to end its operations. Asio and Beast
// call it with many types of buffers and handlers; it converts them to one, so that the layers below are compiled once.
class SecureStream {
  using Clock = std::chrono::steady_clock;

  template <typename... Results>
  using Completion = std::function<void(boost::system::error_code, Results...)>;

  template <typename Buffer>
  using Buffers = boost::container::static_vector<Buffer, 16>;

 public:
  using next_layer_type = boost::beast::tcp_stream;
  using executor_type = next_layer_type::executor_type;

  // Without TLS if `context` is null. It must outlive the stream.
  SecureStream(next_layer_type tcp, boost::asio::ssl::context* context);
  SecureStream(const SecureStream&) = delete;
  SecureStream& operator=(const SecureStream&) = delete;

  executor_type get_executor() { return tcp_.get_executor(); }
  next_layer_type& next_layer() { return tcp_; }
  const next_layer_type& next_layer() const { return tcp_; }
  bool isSecure() const { return tls_.has_value(); }

  // When bytes last arrived, and when the peer last accepted some; the stream's construction if never.
  Clock::time_point lastRead() const { return lastRead_; }
  Clock::time_point lastWritten() const { return lastWritten_; }

  // REQUIRES: isSecure().
  void handshake(boost::asio::ssl::stream_base::handshake_type type, Completion<> done);

  // Shuts down sending, and with TLS waits for the peer to do so.
  void shutdown(boost::beast::role_type role, Completion<> done);

  // What Asio and Beast require of a stream.
  template <typename Handler>
  friend void async_teardown(boost::beast::role_type role, SecureStream& stream, Handler&& handler) {
    stream.shutdown(role, completion<>(std::forward<Handler>(handler)));
  }
  template <typename Sequence, typename Handler>
  void async_read_some(const Sequence& buffers, Handler&& handler) {
    readSome(firstOf<boost::asio::mutable_buffer>(buffers), completion<size_t>(std::forward<Handler>(handler)));
  }
  template <typename Sequence, typename Handler>
  void async_write_some(const Sequence& buffers, Handler&& handler) {
    writeSome(firstOf<boost::asio::const_buffer>(buffers), completion<size_t>(std::forward<Handler>(handler)));
  }

 private:
  // Lets std::function hold a move-only handler.
  template <typename... Results, typename Handler>
  static Completion<Results...> completion(Handler&& handler) {
    return [held = std::make_shared<std::decay_t<Handler>>(std::forward<Handler>(handler))](
               boost::system::error_code error, Results... results) { (*held)(error, results...); };
  }

  // Wraps `done`: notes the time first if any bytes were moved.
  static Completion<size_t> noting(Clock::time_point& time, Completion<size_t> done);

  template <typename Buffer, typename Sequence>
  static Buffers<Buffer> firstOf(const Sequence& sequence) {
    Buffers<Buffer> first;
    const auto end = boost::asio::buffer_sequence_end(sequence);
    for (auto each = boost::asio::buffer_sequence_begin(sequence); each != end; ++each) {
      const Buffer buffer(*each);
      if (buffer.size() > 0 && first.size() < first.capacity()) first.push_back(buffer);
    }
    return first;
  }

  void readSome(const Buffers<boost::asio::mutable_buffer>& buffers, Completion<size_t> done);
  void writeSome(const Buffers<boost::asio::const_buffer>& buffers, Completion<size_t> done);

  next_layer_type tcp_;
  std::optional<TlsLayer> tls_;
  Clock::time_point lastRead_ = Clock::now();
  Clock::time_point lastWritten_ = lastRead_;
};

}  // namespace orvane::terminal
