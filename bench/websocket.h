#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket.hpp>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace orvane::bench {

using Socket = boost::beast::websocket::stream<boost::asio::ip::tcp::socket>;

inline void require(const boost::system::error_code& error) {
  if (error) throw std::runtime_error("a client's connection failed: " + error.message());
}

// Connects to a server on this machine, sends `login` unless it is empty, and ignores the answer.
inline void connect(Socket& ws, uint16_t port, const std::string& login) {
  ws.read_message_max(size_t{64} * 1024 * 1024);  // 10,000 positions are 13 MB
  ws.next_layer().connect({boost::asio::ip::address_v4::loopback(), port});
  ws.next_layer().set_option(boost::asio::ip::tcp::no_delay(true));
  ws.handshake("127.0.0.1", "/ws");
  if (!login.empty()) {
    boost::beast::flat_buffer answer;
    ws.write(boost::asio::buffer(login));
    ws.read(answer);
  }
}

}  // namespace orvane::bench
