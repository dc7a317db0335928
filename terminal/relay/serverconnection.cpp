#include "terminal/relay/serverconnection.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "terminal/logging.h"

namespace orvane::terminal::relay {
namespace {

constexpr int64_t kConnectMillis = 2000;
constexpr int kReadBytes = 128 * 1024;
constexpr size_t kBatchBytes = size_t{64} * 1024;  // are written at once
constexpr size_t kUsedMessages = 64;               // are destroyed together
constexpr size_t kMaxQueuedBytes = size_t{128} * 1024 * 1024;

// A writable socket has room for a third of it, which is more than a batch or the longest message.
constexpr int kSocketBytes = 512 * 1024;
constexpr int kRecordHeadBytes = 5;  // of TLS

using Socket = boost::asio::posix::stream_descriptor;

// Without the place in libnats' own sources, "(conn.c:2088): ".
std::string detailOf(natsStatus status) {
  const char* detail = nats_GetLastError(nullptr);
  const std::string text = detail != nullptr ? detail : natsStatus_GetText(status);
  const size_t end = text.starts_with('(') ? text.find("): ") : std::string::npos;
  return end == std::string::npos ? text : text.substr(end + 3);
}

void require(natsStatus status, std::string_view what) {
  if (status != NATS_OK) throw std::runtime_error(fmt::format("{}: {}", what, detailOf(status)));
}

std::string adviceFor(natsStatus status) {
  if (status == NATS_CONNECTION_AUTH_FAILED || status == NATS_NOT_PERMITTED) {
    return "; the server refuses the credentials: give it those of pocket-relay setup, and reload its configuration";
  }
  if (status == NATS_SECURE_CONNECTION_REQUIRED) return "; the server wants TLS: write tls:// in the URL";
  if (status == NATS_SECURE_CONNECTION_WANTED) return "; the server has no TLS: write nats:// in the URL";
  if (status == NATS_NO_SERVER) return "; check that the servers run and that their addresses are right";
  return "";
}

bool isNow(int socket, short event) {
  constexpr short kEnds = POLLERR | POLLHUP | POLLRDHUP;
  pollfd state{.fd = socket, .events = static_cast<short>(event | POLLRDHUP), .revents = 0};
  return poll(&state, 1, 0) > 0 && (state.revents & (event | kEnds)) != 0;
}

// The size of the TLS record with which the input begins; of its head if that is not whole.
int recordBytes(int socket) {
  std::array<unsigned char, kRecordHeadBytes> head{};
  if (recv(socket, head.data(), head.size(), MSG_PEEK | MSG_DONTWAIT) < kRecordHeadBytes) return kRecordHeadBytes;
  return kRecordHeadBytes + head[3] * 256 + head[4];
}

// From how many bytes on the socket becomes readable.
void setReadableFrom(int socket, int bytes) { setsockopt(socket, SOL_SOCKET, SO_RCVLOWAT, &bytes, sizeof bytes); }

}  // namespace

void ServerConnection::connect(const LinkOptions& options, const std::vector<std::string>& subscriptions) {
  open(options);
  for (const std::string& each : subscriptions) {
    natsSubscription* made = nullptr;
    require(natsConnection_SubscribeSync(&made, connection_.get(), each.c_str()), "cannot subscribe");
    subscriptions_.emplace_back(made, natsSubscription_Destroy);
    require(natsSubscription_SetPendingLimits(made, -1, -1), "cannot subscribe");
  }
  loop_.post([self = shared_from_this()] { self->awaitInput(); });
  // The server has the subscriptions before anybody hears of this connection.
  require(natsConnection_FlushTimeout(connection_.get(), kConnectMillis), "the server does not answer");
}

void ServerConnection::open(const LinkOptions& options) {
  natsOptions* made = nullptr;
  require(natsOptions_Create(&made), "cannot set up the connection");
  const std::unique_ptr<natsOptions, decltype(&natsOptions_Destroy)> owner(made, natsOptions_Destroy);
  std::vector<const char*> urls;
  for (const std::string& each : options.urls) urls.push_back(each.c_str());
  isSecure_ = std::any_of(options.urls.begin(), options.urls.end(),
                          [](const std::string& url) { return url.starts_with("tls://"); });
  key_ = options.credentials.key;
  const auto set = [](natsStatus status) { require(status, "cannot set up the connection"); };
  set(natsOptions_SetServers(made, urls.data(), static_cast<int>(urls.size())));
  set(natsOptions_SetName(made, options.credentials.name.c_str()));
  set(natsOptions_SetTimeout(made, kConnectMillis));
  set(natsOptions_SetAllowReconnect(made, false));
  set(natsOptions_SetPingInterval(made, 0));  // ping() does that: libnats would close the connection in a third thread
  set(natsOptions_SetIOBufSize(made, kReadBytes));
  set(natsOptions_SetSendAsap(made, true));
  set(natsOptions_SetNoEcho(made, true));
  set(natsOptions_SetNKey(made, key_->publicText().c_str(), sign, &*key_));
  set(natsOptions_SetEventLoop(made, this, onAttach, onReadWanted, onWriteWanted, onDetach));
  // From the file, at each connection: a later setup may have renewed it.
  if (!options.credentials.authority.empty()) {
    set(natsOptions_LoadCATrustedCertificates(made, options.credentials.file.c_str()));
  }
  set(natsOptions_SetSecure(made, isSecure_));
  natsConnection* connection = nullptr;
  const natsStatus status = natsConnection_Connect(&connection, made);
  if (status != NATS_OK) throw std::runtime_error(detailOf(status) + adviceFor(status));
  connection_.reset(connection);
}

natsStatus ServerConnection::sign(char** /*error*/, unsigned char** signature, int* size, const char* nonce,
                                  void* key) try {
  const std::string made = static_cast<const NKey*>(key)->sign(nonce);
  *signature = static_cast<unsigned char*>(std::malloc(made.size()));  // freed by the library
  if (*signature == nullptr) return NATS_NO_MEMORY;
  std::memcpy(*signature, made.data(), made.size());
  *size = static_cast<int>(made.size());
  return NATS_OK;
} catch (const std::exception&) {
  return NATS_ERR;  // which the library reports as the connection's error
}

// The last step of connecting. Libnats closes its descriptor whenever it likes, so the loop watches a duplicate.
natsStatus ServerConnection::onAttach(void** data, void* self, natsConnection* /*connection*/, natsSock socket) {
  *data = self;
  auto& connection = *static_cast<ServerConnection*>(self);
  if (connection.isSecure_) setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &kSocketBytes, sizeof kSocketBytes);
  const int copy = dup(socket);
  boost::system::error_code error;
  if (copy >= 0) connection.socket_.assign(copy, error);
  return copy < 0 || error ? NATS_ERR : NATS_OK;
}

