#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <iterator>
#include <string>

namespace orvane::test {

// A TCP connection that sends any bytes. No call waits longer than 30 seconds.
class RawSocket {
 public:
  explicit RawSocket(uint16_t port) {
    stream_.expires_after(std::chrono::seconds(30));
    stream_.expires_after(std::chrono::seconds(90));  // for all reads together, so that none waits forever
    stream_.connect("127.0.0.1", std::to_string(port));
  }

  RawSocket& operator<<(const std::string& bytes) {
    stream_ << bytes << std::flush;
    return *this;
  }

  // Everything until the other side closes the connection.
  std::string readToEnd() { return {std::istreambuf_iterator<char>(stream_), {}}; }

  // This many bytes, or fewer if the connection ends.
  std::string read(size_t count) {
    std::string bytes(count, '\0');
    stream_.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<size_t>(stream_.gcount()));
    return bytes;
  }

  // Everything up to and including `end`.
  std::string readUntil(const std::string& end) {
    std::string text;
    for (char c = 0; !text.ends_with(end) && stream_.get(c);) text += c;
    return text;
  }

 private:
  boost::asio::ip::tcp::iostream stream_;
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
  const std::string mask(4, '\0');
  if (payload.size() < 126) return head + bigEndian(0x80 + payload.size(), 1) + mask + payload;
  return head + ("\xFE" + bigEndian(payload.size(), 2)) + mask + payload;
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
