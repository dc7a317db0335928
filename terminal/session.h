#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvane::terminal {

enum class CloseCode : uint16_t {
  GoingAway = 1001,
  UnsupportedData = 1003,
  Fault = 1011,
  Restarted = 1012,  // the terminal behind a relay
  TryLater = 1013,   // what carries the messages is broken or full
  NoLogin = 4401,
  NotEntitled = 4403,
  NoTerminal = 4404,
  TooSlow = 4408,
  Replaced = 4409,
  TooMany = 4429,
};

// One client, whatever transport it came over. All operations belong to the owner's thread.
// `ISessionOwner::onClosed` never runs inside one of them.
class Session {
 public:
  using Text = std::shared_ptr<const std::string>;

  virtual ~Session() = default;

  // Queues one text frame, which must be UTF-8. A client with too large a backlog is closed with TooSlow.
  void send(Text text) { sendPart(std::move(text), true); }

  // Queues a part of a text frame; the frame ends with the part that is its last.
  virtual void sendPart(Text text, bool isLast) = 0;

  // Sends what is queued, then the code. A client that does not answer in time is cut off.
  virtual void close(CloseCode code, std::string_view reason) = 0;

  // The client has logged in: its transport no longer cuts it off to make room for another.
  virtual void admit() = 0;

  // True once it is closed or cut off: nothing more reaches the client.
  virtual bool isClosing() const = 0;

  // Empty unless this side closed it.
  virtual std::optional<CloseCode> closeCode() const = 0;

  // Bytes that were sent and have not left for the client yet.
  virtual size_t backlogBytes() const = 0;

  // Its name in the log.
  virtual const std::string& name() const = 0;

  // The client's own address, for the log and the audit. IPv4-mapped addresses are written as IPv4.
  virtual const std::string& address() const = 0;

  // Rate-limit key: the address, or for IPv6, where a client owns its whole /64, the network.
  virtual const std::string& network() const = 0;
};

// Receives the events of sessions, on one thread.
class ISessionOwner {
 public:
  virtual ~ISessionOwner() = default;

  // A client can send frames from now on. The owner keeps `session` until onClosed.
  virtual void onOpened(std::shared_ptr<Session> session) = 0;

  // One text frame: UTF-8, untrusted, valid during the call.
  virtual void onFrame(Session& session, std::string_view text) = 0;

  // So many bytes of what was sent have left for the client.
  virtual void onSent(Session& /*session*/, size_t /*bytes*/) {}

  // The last call for this session.
  virtual void onClosed(Session& session) = 0;
};

// What a transport counts.
struct TransportFigures {
  size_t connections = 0;           // open now, with or without a session
  uint64_t refusedConnections = 0;  // because all places were taken
  uint64_t refusedOrigins = 0;      // because of Host or Origin
};

}  // namespace orvane::terminal
