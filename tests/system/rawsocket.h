#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <iterator>
#include <string>

namespace orvane::test {

// A TCP connection that says whatever a test wants, and waits for nothing but for 30 seconds at most.
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

  // All that comes until the other side ends the connection.
  std::string readToEnd() { return {std::istreambuf_iterator<char>(stream_), {}}; }

  // As much as comes with this at its end.
  std::string readUntil(const std::string& end) {
    std::string text;
    for (char c = 0; !text.ends_with(end) && stream_.get(c);) text += c;
    return text;
  }

 private:
  boost::asio::ip::tcp::iostream stream_;
};

// The answer to a GET with these header lines, each with its line end.
inline std::string httpGet(uint16_t port, const std::string& path, const std::string& headers = "Host: localhost\r\n") {
  return (RawSocket(port) << "GET " + path + " HTTP/1.1\r\n" + headers + "\r\n").readToEnd();
}

}  // namespace orvane::test
