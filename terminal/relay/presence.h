#pragma once

#include <functional>
#include <memory>
#include <string>

#include "terminal/eventloop.h"
#include "terminal/relay/bus.h"
#include "terminal/relay/subjects.h"

namespace orvane::terminal::relay {

// Claims the name of a terminal and then shows each second that it is present. Of two terminals with one name the one
// that started first stays: the other listens until the first is gone. One thread.
class Presence {
 public:
  struct Events {
    std::function<void()> onLost;   // the name was held until now
    std::function<void()> onTaken;  // another terminal holds it
  };

  // All references must outlive it.
  Presence(IEventLoop& loop, IBus& bus, Party self, Events events);

  void onUp();
  void onDown() { timer_.reset(); }

  // A message under the terminal's own name, from another run of it if `epoch` differs.
  void onHeard(std::string_view epoch);

  // Gives the name up.
  void leave();

  bool isPresent() const { return isPresent_; }
  bool wasPresent() const { return lastShown_ != BootTime{}; }  // ever

 private:
  void claim(std::chrono::milliseconds listening);
  void show();
  void lose();

  IEventLoop& loop_;
  IBus& bus_;
  const Party self_;
  const std::string subject_;
  const Events events_;
  bool isPresent_ = false;
  BootTime lastShown_{};
  std::unique_ptr<Timer> timer_;
};

}  // namespace orvane::terminal::relay
