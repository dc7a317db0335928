#include "terminal/trading/quotecurves.h"

#include <fmt/format.h>

#include "terminal/trading/jsontext.h"
#include "terminal/trading/objectbody.h"
#include "terminal/trading/thin.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxCodes = 200;

struct CurvePoint {
  int64_t time = 0;
  double price = 0;
};

struct Curve {
  int64_t hashCode = 0;
  std::vector<CurvePoint> points;
};

// Returns why there is none, UTF-8; empty if there is one for each hash code.
std::string startCurves(const Book& book, const std::vector<int64_t>& hashCodes, int64_t now,
                        std::vector<Curve>& curves) {
  for (const int64_t hashCode : hashCodes) {
    const Instrument* instrument = book.instrument(hashCode);
    if (instrument == nullptr) return fmt::format("没有合约 {}", hashCode);
    curves.push_back({hashCode, {{now, instrument->last}}});
  }
  return {};
}

void writeCurve(JsonText& row, const Curve& curve, size_t points) {
  const auto kept = thin(curve.points, points, [](const CurvePoint& it) { return it.price; });
  std::vector<int64_t> minutes;
  std::vector<double> prices;
  for (const CurvePoint& it : kept) {
    minutes.push_back((it.time - kept.front().time) / kMinuteMillis);
    prices.push_back(it.price);
  }
  row.member("hashCode", curve.hashCode);
  row.member("start", kept.front().time);
  row.member("minutes", minutes);
  row.member("prices", prices);
}

}  // namespace

void QuoteCurves::sample(const Book& book, int64_t now) {
  const std::lock_guard lock(mutex_);
  if (book.day != day_) {
    times_.clear();
    prices_.clear();
    day_ = book.day;
  }
  times_.push_back(now - now % kMinuteMillis);
  for (const auto& [hashCode, instrument] : book.instruments) prices_[hashCode].push_back(instrument.last);
}

QuoteCurves::Answer QuoteCurves::answer(Desk& desk, const std::string& body) const {
  ObjectBody object("quote.curve", body, R"({"hashCodes": [整数], "points": 整数})");
  const std::vector<int64_t> hashCodes = object.int64s("hashCodes", kMaxCodes);
  const size_t points = object.size("points", kMinPoints, kMaxPoints);
  if (!object.fault().empty()) return {object.fault(), ""};
  std::vector<Curve> curves;
  const std::string fault =
      desk.read([&](const Book& book) { return startCurves(book, hashCodes, desk.now(), curves); });
  if (!fault.empty()) return {fault, ""};
  {
    const std::lock_guard lock(mutex_);  // sample() waits for it with the book locked, so only copy here
    for (Curve& curve : curves) {
      const CurvePoint latest = curve.points.front();
      curve.points.clear();
      for (size_t i = 0; i < times_.size(); ++i) curve.points.push_back({times_[i], prices_.at(curve.hashCode)[i]});
      curve.points.push_back(latest);
    }
  }
  return {"", jsonRows(curves, [&](JsonText& row, const Curve& curve) { writeCurve(row, curve, points); })};
}

}  // namespace orvane::terminal
