#include "terminal/relay/natslink.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "terminal/logging.h"

namespace orvane::terminal::relay {
namespace {

constexpr std::chrono::milliseconds kPingPeriod{1000};    // as often as the heartbeats
constexpr std::chrono::milliseconds kPingPatience{4000};  // so a dead server is left when five heartbeats are missing
constexpr std::chrono::milliseconds kFirstPause{100};
constexpr std::chrono::milliseconds kLongestPause{2000};

bool isLoopback(std::string_view host) {
  return host == "localhost" || host == "[::1]" ||
         (host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string_view::npos);
}

}  // namespace

std::string checkUrl(const std::string& url) {
  const bool isSecure = url.starts_with("tls://");
  const std::string_view rest = std::string_view(url).substr(std::min(url.size(), size_t{isSecure ? 6U : 7U}));
  const size_t colon = rest.rfind(':');
  const bool hasPort = colon != std::string_view::npos && colon > 0 && colon + 1 < rest.size() &&
                       rest.find_first_not_of("0123456789", colon + 1) == std::string_view::npos;
  if ((!isSecure && !url.starts_with("nats://")) || !hasPort || rest.find_first_of("/@?# ") != std::string::npos) {
    return fmt::format("{} is not an address such as tls://server1.example:4222", url);
  }
  if (isSecure || isLoopback(rest.substr(0, colon))) return {};
  return fmt::format("beyond this machine the cluster is used with TLS only: tls://{}", rest);
}

NatsLink::~NatsLink() {
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
    changed_.notify_all();
  }
  if (thread_.joinable()) thread_.join();
}

void NatsLink::start(std::vector<std::string> subscriptions, IBusOwner& owner) {
  subscriptions_ = std::move(subscriptions);
  owner_ = &owner;
  thread_ = std::thread([this] { run(); });
}

// The loop has work until the link's thread has sent the rest and closed the connection.
void NatsLink::stop() {
  owner_ = nullptr;
  const std::lock_guard lock(mutex_);
  isStopping_ = true;
  changed_.notify_all();
}

void NatsLink::publish(std::string subject, std::string bytes) {
  if (connection_ != nullptr) connection_->publish(std::move(subject), std::move(bytes));
}

// Both ends hear of the break, as of every other: what was queued is lost.
void NatsLink::run() {
  std::chrono::milliseconds pause = kFirstPause;
  for (;;) {
    const auto connection = std::make_shared<ServerConnection>(loop_, [this] {
      const std::lock_guard lock(mutex_);
      changed_.notify_all();
    });
    std::string why;
    try {
      connection->connect(options_, subscriptions_);
      pause = kFirstPause;
      why = serve(connection);
    } catch (const std::runtime_error& error) {
      why = error.what();
    }
    loop_.post([this, connection, why] {
      connection->close();
      noteBreak(why);
    });
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, pause, [this] { return isStopping_; });
    if (isStopping_) return;
    pause = std::min(pause * 2, kLongestPause);
  }
}

// Until the connection breaks or the link stops. Returns why it broke.
std::string NatsLink::serve(const std::shared_ptr<ServerConnection>& connection) {
  loop_.post([this, connection] { take(connection); });
  const auto isOver = [this, &connection](std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, time, [&] { return connection->hasEnded() || isStopping_; });
  };
  while (!isOver(kPingPeriod)) {
    if (!connection->ping(kPingPatience) && !connection->hasEnded()) return "the server does not answer";
  }
  connection->flush(kPingPatience);
  return connection->lastError();
}

void NatsLink::take(std::shared_ptr<ServerConnection> connection) {
  if (owner_ == nullptr) return;
  TERMINAL_LOG(gatewayLogger(), Info, "connected to the cluster at {}", connection->server());
  connection_ = std::move(connection);
  fault_.clear();
  isUp_ = true;
  owner_->onUp();
  connection_->listen([this](std::string_view subject, std::string_view bytes) {
    if (owner_ != nullptr) owner_->onMessage(subject, bytes);
  });
}

void NatsLink::noteBreak(const std::string& why) {
  connection_.reset();
  if (owner_ == nullptr) return;
  if (why != fault_) TERMINAL_LOG(gatewayLogger(), Warn, "no connection to the cluster: {}; trying again", why);
  fault_ = why;
  if (std::exchange(isUp_, false)) owner_->onDown();
}

}  // namespace orvane::terminal::relay
