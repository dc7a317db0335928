#include "terminal/relay/switchboard.h"

#include <array>
#include <utility>
#include <vector>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "terminal/jsonmembers.h"
#include "terminal/logging.h"

namespace orvane::terminal::relay {
namespace {

// By then all terminals have shown their presence.
constexpr std::chrono::seconds kLearning{2};

enum Name { Id, Topic, Terminal };
constexpr std::array<std::string_view, 3> kNames{"id", "topic", "terminal"};

std::string timeText(WallTime time) {
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::chrono::system_clock::to_time_t(time)));
}

}  // namespace

Switchboard::Switchboard(IEventLoop& loop, IBus& bus, std::string name, std::chrono::milliseconds loginTime)
    : loop_(loop),
      bus_(bus),
      self_(startParty(std::move(name), loop.wallTime())),
      loginTime_(loginTime),
      directory_(loop, [this](const std::string& terminal, bool isReplaced) { onGone(terminal, isReplaced); }) {}

void Switchboard::start() {
  bus_.start({std::string(kAllPresences), allDownSubjects(self_)}, *this);
  tick_ = loop_.after(kBeatPeriod, [this] { tick(); });
}

void Switchboard::stop() {
  tick_.reset();
  if (phones_.empty()) bus_.stop();
}

void Switchboard::tick() {
  directory_.tick();
  std::vector<std::string> silent;
  for (const auto& [name, line] : lines_) {
    if (line->isSilent()) {
      silent.push_back(name);
    } else {
      line->beat();
    }
  }
  for (const std::string& name : silent) endLine(name, CloseCode::TryLater, "the terminal does not answer");
  tick_ = loop_.after(kBeatPeriod, [this] { tick(); });
}

SwitchFigures Switchboard::figures() const {
  SwitchFigures now = counts_;
  for (const auto& [session, phone] : phones_) now.phones += phone.line != nullptr ? 1 : 0;
  now.terminals = directory_.countPresent();
  return now;
}

void Switchboard::onOpened(std::shared_ptr<Session> session) {
  Session& opened = *session;
  Phone& phone = phones_[&opened];
  phone.session = std::move(session);
  phone.timer = loop_.after(loginTime_, [&opened] { opened.close(CloseCode::NoLogin, "no login in time"); });
}

void Switchboard::onFrame(Session& session, std::string_view text) {
  if (session.isClosing()) return;
  Phone& phone = phones_.at(&session);
  phone.line != nullptr ? phone.line->forward(phone, text) : route(phone, text);
}

void Switchboard::onSent(Session& session, size_t bytes) {
  Phone& phone = phones_.at(&session);
  if (phone.line != nullptr && bytes > 0) phone.line->release(phone, bytes);
}

void Switchboard::onClosed(Session& session) {
  const auto found = phones_.find(&session);
  if (found->second.line != nullptr) found->second.line->remove(found->second);
  phones_.erase(found);
  if (tick_ == nullptr) stop();
}

// Reads no more of the first frame than whose it is. The terminal reads it again, and checks the token.
void Switchboard::route(Phone& phone, std::string_view text) {
  JsonMembers members(text, kNames);
  const bool isRead = members.read().ok && members.root() == JsonKind::Object;
  const JsonKind idKind = members[Id].kind;
  const std::string id(idKind == JsonKind::String || idKind == JsonKind::Number ? members[Id].raw : "null");
  if (!isRead || members[Topic].text != "login") {
    return refuse(phone, id, R"(log in first: {"topic": "login", "terminal": ..., "token": ...})", CloseCode::NoLogin,
                  "the first message must be a login");
  }
  const std::string& name = members[Terminal].text;
  if (!isName(name)) {
    return refuse(phone, id, fmt::format(R"(the login's "terminal" must be the terminal's name, {})", kNameRule),
                  CloseCode::NoTerminal, "the login names no terminal");
  }
  const Directory::Entry* entry = directory_.find(name);
  if (entry == nullptr || !entry->isPresent || !bus_.fault().empty()) return refuseAbsent(phone, id, name);
  ++counts_.logins;
  phone.timer.reset();
  TerminalLine& line = lineTo({name, entry->epoch});
  line.add(phone);
  line.forward(phone, text);
}

