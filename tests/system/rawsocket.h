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
    stream_.connect("127.0.0.1", std::to_string(port));
  }

  RawSocket& operator<<(const std::string& bytes) {
    stream_ << bytes << std::flush;
    return *this;
  }

  // Everything until the other side closes the connection.
  std::string readToEnd() { return {std::istreambuf_iterator<char>(stream_), {}}; }

  // Everything up to and including `end`.
  std::string readUntil(const std::string& end) {
    std::string text;
    for (char c = 0; !text.ends_with(end) && stream_.get(c);) text += c;
    return text;
  }

 private:
  boost::asio::ip::tcp::iostream stream_;
};

// The answer to a GET. Each of the header lines has its line end.
inline std::string httpGet(uint16_t port, const std::string& path, const std::string& headers = "Host: localhost\r\n") {
  return (RawSocket(port) << "GET " + path + " HTTP/1.1\r\n" + headers + "\r\n").readToEnd();
}

}  // namespace orvane::test
