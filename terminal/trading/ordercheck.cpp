#include "terminal/trading/ordercheck.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/common.h"
#include "terminal/trading/creditledger.h"
#include "terminal/trading/ledger.h"

namespace orvane::terminal {
namespace {

constexpr double kEpsilon = 1e-6;

bool isSecurity(const Instrument& instrument) {
  const auto kind = static_cast<CodeClass>(instrument.symbol.codeClass);
  return kind == CodeClass::Stock || kind == CodeClass::Fund;
}

bool trades(MarketType market, const Instrument& instrument) {
  switch (market) {
    case MarketType::Futures:
      return instrument.symbol.codeClass == static_cast<int32_t>(CodeClass::Future);
    case MarketType::Options:
      return instrument.symbol.codeClass == static_cast<int32_t>(CodeClass::Option);
    default:
      return isSecurity(instrument);
  }
}

std::string shortOf(const char* what, double needed, double usable) {
  return needed > usable + kEpsilon ? fmt::format("{}不足: 需要 {:.2f}, 可用 {:.2f}", what, needed, usable) : "";
}

}  // namespace

OrderCheck::OrderCheck(const Book& book, BookOrder& order)
    : book_(book),
      order_(order),
      account_(book.accounts.at(order.order.account.index)),
      instrument_(book.instruments.at(order.order.code.hashCode)) {}

std::string OrderCheck::fault() {
  for (auto step : {&OrderCheck::account, &OrderCheck::market, &OrderCheck::terms, &OrderCheck::price,
                    &OrderCheck::volume, &OrderCheck::closing, &OrderCheck::funds, &OrderCheck::creditLimit}) {
    if (std::string text = (this->*step)(); !text.empty()) return text;
  }
  return {};
}

std::string OrderCheck::account() {
  if (!account_.online) return fmt::format("账户 {} 未登录, 不能委托", account_.id.userCode);
  if (!account_.ordinaryOrders) return fmt::format("账户 {} 没有普通委托权限", account_.id.userCode);
  return {};
}

std::string OrderCheck::market() {
  if (trades(account_.market(), instrument_)) return {};
  return fmt::format("账户 {} 不能交易 {} ({})", account_.id.userCode, codeKey(book_, instrument_.symbol),
                     CodeConvert::gbk_to_utf8(instrument_.name));
}

std::string OrderCheck::terms() {
  const Order& order = order_.order;
  const Side last = account_.credit ? Side::SellingReimbursement : Side::Sell;
  if (order.side < static_cast<int32_t>(Side::Buy) || order.side > static_cast<int32_t>(last)) {
    return fmt::format("账户 {} 不支持买卖方向 {}", account_.id.userCode, order.side);
  }
  const Offset first = isSecurity(instrument_) ? Offset::Unknown : Offset::Open;
  if (order.combOffset < static_cast<int32_t>(first) || order.combOffset > static_cast<int32_t>(Offset::CloseAuto)) {
    return fmt::format("开平标志 {} 无效", order.combOffset);
  }
  if (order.priceType != static_cast<int32_t>(PriceType::Limit) &&
      order.priceType != static_cast<int32_t>(PriceType::Market)) {
    return fmt::format("价格类型 {} 无效, 1 为限价, 2 为市价", order.priceType);
  }
  return {};
}

std::string OrderCheck::price() {
  double& price = order_.order.price;
  if (order_.order.priceType == static_cast<int32_t>(PriceType::Market)) {
    price = isBuying(order_.side()) ? instrument_.ask() : instrument_.bid();
    return {};
  }
  if (!(price >= instrument_.lowerLimit - kEpsilon && price <= instrument_.upperLimit + kEpsilon)) {
    return fmt::format("委托价格 {} 超出涨跌停范围 {} 至 {}", price, instrument_.lowerLimit, instrument_.upperLimit);
  }
  if (std::abs(price - roundToTick(price, instrument_.priceTick)) > instrument_.priceTick * kEpsilon) {
    return fmt::format("委托价格 {} 不是最小变动价位 {} 的整数倍", price, instrument_.priceTick);
  }
  return {};
}

std::string OrderCheck::volume() {
  const int64_t volume = order_.order.volume;
  if (volume <= 0) return fmt::format("委托数量 {} 必须大于 0", volume);
  if (volume > instrument_.maxVolume) return fmt::format("委托数量 {} 超过单笔上限 {}", volume, instrument_.maxVolume);
  return {};
}

bool OrderCheck::wantsToClose() const {
  if (isSecurity(instrument_)) {
    return order_.side() == Side::Sell || order_.side() == Side::SecurityReimbursement ||
           order_.side() == Side::SellingReimbursement;
  }
  switch (static_cast<Offset>(order_.order.combOffset)) {
    case Offset::Open:
    case Offset::OpenAuto:
      return false;
    case Offset::AutoOpenClose:
      return freeYesterday_ + freeToday_ >= order_.order.volume;
    default:
      return true;
  }
}

// Finds how much of the opposite holding the order's offset may close.
void OrderCheck::findClosable() {
  const Direction direction = isBuying(order_.side()) ? Direction::Short : Direction::Long;
  const Closable free = closable(book_, order_.key(), direction);
  const auto offset = static_cast<Offset>(order_.order.combOffset);
  ownLeft_ = free.own;
  if (offset != Offset::CloseToday) freeYesterday_ = free.yesterday;
  if (offset != Offset::CloseYesterday) freeToday_ = free.today;
}

std::string OrderCheck::closing() {
  findClosable();
  const auto offset = static_cast<Offset>(order_.order.combOffset);
  const bool closes = wantsToClose();
  const bool contradicts = closes ? offset == Offset::Open || offset == Offset::OpenAuto : offset >= Offset::Close;
  if (contradicts) return fmt::format("买卖方向 {} 与开平标志 {} 不符", order_.order.side, order_.order.combOffset);
  const int64_t volume = order_.order.volume;
  const bool sellsAll = closes && volume == freeYesterday_ + freeToday_;
  if (volume % instrument_.lot != 0 && !sellsAll) {
    return fmt::format("委托数量 {} 不是 {} 的整数倍", volume, instrument_.lot);
  }
  return closes ? allocate() : std::string{};
}

// Takes yesterday's part first. Shares bought with borrowed money may only be sold to repay it.
std::string OrderCheck::allocate() {
  const int64_t volume = order_.order.volume;
  int64_t closable = freeYesterday_ + freeToday_;
  if (order_.side() == Side::Sell) closable = std::min(closable, ownLeft_);
  if (volume > closable) return fmt::format("可平数量不足: 委托 {}, 可平 {}", volume, std::max<int64_t>(closable, 0));
  order_.closeYesterday = std::min(volume, freeYesterday_);
  order_.closeToday = volume - order_.closeYesterday;
  return {};
}

// An opening sell below the market is filled at the bid, so its funds are checked at the bid.
BookOrder OrderCheck::atFillPrice() const {
  BookOrder it = order_;
  if (it.opens() && !isBuying(it.side())) it.order.price = std::max(it.order.price, instrument_.bid());
  return it;
}

std::string OrderCheck::funds() {
  const OrderFunds needed = orderFunds(book_, atFillPrice());
  if (needed.cash <= 0) return {};
  const AccountFigures figures = accountFigures(book_, account_);
  // The proceeds of short sales may only be spent on buying the securities back.
  const double usable =
      order_.side() == Side::SecurityReimbursement ? figures.cash - figures.frozen : figures.available;
  return shortOf("可用资金", needed.cash, usable);
}

std::string OrderCheck::creditLimit() {
  if (!account_.credit) return {};
  const OrderFunds needed = orderFunds(book_, atFillPrice());
  if (needed.margin <= 0) return {};
  const CreditInfoRecord credit = creditInfo(book_, account_);
  const bool buying = order_.side() == Side::MarginBuying;
  const WorkingFunds working = book_.working.funds(account_.id.index);
  if (std::string text = shortOf("保证金可用余额", needed.margin, credit.marginAvl); !text.empty()) return text;
  if (buying) return shortOf("融资额度", needed.borrowed, credit.longLimitAvl - working.longBorrowed);
  return shortOf("融券额度", needed.borrowed, credit.shortLimitAvl - working.shortBorrowed);
}

}  // namespace orvane::terminal
