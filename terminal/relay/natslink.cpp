#include "terminal/relay/natslink.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>
#include <nats/nats.h>

#include "terminal/logging.h"

namespace orvane::terminal::relay {
namespace {

constexpr int64_t kConnectMillis = 2000;
constexpr int64_t kPingMillis = 1000;  // as often as the heartbeats
constexpr int kMaxPings = 4;           // so that a dead server is left when five heartbeats are missing
constexpr int64_t kWriteMillis = 5000;
constexpr size_t kMaxQueuedBytes = size_t{128} * 1024 * 1024;
constexpr std::chrono::milliseconds kFirstPause{100};
constexpr std::chrono::milliseconds kLongestPause{2000};

void require(natsStatus status, std::string_view what) {
  if (status == NATS_OK) return;
  const char* detail = nats_GetLastError(nullptr);
  throw std::runtime_error(fmt::format("{}: {}", what, detail != nullptr ? detail : natsStatus_GetText(status)));
}

std::string adviceFor(natsStatus status) {
  if (status == NATS_CONNECTION_AUTH_FAILED || status == NATS_NOT_PERMITTED) {
    return "; the server refuses the credentials: give it those of pocket-relay setup, and reload its configuration";
  }
  if (status == NATS_SECURE_CONNECTION_REQUIRED) return "; the server wants TLS: write tls:// in the URL";
  if (status == NATS_SECURE_CONNECTION_WANTED) return "; the server has no TLS: write nats:// in the URL";
  return "";
}

bool isLoopback(std::string_view host) {
  return host == "localhost" || host == "[::1]" ||
         (host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string_view::npos);
}

}  // namespace

void checkUrls(const std::vector<std::string>& urls) {
  for (const std::string& url : urls) {
    const bool isSecure = url.starts_with("tls://");
    const std::string_view rest = std::string_view(url).substr(std::min(url.size(), size_t{isSecure ? 6U : 7U}));
    const size_t colon = rest.rfind(':');
    const bool hasPort = colon != std::string_view::npos && colon > 0 && colon + 1 < rest.size() &&
                         rest.find_first_not_of("0123456789", colon + 1) == std::string_view::npos;
    if ((!isSecure && !url.starts_with("nats://")) || !hasPort || rest.find_first_of("/@?# ") != std::string::npos) {
      throw std::runtime_error(fmt::format("{} is not an address such as tls://server1.example:4222", url));
    }
    if (!isSecure && !isLoopback(rest.substr(0, colon))) {
      throw std::runtime_error(fmt::format("beyond this machine the cluster is used with TLS only: tls://{}", rest));
    }
  }
}

// Outlives the link if a callback of the library is late.
struct NatsLink::Shared {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Outgoing> queue;
  size_t queuedBytes = 0;
  bool isOpen = false;  // a connection takes messages
  bool isStopping = false;
  int callbacks = 0;  // of the library that may still run
  IEventLoop* loop = nullptr;
  IBusOwner* owner = nullptr;  // the loop's thread; null once stopped
};

class NatsLink::Connection {
  struct End {
    std::shared_ptr<Shared> shared;
    bool isBroken = false;  // under the shared mutex
  };

