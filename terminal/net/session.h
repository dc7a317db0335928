#pragma once

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "terminal/net/pages.h"

namespace orvane::terminal {

struct SessionLimits {
  std::chrono::milliseconds login{10'000};          // for TLS and the request's head, and again for the first message
  std::chrono::milliseconds idle{36'000};           // a silent peer is pinged after half of it, and dropped after all
  size_t maxFrameBytes = size_t{256} * 1024;        // of a frame that comes in
  size_t maxQueuedBytes = size_t{4} * 1024 * 1024;  // waiting behind the message on its way
};

enum class CloseCode : uint16_t {
  GoingAway = 1001,
  UnsupportedData = 1003,
  Fault = 1011,
  NoLogin = 4401,
  NotEntitled = 4403,
  TooSlow = 4408,
  Replaced = 4409,
  TooMany = 4429,
};

// One connection of a phone. All its operations belong to the thread that runs its socket's io_context. Its owner hears
// of its end later, never from within one of them.
class Session {
 public:
  virtual ~Session() = default;

  // Reads the request, and does what the owner says of it.
  virtual void start() = 0;

  // Queues one text message, which must be UTF-8. A peer with too much waiting is closed with TooSlow.
  virtual void send(std::shared_ptr<const std::string> text) = 0;

  // Sends what is queued, then the close frame; a peer that does not answer it is cut off.
  virtual void close(CloseCode code, std::string_view reason) = 0;

  // Cuts the connection off, whatever is on its way.
  virtual void cut(std::string_view reason) = 0;

  // From now on the peer is logged in, and may stay.
  virtual void admit() = 0;
  virtual bool isAdmitted() const = 0;

  // Whether it ends, so that nothing more reaches the peer.
  virtual bool isClosing() const = 0;

  // Why it was closed from here; nothing where it was not.
  virtual std::optional<CloseCode> closeCode() const = 0;

  // Its name in the log.
  virtual const std::string& name() const = 0;

  // The peer's; an IPv4 address is one, whatever it came through.
  virtual const boost::asio::ip::address& address() const = 0;
};

// The head of an HTTP request: hostile, and nothing that it left out. Valid during the call.
struct HttpRequest {
  std::string_view method;
  std::string_view path;  // without its query
  std::string_view host;
  std::string_view origin;
  std::string_view authorization;
  bool upgrades = false;  // to a WebSocket
};

// What a session tells, on its own thread.
class ISessionOwner {
 public:
  virtual ~ISessionOwner() = default;

  // The page to answer, after which the connection ends. Nothing where the connection goes on as a WebSocket.
  // REQUIRES of the answer: a page where the request does not upgrade.
  virtual std::optional<Page> onRequestHead(Session& session, const HttpRequest& request) = 0;

  // One text message of the peer; UTF-8, and hostile.
  virtual void onFrame(Session& session, std::string_view text) = 0;

  // The connection is gone. The last call for this session.
  virtual void onClosed(Session& session) = 0;
};

// `owner` and `tls`, which is null without TLS, must outlive the session.
std::shared_ptr<Session> makeSession(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context* tls,
                                     std::string name, ISessionOwner& owner, const SessionLimits& limits);

}  // namespace orvane::terminal
