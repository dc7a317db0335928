#include "terminal/relay/terminalline.h"

#include <algorithm>
#include <utility>

namespace orvane::terminal::relay {
namespace {

constexpr size_t kMaxQueuedUp = size_t{1024} * 1024;
constexpr size_t kMaxReason = 100;  // a close frame has room for 123 bytes

// The terminal is untrusted: it may close its own clients, but not with what cannot be sent.
CloseCode closeCodeOf(uint32_t value) {
  const bool isOurs = value >= 4000 && value <= 4999;
  const bool isKnown = value == 1001 || value == 1003 || (value >= 1011 && value <= 1013);
  return isOurs || isKnown ? static_cast<CloseCode>(value) : CloseCode::Fault;
}

std::string_view reasonOf(std::string_view payload) {
  const bool isPlain = std::all_of(payload.begin(), payload.end(), [](char c) { return c >= ' ' && c <= '~'; });
  return isPlain && payload.size() <= kMaxReason ? payload : "the terminal closed the session";
}

}  // namespace

TerminalLine::TerminalLine(const IClock& clock, IBus& bus, const Party& self, const Party& terminal, uint64_t channel)
    : terminal_(terminal), channel_(clock, bus, upSubject(terminal, self), channel) {}

void TerminalLine::add(Phone& phone) {
  phone.line = this;
  phone.id = ++lastId_;
  phones_.emplace(phone.id, &phone);
  channel_.send({.kind = Kind::Open,
                 .session = phone.id,
                 .payload = writeOrigin({phone.session->address(), phone.session->network()})});
}

void TerminalLine::remove(Phone& phone) {
  phones_.erase(phone.id);
  phone.line = nullptr;
  channel_.send({.kind = Kind::Close, .session = phone.id});
}

void TerminalLine::forward(Phone& phone, std::string_view text) {
  phone.up.add(std::make_shared<const std::string>(text));
  pump(phone);
  if (phone.up.queuedBytes() <= kMaxQueuedUp) return;
  phone.up.clear();
  phone.session->close(CloseCode::TooMany, "more was sent than the terminal takes");
}

void TerminalLine::pump(Phone& phone) {
  while (const auto piece = phone.up.next()) {
    channel_.send({.kind = Kind::Data, .isLast = piece->isLast, .session = phone.id, .payload = piece->bytes});
  }
}

void TerminalLine::release(Phone& phone, size_t bytes) {
  const uint32_t credit = phone.down.release(bytes);
  if (credit > 0) channel_.send({.kind = Kind::Credit, .value = credit, .session = phone.id});
}

bool TerminalLine::onMessage(const Message& message) {
  if (!channel_.receive(message)) return false;
  if (message.kind == Kind::Cast) {
    const auto cast = readCast(message.payload);
    if (!cast) return false;
    const auto text = std::make_shared<const std::string>(cast->text);
    for (const uint64_t id : cast->sessions) deliver(id, text, true);
    return true;
  }
  if (message.kind == Kind::Data) {
    deliver(message.session, std::make_shared<const std::string>(message.payload), message.isLast);
    return true;
  }
  const auto found = phones_.find(message.session);
  if (found == phones_.end()) return true;  // it has ended here, and the terminal will hear of that
  Phone& phone = *found->second;
  if (message.kind == Kind::Credit) {
    phone.up.grant(message.value);
    pump(phone);
  } else if (message.kind == Kind::Admit) {
    phone.session->admit();
  } else if (message.kind == Kind::Close) {
    close(phone, message);
  }
  return true;
}

void TerminalLine::deliver(uint64_t id, const Session::Text& text, bool isLast) {
  const auto found = phones_.find(id);
  if (found == phones_.end()) return;
  Phone& phone = *found->second;
  if (phone.down.take(text->size())) return phone.session->sendPart(text, isLast);
  phone.session->close(CloseCode::Fault, "the terminal sends more than it may");
}

void TerminalLine::close(Phone& phone, const Message& message) {
  phones_.erase(phone.id);
  phone.line = nullptr;
  phone.session->close(closeCodeOf(message.value), reasonOf(message.payload));
}

void TerminalLine::end(CloseCode code, std::string_view reason) {
  for (const auto& [id, phone] : std::exchange(phones_, {})) {
    phone->line = nullptr;
    phone->session->close(code, reason);
  }
}

}  // namespace orvane::terminal::relay
