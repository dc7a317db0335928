#include "terminal/gateway.h"

#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {

Gateway::Gateway(AsioLoop& loop, ListenOptions listen, PhonesOptions phones, WhenStored whenStored)
    : loop_(loop),
      phones_(loop_,
              [&] {
                phones.figures = [this] { return listener_.figures(); };
                return std::move(phones);
              }()),
      listener_(loop_.context(), std::move(listen), phones_, phones_),
      server_(
          phones_, std::move(whenStored), [this] { start(); }, [this] { stop(); }) {}

void Gateway::start() {
  phones_.start();
  listener_.start();
  loop_.start();
}

// Ends all sessions with 1001. The loop's thread ends with the last of them.
void Gateway::stop() {
  if (!loop_.isStarted()) return;
  loop_.post([this] {
    phones_.stop();
    listener_.stop();
  });
  loop_.join();
  TERMINAL_LOG(gatewayLogger(), Info, "stopped");
}

}  // namespace orvane::terminal