void Switchboard::refuseAbsent(Phone& phone, std::string_view id, const std::string& name) {
  const Directory::Entry* entry = directory_.find(name);
  if (!bus_.fault().empty()) {
    return refuse(phone, id, "the relay has no connection to the terminals now; try again", CloseCode::TryLater,
                  "the relay has no connection");
  }
  if (entry != nullptr) {
    const std::string seen = timeText(entry->seen);
    return refuse(phone, id, fmt::format("the terminal {} is away; it was last seen at {}", name, seen),
                  CloseCode::TryLater, "the terminal is away", fmt::format(R"(,"seen":"{}")", seen));
  }
  if (loop_.bootTime() - upSince_ < kLearning) {
    return refuse(phone, id, "the relay has only just connected; try again", CloseCode::TryLater,
                  "the relay has only just connected");
  }
  refuse(phone, id, fmt::format("this relay has not seen a terminal with the name {}", name), CloseCode::NoTerminal,
         "no such terminal");
}

void Switchboard::refuse(Phone& phone, std::string_view id, const std::string& message, CloseCode code,
                         std::string_view reason, std::string_view members) {
  ++counts_.refused;
  phone.session->send(std::make_shared<const std::string>(
      fmt::format(R"({{"id":{},"topic":"login","message":{},"data":null{}}})", id, jsonString(message), members)));
  phone.session->close(code, reason);
}

TerminalLine& Switchboard::lineTo(const Party& terminal) {
  std::unique_ptr<TerminalLine>& line = lines_[terminal.name];
  if (line == nullptr) line = std::make_unique<TerminalLine>(loop_, bus_, self_, terminal, ++lastChannel_);
  return *line;
}

// Messages may be lost, so no session can go on.
void Switchboard::onDown() {
  directory_.forgetPresence();
  while (!lines_.empty()) {
    endLine(lines_.begin()->first, CloseCode::TryLater, "the relay lost its connection to the terminals");
  }
}

void Switchboard::onMessage(std::string_view subject, std::string_view bytes) {
  const auto sender = senderOf(subject);
  const auto message = decode(bytes);
  if (!sender || !message) {
    TERMINAL_LOG(gatewayLogger(), Warn, "a message with {} bytes on {} cannot be read", bytes.size(), subject);
  } else if (!sender->epoch.empty()) {
    onTerminal(*sender, *message);
  } else if (message->kind == Kind::Here && isName(message->payload)) {
    directory_.onHere(sender->name, message->payload);
  } else if (message->kind == Kind::Leaving) {
    directory_.onLeaving(sender->name, message->payload);
  }
}

void Switchboard::onTerminal(const Party& terminal, const Message& message) {
  const auto found = lines_.find(terminal.name);
  if (found == lines_.end()) return;
  TerminalLine& line = *found->second;
  if (line.terminal() != terminal || line.channel() != message.channel) return;
  if (message.kind == Kind::Reset) {
    endLine(terminal.name, CloseCode::TryLater, "the terminal has lost messages");
  } else if (!line.onMessage(message)) {
    endLine(terminal.name, CloseCode::TryLater, "messages of the terminal are lost");
  }
}

void Switchboard::onGone(const std::string& name, bool isReplaced) {
  TERMINAL_LOG(gatewayLogger(), Info, "the terminal {} {}", name, isReplaced ? "has restarted" : "is away");
  endLine(name, isReplaced ? CloseCode::Restarted : CloseCode::TryLater,
          isReplaced ? "the terminal has restarted" : "the terminal is away");
}

void Switchboard::endLine(const std::string& name, CloseCode code, std::string_view reason) {
  auto line = lines_.extract(name);
  if (line.empty()) return;
  ++counts_.breaks;
  TERMINAL_LOG(gatewayLogger(), Warn, "the channel to the terminal {} ends: {}", line.key(), reason);
  line.mapped()->reset();
  line.mapped()->end(code, reason);
}

}  // namespace orvane::terminal::relay
