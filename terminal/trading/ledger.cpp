#include "terminal/trading/ledger.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace orvane::terminal {
namespace {

// A credit account pays for its purchases in full and needs margin only for what it borrowed.
double holdingMargin(const Book& book, const Key& key, Direction direction, const SideFigures& side) {
  const Account& account = book.accounts.at(key.account);
  if (!account.credit) {
    const MarginRate both = marginRate(book, key);
    const Rate& rate = direction == Direction::Long ? both.longs : both.shorts;
    return side.marketValue * rate.byMoney + static_cast<double>(side.volume) * rate.byVolume;
  }
  if (direction == Direction::Short) return side.marketValue * account.credit->shortMarginRate;
  double borrowed = 0;
  for (const int64_t id : book.contractsOf(key)) {
    const CreditContract& contract = book.contracts.at(id);
    if (contract.direction == Direction::Long) borrowed += contract.amount;
  }
  return borrowed * account.credit->longMarginRate;
}

// A debt whose shares are sold still binds margin.
void addDebts(const Book& book, const Account& account, AccountFigures& figures) {
  double borrowed = 0;
  for (const int64_t id : book.contractsOf(account.id.index)) {
    const CreditContract& contract = book.contracts.at(id);
    figures.debt += contract.interest;
    (contract.direction == Direction::Long ? borrowed : figures.shortProceeds) += contract.amount;
  }
  figures.debt += borrowed + figures.shorts.marketValue;
  figures.longs.margin = borrowed * account.credit->longMarginRate;
}

double withdrawQuota(const Account& account, const AccountFigures& figures) {
  if (holdsSecurities(account.market())) return figures.debt > 0 ? 0 : std::max(0.0, figures.available);
  const double unrealised = std::max(0.0, figures.longs.todayFloating + figures.shorts.todayFloating);
  return std::max(0.0, figures.available - unrealised);
}

double maintenance(const Account& account, const AccountFigures& figures) {
  if (account.credit) return figures.debt * (account.credit->keepMarginRatio - 1);
  return account.market() == MarketType::Stocks ? 0 : figures.margin;
}

void fillLongs(Position& it, const Holding& held, const SideFigures& side, const WorkingVolumes& working) {
  it.longYesterdayVolume = held.yesterdayVolume;
  it.longCloseYesterdayVolume = held.yesterdayClosed;
  it.longPosition = side.volume;
  it.longActiveVolume = working.opening + working.closing();
  it.longFrozenVolume = working.closing();
  it.longTodayVolume = held.todayVolume;
  it.longMarketValue = side.marketValue;
  it.longAvgPrice = side.avgPrice;
  it.longFloatProfit = side.floatProfit;
  it.longMargin = side.margin;
}

void fillShorts(Position& it, const Holding& held, const SideFigures& side, const WorkingVolumes& working) {
  it.shortYesterdayVolume = held.yesterdayVolume;
  it.shortCloseYesterdayVolume = held.yesterdayClosed;
  it.shortPosition = side.volume;
  it.shortActiveVolume = working.opening + working.closing();
  it.shortFrozenVolume = working.closing();
  it.shortTodayVolume = held.todayVolume;
  it.shortMarketValue = side.marketValue;
  it.shortAvgPrice = side.avgPrice;
  it.shortFloatProfit = side.floatProfit;
  it.shortMargin = side.margin;
}

Position position(const Book& book, const Account& account, const Key& key, const Holdings& held, double equity) {
  const Instrument& instrument = book.instruments.at(key.hashCode);
  const SideFigures longs = sideFigures(book, key, held, Direction::Long);
  const SideFigures shorts = sideFigures(book, key, held, Direction::Short);
  Position it;
  it.account = account.id;
  it.code = instrument.symbol;
  fillLongs(it, held.longs, longs, book.working.volumes(key, Direction::Long));
  fillShorts(it, held.shorts, shorts, book.working.volumes(key, Direction::Short));
  it.currentPrice = instrument.last;
  it.preSettlementPrice = instrument.preSettlement;
  it.preClosePrice = instrument.preClose;
  it.longLever = ratio(longs.marketValue, equity);
  it.shortLever = ratio(shorts.marketValue, equity);
  it.currentVolume = longs.volume + shorts.volume;
  it.yesterdayVolume = held.longs.yesterdayVolume + held.shorts.yesterdayVolume;
  it.avgPrice =
      ratio(longs.avgPrice * static_cast<double>(longs.volume) + shorts.avgPrice * static_cast<double>(shorts.volume),
            static_cast<double>(it.currentVolume));
  it.floatProfit = longs.floatProfit + shorts.floatProfit;
  it.todayProfit = longs.todayProfit() + shorts.todayProfit();
  it.todayProfitRatio = ratio(it.todayProfit, longs.todayBasis + shorts.todayBasis);
  it.todayProfitAccRatio = ratio(it.todayProfit, account.preBalance + account.deposit);
  return it;
}

// Volume bought with borrowed money, less what working orders already sell to repay it.
int64_t financedVolume(const Book& book, const Key& key) {
  int64_t sum = 0;
  for (const int64_t id : book.contractsOf(key)) {
    const CreditContract& contract = book.contracts.at(id);
    if (contract.direction == Direction::Long) sum += contract.volume;
  }
  sum -= book.working.volumes(key, Direction::Long).repaying;
  return std::max<int64_t>(sum, 0);
}

}  // namespace