natsStatus ServerConnection::onReadWanted(void* /*self*/, bool /*isWanted*/) { return NATS_OK; }

// At the end of the loop's turn, so that all messages of a turn go out together.
natsStatus ServerConnection::onWriteWanted(void* self, bool isWanted) {
  if (const auto held = static_cast<ServerConnection*>(self)->weak_from_this().lock(); held != nullptr && isWanted) {
    held->loop_.post([held] { held->write(); });
  }
  return NATS_OK;
}

natsStatus ServerConnection::onDetach(void* self) {
  const auto held = static_cast<ServerConnection*>(self)->weak_from_this().lock();
  if (held == nullptr) return NATS_OK;  // the destructor runs
  boost::system::error_code ignored;    // there may be nothing to cancel
  held->hasEnded_ = true;
  held->socket_.cancel(ignored);
  held->shutDown();
  held->onEnd_();
  return NATS_OK;
}

bool ServerConnection::ping(std::chrono::milliseconds patience) {
  uint64_t before = 0;
  do {
    before = moves_;
    if (natsConnection_FlushTimeout(connection_.get(), patience.count()) == NATS_OK) return true;
  } while (moves_ != before && !hasEnded_);
  shutDown();  // ends a call in which libnats waits for the server
  return false;
}

// The descriptor stays open until the destructor, so that ping() cannot meet another one of the same number.
void ServerConnection::shutDown() { shutdown(socket_.native_handle(), SHUT_RDWR); }

void ServerConnection::flush(std::chrono::milliseconds patience) {
  while (ping(patience) && queuedBytes_ > 0) continue;
}

std::string ServerConnection::lastError() const {
  const char* text = nullptr;
  const natsStatus status = natsConnection_GetLastError(connection_.get(), &text);
  return text != nullptr && *text != '\0' ? text : natsStatus_GetText(status);
}

