#pragma once

#include <atomic>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nats/nats.h>

#include "terminal/net/asioloop.h"
#include "terminal/relay/credentials.h"

namespace orvane::terminal::relay {

struct LinkOptions {
  std::vector<std::string> urls;  // nats://HOST:PORT or tls://HOST:PORT
  Credentials credentials;
};

// A connection to one NATS server, until it breaks. Libnats has no thread of its own here: the loop reads and writes
// when the socket is ready, so no message waits until another thread wakes up.
class ServerConnection : public std::enable_shared_from_this<ServerConnection> {
 public:
  using OnMessage = std::function<void(std::string_view subject, std::string_view bytes)>;

  // `loop` must outlive it. `onEnd` runs once the connection has broken or was closed, on the loop's thread.
  ServerConnection(AsioLoop& loop, std::function<void()> onEnd) : onEnd_(std::move(onEnd)), loop_(loop) {}
  ServerConnection(const ServerConnection&) = delete;
  ServerConnection& operator=(const ServerConnection&) = delete;

  // Returns once the server has the subscriptions. Throws std::runtime_error that says what failed and what to do.
  // Waits for the server, as the next two do: not the loop's thread.
  void connect(const LinkOptions& options, const std::vector<std::string>& subscriptions);

  // False if the server does not answer in time, and nothing else moves either: the connection breaks. Its answer may
  // be behind much else on a slow line.
  bool ping(std::chrono::milliseconds patience);

  // Waits until all that was published is at the server, unless the server stops answering.
  void flush(std::chrono::milliseconds patience);

  // Any thread, as the next two.
  bool hasEnded() const { return hasEnded_; }
  std::string lastError() const;
  std::string server() const;

  // From now on messages reach `onMessage`. The loop's thread, as the next two.
  void listen(OnMessage onMessage);

  // Never waits. The message is lost if the connection has broken.
  void publish(std::string subject, std::string bytes);

  void close();

 private:
  struct Outgoing {
    std::string subject;
    std::string bytes;
  };

  // Called by libnats.
  static natsStatus sign(char** error, unsigned char** signature, int* size, const char* nonce, void* key);
  static natsStatus onAttach(void** data, void* self, natsConnection* connection, natsSock socket);
  static natsStatus onReadWanted(void* self, bool isWanted);
  static natsStatus onWriteWanted(void* self, bool isWanted);
  static natsStatus onDetach(void* self);

  void open(const LinkOptions& options);
  void shutDown();
  void awaitInput();
  void read();
  bool hasInput();
  void deliver();
  bool hasRoomFor(size_t bytes);
  void send(const Outgoing& message);
  void sendQueue();
  void write();

  const std::function<void()> onEnd_;
  AsioLoop& loop_;
  boost::asio::posix::stream_descriptor socket_{loop_.context()};  // a duplicate of libnats' descriptor
  std::optional<NKey> key_;
  std::unique_ptr<natsConnection, decltype(&natsConnection_Destroy)> connection_{nullptr, natsConnection_Destroy};
  std::vector<std::unique_ptr<natsSubscription, decltype(&natsSubscription_Destroy)>> subscriptions_;
  OnMessage onMessage_;
  // Libnats wakes a thread of its own to free messages, so they are destroyed in batches.
  std::vector<std::unique_ptr<natsMsg, decltype(&natsMsg_Destroy)>> used_;
  std::deque<Outgoing> queue_;  // until the socket has room; empty while it has
  std::atomic<size_t> queuedBytes_ = 0;
  std::atomic<uint64_t> moves_ = 0;  // reads and writes so far
  std::atomic<bool> hasEnded_ = false;
  bool isBlocked_ = false;  // the socket has no room
  bool isSecure_ = false;
  int awaitedBytes_ = 1;  // from which on the socket is readable
};

}  // namespace orvane::terminal::relay