double ratio(double part, double whole) { return whole > 0 ? part / whole : 0; }

SideFigures& SideFigures::operator+=(const SideFigures& other) {
  volume += other.volume;
  marketValue += other.marketValue;
  margin += other.margin;
  floatProfit += other.floatProfit;
  todayFloating += other.todayFloating;
  closeProfit += other.closeProfit;
  preCloseShift += other.preCloseShift;
  todayBasis += other.todayBasis;
  return *this;
}

MarginRate marginRate(const Book& book, const Key& key) {
  if (const MarginRate* rate = book.marginRate(key)) return *rate;
  const double standard = book.instruments.at(key.hashCode).defaultMarginRate;
  return {{standard, 0}, {standard, 0}};
}

SideFigures sideFigures(const Book& book, const Key& key, const Holdings& holdings, Direction direction) {
  const Instrument& instrument = book.instruments.at(key.hashCode);
  const Holding& held = holdings.of(direction);
  const auto unit = static_cast<double>(instrument.multiplier);
  const double gain = direction == Direction::Long ? unit : -unit;
  const auto yesterday = static_cast<double>(held.yesterdayLeft());
  const auto today = static_cast<double>(held.todayVolume);
  const double cost = yesterday * held.yesterdayPrice + today * held.todayPrice;

  SideFigures it;
  it.volume = held.volume();
  it.avgPrice = ratio(cost, static_cast<double>(it.volume));
  it.marketValue = instrument.last * static_cast<double>(it.volume) * unit;
  it.floatProfit = (instrument.last * static_cast<double>(it.volume) - cost) * gain;
  it.todayFloating =
      ((instrument.last - instrument.preSettlement) * yesterday + (instrument.last - held.todayPrice) * today) * gain;
  it.closeProfit = held.closeProfit;
  it.preCloseShift =
      (instrument.preClose - instrument.preSettlement) * static_cast<double>(held.yesterdayVolume) * gain;
  it.todayBasis =
      (static_cast<double>(held.yesterdayVolume) * instrument.preSettlement + today * held.todayPrice) * unit;
  it.margin = holdingMargin(book, key, direction, it);
  return it;
}

double commission(const Book& book, const Key& key, Side side, int64_t volume, double price) {
  const Instrument& instrument = book.instruments.at(key.hashCode);
  auto found = book.commissionRates.find({key.account, instrument.codeType});
  if (found == book.commissionRates.end()) return 0;
  const CommissionRate& it = found->second;
  const double value = price * static_cast<double>(volume * instrument.multiplier);
  const double fee = value * it.rate.byMoney + static_cast<double>(volume) * it.rate.byVolume;
  return std::max(fee, it.minimum) + (isBuying(side) ? 0 : value * it.saleTax);
}

