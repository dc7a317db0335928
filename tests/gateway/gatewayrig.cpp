#include "tests/gateway/gatewayrig.h"

#include <future>
#include <stdexcept>
#include <utility>

#include "terminal/gatewaydatabase.h"
#include "terminal/rights.h"
#include "terminal/tokens.h"

namespace orvane::test {
namespace {

constexpr std::chrono::seconds kPatience{30};

}  // namespace

void MovableLoop::run(const Work& work) {
  std::promise<void> done;
  post([&] {
    work();
    done.set_value();
  });
  if (done.get_future().wait_for(kPatience) != std::future_status::ready) {
    std::terminate();  // `done` must not go away while the loop may still reach it
  }
}

void ScriptedAgent::onRequest(int64_t requestId, int32_t terminalType, const std::string& topic,
                              const std::string& data) {
  const std::lock_guard lock(mutex_);
  calls_.push_back({requestId, terminalType, topic, data, time_.bootTime()});
  came_.notify_one();
}

std::optional<AgentCall> ScriptedAgent::take(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  if (!came_.wait_for(lock, limit, [this] { return !calls_.empty(); })) return std::nullopt;
  AgentCall call = std::move(calls_.front());
  calls_.pop_front();
  return call;
}

SQLite::Database GatewayRig::openDatabase() const { return terminal::openGatewayDatabase(dataDir()); }

std::string GatewayRig::addToken(const std::string& name, int rights) const {
  SQLite::Database db = openDatabase();
  return terminal::addToken(db, name, terminal::Rights(rights));
}

void GatewayRig::settle() {
  if (!gateway_->awaitDisk(kPatience)) throw std::runtime_error("the disk's thread hangs");
  loop_->run([] {});
}

void GatewayRig::advance(std::chrono::seconds time) {
  settle();
  loop_->run([&] { time_.advance(time); });
}

void GatewayRig::sleep(std::chrono::seconds time) {
  settle();
  loop_->run([&] { time_.sleep(time); });
}

void GatewayRig::attachAgent() { gateway_->mobileService().registerSpi(agent_, &handle_); }
void GatewayRig::detachAgent() { gateway_->mobileService().unregisterSpi(handle_); }

void GatewayRig::start() {
  loop_ = std::make_unique<MovableLoop>(time_);
  gateway_ = std::make_unique<terminal::Gateway>(
      *loop_,
      terminal::Entrances{
          .listen = terminal::ListenOptions{.port = 0, .tls = {}, .allowedOrigins = {}, .limits = limits_},
          .relay = {}},
      terminal::StoreOptions{.dataDir = dataDir(), .audit = {}}, terminal::PhonesOptions{.probe = {}, .figures = {}},
      [](auto answer) { answer(""); });
  const std::string url = gateway_->url();
  port_ = static_cast<uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
  if (gateway_->mobileService().start({}).code != 0) throw std::runtime_error("the gateway did not start");
  attachAgent();
}

void GatewayRig::stop() {
  detachAgent();
  gateway_->mobileService().stop();
  gateway_.reset();
  loop_.reset();
  agent_ = std::make_shared<ScriptedAgent>(time_);
}

}  // namespace orvane::test
