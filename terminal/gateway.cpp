#include "terminal/gateway.h"

#include <functional>
#include <future>
#include <memory>
#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr std::chrono::seconds kDrainTime{2};
constexpr std::chrono::seconds kNoteTime{1};

// Asks the disk's thread for something and waits for it. False if it is not done in time.
bool await(std::chrono::seconds limit, const std::function<void(GatewayStore::Done)>& ask) {
  const auto done = std::make_shared<std::promise<void>>();
  ask([done](const std::string&) { done->set_value(); });
  return done->get_future().wait_for(limit) == std::future_status::ready;
}

}  // namespace

Gateway::Gateway(AsioLoop& loop, ListenOptions listen, const StoreOptions& store, PhonesOptions phones,
                 WhenStored whenStored)
    : loop_(loop),
      store_(store, loop_),
      phones_(loop_, store_,
              [&] {
                phones.figures = [this] { return listener_.figures(); };
                return std::move(phones);
              }()),
      listener_(loop_.context(), std::move(listen), phones_, phones_),
      server_(
          phones_, std::move(whenStored), [this] { start(); }, [this] { stop(); }) {}

void Gateway::start() {
  disk_.start();
  phones_.start();
  listener_.start();
  loop_.start();
}

void Gateway::drain() {
  if (!loop_.isStarted()) return;
  const auto drained = std::make_shared<std::promise<void>>();
  loop_.post([this, drained] { phones_.drain([drained] { drained->set_value(); }); });
  if (drained->get_future().wait_for(kDrainTime) == std::future_status::timeout) {
    TERMINAL_LOG(gatewayLogger(), Warn, "the library has not answered in time: some outcomes remain unknown");
  }
}

void Gateway::noteUrl() {
  await(kNoteTime, [this](const GatewayStore::Done& done) { store_.noteUrl(url(), done); });
}

bool Gateway::awaitDisk(std::chrono::seconds limit) {
  return await(limit, [this](const GatewayStore::Done& done) { store_.readTokens(done); });
}

// Ends all sessions with 1001. The loop's thread ends with the last of them.
void Gateway::stop() {
  if (!loop_.isStarted()) return;
  loop_.post([this] {
    phones_.stop();
    listener_.stop();
  });
  loop_.join();
  disk_.stop();
  TERMINAL_LOG(gatewayLogger(), Info, "stopped");
}

}  // namespace orvane::terminal
