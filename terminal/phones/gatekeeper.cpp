#include "terminal/phones/gatekeeper.h"

#include "terminal/gatewaydatabase.h"
#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

AuditEntry entryOf(const Visitor& visitor, const std::string& address, const Frame& frame) {
  return {visitor.name, address, frame.topic, frame.body, frame.key};
}

}  // namespace

Gatekeeper::Gatekeeper(const std::filesystem::path& dataDir, const IClock& clock)
    : clock_(clock), db_(openGatewayDatabase(dataDir)), tokens_(db_, clock), actions_(db_, dataDir, clock) {}

std::optional<Visitor> Gatekeeper::admit(std::string_view token) {
  const Token* found = tokens_.find(token);
  if (found == nullptr) return std::nullopt;
  Visitor visitor{found->id, found->name, found->rights};
  try {
    tokens_.touch(*found);
  } catch (const SQLite::Exception& error) {
    TERMINAL_LOG(gatewayLogger(), Warn, "gateway.db cannot store that {} logged in: {}", visitor.name, error.what());
  }
  return visitor;
}

bool Gatekeeper::maySee(std::string_view token) try {
  const auto visitor = admit(token);
  return visitor && visitor->rights.has(Right::See);
} catch (const SQLite::Exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "gateway.db cannot be read: {}", error.what());
  return false;
}

void Gatekeeper::noteRefusal(const Visitor& visitor, const std::string& address, const Frame& frame,
                             std::string_view message) {
  actions_.refuse(entryOf(visitor, address, frame), message);
}

ActionStore::Verdict Gatekeeper::begin(int64_t requestId, const Visitor& visitor, const std::string& address,
                                       const Frame& frame) {
  return actions_.begin(requestId, {visitor.token, frame.terminalType, entryOf(visitor, address, frame)});
}

void Gatekeeper::tick() {
  try {
    tokens_.refresh();
  } catch (const SQLite::Exception& error) {
    TERMINAL_LOG(gatewayLogger(), Error, "gateway.db cannot be searched for revoked tokens: {}", error.what());
  }
  actions_.tidy();
}

}  // namespace orvane::terminal
