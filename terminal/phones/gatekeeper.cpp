#include "terminal/phones/gatekeeper.h"

#include <optional>
#include <utility>

#include "terminal/phones/audittext.h"

namespace orvane::terminal {
namespace {

constexpr int64_t kTouchSeconds = 60;
constexpr size_t kMaxRefusedBody = 1024;  // in the audit: unauthorised clients must not fill the disk

}  // namespace

Gatekeeper::Gatekeeper(IEventLoop& loop, GatewayStore& store, OnChange onChange)
    : loop_(loop), store_(store), onChange_(std::move(onChange)), tokens_(store.tokens()) {
  revocations_ = tokens_->revocations;
  store.watch([this](auto tokens) { loop_.post([this, tokens = std::move(tokens)] { setTokens(tokens); }); },
              [this](const StoreHealth& health) { loop_.post([this, health] { health_ = health; }); });
}

void Gatekeeper::setTokens(std::shared_ptr<const TokenSnapshot> tokens) {
  tokens_ = std::move(tokens);
  revocations_ = tokens_->revocations;
  onChange_();
}

void Gatekeeper::admit(std::string token, OnAdmission answer) {
  if (auto visitor = find(token)) return answer(std::move(*visitor));
  store_.readTokens([this, token = std::move(token), answer = std::move(answer)](const std::string& fault) {
    loop_.post([this, token, answer, fault] {
      if (auto visitor = find(token)) return answer(std::move(*visitor));
      fault.empty() ? answer(Unknown{}) : answer(fault);
    });
  });
}

std::optional<Visitor> Gatekeeper::find(const std::string& token) {
  const Token* found = tokens_->find(token, wallTime());
  if (found == nullptr) return std::nullopt;
  touch(*found);
  return Visitor{found->id, found->name, found->rights};
}

void Gatekeeper::touch(const Token& token) {
  const auto known = touched_.try_emplace(token.id, token.lastUsed.value_or(0)).first;
  if (token.expires || wallTime() - known->second < kTouchSeconds) return;
  known->second = wallTime();
  store_.touch(token.id);
}

void Gatekeeper::confirm(const Revocation& revocation) {
  store_.confirm(revocation.id);
  std::erase_if(revocations_, [id = revocation.id](const Revocation& each) { return each.id == id; });
}

void Gatekeeper::noteRefusal(const Visitor& visitor, const std::string& address, const Frame& frame,
                             std::string_view message) {
  if (!refusals_.allow(visitor.token, visitor.name)) return;
  const std::string_view body = frame.body.size() > kMaxRefusedBody ? std::string_view() : frame.body;
  store_.note(auditHead({visitor.name, address, frame.topic, body, frame.key}, loop_.wallTime()) +
              auditRefusal(message));
}

void Gatekeeper::begin(int64_t requestId, std::shared_ptr<const Action> action, std::function<void(Verdict)> answer) {
  store_.begin(requestId, std::move(action), [this, answer = std::move(answer)](Verdict verdict) {
    loop_.post([answer, verdict = std::move(verdict)] { answer(verdict); });
  });
}

StoreHealth Gatekeeper::health() const {
  StoreHealth health = health_;
  if (health.database.empty()) health.database = store_.hang();
  return health;
}

void Gatekeeper::tick() {
  for (const RefusalLimit::Sum& sum : refusals_.takeSums()) {
    store_.note(auditSummary(sum.name, sum.count, loop_.wallTime()));
  }
  std::erase_if(touched_, [this](const auto& each) { return !isLive(each.first); });
}

}  // namespace orvane::terminal
