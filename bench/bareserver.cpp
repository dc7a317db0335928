#include "bench/bareserver.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

namespace orvane::bench {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;
using boost::system::error_code;

// One connection; lives as long as one of its handlers.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(tcp::socket socket, const std::string& reply) : ws_(std::move(socket)), reply_(reply) {}

  void start() {
    ws_.next_layer().set_option(tcp::no_delay(true));
    ws_.text(true);
    ws_.async_accept([self = shared_from_this()](const error_code& error) { self->onWritten(error); });
  }

 private:
  void onWritten(const error_code& error) {
    if (!error) {
      buffer_.clear();
      ws_.async_read(buffer_, [self = shared_from_this()](const error_code& e, size_t /*bytes*/) { self->onRead(e); });
    }
  }
  void onRead(const error_code& error) {
    if (!error) {
      ws_.async_write(asio::buffer(reply_),
                      [self = shared_from_this()](const error_code& e, size_t /*bytes*/) { self->onWritten(e); });
    }
  }

  beast::websocket::stream<tcp::socket> ws_;
  beast::flat_buffer buffer_;
  const std::string& reply_;
};

void accept(tcp::acceptor& acceptor, const std::string& reply) {
  acceptor.async_accept([&](const error_code& error, tcp::socket socket) {
    if (!error) std::make_shared<Connection>(std::move(socket), reply)->start();
    accept(acceptor, reply);
  });
}

}  // namespace

void runBareServer(const std::string& reply) {
  asio::io_context io{1};
  tcp::acceptor acceptor(io, {asio::ip::address_v4::loopback(), 0});
  fmt::print("http://127.0.0.1:{}/\n", acceptor.local_endpoint().port());
  std::fflush(stdout);
  accept(acceptor, reply);
  io.run();
  throw std::logic_error("the bare server ran out of work");
}

}  // namespace orvane::bench
