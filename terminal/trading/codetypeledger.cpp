#include "terminal/trading/codetypeledger.h"

#include <cmath>
#include <map>
#include <string>

#include "terminal/trading/ledger.h"

namespace orvane::terminal {
namespace {

struct TypeTotals {
  SideFigures sum;
  double netValue = 0;  // sum of the absolute net values of the instruments
};

struct Selection {
  std::map<std::string, TypeTotals> types;
  double equity = 0;
  double base = 0;
  double value = 0;
};

void addAccount(const Book& book, const Account& account, Selection& selection) {
  selection.equity += accountFigures(book, account).equity;
  selection.base += account.preBalance + account.deposit;
  forEachHolding(book, account.id.index, [&](const Key& key, const Holdings& held) {
    if (held.longs.isBlank() && held.shorts.isBlank()) return;  // there for a working order alone
    const SideFigures longs = sideFigures(book, key, held, Direction::Long);
    const SideFigures shorts = sideFigures(book, key, held, Direction::Short);
    TypeTotals& type = selection.types[book.instruments.at(key.hashCode).codeType];
    type.sum += longs;
    type.sum += shorts;
    type.netValue += std::abs(longs.marketValue - shorts.marketValue);
    selection.value += longs.marketValue + shorts.marketValue;
  });
}

CodeTypePosition record(const std::string& name, const TypeTotals& type, const Selection& selection) {
  const double value = type.sum.marketValue;
  CodeTypePosition it;
  it.codeType = name;
  it.netAbsLever = ratio(type.netValue, selection.equity);
  it.totalLever = ratio(value, selection.equity);
  it.leverWeight = ratio(value, selection.value);
  it.todayProfit = type.sum.todayProfit();
  it.profitRatio = ratio(it.todayProfit, type.sum.todayBasis);
  it.todayProfitType = ratio(it.todayProfit, value);
  it.todayProfitAccount = ratio(it.todayProfit, selection.base);
  it.amassProfit = type.sum.floatProfit;
  it.amassProfitType = ratio(it.amassProfit, value);
  it.amassProfitAccount = ratio(it.amassProfit, selection.base);
  it.totalMarketValue = value;
  return it;
}

}  // namespace

std::vector<CodeTypePosition> codeTypePositions(const Book& book, const std::vector<TradingAccountID>& accounts,
                                                bool derivatives, bool securities) {
  Selection selection;
  for (const TradingAccountID& id : accounts) {
    const Account* account = book.account(id.index);
    if (account == nullptr) continue;
    if (holdsSecurities(account->market()) ? securities : derivatives) addAccount(book, *account, selection);
  }
  std::vector<CodeTypePosition> records;
  records.reserve(selection.types.size());
  for (const auto& [name, type] : selection.types) records.push_back(record(name, type, selection));
  return records;
}

}  // namespace orvane::terminal
