#include "terminal/trading/equitylist.h"

#include "terminal/trading/jsontext.h"
#include "terminal/trading/objectbody.h"
#include "terminal/trading/thin.h"

namespace orvane::terminal {
namespace {

// The sums of a day become sums since the first row, so that none is lost when rows are left out.
void addUpPayments(std::vector<EquityRow>& rows) {
  double deposit = 0;
  double withdraw = 0;
  EquityRow before = rows.empty() ? EquityRow{} : rows.front();
  for (EquityRow& it : rows) {
    const EquityRow stored = it;
    const bool isSameDay = before.day == it.day;
    deposit += it.deposit - (isSameDay ? before.deposit : 0);
    withdraw += it.withdraw - (isSameDay ? before.withdraw : 0);
    before = stored;
    it.deposit = deposit;
    it.withdraw = withdraw;
  }
}

}  // namespace

std::string readEquityQuery(const std::string& body, EquityQuery& query) {
  ObjectBody object("equity.list", body, R"({"index": 整数, "from": 毫秒, "to": 毫秒, "points": 整数})");
  query.range = {object.int32("index"), object.int64("from"), object.int64("to")};
  query.points = object.size("points", kMinPoints, kMaxPoints);
  if (object.fault().empty() && query.range.from > query.range.to) return "equity.list 的 from 不得晚于 to";
  return object.fault();
}

std::string equityText(std::vector<EquityRow> rows, size_t points) {
  addUpPayments(rows);
  const auto kept = thin(rows, points, [](const EquityRow& it) { return it.equity; });
  return jsonRows(kept, [](JsonText& row, const EquityRow& it) {
    row.member("time", it.time);
    row.member("day", it.day);
    row.member("equity", it.equity);
    row.member("available", it.available);
    row.member("margin", it.margin);
    row.member("profit", it.profit);
    row.member("deposit", it.deposit);
    row.member("withdraw", it.withdraw);
  });
}

}  // namespace orvane::terminal
