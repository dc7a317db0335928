#include "terminal/phones/alerts.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include <fmt/format.h>
#include <rapidjson/document.h>

#include "terminal/phones/topics.h"

namespace orvane::terminal {
namespace {

constexpr std::chrono::milliseconds kPeriod{250};
constexpr size_t kMaxOfToken = 100;
constexpr const char* kSetBody =
    R"(alert.set takes {"hashCode": a whole number, "above": true or false, "price": a number})";
constexpr const char* kClearBody = "alert.clear takes an array of ids, whole numbers of alert.list";

int64_t unixMilliseconds(WallTime time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

rapidjson::Document parse(std::string_view body) {
  rapidjson::Document root;
  root.Parse<rapidjson::kParseIterativeFlag>(body.data(), body.size());
  return root;
}

std::string writeRow(const Alert& alert) {
  return fmt::format(R"({{"id":{},"hashCode":{},"above":{},"price":{},"made":{},"fired":{},"firedPrice":{}}})",
                     alert.id, alert.hashCode, alert.isAbove, alert.price, alert.made, alert.fired, alert.firedPrice);
}

}  // namespace

Alerts::Alerts(IEventLoop& loop, GatewayStore& store, const ILivePrices* prices, Peers& peers, Metrics& metrics,
               Answers& answers)
    : loop_(loop), store_(store), prices_(prices), peers_(peers), metrics_(metrics), answers_(answers) {
  const StoredAlerts& stored = store.alerts();
  for (const Alert& alert : stored.alerts) alerts_.emplace(alert.id, Kept{alert});
  lastId_ = stored.lastId;
}

void Alerts::start() {
  if (prices_ != nullptr) tick_ = loop_.after(kPeriod, [this] { tick(); });
}

void Alerts::onRequest(const Peer& peer, const Frame& frame) {
  const Asker asker{peer.session, peer.visitor.token, std::string(frame.id), frame.topic};
  metrics_.countRequest(findTopic(frame.topic));
  if (frame.topic == "alert.set") return set(asker, frame.body);
  if (frame.topic == "alert.clear") return clear(asker, frame.body);
  replyAll(asker);
}

void Alerts::set(const Asker& asker, std::string_view body) {
  auto read = this->read(asker.token, body);
  if (auto* fault = std::get_if<std::string>(&read)) return refuse(asker, RefusalReason::Body, std::move(*fault));
  Kept alert{std::get<Alert>(read), false};
  alert.id = ++lastId_;
  alerts_.emplace(alert.id, alert);
  store_.addAlert(alert, [this, asker, id = lastId_](const std::string& fault) {
    loop_.post([this, asker, id, fault] {
      const auto found = alerts_.find(id);
      if (found == alerts_.end()) return;  // the token was revoked
      if (!fault.empty()) {
        alerts_.erase(found);
        return refuse(asker, RefusalReason::Fault, "the alert cannot be stored: " + fault);
      }
      found->second.isStored = true;
      version_ = 0;  // compares it with the present price
      replyAll(asker);
    });
  });
}

std::variant<Alert, std::string> Alerts::read(int64_t token, std::string_view body) const {
  const rapidjson::Document root = parse(body);
  if (root.HasParseError() || !root.IsObject()) return kSetBody;
  const auto hashCode = root.FindMember("hashCode");
  const auto above = root.FindMember("above");
  const auto price = root.FindMember("price");
  const auto end = root.MemberEnd();
  if (hashCode == end || !hashCode->value.IsInt64() || above == end || !above->value.IsBool() || price == end ||
      !price->value.IsNumber()) {
    return kSetBody;
  }
  Alert alert{.token = token,
              .hashCode = hashCode->value.GetInt64(),
              .isAbove = above->value.GetBool(),
              .price = price->value.GetDouble(),
              .made = unixMilliseconds(loop_.wallTime())};
  if (prices_ == nullptr || prices_->changedSince(0, {alert.hashCode}).empty()) {
    return fmt::format("there is no instrument {}", alert.hashCode);
  }
  if (countOf(token) < kMaxOfToken) return alert;
  return fmt::format("this token has {} alerts already: clear some", kMaxOfToken);
}

void Alerts::clear(const Asker& asker, std::string_view body) {
  const rapidjson::Document root = parse(body);
  const auto isWhole = [](const rapidjson::Value& value) { return value.IsInt64(); };
  if (root.HasParseError() || !root.IsArray() || !std::all_of(root.Begin(), root.End(), isWhole)) {
    return refuse(asker, RefusalReason::Body, kClearBody);
  }
  std::vector<int64_t> ids;
  for (const rapidjson::Value& each : root.GetArray()) {
    const auto found = alerts_.find(each.GetInt64());
    if (found != alerts_.end() && found->second.token == asker.token) ids.push_back(found->first);
  }
  store_.deleteAlerts(ids, [this, asker, ids](const std::string& fault) {
    loop_.post([this, asker, ids, fault] {
      if (!fault.empty()) return refuse(asker, RefusalReason::Fault, "the alerts cannot be cleared: " + fault);
      for (const int64_t id : ids) alerts_.erase(id);
      replyAll(asker);
    });
  });
}

size_t Alerts::countOf(int64_t token) const {
  return static_cast<size_t>(
      std::count_if(alerts_.begin(), alerts_.end(), [&](const auto& each) { return each.second.token == token; }));
}

void Alerts::replyAll(const Asker& asker) {
  std::string rows;
  for (const auto& [id, alert] : alerts_) {
    if (alert.token == asker.token && alert.isStored) rows += (rows.empty() ? "" : ",") + writeRow(alert);
  }
  MobileMessage reply;
  reply.topic = asker.topic;
  reply.data = '[' + rows + ']';
  answers_.guard(*asker.session, [&] { answers_.reply(*asker.session, asker.id, reply); });
}

void Alerts::refuse(const Asker& asker, RefusalReason reason, std::string message) {
  answers_.guard(*asker.session, [&] {
    answers_.refuse(*asker.session, asker.id, asker.topic, {reason, std::move(message)});
  });
}

void Alerts::dropRevoked(const Gatekeeper& keeper) {
  std::map<int64_t, bool> isLive;  // by token, of which each may have a hundred alerts
  for (const auto& [id, alert] : alerts_) isLive.try_emplace(alert.token, false);
  for (auto& [token, live] : isLive) live = keeper.isLive(token);
  std::erase_if(alerts_, [&](const auto& each) { return !isLive.at(each.second.token); });
}

void Alerts::tick() {
  start();
  std::vector<int64_t> codes;
  std::vector<Alert*> waiting;
  for (auto& [id, alert] : alerts_) {
    if (alert.fired != 0 || !alert.isStored) continue;
    codes.push_back(alert.hashCode);
    waiting.push_back(&alert);
  }
  std::sort(codes.begin(), codes.end());
  codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
  std::map<int64_t, double> last;
  for (const LivePrice& price : prices_->changedSince(version_, codes)) {
    version_ = std::max(version_, price.version);
    last.emplace(price.hashCode, price.last);
  }
  for (Alert* alert : waiting) {
    const auto found = last.find(alert->hashCode);
    if (found != last.end() && alert->isReachedBy(found->second)) fire(*alert, found->second);
  }
}

void Alerts::fire(Alert& alert, double last) {
  alert.fired = unixMilliseconds(loop_.wallTime());
  alert.firedPrice = last;
  store_.keepFired(alert);
  const std::string frame = R"({"topic":"alert.push","message":"","data":[)" + writeRow(alert) + "]}";
  peers_.each([&](const Peer& peer) {
    if (!peer.isLoggedIn || peer.visitor.token != alert.token || !peer.visitor.rights.has(Right::See)) return;
    answers_.guard(*peer.session, [&] { answers_.send(*peer.session, frame); });
  });
}

}  // namespace orvane::terminal
