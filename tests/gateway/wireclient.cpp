#include "tests/gateway/wireclient.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace orvane::test {
namespace {

constexpr timeval kPatience{60, 0};
constexpr char kText = '\x81';
constexpr char kClose = '\x88';
constexpr char kPing = '\x89';
constexpr char kPong = '\x8A';

[[noreturn]] void fail(const std::string& what) { throw std::runtime_error(what + ": " + std::strerror(errno)); }

sockaddr_in endpoint(const std::string& address, uint16_t port) {
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(port);
  to.sin_addr.s_addr = inet_addr(address.c_str());
  return to;
}

int connectFrom(const std::string& from, uint16_t port) {
  const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int yes = 1;
  setsockopt(made, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
  setsockopt(made, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
  setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  const sockaddr_in local = endpoint(from, 0);
  const sockaddr_in remote = endpoint("127.0.0.1", port);
  if (bind(made, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0 &&
      connect(made, reinterpret_cast<const sockaddr*>(&remote), sizeof remote) == 0) {
    return made;
  }
  close(made);
  fail("cannot connect from " + from);
}

size_t number(std::string_view bigEndian) {
  size_t value = 0;
  for (const char c : bigEndian) value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

// Clients must mask their frames; a mask of zeros will do.
std::string frameOf(char head, std::string_view payload) {
  std::string bytes{head};
  const size_t size = payload.size();
  const int extended = size < 126 ? 0 : size < 65536 ? 2 : 8;
  bytes += static_cast<char>(0x80 | (extended == 0 ? size : extended == 2 ? 126 : 127));
  for (int i = extended; i-- > 0;) bytes += static_cast<char>(size >> (8 * i) & 0xFF);
  return bytes.append(4, '\0').append(payload);
}

}  // namespace

WireClient::WireClient(uint16_t port, const std::string& from) : socket_(connectFrom(from, port)) {
  write(
      "GET /ws HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13"
      "\r\nSec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n\r\n");
  while (buffer_.find("\r\n\r\n") == std::string::npos) fill(buffer_.size() + 1);
  if (!buffer_.starts_with("HTTP/1.1 101 ")) throw std::runtime_error("no WebSocket: " + buffer_);
  buffer_.erase(0, buffer_.find("\r\n\r\n") + 4);
}

WireClient::~WireClient() { close(socket_); }

void WireClient::send(std::string_view text) { write(frameOf(kText, text)); }

void WireClient::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && (errno == EPIPE || errno == ECONNRESET)) return;
    if (sent < 0) fail("cannot send");
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
}

// Reads until that much is in the buffer.
void WireClient::fill(size_t bytes) {
  char chunk[16 * 1024];
  while (buffer_.size() < bytes) {
    const ssize_t got = recv(socket_, chunk, sizeof chunk, 0);
    if (got == 0) throw std::runtime_error("the gateway ended the connection without a close frame");
    if (got < 0) fail("nothing comes from the gateway");
    buffer_.append(chunk, static_cast<size_t>(got));
  }
}

WireClient::Frame WireClient::readFrame() {
  fill(2);
  const size_t shortSize = number(buffer_.substr(1, 1));
  const size_t extended = shortSize < 126 ? 0 : shortSize == 126 ? 2 : 8;
  fill(2 + extended);
  const size_t size = extended == 0 ? shortSize : number(buffer_.substr(2, extended));
  fill(2 + extended + size);
  Frame frame{buffer_[0], buffer_.substr(2 + extended, size)};
  buffer_.erase(0, 2 + extended + size);
  return frame;
}

// False for a pong.
bool WireClient::keep(Frame frame) {
  if (frame.head == kPong) return false;
  if (frame.head == kPing) {
    write(frameOf(kPong, frame.payload));
  } else if (frame.head == kText) {
    kept_.push_back({std::move(frame.payload)});
  } else if (frame.head == kClose) {
    isClosed_ = true;
    write(frameOf(kClose, frame.payload.substr(0, 2)));
    kept_.push_back({{}, static_cast<uint16_t>(number(frame.payload.substr(0, 2))), frame.payload.erase(0, 2)});
  } else {
    throw std::runtime_error("an unexpected frame came");
  }
  return true;
}

WireClient::Message WireClient::receive() {
  while (kept_.empty()) keep(readFrame());
  Message message = std::move(kept_.front());
  kept_.pop_front();
  return message;
}

bool WireClient::sync() {
  if (!isClosed_) write(frameOf(kPing, ""));
  while (!isClosed_ && keep(readFrame())) continue;
  return !kept_.empty();
}

std::string get(uint16_t port, const std::string& path) {
  const int socket = connectFrom("127.0.0.1", port);
  const std::string request = "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
  std::string answer;
  ssize_t got = ::send(socket, request.data(), request.size(), MSG_NOSIGNAL);
  char chunk[16 * 1024];
  while (got > 0 && (got = recv(socket, chunk, sizeof chunk, 0)) > 0) answer.append(chunk, static_cast<size_t>(got));
  close(socket);
  return answer;
}

}  // namespace orvane::test
