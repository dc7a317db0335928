#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <iterator>
#include <string>

namespace orvane::test {

// A TCP connection that sends any bytes. No call waits longer than 60 seconds; what is sent behind its end is lost.
class RawSocket {
 public:
  // `from` is an address of the network 127.0.0.0/8.
  explicit RawSocket(uint16_t port, const std::string& from = "127.0.0.1") {
    using boost::asio::ip::address_v4;
    using boost::asio::ip::tcp;
    auto& socket = stream_.socket();
    boost::system::error_code error;
    socket.open(tcp::v4());
    socket.set_option(tcp::no_delay(true));
    socket.bind({boost::asio::ip::make_address_v4(from), 0});
    socket.connect({address_v4::loopback(), port}, error);  // without a connection nothing can be read
  }

  RawSocket& operator<<(const std::string& bytes) {
    renew();
    stream_ << bytes << std::flush;
    stream_.clear();  // what came before can be read all the same
    return *this;
  }

  // Everything until the other side closes the connection.
  std::string readToEnd() {
    renew();
    return {std::istreambuf_iterator<char>(stream_), {}};
  }

  // This many bytes, or fewer if the connection ends.
  std::string read(size_t count) {
    renew();
    std::string bytes(count, '\0');
    stream_.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<size_t>(stream_.gcount()));
    return bytes;
  }

  // Everything up to and including `end`.
  std::string readUntil(const std::string& end) {
    renew();
    std::string text;
    for (char c = 0; !text.ends_with(end) && stream_.get(c);) text += c;
    return text;
  }

 private:
  void renew() { stream_.expires_after(std::chrono::seconds(60)); }

  using Clock = std::chrono::steady_clock;

  // The stream's usual clock depends on which headers are included before.
  boost::asio::basic_socket_iostream<boost::asio::ip::tcp, Clock, boost::asio::wait_traits<Clock>> stream_;
};

inline const std::string kUpgrade =
    "GET /ws HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
    "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n\r\n";

inline std::string bigEndian(size_t number, size_t bytes) {
  std::string text;
  while (bytes-- > 0) text += static_cast<char>(number >> (8 * bytes) & 0xFF);
  return text;
}

// A WebSocket frame whose mask is all zero.
inline std::string frame(const std::string& payload, char head = '\x81') {
  const size_t size = payload.size();
  const size_t extended = size < 126 ? 0 : size < 65536 ? 2 : 8;
  const size_t code = extended == 0 ? size : extended == 2 ? 126 : 127;
  return head + bigEndian(0x80 + code, 1) + bigEndian(size, extended) + std::string(4, '\0') + payload;
}

inline RawSocket openWebSocket(uint16_t port) {
  RawSocket socket(port);
  socket << kUpgrade;
  socket.readUntil("\r\n\r\n");
  return socket;
}

// The answer to a GET. Each of the header lines has its line end.
inline std::string httpGet(uint16_t port, const std::string& path, const std::string& headers = "Host: localhost\r\n") {
  return (RawSocket(port) << "GET " + path + " HTTP/1.1\r\n" + headers + "\r\n").readToEnd();
}

}  // namespace orvane::test
