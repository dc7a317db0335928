#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "tests/support/rawsocket.h"

namespace orvane::test {

// A client of the gateway made of a socket and nothing else: it shares no code with the terminal. No call waits longer
// than 60 seconds, and each throws std::runtime_error if the wait ends without what it is for. One thread.
class WireClient {
 public:
  // What the gateway sent: one text frame, or its last, the close frame.
  struct Message {
    std::string text;
    uint16_t closeCode = 0;  // 0 for a text frame
    std::string closeReason = {};
  };

  // Connects from an address of the network 127.0.0.0/8 and becomes a WebSocket.
  WireClient(uint16_t port, const std::string& from);

  // Sends a text frame. Does nothing once the gateway has closed the connection.
  void send(std::string_view text);

  // The next message. Answers a close frame.
  Message receive();

  // Waits until the gateway has read all that was sent, by a ping, and returns whether there are messages that
  // receive() has not returned.
  bool sync();

 private:
  struct Frame {
    char head = 0;
    std::string payload;
  };

  std::string read(size_t count);
  Frame readFrame();
  bool keep(Frame got);

  RawSocket socket_;
  std::deque<Message> kept_;  // received, not returned yet
  bool isClosed_ = false;     // the close frame has come
};

}  // namespace orvane::test