OrderFunds orderFunds(const Book& book, const BookOrder& order) {
  const Key key = order.key();
  const auto volume = static_cast<double>(order.order.volume);
  const double value = order.order.price * volume * static_cast<double>(book.instruments.at(key.hashCode).multiplier);
  const double fee = commission(book, key, order.side(), order.order.volume, order.order.price);
  const Account& account = book.accounts.at(key.account);
  switch (order.side()) {
    case Side::MarginBuying:
      return {fee, value * account.credit->longMarginRate, value};
    case Side::ShortSelling:
      return {fee, value * account.credit->shortMarginRate, value};
    case Side::SecurityReimbursement:
      return {value + fee};
    default:
      break;
  }
  if (!order.opens()) return {};
  if (account.credit) return {value + fee};
  const MarginRate both = marginRate(book, key);
  const Rate& rate = order.direction() == Direction::Long ? both.longs : both.shorts;
  return {value * rate.byMoney + volume * rate.byVolume + fee};
}

Closable closable(const Book& book, const Key& key, Direction direction) {
  const auto found = book.holdings.find(key);
  if (found == book.holdings.end()) return {};
  const Holding& held = found->second.of(direction);
  const WorkingVolumes working = book.working.volumes(key, direction);
  const auto kind = static_cast<CodeClass>(book.instruments.at(key.hashCode).symbol.codeClass);
  Closable it;
  it.yesterday = held.yesterdayLeft() - working.closeYesterday;
  if (kind != CodeClass::Stock) it.today = held.todayVolume - working.closeToday;
  if (direction == Direction::Long) {
    it.own = std::max<int64_t>(held.volume() - working.closing() - financedVolume(book, key), 0);
  }
  return it;
}

AccountFigures accountFigures(const Book& book, const Account& account) {
  AccountFigures it;
  forEachHolding(book, account.id.index, [&](const Key& key, const Holdings& held) {
    it.longs += sideFigures(book, key, held, Direction::Long);
    it.shorts += sideFigures(book, key, held, Direction::Short);
  });
  const WorkingFunds working = book.working.funds(account.id.index);
  it.frozen = working.cash;
  it.buyBack = working.buyBack;
  it.frozenMargin = working.margin;
  it.equity = account.preBalance + account.deposit - account.withdraw + it.todayProfit() - account.commission;
  if (account.credit) addDebts(book, account, it);
  it.margin = it.longs.margin + it.shorts.margin;
  if (holdsSecurities(account.market())) it.cash = it.equity + it.debt - it.longs.marketValue;
  // Orders that buy securities back are paid first out of the proceeds of the short sales.
  it.available = account.credit ? it.cash - std::max(it.shortProceeds, it.buyBack) - (it.frozen - it.buyBack)
                                : it.equity - it.margin - it.frozen;
  return it;
}

TradingAccount capital(const Book& book, const Account& account) {
  const AccountFigures figures = accountFigures(book, account);
  const double shift = figures.longs.preCloseShift + figures.shorts.preCloseShift;
  TradingAccount it;
  it.id = account.id;
  it.available = figures.available;
  it.withdrawQuota = withdrawQuota(account, figures);
  it.frozenMargin = figures.frozen;
  it.currMargin = figures.margin;
  it.deposit = account.deposit;
  it.withdraw = account.withdraw;
  it.commission = account.commission;
  it.closeProfit = figures.longs.closeProfit + figures.shorts.closeProfit;
  it.preBalance = account.preBalance;
  it.dynamicAmount = figures.equity;
  it.maintainAmount = maintenance(account, figures);
  it.totalLever = ratio(figures.longs.marketValue + figures.shorts.marketValue, figures.equity);
  it.netLever = ratio(figures.longs.marketValue - figures.shorts.marketValue, figures.equity);
  it.risk = ratio(figures.margin, figures.equity);
  it.baseAmount = account.preBalance + shift;
  it.preCloseProfit = figures.todayProfit() - account.commission - shift;
  it.todayFloatingProfit = figures.longs.todayFloating + figures.shorts.todayFloating;
  return it;
}

void appendPositions(const Book& book, const Account& account, std::list<Position>& positions) {
  const double equity = accountFigures(book, account).equity;
  std::list<Position> own;
  std::map<std::string, double> valueByType;
  forEachHolding(book, account.id.index, [&](const Key& key, const Holdings& held) {
    const Position& it = own.emplace_back(position(book, account, key, held, equity));
    valueByType[book.instruments.at(key.hashCode).codeType] += it.longMarketValue + it.shortMarketValue;
  });
  for (Position& it : own) {
    it.todayProfitCateRatio = ratio(it.todayProfit, valueByType[book.instruments.at(it.code.hashCode).codeType]);
  }
  positions.splice(positions.end(), own);
}

}  // namespace orvane::terminal
