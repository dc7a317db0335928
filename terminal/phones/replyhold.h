#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/mobilemessage.h"

namespace orvane::terminal {

// Calls its argument once, on any thread: with an empty text when everything is stored that the calling thread has
// changed, or with what the client gets in place of the reply, UTF-8.
using WhenStored = std::function<void(std::function<void(const std::string& failure)>)>;

// Holds each reply back until what it reports is stored, so that no client is told of an order that a crash could undo.
// Messages that answer no request pass at once: the host sends them only when their contents are stored.
class ReplyHold {
 public:
  // Long replies are shared, not copied.
  using Deliver = std::function<void(std::shared_ptr<const MobileMessage>)>;

  ReplyHold(WhenStored whenStored, Deliver deliver);
  ~ReplyHold();
  ReplyHold(const ReplyHold&) = delete;
  ReplyHold& operator=(const ReplyHold&) = delete;

  // To be called on the thread that made the changes.
  void send(const MobileMessage& message);

  // Nothing is delivered after it returns, not even what is held.
  void close();

 private:
  struct Held;

  WhenStored whenStored_;
  std::shared_ptr<Held> held_;  // outlives this while replies are held
};

}  // namespace orvane::terminal
