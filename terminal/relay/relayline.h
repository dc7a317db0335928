#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "terminal/eventloop.h"
#include "terminal/relay/channel.h"
#include "terminal/relay/relaysession.h"
#include "terminal/relay/subjects.h"

namespace orvane::terminal::relay {

// What all lines of a terminal share.
struct LineContext {
  IEventLoop& loop;
  IBus& bus;
  ISessionOwner& owner;
  SessionLimits limits;
  std::function<bool()> makeRoom;  // for one more session; false if there is none
  std::function<void(size_t before, size_t now)> onBacklog;
  uint64_t lastNumber = 0;  // of the sessions, for their names
};

// The terminal's side of the channel to one relay, with its sessions. The loop's thread.
class RelayLine final : public ISessionLine {
 public:
  RelayLine(LineContext& context, const Party& self, const Party& relay, uint64_t channel);

  uint64_t channel() const { return channel_.id(); }

  // False if the channel is broken: the caller ends it.
  bool onMessage(const Message& message);

  void beat() { send({.kind = Kind::Beat}); }
  bool isSilent() const { return channel_.isSilent(); }

  // Ends all sessions, and the channel for the relay too.
  void breakOff();

  // Closes all sessions because the terminal stops.
  void stop();

  // Ends all sessions without a word to the relay.
  void end();

  size_t countSessions() const { return sessions_.size(); }

  template <typename Function>
  void each(const Function& function) const {
    for (const auto& [id, session] : sessions_) function(*session);
  }

  void send(const Message& message) override;
  void cast(uint64_t session, const Session::Text& text) override;
  void onBacklog(size_t before, size_t now) override { context_.onBacklog(before, now); }
  void onEnded(uint64_t session) override { sessions_.erase(session); }

 private:
  void open(const Message& message);
  void flushCast();

  LineContext& context_;
  const std::string relay_;
  Channel channel_;
  std::map<uint64_t, std::shared_ptr<RelaySession>> sessions_;  // oldest first
  Session::Text castText_;
  std::vector<uint64_t> castSessions_;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace orvane::terminal::relay
