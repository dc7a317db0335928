#pragma once

#include <boost/asio/ssl/context.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "terminal/pages.h"
#include "terminal/securestream.h"
#include "terminal/session.h"

namespace orvane::terminal {

struct NetLimits {
  std::chrono::milliseconds head{10'000};  // for TLS handshake and HTTP head together, and for writing a page
  // A silent client is pinged after half of this time and dropped after all of it. One that accepts no byte for all of
  // it is closed.
  std::chrono::milliseconds idle{36'000};
  size_t maxFrameBytes = size_t{256} * 1024;              // of an incoming frame
  size_t maxQueuedBytes = size_t{4} * 1024 * 1024;        // of a session's frames behind the one that is being written
  size_t maxCompressionBytes = size_t{64} * 1024 * 1024;  // of memory, for all sessions
  size_t maxBacklogBytes = size_t{64} * 1024 * 1024;  // of all sessions' frames, those that are being written included
};

// Who is at the other end.
struct Remote {
  std::string name;     // in the log
  std::string address;  // IPv4-mapped addresses are written as IPv4
  std::string network;  // the rate-limit key, see Session
  bool isLoopback = false;
};

// One TCP connection, first as HTTP, then perhaps as a WebSocket. All its operations belong to the loop's thread.
class Connection {
 public:
  virtual ~Connection() = default;

  // Ends the connection because the terminal stops: a session is closed with 1001, all else is cut off.
  virtual void stop() = 0;

  // Ends the connection at once, with what is queued.
  virtual void cut(std::string_view reason) = 0;

  // True unless a client is logged in on it or it was cut. One that waits for the answer to a close frame gives way.
  virtual bool mayGiveWay() const = 0;

  // Bytes of the frames that the client has not taken yet; 0 once they are given up.
  virtual size_t backlogBytes() const = 0;

  // Gives up the backlog because all of them together are too large, and cuts the client off: the close frame would
  // have to wait behind the frame that is being written.
  virtual void cutBacklog() = 0;
};

using UpgradeRequest = boost::beast::http::request<boost::beast::http::empty_body>;

// Gets a connection's events; except for onBacklog they never come from inside one of its operations.
class IConnectionOwner {
 public:
  virtual ~IConnectionOwner() = default;

  // Calls `answer` once with the page to send, or without one if the connection goes on as a WebSocket.
  virtual void onRequestHead(const HttpRequest& request, IPageOwner::Answer answer) = 0;

  // `connection` has become a WebSocket: it is replaced by one that owns `stream`.
  virtual void onUpgrade(Connection& connection, std::unique_ptr<SecureStream> stream, UpgradeRequest request) = 0;

  // A connection's backlog has changed. May call its, or any other's, cutBacklog.
  virtual void onBacklog(size_t before, size_t now) = 0;

  // The last call for this connection.
  virtual void onEnded(Connection& connection) = 0;
};

}  // namespace orvane::terminal
