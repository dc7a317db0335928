#include "tests/gateway/wireclient.h"

#include <stdexcept>

namespace orvane::test {
namespace {

constexpr char kText = '\x81';
constexpr char kClose = '\x88';
constexpr char kPing = '\x89';
constexpr char kPong = '\x8A';

size_t number(std::string_view bigEndian) {
  size_t value = 0;
  for (const char c : bigEndian) value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

}  // namespace

WireClient::WireClient(uint16_t port, const std::string& from) : socket_(port, from) {
  const std::string head = (socket_ << kUpgrade).readUntil("\r\n\r\n");
  if (!head.starts_with("HTTP/1.1 101 ")) throw std::runtime_error("no WebSocket: " + head);
}

void WireClient::send(std::string_view text) { socket_ << frame(std::string(text)); }

std::string WireClient::read(size_t count) {
  std::string bytes = socket_.read(count);
  if (bytes.size() < count) throw std::runtime_error("the connection ended without a close frame, or nothing comes");
  return bytes;
}

WireClient::Frame WireClient::readFrame() {
  const std::string head = read(2);
  const size_t shortSize = number(head.substr(1));
  const size_t size = shortSize < 126 ? shortSize : number(read(shortSize == 126 ? 2 : 8));
  return {head[0], read(size)};
}

// False for a pong.
bool WireClient::keep(Frame got) {
  if (got.head == kPong) return false;
  if (got.head == kPing) {
    socket_ << frame(got.payload, kPong);
  } else if (got.head == kText) {
    kept_.push_back({std::move(got.payload)});
  } else if (got.head == kClose) {
    isClosed_ = true;
    socket_ << frame(got.payload.substr(0, 2), kClose);
    kept_.push_back({{}, static_cast<uint16_t>(number(got.payload.substr(0, 2))), got.payload.erase(0, 2)});
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
  if (!isClosed_) socket_ << frame("", kPing);
  while (!isClosed_ && keep(readFrame())) continue;
  return !kept_.empty();
}

}  // namespace orvane::test
