#pragma once

#include <memory>
#include <string>

#include "terminal/eventloop.h"
#include "terminal/relay/message.h"
#include "terminal/relay/window.h"
#include "terminal/session.h"

namespace orvane::terminal::relay {

struct SessionLimits {
  size_t maxFrameBytes = size_t{256} * 1024;          // of an incoming frame
  size_t maxQueuedBytes = size_t{4} * 1024 * 1024;    // of a session's frames behind the one that is being sent
  size_t maxBacklogBytes = size_t{64} * 1024 * 1024;  // of all sessions' frames
  size_t maxSessions = 256;
};

// What a session needs of the channel to its relay.
class ISessionLine {
 public:
  virtual ~ISessionLine() = default;
  virtual void send(const Message& message) = 0;

  // Sends a whole frame, once for all sessions that get it in a row.
  virtual void cast(uint64_t session, const Session::Text& text) = 0;

  // May call any session's cutBacklog.
  virtual void onBacklog(size_t before, size_t now) = 0;

  // The last call: lets go of the session.
  virtual void onEnded(uint64_t session) = 0;
};

// A client that is connected to a relay. All operations belong to the loop's thread.
class RelaySession final : public Session, public std::enable_shared_from_this<RelaySession> {
 public:
  // `line` must live until the session has ended, all else longer.
  RelaySession(IEventLoop& loop, ISessionLine& line, ISessionOwner& owner, const SessionLimits& limits, uint64_t id,
               std::string name, Origin origin);

  void sendPart(Text text, bool isLast) override;
  void close(CloseCode code, std::string_view reason) override;
  void admit() override;
  bool isClosing() const override { return closing_; }
  std::optional<CloseCode> closeCode() const override { return closeCode_; }
  const std::string& name() const override { return name_; }
  const std::string& address() const override { return origin_.address; }
  const std::string& network() const override { return origin_.network; }

  // A message of its relay: Data, Credit or Close.
  void onMessage(const Message& message);

  // Ends at once; the relay knows already, or cannot be reached.
  void end();

  bool mayGiveWay() const { return !admitted_ && !closing_; }
  size_t backlogBytes() const override { return accountedBytes_; }

  // Gives up the backlog because all of them together are too large.
  void cutBacklog();

 private:
  void onData(const Message& message);
  void pump();
  void account();
  void finish();

  IEventLoop& loop_;
  ISessionLine& line_;
  ISessionOwner& owner_;
  const SessionLimits& limits_;
  const uint64_t id_;
  const std::string name_;
  const Origin origin_;
  SendWindow out_;
  ReceiveWindow in_;
  std::string frame_;    // the pieces so far
  std::string partial_;  // the parts so far of a frame to send
  size_t accountedBytes_ = 0;
  std::string reason_;
  std::optional<CloseCode> closeCode_;
  bool admitted_ = false;
  bool closing_ = false;
  bool ended_ = false;
  std::unique_ptr<Timer> closeTimer_;
};

}  // namespace orvane::terminal::relay
