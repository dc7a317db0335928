#include "terminal/gateway.h"

#include <functional>
#include <future>
#include <memory>
#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr std::chrono::milliseconds kDrainTime{1500};
constexpr std::chrono::seconds kNoteTime{1};

// Asks the disk's thread for something and waits for it. False if it is not done in time.
bool await(std::chrono::seconds limit, const std::function<void(GatewayStore::Done)>& ask) {
  const auto done = std::make_shared<std::promise<void>>();
  ask([done](const std::string&) { done->set_value(); });
  return done->get_future().wait_for(limit) == std::future_status::ready;
}

}  // namespace

Gateway::Gateway(AsioLoop& loop, Entrances entrances, const StoreOptions& store, PhonesOptions phones,
                 WhenStored whenStored)
    : loop_(loop),
      store_(store, loop_),
      phones_(loop_, store_,
              [&] {
                phones.figures = [this] { return figures(); };
                phones.probe = [this, probe = std::move(phones.probe)] { return check(probe); };
                return std::move(phones);
              }()),
      server_(
          phones_, std::move(whenStored), [this] { start(); }, [this] { stop(); }) {
  if (entrances.listen) listener_.emplace(loop_.context(), std::move(*entrances.listen), phones_, phones_);
  if (!entrances.relay) return;
  RelayEntrance& relay = *entrances.relay;
  name_ = relay.port.name;
  page_ = relay.link.credentials.page;
  link_ = std::make_unique<relay::NatsLink>(loop_, std::move(relay.link));
  port_ = std::make_unique<relay::TerminalPort>(loop_, *link_, phones_, std::move(relay.port));
}

std::string Gateway::url() const { return port_ != nullptr ? page_ : listener_->url(); }

std::string Gateway::link() const { return port_ != nullptr ? page_ + "/#terminal=" + name_ : url() + '/'; }

TransportFigures Gateway::figures() const {
  TransportFigures all = listener_ ? listener_->figures() : TransportFigures{};
  if (port_ != nullptr) all.connections += port_->figures().connections;
  return all;
}

// Without its relays a terminal still serves direct connections.
std::vector<HealthCheck> Gateway::check(const HealthProbe& probe) const {
  std::vector<HealthCheck> checks = probe ? probe() : std::vector<HealthCheck>{};
  if (port_ == nullptr) return checks;
  HealthCheck connection{.name = "relay:connection", .output = port_->fault()};
  if (!connection.output.empty()) connection.status = HealthStatus::Warn;
  checks.push_back(std::move(connection));
  return checks;
}

void Gateway::start() {
  disk_.start();
  phones_.start();
  if (listener_) listener_->start();
  if (port_ != nullptr) port_->start();
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

void Gateway::noteLink() {
  await(kNoteTime, [this](const GatewayStore::Done& done) { store_.noteLink(link(), done); });
}

bool Gateway::awaitDisk(std::chrono::seconds limit) {
  return await(limit, [this](const GatewayStore::Done& done) { store_.readTokens(done); });
}

// Ends all sessions with 1001. The loop's thread ends with the last of them.
void Gateway::stop() {
  if (!loop_.isStarted()) return;
  loop_.post([this] {
    phones_.stop();
    if (listener_) listener_->stop();
    if (port_ != nullptr) port_->stop();
  });
  loop_.join();
  disk_.stop();
  TERMINAL_LOG(gatewayLogger(), Info, "stopped");
}

}  // namespace orvane::terminal
