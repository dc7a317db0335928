#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "terminal/eventloop.h"
#include "terminal/relay/bus.h"
#include "terminal/relay/directory.h"
#include "terminal/relay/terminalline.h"
#include "terminal/session.h"

namespace orvane::terminal::relay {

struct SwitchFigures {
  size_t phones = 0;     // with a session at a terminal
  size_t terminals = 0;  // present
  uint64_t logins = 0;   // first frames that reached a terminal
  uint64_t refused = 0;  // first frames that did not
  uint64_t breaks = 0;   // channels to terminals that broke
};

// Connects each client of a relay with the terminal that its first frame names, and knows nothing else of what they
// say to each other. Everything belongs to the loop's thread.
class Switchboard : public ISessionOwner, public IBusOwner {
 public:
  // All references must outlive it. `name` is the relay's.
  Switchboard(IEventLoop& loop, IBus& bus, std::string name, std::chrono::milliseconds loginTime);

  // Starts the bus.
  void start();

  // Stops the bus once the owner has closed all sessions.
  void stop();

  SwitchFigures figures() const;
  const std::string& busFault() const { return bus_.fault(); }

  void onOpened(std::shared_ptr<Session> session) override;
  void onFrame(Session& session, std::string_view text) override;
  void onSent(Session& session, size_t bytes) override;
  void onClosed(Session& session) override;

  void onUp() override { upSince_ = loop_.bootTime(); }
  void onDown() override;
  void onMessage(std::string_view subject, std::string_view bytes) override;

 private:
  void route(Phone& phone, std::string_view text);
  // `members` are appended to the failure's own.
  void refuse(Phone& phone, std::string_view id, const std::string& message, CloseCode code, std::string_view reason,
              std::string_view members = {});
  void refuseAbsent(Phone& phone, std::string_view id, const std::string& name);
  TerminalLine& lineTo(const Party& terminal);
  void onTerminal(const Party& terminal, const Message& message);
  void onGone(const std::string& name, bool isReplaced);
  void endLine(const std::string& name, CloseCode code, std::string_view reason);
  void tick();

  IEventLoop& loop_;
  IBus& bus_;
  const Party self_;
  const std::chrono::milliseconds loginTime_;
  Directory directory_;
  std::unordered_map<const Session*, Phone> phones_;
  std::map<std::string, std::unique_ptr<TerminalLine>> lines_;  // by the terminal's name
  uint64_t lastChannel_ = 0;
  BootTime upSince_{};
  SwitchFigures counts_;
  std::unique_ptr<Timer> tick_;  // null once stopped
};

}  // namespace orvane::terminal::relay
