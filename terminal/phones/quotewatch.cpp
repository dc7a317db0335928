#include "terminal/phones/quotewatch.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <fmt/format.h>
#include <rapidjson/document.h>

namespace orvane::terminal {
namespace {

constexpr std::chrono::milliseconds kPeriod{250};
constexpr size_t kMaxWatched = 200;

}  // namespace

void QuoteWatch::onRequest(Session& session, const Frame& frame) {
  auto read = this->read(frame.body);
  if (const auto* fault = std::get_if<std::string>(&read)) {
    return answers_.refuse(session, frame.id, frame.topic, {RefusalReason::Body, *fault});
  }
  metrics_.countRequest(findTopic(frame.topic));
  MobileMessage reply;
  reply.topic = frame.topic;
  auto& watch = std::get<Watch>(read);
  reply.data = '[' + rowsSince(watch) + ']';
  answers_.reply(session, frame.id, reply);
  if (watch.hashCodes.empty()) return forget(session);
  watches_.insert_or_assign(&session, std::move(watch));
  if (tick_ == nullptr) tick_ = loop_.after(kPeriod, [this] { tick(); });
}

std::variant<QuoteWatch::Watch, std::string> QuoteWatch::read(std::string_view body) const {
  rapidjson::Document root;
  root.Parse<rapidjson::kParseIterativeFlag>(body.data(), body.size());
  const auto isWhole = [](const rapidjson::Value& value) { return value.IsInt64(); };
  if (root.HasParseError() || !root.IsArray() || root.Size() > kMaxWatched ||
      !std::all_of(root.Begin(), root.End(), isWhole)) {
    return fmt::format("quote.watch takes an array of at most {} hash codes, whole numbers of quote.list", kMaxWatched);
  }
  Watch watch;
  for (const rapidjson::Value& each : root.GetArray()) {
    const int64_t hashCode = each.GetInt64();
    if (prices_ == nullptr || prices_->changedSince(0, {hashCode}).empty()) {
      return fmt::format("there is no instrument {}", hashCode);
    }
    watch.hashCodes.push_back(hashCode);
  }
  std::sort(watch.hashCodes.begin(), watch.hashCodes.end());
  watch.hashCodes.erase(std::unique(watch.hashCodes.begin(), watch.hashCodes.end()), watch.hashCodes.end());
  return watch;
}

// The prices that the client has not been sent yet, as JSON objects; it counts as sent them.
std::string QuoteWatch::rowsSince(Watch& watch) const {
  std::string rows;
  if (prices_ == nullptr) return rows;
  for (const LivePrice& price : prices_->changedSince(watch.version, watch.hashCodes)) {
    watch.version = std::max(watch.version, price.version);
    fmt::format_to(std::back_inserter(rows), R"({}{{"hashCode":{},"lastPrice":{},"bidPrice":{},"askPrice":{}}})",
                   rows.empty() ? "" : ",", price.hashCode, price.last, price.bid, price.ask);
  }
  return rows;
}

void QuoteWatch::tick() {
  for (auto& [session, watch] : watches_) {
    if (session->isClosing() || session->backlogBytes() > 0) continue;
    const std::string rows = rowsSince(watch);
    if (!rows.empty()) answers_.send(*session, R"({"topic":"quote.push","message":"","data":[)" + rows + "]}");
  }
  tick_ = watches_.empty() ? nullptr : loop_.after(kPeriod, [this] { tick(); });
}

void QuoteWatch::stop() {
  watches_.clear();
  tick_.reset();
}

}  // namespace orvane::terminal
