#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "terminal/eventloop.h"
#include "terminal/relay/channel.h"
#include "terminal/relay/message.h"
#include "terminal/relay/subjects.h"
#include "terminal/relay/window.h"
#include "terminal/session.h"

namespace orvane::terminal::relay {

class TerminalLine;

// A client of the relay.
struct Phone {
  std::shared_ptr<Session> session;
  std::unique_ptr<Timer> timer;  // the limit of its first frame
  TerminalLine* line = nullptr;  // null before its first frame, and once its session has ended
  uint64_t id = 0;
  SendWindow up;
  ReceiveWindow down;
};

// The relay's side of the channel to one run of a terminal, with the clients that use it. The loop's thread.
class TerminalLine {
 public:
  TerminalLine(const IClock& clock, IBus& bus, const Party& self, const Party& terminal, uint64_t channel);

  const Party& terminal() const { return terminal_; }
  uint64_t channel() const { return channel_.id(); }

  // `phone` must stay where it is until it is removed.
  void add(Phone& phone);

  // The client has gone.
  void remove(Phone& phone);

  // Sends a frame of the client, or closes a client that sends more than the terminal takes.
  void forward(Phone& phone, std::string_view text);

  // The client has taken so many bytes.
  void release(Phone& phone, size_t bytes);

  // False if the channel is broken: the caller ends it.
  bool onMessage(const Message& message);

  void beat() { channel_.send({.kind = Kind::Beat}); }
  bool isSilent() const { return channel_.isSilent(); }

  // Ends the channel for the terminal too.
  void reset() { channel_.reset(); }

  // Closes all clients.
  void end(CloseCode code, std::string_view reason);

 private:
  void pump(Phone& phone);
  void deliver(uint64_t id, const Session::Text& text, bool isLast);
  void close(Phone& phone, const Message& message);

  const Party terminal_;
  Channel channel_;
  std::unordered_map<uint64_t, Phone*> phones_;
  uint64_t lastId_ = 0;
};

}  // namespace orvane::terminal::relay
