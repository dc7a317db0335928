#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace orvane::terminal {

struct SessionLimits {
  std::chrono::milliseconds login{10'000};          // for the handshake, and again for the first message
  std::chrono::milliseconds idle{36'000};           // a silent peer is pinged after half of it, and dropped after all
  size_t maxFrameBytes = size_t{256} * 1024;        // of a frame that comes in
  size_t maxQueuedBytes = size_t{4} * 1024 * 1024;  // waiting for a peer that reads too slowly
};

enum class CloseCode : uint16_t { GoingAway = 1001, UnsupportedData = 1003, NoLogin = 4401, TooSlow = 4408 };

// One connection of a phone. All its operations belong to the thread that runs its socket's io_context.
class Session {
 public:
  virtual ~Session() = default;

  // Reads the request. A WebSocket at /ws goes on as one; any other gets its page, and the connection ends.
  virtual void start() = 0;

  // Queues one text message, which must be UTF-8. A peer with too much waiting is closed with TooSlow.
  virtual void send(std::shared_ptr<const std::string> text) = 0;

  // Sends what is queued, then the close frame; a peer that does not answer it is cut off.
  virtual void close(CloseCode code, std::string_view reason) = 0;

  // From now on the peer is logged in, and may stay.
  virtual void admit() = 0;
  virtual bool isAdmitted() const = 0;

  // Its name in the log.
  virtual const std::string& name() const = 0;
};

// What a session tells, on its own thread.
class ISessionOwner {
 public:
  virtual ~ISessionOwner() = default;

  // One text message of the peer; UTF-8, and hostile.
  virtual void onFrame(Session& session, std::string_view text) = 0;

  // The connection is gone. The last call for this session.
  virtual void onClosed(Session& session) = 0;
};

// `owner` must outlive the session.
std::shared_ptr<Session> makeSession(boost::asio::ip::tcp::socket socket, std::string name, ISessionOwner& owner,
                                     const SessionLimits& limits);

}  // namespace orvane::terminal