std::string ServerConnection::server() const {
  std::array<char, 256> url{};
  const natsStatus status = natsConnection_GetConnectedUrl(connection_.get(), url.data(), url.size());
  return status == NATS_OK ? url.data() : "a server";
}

void ServerConnection::listen(OnMessage onMessage) {
  onMessage_ = std::move(onMessage);
  deliver();
}

void ServerConnection::close() { natsConnection_Close(connection_.get()); }

void ServerConnection::awaitInput() {
  if (hasEnded_) return;
  socket_.async_wait(Socket::wait_read, [self = shared_from_this()](const boost::system::error_code& error) {
    if (!error) self->read();
  });
}

void ServerConnection::read() {
  if (hasInput()) {
    natsConnection_ProcessReadEvent(connection_.get());
    ++moves_;
  }
  deliver();
  awaitInput();
}

// Libnats waits inside its call for the rest of a TLS record, and so would all phones. It is called once the record is
// whole or the connection has ended. A socket that is readable with fewer bytes than awaited has no room for the rest,
// which comes as soon as these are read.
bool ServerConnection::hasInput() {
  const int socket = socket_.native_handle();
  if (!isSecure_ || isNow(socket, 0)) return true;
  const int wanted = recordBytes(socket);
  int available = 0;
  ioctl(socket, FIONREAD, &available);
  const bool isReady = available >= wanted || available < awaitedBytes_;
  const int next = isReady ? 1 : wanted;
  if (next != std::exchange(awaitedBytes_, next)) setReadableFrom(socket, next);
  return isReady;
}

void ServerConnection::deliver() {
  if (!onMessage_) return;
  for (const auto& each : subscriptions_) {
    int waiting = 0;
    natsMsg* message = nullptr;
    while (natsSubscription_GetPending(each.get(), &waiting, nullptr) == NATS_OK && waiting > 0 &&
           natsSubscription_NextMsg(&message, each.get(), 0) == NATS_OK) {
      used_.emplace_back(message, natsMsg_Destroy);
      onMessage_(natsMsg_GetSubject(message),
                 {natsMsg_GetData(message), static_cast<size_t>(natsMsg_GetDataLength(message))});
      if (used_.size() >= kUsedMessages) used_.clear();
    }
  }
}

void ServerConnection::publish(std::string subject, std::string bytes) {
  Outgoing message{std::move(subject), std::move(bytes)};
  if (hasRoomFor(message.bytes.size())) return send(message);
  queuedBytes_ += message.bytes.size();
  queue_.push_back(std::move(message));
  if (queuedBytes_ <= kMaxQueuedBytes) return;
  TERMINAL_LOG(gatewayLogger(), Warn, "the server takes messages too slowly: {} bytes wait", queuedBytes_.load());
  close();
}

bool ServerConnection::hasRoomFor(size_t bytes) {
  if (isBlocked_) return false;
  const int buffered = natsConnection_Buffered(connection_.get());
  if (buffered > 0 && static_cast<size_t>(buffered) + bytes > kBatchBytes) write();
  return !isBlocked_;
}

// Into libnats' buffer. It fails only if the connection has broken.
void ServerConnection::send(const Outgoing& message) {
  natsConnection_Publish(connection_.get(), message.subject.c_str(), message.bytes.data(),
                         static_cast<int>(message.bytes.size()));
}

void ServerConnection::sendQueue() {
  write();
  while (!queue_.empty() && hasRoomFor(queue_.front().bytes.size())) {
    queuedBytes_ -= queue_.front().bytes.size();
    send(queue_.front());
    queue_.pop_front();
  }
}

// Over TLS libnats would wait inside its call for room, and so would all phones.
void ServerConnection::write() {
  const int buffered = natsConnection_Buffered(connection_.get());
  if (isBlocked_ || hasEnded_ || buffered <= 0) return;
  if (!isSecure_ || isNow(socket_.native_handle(), POLLOUT)) natsConnection_ProcessWriteEvent(connection_.get());
  if (hasEnded_) return;
  const int rest = natsConnection_Buffered(connection_.get());
  if (rest != buffered) ++moves_;
  if (rest <= 0) return;
  isBlocked_ = true;
  socket_.async_wait(Socket::wait_write, [self = shared_from_this()](const boost::system::error_code& error) {
    if (error) return;
    self->isBlocked_ = false;
    self->sendQueue();
  });
}

}  // namespace orvane::terminal::relay