 public:
  Connection(const LinkOptions& options, const std::vector<std::string>& subscriptions, std::shared_ptr<Shared> shared)
      : key_(options.credentials.key), shared_(std::move(shared)) {
    connect(options);
    for (const std::string& each : subscriptions) subscribe(each);
    // The server has the subscriptions before anybody hears of this connection.
    require(natsConnection_FlushTimeout(connection_.get(), kConnectMillis), "the server does not answer");
  }
  ~Connection() { natsConnection_Close(connection_.get()); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void publish(const Outgoing& message) {
    require(natsConnection_Publish(connection_.get(), message.subject.c_str(), message.bytes.data(),
                                   static_cast<int>(message.bytes.size())),
            "cannot send");
  }

  // REQUIRES: the shared mutex is held.
  bool isBroken() const { return end_->isBroken; }

  void flush() { natsConnection_FlushTimeout(connection_.get(), kConnectMillis); }

  std::string lastError() const {
    const char* text = nullptr;
    const natsStatus status = natsConnection_GetLastError(connection_.get(), &text);
    return text != nullptr && *text != '\0' ? text : natsStatus_GetText(status);
  }

  std::string server() const {
    std::array<char, 256> url{};
    const natsStatus status = natsConnection_GetConnectedUrl(connection_.get(), url.data(), url.size());
    return status == NATS_OK ? url.data() : "a server";
  }

 private:
  void connect(const LinkOptions& options) {
    natsOptions* made = nullptr;
    require(natsOptions_Create(&made), "cannot set up the connection");
    const std::unique_ptr<natsOptions, decltype(&natsOptions_Destroy)> owner(made, natsOptions_Destroy);
    std::vector<const char*> urls;
    for (const std::string& each : options.urls) urls.push_back(each.c_str());
    const auto set = [](natsStatus status) { require(status, "cannot set up the connection"); };
    set(natsOptions_SetServers(made, urls.data(), static_cast<int>(urls.size())));
    set(natsOptions_SetName(made, options.credentials.name.c_str()));
    set(natsOptions_SetTimeout(made, kConnectMillis));
    set(natsOptions_SetAllowReconnect(made, false));
    set(natsOptions_SetPingInterval(made, kPingMillis));
    set(natsOptions_SetMaxPingsOut(made, kMaxPings));
    set(natsOptions_SetWriteDeadline(made, kWriteMillis));
    set(natsOptions_SetSendAsap(made, true));
    set(natsOptions_SetNoEcho(made, true));
    set(natsOptions_SetNKey(made, key_.publicText().c_str(), sign, &key_));
    auto held = std::make_unique<std::shared_ptr<End>>(end_);
    set(natsOptions_SetClosedCB(made, onClosed, held.get()));
    // From the file, at each connection: a later setup may have renewed it.
    if (!options.credentials.authority.empty()) {
      set(natsOptions_LoadCATrustedCertificates(made, options.credentials.file.c_str()));
    }
    const auto isSecure = [](const std::string& url) { return url.starts_with("tls://"); };
    set(natsOptions_SetSecure(made, std::any_of(options.urls.begin(), options.urls.end(), isSecure)));
    natsConnection* connection = nullptr;
    const natsStatus status = natsConnection_Connect(&connection, made);
    if (status != NATS_OK) {
      const char* detail = nats_GetLastError(nullptr);
      throw std::runtime_error(
          fmt::format("{}{}", detail != nullptr ? detail : natsStatus_GetText(status), adviceFor(status)));
    }
    connection_.reset(connection);
    leave(held);
  }

  void subscribe(const std::string& subject) {
    auto held = std::make_unique<std::shared_ptr<Shared>>(shared_);
    natsSubscription* made = nullptr;
    require(natsConnection_Subscribe(&made, connection_.get(), subject.c_str(), onMessage, held.get()),
            "cannot subscribe");
    subscriptions_.emplace_back(made, natsSubscription_Destroy);
    const natsStatus status = natsSubscription_SetOnCompleteCB(made, onComplete, held.get());
    leave(held);
    require(status, "cannot subscribe");
    require(natsSubscription_SetPendingLimits(made, -1, -1), "cannot subscribe");
  }

  // The library holds it until its last callback for it has returned, which stop() awaits.
  template <typename Held>
  void leave(std::unique_ptr<Held>& held) {
    const std::lock_guard lock(shared_->mutex);
    ++shared_->callbacks;
    static_cast<void>(held.release());
  }

  static void endCallbacks(Shared& shared) {
    --shared.callbacks;
    shared.changed.notify_all();
  }

  static natsStatus sign(char** /*error*/, unsigned char** signature, int* size, const char* nonce, void* key) try {
    const std::string made = static_cast<const NKey*>(key)->sign(nonce);
    *signature = static_cast<unsigned char*>(std::malloc(made.size()));  // freed by the library
    if (*signature == nullptr) return NATS_NO_MEMORY;
    std::memcpy(*signature, made.data(), made.size());
    *size = static_cast<int>(made.size());
    return NATS_OK;
  } catch (const std::exception&) {
    return NATS_ERR;  // which the library reports as the connection's error
  }

  static void onMessage(natsConnection* /*connection*/, natsSubscription* /*subscription*/, natsMsg* message,
                        void* held) {
    const std::shared_ptr<Shared>& shared = *static_cast<std::shared_ptr<Shared>*>(held);
    const std::shared_ptr<natsMsg> kept(message, natsMsg_Destroy);
    shared->loop->post([shared, kept] {
      if (shared->owner == nullptr) return;
      shared->owner->onMessage(natsMsg_GetSubject(kept.get()),
                               {natsMsg_GetData(kept.get()), static_cast<size_t>(natsMsg_GetDataLength(kept.get()))});
    });
  }

  static void onComplete(void* held) {
    const std::unique_ptr<std::shared_ptr<Shared>> last(static_cast<std::shared_ptr<Shared>*>(held));
    const std::lock_guard lock((*last)->mutex);
    endCallbacks(**last);
  }

  static void onClosed(natsConnection* /*connection*/, void* held) {
    const std::unique_ptr<std::shared_ptr<End>> last(static_cast<std::shared_ptr<End>*>(held));
    Shared& shared = *(*last)->shared;
    const std::lock_guard lock(shared.mutex);
    (*last)->isBroken = true;
    endCallbacks(shared);
  }

  NKey key_;
  const std::shared_ptr<Shared> shared_;
  const std::shared_ptr<End> end_ = std::make_shared<End>(End{shared_});
  std::unique_ptr<natsConnection, decltype(&natsConnection_Destroy)> connection_{nullptr, natsConnection_Destroy};
  std::vector<std::unique_ptr<natsSubscription, decltype(&natsSubscription_Destroy)>> subscriptions_;
};

NatsLink::NatsLink(IEventLoop& loop, LinkOptions options)
    : loop_(loop), options_(std::move(options)), shared_(std::make_shared<Shared>()) {
  checkUrls(options_.urls);
  shared_->loop = &loop;
}

NatsLink::~NatsLink() { stop(); }

void NatsLink::start(std::vector<std::string> subscriptions, IBusOwner& owner) {
  subscriptions_ = std::move(subscriptions);
  shared_->owner = &owner;
  thread_ = std::thread([this] { run(); });
}

void NatsLink::stop() {
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->isStopping = true;
    shared_->changed.notify_all();
  }
  if (thread_.joinable()) thread_.join();
  shared_->owner = nullptr;
}

void NatsLink::publish(std::string subject, std::string bytes) {
  const std::lock_guard lock(shared_->mutex);
  if (!shared_->isOpen) return;
  shared_->queuedBytes += bytes.size();
  shared_->queue.push_back({std::move(subject), std::move(bytes)});
  if (shared_->queue.size() == 1) shared_->changed.notify_all();
}

// Both ends hear of the break, as of every other: what was queued is lost.
void NatsLink::run() {
  std::chrono::milliseconds pause = kFirstPause;
  for (;;) {
    std::string why;
    try {
      Connection connection(options_, subscriptions_, shared_);
      pause = kFirstPause;
      why = serve(connection);
    } catch (const std::runtime_error& error) {
      why = error.what();
    }
    std::unique_lock lock(shared_->mutex);
    shared_->isOpen = false;
    shared_->queue.clear();
    shared_->queuedBytes = 0;
    if (!shared_->isStopping) {
      loop_.post([this, shared = shared_, why] {
        if (shared->owner != nullptr) noteBreak(why);
      });
    }
    shared_->changed.wait_for(lock, pause, [this] { return shared_->isStopping; });
    if (shared_->isStopping) {
      shared_->changed.wait(lock, [this] { return shared_->callbacks == 0; });
      return;
    }
    pause = std::min(pause * 2, kLongestPause);
  }
}

// Sends what is published until the connection breaks or the link stops. Returns why it broke.
std::string NatsLink::serve(Connection& connection) {
  std::unique_lock lock(shared_->mutex);
  if (connection.isBroken()) return connection.lastError();
  shared_->isOpen = true;
  loop_.post([this, shared = shared_, server = connection.server()] {
    if (shared->owner == nullptr) return;
    TERMINAL_LOG(gatewayLogger(), Info, "connected to the cluster at {}", server);
    fault_.clear();
    isUp_ = true;
    shared->owner->onUp();
  });
  for (;;) {
    shared_->changed.wait(lock,
                          [&] { return connection.isBroken() || shared_->isStopping || !shared_->queue.empty(); });
    if (connection.isBroken()) return connection.lastError();
    if (shared_->queuedBytes > kMaxQueuedBytes) return "the server takes messages too slowly";
    std::deque<Outgoing> batch = std::exchange(shared_->queue, {});
    shared_->queuedBytes = 0;
    const bool isStopping = shared_->isStopping;
    lock.unlock();
    for (const Outgoing& each : batch) connection.publish(each);
    if (isStopping) {
      connection.flush();
      return {};
    }
    lock.lock();
  }
}

void NatsLink::noteBreak(const std::string& why) {
  if (why != fault_) TERMINAL_LOG(gatewayLogger(), Warn, "no connection to the cluster: {}; trying again", why);
  fault_ = why;
  if (std::exchange(isUp_, false)) shared_->owner->onDown();
}

}  // namespace orvane::terminal::relay
