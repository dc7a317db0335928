#include <algorithm>
#include <cmath>

#include "host/common.h"
#include "tests/trading/secondbook.h"

namespace orvane::terminal::testing::second {
namespace {

constexpr std::array<double, 2> kSign{1, -1};

double ratio(double value, double divisor) { return divisor > 0 ? value / divisor : 0; }

PositionFigures figuresOf(int64_t longs, int64_t shorts) { return {longs - shorts, longs, shorts, 0}; }

}  // namespace

double Part::average() const { return ratio(number(old()) * oldPrice + number(today) * newPrice, number(held())); }

SideSum& SideSum::operator+=(const SideSum& other) {
  value += other.value;
  margin += other.margin;
  floating += other.floating;
  todayFloating += other.todayFloating;
  closeProfit += other.closeProfit;
  sinceClose += other.sinceClose;
  start += other.start;
  return *this;
}

std::array<SideSum, 2> SecondBook::sums(int32_t account) const {
  std::array<SideSum, 2> sums;
  for (const auto& [key, unused] : holdings_) {
    if (key.first != account) continue;
    for (const size_t side : {0U, 1U}) sums.at(side) += sideSum(key, side);
  }
  return sums;
}

Rates SecondBook::ratesOf(const Key& key) const {
  const Instrument& it = instruments.at(key.second);
  Rates all = valueOf(rates, key, {{it.defaultRate, it.defaultRate}, {}});
  if (it.isSecurity()) return {{1, 1}, {}};
  if (it.kind() == 2) all.byMoney[0] = 1;  // a premium is paid in full
  return all;
}

SideSum SecondBook::sideSum(const Key& key, size_t side) const {
  const Instrument& it = instruments.at(key.second);
  const Part part = parts(key).at(side);
  const auto& terms = accounts.at(key.first).credit;
  SideSum sum;
  sum.value = it.last * number(part.held()) * it.multiplier;
  sum.floating = kSign.at(side) * (it.last - part.average()) * number(part.held()) * it.multiplier;
  sum.todayFloating =
      kSign.at(side) * it.multiplier *
      ((it.last - it.preSettlement) * number(part.old()) + (it.last - part.newPrice) * number(part.today));
  sum.closeProfit = part.closeProfit;
  sum.sinceClose = sum.today() + kSign.at(side) * (it.preSettlement - it.preClose) * number(part.began) * it.multiplier;
  sum.start = (number(part.began) * it.preSettlement + number(part.today) * part.newPrice) * it.multiplier;
  if (terms) {
    sum.margin = side == 0 ? owed(key.first, 0, &key).amount * terms->longRate : sum.value * terms->shortRate;
  } else {
    const Rates own = ratesOf(key);
    sum.margin = sum.value * own.byMoney.at(side) + number(part.held()) * own.byVolume.at(side);
  }
  return sum;
}

Contract SecondBook::owed(int32_t account, size_t side, const Key* only) const {
  Contract sum;
  for (const Contract& it : contracts_) {
    if (it.key.first != account || it.side != side || (only != nullptr && it.key != *only)) continue;
    sum.volume += it.volume;
    sum.amount += it.amount;
    sum.interest += it.interest;
  }
  return sum;
}

double SecondBook::orderValue(const PlacedOrder& order) const {
  return order.price * number(order.volume) * instruments.at(order.code.hashCode).multiplier;
}

double SecondBook::fee(const PlacedOrder& order) const {
  const Fee it = valueOf(accounts.at(order.account.index).fees, instruments.at(order.code.hashCode).type);
  return std::max(it.minimum, orderValue(order) * it.byMoney + number(order.volume) * it.byVolume) +
         (order.buys() ? 0 : orderValue(order) * it.saleTax);
}

double SecondBook::boundCash(const PlacedOrder& order) const {
  const bool credit = accounts.at(order.account.index).credit.has_value();
  if (credit && (order.side == 1 || order.side == 5)) return orderValue(order) + fee(order);
  if (order.closes()) return 0;
  if (credit) return fee(order);
  const Rates own = ratesOf(order.key());
  const size_t side = order.buys() ? 0 : 1;
  return orderValue(order) * own.byMoney.at(side) + number(order.volume) * own.byVolume.at(side) + fee(order);
}

double SecondBook::boundMargin(const PlacedOrder& order) const {
  const auto& terms = accounts.at(order.account.index).credit;
  if (!terms || (order.side != 3 && order.side != 4)) return 0;
  return orderValue(order) * (order.side == 3 ? terms->longRate : terms->shortRate);
}

TradingAccount SecondBook::capital(int32_t index) const {
  const Account& account = accounts.at(index);
  const auto& [longs, shorts] = sums(index);
  double returning = 0;  // what orders that buy securities back bind
  TradingAccount it;
  for (const auto& [id, order] : orders) {
    if (order.account.index != index || !order.isWorking()) continue;
    it.frozenMargin += boundCash(order);
    if (order.side == 5) returning += boundCash(order);
  }
  it.id = account.id;
  it.preBalance = account.pre;
  it.deposit = account.deposit;
  it.withdraw = account.withdraw;
  it.commission = account.commission;
  it.currMargin = shorts.margin + (account.credit ? owed(index, 0).amount * account.credit->longRate : longs.margin);
  it.closeProfit = longs.closeProfit + shorts.closeProfit;
  it.todayFloatingProfit = longs.todayFloating + shorts.todayFloating;
  it.dynamicAmount = it.preBalance + it.deposit - it.withdraw + it.closeProfit + it.todayFloatingProfit - it.commission;
  it.preCloseProfit = longs.sinceClose + shorts.sinceClose - it.commission;
  it.baseAmount = it.dynamicAmount - it.deposit + it.withdraw - it.preCloseProfit;
  it.totalLever = ratio(longs.value + shorts.value, it.dynamicAmount);
  it.netLever = ratio(longs.value - shorts.value, it.dynamicAmount);
  it.risk = ratio(it.currMargin, it.dynamicAmount);
  it.available = it.dynamicAmount - it.currMargin - it.frozenMargin;
  it.maintainAmount = account.id.marketType == 2 ? 0 : it.currMargin;
  it.withdrawQuota = it.available - (account.id.marketType == 2 ? 0 : std::max(0.0, it.todayFloatingProfit));
  if (account.credit) {
    const double debt = owed(index, 0).amount + shorts.value + owed(index, 0).interest + owed(index, 1).interest;
    const double cash = it.dynamicAmount + debt - longs.value;
    it.available = cash - std::max(owed(index, 1).amount, returning) - (it.frozenMargin - returning);
    it.maintainAmount = debt * (account.credit->keepRatio - 1);
    it.withdrawQuota = debt > 0 ? 0 : it.available;
  }
  it.withdrawQuota = std::max(0.0, it.withdrawQuota);
  return it;
}

CreditInfoRecord SecondBook::credit(int32_t index) const {
  const CreditTerms& terms = *accounts.at(index).credit;
  const auto& [longs, shorts] = sums(index);
  CreditInfoRecord it;
  for (const auto& [key, unused] : holdings_) {
    if (key.first != index) continue;
    it.longMarginMarket += number(owed(index, 0, &key).volume) * instruments.at(key.second).last;
  }
  double working = 0;
  for (const auto& [id, order] : orders) {
    if (order.account.index == index && order.isWorking()) working += boundMargin(order);
  }
  const TradingAccount figures = capital(index);
  const Contract money = owed(index, 0);
  const Contract securities = owed(index, 1);
  it.netAssets = figures.dynamicAmount;
  it.longDebtBalance = money.amount;
  it.shortDebtBalance = it.shortMarginMarket = shorts.value;
  it.tradeDebtBalance = it.longDebtBalance + it.shortDebtBalance;
  it.debtInterest = money.interest + securities.interest;
  it.totalDebtBalance = it.tradeDebtBalance + it.debtInterest;
  it.cashAssets = it.netAssets + it.totalDebtBalance - longs.value;
  it.totalAssets = it.cashAssets + longs.value;
  it.freeBalance = figures.available;
  it.marginRatio = ratio(it.totalAssets, it.totalDebtBalance);
  it.longProfit = longs.floating;
  it.shortProfit = it.shortMarginProfit = shorts.floating;
  it.totalProfit = it.longProfit + it.shortProfit;
  it.longMarginProfit = it.longMarginMarket - it.longDebtBalance;
  it.longMarginUsed = it.longDebtBalance * terms.longRate;
  it.shortMarginUsed = it.shortMarginMarket * terms.shortRate;
  const auto counted = [&](double profit) { return profit > 0 ? profit * terms.collateralRate : profit; };
  it.marginAvl = it.freeBalance + terms.collateralRate * (longs.value - it.longMarginMarket) +
                 counted(it.longMarginProfit) + counted(it.shortMarginProfit) - it.longMarginUsed - it.shortMarginUsed -
                 it.debtInterest - working;
  it.longMarginRate = terms.longRate;
  it.shortMarginRate = terms.shortRate;
  it.keepMarginRatio = terms.keepRatio;
  it.longLimit = terms.longLimit;
  it.shortLimit = terms.shortLimit;
  it.longLimitUsed = money.amount;
  it.shortLimitUsed = securities.amount;
  it.longLimitAvl = it.longLimit - it.longLimitUsed;
  it.shortLimitAvl = it.shortLimit - it.shortLimitUsed;
  return it;
}

Position SecondBook::position(const Key& key) const {
  const Instrument& instrument = instruments.at(key.second);
  const auto& [longs, shorts] = parts(key);
  const SideSum longSum = sideSum(key, 0);
  const SideSum shortSum = sideSum(key, 1);
  SideSum both = longSum;
  both += shortSum;
  double ofType = 0;
  for (const auto& [other, unused] : holdings_) {
    if (other.first != key.first || instruments.at(other.second).type != instrument.type) continue;
    ofType += sideSum(other, 0).value + sideSum(other, 1).value;
  }
  const double equity = capital(key.first).dynamicAmount;
  Position it;
  it.account = accounts.at(key.first).id;
  it.code = instrument.symbol;
  for (const auto& [id, order] : orders) {
    if (order.key() != key || !order.isWorking()) continue;
    (order.holdingSide() == 0 ? it.longActiveVolume : it.shortActiveVolume) += order.volume;
    if (order.closes()) (order.holdingSide() == 0 ? it.longFrozenVolume : it.shortFrozenVolume) += order.volume;
  }
  it.longYesterdayVolume = longs.began;
  it.longCloseYesterdayVolume = longs.closed;
  it.longPosition = longs.held();
  it.longTodayVolume = longs.today;
  it.longAvgPrice = longs.average();
  it.longMarketValue = longSum.value;
  it.longLever = ratio(longSum.value, equity);
  it.longFloatProfit = longSum.floating;
  it.longMargin = longSum.margin;
  it.shortYesterdayVolume = shorts.began;
  it.shortCloseYesterdayVolume = shorts.closed;
  it.shortPosition = shorts.held();
  it.shortTodayVolume = shorts.today;
  it.shortAvgPrice = shorts.average();
  it.shortMarketValue = shortSum.value;
  it.shortLever = ratio(shortSum.value, equity);
  it.shortFloatProfit = shortSum.floating;
  it.shortMargin = shortSum.margin;
  it.currentVolume = longs.held() + shorts.held();
  it.yesterdayVolume = longs.began + shorts.began;
  it.currentPrice = instrument.last;
  it.preSettlementPrice = instrument.preSettlement;
  it.preClosePrice = instrument.preClose;
  it.avgPrice = ratio(longs.average() * number(longs.held()) + shorts.average() * number(shorts.held()),
                      number(it.currentVolume));
  it.floatProfit = both.floating;
  it.todayProfit = both.today();
  it.todayProfitRatio = ratio(it.todayProfit, both.start);
  it.todayProfitCateRatio = ratio(it.todayProfit, ofType);
  it.todayProfitAccRatio = ratio(it.todayProfit, accounts.at(key.first).pre + accounts.at(key.first).deposit);
  return it;
}

std::vector<CodeTypePosition> SecondBook::codeTypes(const std::set<int32_t>& chosen) const {
  double equity = 0;
  double money = 0;
  double all = 0;
  for (const int32_t index : chosen) {
    equity += capital(index).dynamicAmount;
    money += accounts.at(index).pre + accounts.at(index).deposit;
  }
  std::map<std::string, std::pair<SideSum, double>> sums;  // and the sizes of net values
  for (const auto& [key, parts] : holdings_) {
    if (chosen.count(key.first) == 0 || (parts[0].isEmpty() && parts[1].isEmpty())) continue;
    auto& [sum, net] = sums[CodeConvert::utf8_to_gbk(instruments.at(key.second).type)];
    const SideSum longs = sideSum(key, 0);
    const SideSum shorts = sideSum(key, 1);
    sum += longs;
    sum += shorts;
    net += std::abs(longs.value - shorts.value);
    all += longs.value + shorts.value;
  }
  std::vector<CodeTypePosition> types;
  for (const auto& [type, sumAndNet] : sums) {
    const auto& [sum, net] = sumAndNet;
    CodeTypePosition& it = types.emplace_back();
    it.codeType = type;
    it.netAbsLever = ratio(net, equity);
    it.totalLever = ratio(sum.value, equity);
    it.leverWeight = ratio(sum.value, all);
    it.todayProfit = sum.today();
    it.profitRatio = ratio(it.todayProfit, sum.start);
    it.todayProfitType = ratio(it.todayProfit, sum.value);
    it.todayProfitAccount = ratio(it.todayProfit, money);
    it.amassProfit = sum.floating;
    it.amassProfitType = ratio(it.amassProfit, sum.value);
    it.amassProfitAccount = ratio(it.amassProfit, money);
    it.totalMarketValue = sum.value;
  }
  return types;
}

PositionMonitorRecord SecondBook::monitor(const Key& key) const {
  PositionMonitorRecord it;
  it.account = accounts.at(key.first).id;
  it.code = instruments.at(key.second).symbol;
  const auto& [active, unsent, algorithms] = valueOf(targets_, key);
  it.strategyActive = figuresOf(active.longPos, active.shortPos);
  it.strategyUnsend = figuresOf(unsent.longPos, unsent.shortPos);
  it.algo = figuresOf(algorithms.longPos, algorithms.shortPos);
  it.manual = figuresOf(valueOf(manual, key).longPos, valueOf(manual, key).shortPos);
  const auto& [longs, shorts] = parts(key);
  it.accountPos = figuresOf(longs.held(), shorts.held());
  it.accountPos.netLever = ratio(sideSum(key, 0).value - sideSum(key, 1).value, capital(key.first).dynamicAmount);
  it.system = figuresOf(it.strategyActive.longPos + it.algo.longPos + it.manual.longPos,
                        it.strategyActive.shortPos + it.algo.shortPos + it.manual.shortPos);
  it.theoryPosDif = it.system.netPos + it.strategyUnsend.netPos - it.accountPos.netPos;
  it.longPosDif = it.system.longPos - it.accountPos.longPos;
  it.shortPosDif = it.system.shortPos - it.accountPos.shortPos;
  it.isMatchTheory = it.theoryPosDif == 0 ? 1 : 0;
  it.isMatchLongShort = it.longPosDif == 0 && it.shortPosDif == 0 ? 1 : 0;
  it.isMatchNetPos = it.system.netPos == it.accountPos.netPos ? 1 : 0;
  it.syncRule = valueOf(rules_, key);
  it.isMatchPosDif = it.syncRule == 0 ? it.isMatchLongShort : it.isMatchNetPos;
  return it;
}

}  // namespace orvane::terminal::testing::second
