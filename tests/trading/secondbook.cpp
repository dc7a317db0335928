#include "tests/trading/secondbook.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/common.h"

namespace orvane::terminal::testing::second {
namespace {

constexpr double kTiny = 1e-6;

double toTick(double price, double tick) { return std::round(price / tick) * tick; }

std::string serial(const Instrument& it, int64_t id) { return fmt::format("{}{:08}", it.exchange, id); }

}  // namespace

double Instrument::bid() const { return std::max(toTick(last - tick, tick), low); }
double Instrument::ask() const { return std::min(toTick(last + tick, tick), high); }

OrderFill fillOf(const PlacedOrder& order) {
  OrderFill it;
  it.localOrderId = order.localOrderId;
  it.account = order.account;
  it.code = order.code;
  it.orderSource = order.orderSource;
  it.side = order.side;
  it.combOffset = order.combOffset;
  it.hedge = order.hedge;
  return it;
}

std::set<Key> SecondBook::heldKeys() const {
  std::set<Key> keys;
  for (const auto& [key, parts] : holdings_) {
    if (parts[0].held() + parts[1].held() > 0) keys.insert(key);
  }
  return keys;
}

std::set<Key> SecondBook::positionKeys() const {
  std::set<Key> keys = heldKeys();
  for (const auto& [id, it] : orders) {
    if (it.isWorking()) keys.insert(it.key());
  }
  return keys;
}

std::set<Key> SecondBook::monitorKeys() const {
  std::set<Key> keys = heldKeys();
  for (const auto& [key, unused] : targets_) keys.insert(key);
  for (const auto& [key, unused] : manual) keys.insert(key);
  return keys;
}

std::pair<int64_t, int64_t> SecondBook::closable(const Key& key, size_t side) const {
  const Part part = parts(key).at(side);
  std::pair<int64_t, int64_t> free{part.old(), instruments.at(key.second).kind() == 0 ? 0 : part.today};
  for (const auto& [id, it] : orders) {
    if (it.key() != key || !it.isWorking() || !it.closes() || it.holdingSide() != side) continue;
    free.first -= it.closesOld;
    free.second -= it.closesNew;
  }
  return free;
}

// What a credit account holds and did not buy with borrowed money, less what working orders sell of it.
int64_t SecondBook::ownClosable(const Key& key) const {
  int64_t selling = 0;
  int64_t repaying = 0;
  for (const auto& [id, it] : orders) {
    if (it.key() != key || !it.isWorking()) continue;
    if (it.side == 2) selling += it.volume;
    if (it.side == 6) repaying += it.volume;
  }
  return std::max<int64_t>(parts(key)[0].held() - std::max(owed(key.first, 0, &key).volume, repaying) - selling, 0);
}

std::string SecondBook::refusal(PlacedOrder& order) const {
  const Account& account = accounts.at(order.account.index);
  const Instrument& it = instruments.at(order.code.hashCode);
  if (!account.isOnline) return "账户 " + account.id.userCode + " 未登录";
  if (!account.mayOrder) return "账户 " + account.id.userCode + " 没有普通委托权限";
  if (!account.trades(it)) return "账户 " + account.id.userCode + " 不能交易";
  if (order.side < 1 || order.side > (account.credit ? 6 : 2)) return "账户 " + account.id.userCode + " 不支持买卖方向";
  if (order.combOffset < (it.isSecurity() ? 0 : 1) || order.combOffset > 7) return "开平标志";
  if (order.priceType != 1 && order.priceType != 2) return "价格类型";
  if (order.priceType == 2) order.price = order.buys() ? it.ask() : it.bid();
  if (!(order.price >= it.low - kTiny && order.price <= it.high + kTiny)) return "委托价格";
  if (std::abs(order.price - toTick(order.price, it.tick)) > kTiny * it.tick) return "委托价格";
  if (order.volume <= 0 || order.volume > it.most) return "委托数量";
  if (std::string text = closingRefusal(order); !text.empty()) return text;
  return moneyRefusal(order);
}

std::string SecondBook::closingRefusal(PlacedOrder& order) const {
  const Instrument& it = instruments.at(order.code.hashCode);
  auto [old, today] = closable(order.key(), order.buys() ? 1 : 0);
  if (order.combOffset == 5) old = 0;
  if (order.combOffset == 6) today = 0;
  const bool opens = order.combOffset == 1 || order.combOffset == 2;
  bool closes = !opens && (order.combOffset != 3 || old + today >= order.volume);
  if (it.isSecurity()) {
    closes = order.side == 2 || order.side == 5 || order.side == 6;
    if (closes ? opens : order.combOffset >= 4) return "买卖方向";
  }
  const bool whole = closes && order.volume == old + today;
  if (order.volume % it.lot != 0 && !whole) return "委托数量";
  if (!closes) return "";
  int64_t most = old + today;
  if (order.side == 2 && accounts.at(order.account.index).credit) most = std::min(most, ownClosable(order.key()));
  if (order.volume > most) return "可平数量不足";
  order.closesOld = std::min(order.volume, old);
  order.closesNew = order.volume - order.closesOld;
  return "";
}

std::string SecondBook::moneyRefusal(PlacedOrder order) const {
  if (!order.buys() && !order.closes()) order.price = std::max(order.price, instruments.at(order.code.hashCode).bid());
  const int32_t index = order.account.index;
  const TradingAccount figures = capital(index);
  const double free = order.side == 5 ? credit(index).cashAssets - figures.frozenMargin : figures.available;
  const double cash = boundCash(order);
  if (cash > 0 && cash > free + kTiny) return "可用资金不足";
  if (boundMargin(order) <= 0) return "";
  const CreditInfoRecord terms = credit(index);
  if (boundMargin(order) > terms.marginAvl + kTiny) return "保证金可用余额不足";
  double limit = order.side == 3 ? terms.longLimitAvl : terms.shortLimitAvl;
  for (const auto& [id, it] : orders) {
    if (it.isWorking() && it.account.index == index && it.side == order.side) limit -= orderValue(it);
  }
  if (orderValue(order) <= limit + kTiny) return "";
  return order.side == 3 ? "融资额度不足" : "融券额度不足";
}

std::string SecondBook::place(PlacedOrder order) {
  const Instrument& it = instruments.at(order.code.hashCode);
  complete(order);
  const std::string text = refusal(order);
  order.note = CodeConvert::utf8_to_gbk(text);
  order.localOrderId = ++lastOrder_;
  order.srcTimestamp = now;
  order.status = text.empty() ? 1 : 4;
  if (order.isWorking()) order.orderId = serial(it, order.localOrderId);
  const double quote = order.buys() ? it.ask() : it.bid();
  const bool crosses = order.buys() ? order.price >= quote - kTiny : order.price <= quote + kTiny;
  if (order.isWorking() && crosses) fill(order, quote);
  changed.push_back(orders[order.localOrderId] = order);
  if (order.isSynchronising() && !text.empty()) {
    notices.push_back(fmt::format("头寸监控同步委托被拒绝 ({} {}): {}", order.account.userCode, order.code.code, text));
  }
  return text;
}

void SecondBook::complete(PlacedOrder& order) const {
  order.account = accounts.at(order.account.index).id;
  order.code = instruments.at(order.code.hashCode).symbol;
}

std::string SecondBook::cancel(const Key& key, int64_t id) {
  const auto found = orders.find(id);
  if (found == orders.end() || found->second.key() != key) return "账户";
  PlacedOrder& it = found->second;
  const std::string name = fmt::format("委托 {} ", id);
  const char* const states[] = {"已全部成交", "已撤单", "是废单"};
  if (it.status != 1) return name + states[it.status - 2] + ", 不能撤单";
  it.status = 3;
  it.note = CodeConvert::utf8_to_gbk("用户撤单");
  changed.push_back(it);
  return "";
}

bool SecondBook::setQuote(int64_t hash, double price) {
  Instrument& it = instruments.at(hash);
  if (price < it.low - kTiny || price > it.high + kTiny) return false;
  if (std::abs(price - toTick(price, it.tick)) > kTiny * it.tick) return false;
  it.last = price;
  for (auto& [id, order] : orders) {
    if (order.code.hashCode != hash || !order.isWorking()) continue;
    if (order.buys() ? order.price < it.ask() - kTiny : order.price > it.bid() + kTiny) continue;
    fill(order, order.price);
    changed.push_back(order);
  }
  return true;
}

void SecondBook::fill(PlacedOrder& order, double price) {
  PlacedOrder paid = order;
  paid.price = price;
  OrderFill& it = fills.emplace_back(fillOf(order));
  it.fillId = serial(instruments.at(order.code.hashCode), ++lastFill_);
  it.exchTimestamp = now;
  it.volume = order.volume;
  it.price = price;
  order.status = 2;
  order.fillVolume = order.volume;
  order.fillAvgPrice = price;
  order.fillAmount = orderValue(paid);
  accounts.at(order.account.index).commission += fee(paid);
  if (order.closes()) return close(order, price);
  Part& part = holdings_[order.key()].at(order.holdingSide());
  part.newPrice =
      (part.newPrice * number(part.today) + price * number(order.volume)) / number(part.today + order.volume);
  part.today += order.volume;
  if (order.side == 3 || order.side == 4) {
    contracts_.push_back({order.key(), order.holdingSide(), order.volume, order.fillAmount, 0});
  }
}

void SecondBook::close(const PlacedOrder& order, double price) {
  const Instrument& it = instruments.at(order.code.hashCode);
  Part& part = holdings_.at(order.key()).at(order.holdingSide());
  const double gain =
      (price - it.preSettlement) * number(order.closesOld) + (price - part.newPrice) * number(order.closesNew);
  part.closeProfit += (order.holdingSide() == 0 ? gain : -gain) * it.multiplier;
  part.closed += order.closesOld;
  part.today -= order.closesNew;
  if (order.side == 6) payBack(order.key(), order.volume, order.fillAmount);
  if (order.side == 5) giveBack(order.key(), order.volume);
}

// Contracts of the instrument first, then the account's others, the oldest first, of each the interest first. The
// shares sold leave the contracts of their instrument; what is paid off ties none.
void SecondBook::payBack(const Key& key, int64_t sold, double money) {
  for (const bool others : {false, true}) {
    for (Contract& it : contracts_) {
      if (it.side != 0 || it.key.first != key.first || (it.key == key) == others) continue;
      const double interest = std::min(money, it.interest);
      const double amount = std::min(money - interest, it.amount);
      const int64_t left = others ? 0 : std::min(sold, it.volume);
      it.interest -= interest;
      it.amount -= amount;
      it.volume = it.amount > 0 ? it.volume - left : 0;
      sold -= left;
      money -= interest + amount;
    }
  }
}

void SecondBook::giveBack(const Key& key, int64_t volume) {
  for (Contract& it : contracts_) {
    if (it.side != 1 || it.key != key || it.volume == 0) continue;
    const int64_t given = std::min(volume, it.volume);
    const double left = number(it.volume - given) / number(it.volume);
    it.amount *= left;
    it.interest *= left;
    it.volume -= given;
    volume -= given;
  }
}

void SecondBook::setManual(const Key& key, int64_t longs, int64_t shorts) {
  const int64_t most = 1000 * instruments.at(key.second).most;
  if (longs < 0 || shorts < 0 || longs > most || shorts > most) {
    notices.push_back(fmt::format("手工头寸无效 ({} {}): 多 {}, 空 {}, 应在 0 至 {} 之间",
                                  accounts.at(key.first).id.userCode, instruments.at(key.second).symbol.code, longs,
                                  shorts, most));
    return;
  }
  manual[key].longPos = longs;
  manual[key].shortPos = shorts;
}

void SecondBook::newDay(int days) {
  for (auto& [id, it] : orders) {
    if (!it.isWorking()) continue;
    it.status = 3;
    it.note = CodeConvert::utf8_to_gbk("收盘自动撤单");
    changed.push_back(it);
  }
  orders.clear();
  fills.clear();
  for (auto& [index, account] : accounts) account.pre = capital(index).dynamicAmount;
  for (auto& [index, account] : accounts) account.deposit = account.withdraw = account.commission = 0;
  for (Contract& it : contracts_) {
    Account& account = accounts.at(it.key.first);
    const double interest = it.amount * account.credit->interestRate * days / 360;
    it.interest += interest;
    account.pre -= interest;
  }
  for (auto& [key, parts] : holdings_) {
    for (Part& it : parts) it = {it.held(), 0, 0, it.average(), 0, 0};
  }
  for (auto& [hash, it] : instruments) {
    const double moved = it.last / it.preSettlement;
    it.low = std::max(it.tick, toTick(it.low * moved, it.tick));
    it.high = std::max(it.last + it.tick, toTick(it.high * moved, it.tick));
    it.preClose = it.preSettlement = it.last;
  }
}

std::list<MonitorSyncOrder> SecondBook::syncOrders(const Key& key) const {
  const PositionMonitorRecord record = monitor(key);
  const Account& account = accounts.at(key.first);
  const Instrument& instrument = instruments.at(key.second);
  const bool securities = account.holdsSecurities();
  std::array<int64_t, 2> held{record.accountPos.longPos, record.accountPos.shortPos};
  for (const auto& [id, it] : orders) {
    if (it.key() != key || !it.isWorking() || !it.isSynchronising()) continue;
    held.at(it.holdingSide()) += it.closes() ? -it.volume : it.volume;
  }
  std::list<MonitorSyncOrder> result;
  const auto offer = [&](int32_t side, int32_t offset, int64_t volume) {
    const int64_t most = instrument.most / instrument.lot * instrument.lot;
    for (int64_t left = volume / instrument.lot * instrument.lot; left > 0 && result.size() < 100; left -= most) {
      MonitorSyncOrder& it = result.emplace_back();
      it.account = account.id;
      it.code = instrument.symbol;
      it.side = side;
      it.combOffsetFlag = offset;
      it.volume = std::min(left, most);
      it.price = side % 2 == 1 ? instrument.ask() : instrument.bid();
      it.position = record.accountPos;
    }
  };
  const auto open = [&](size_t side, int64_t volume) {
    if (side == 0 || !securities) return offer(side == 0 ? 1 : 2, 1, volume);
    if (account.credit) offer(4, 1, volume);
  };
  const auto close = [&](size_t side, int64_t volume) {
    if (!securities) return offer(side == 0 ? 2 : 1, 4, volume);
    const auto [old, today] = closable(key, side);
    if (side == 1) return offer(5, 4, std::min(volume, old + today));
    const int64_t own = account.credit ? std::min(old + today, ownClosable(key)) : old + today;
    const int64_t sold = std::min(volume, std::max<int64_t>(own, 0));
    offer(2, 4, sold);
    if (account.credit) offer(6, 4, std::min(volume - sold, old + today - sold));
  };
  if (record.syncRule == 0) {
    const int64_t missing[] = {record.system.longPos - held[0], record.system.shortPos - held[1]};
    for (const size_t side : {0U, 1U}) missing[side] > 0 ? open(side, missing[side]) : close(side, -missing[side]);
    return result;
  }
  const int64_t net = record.system.netPos - (held[0] - held[1]);
  const size_t opened = net > 0 ? 0 : 1;
  if (record.syncRule == 2 && !securities) {
    offer(net > 0 ? 1 : 2, 3, std::abs(net));
    return result;
  }
  const int64_t closed = std::min(std::abs(net), std::max<int64_t>(held.at(1 - opened), 0));
  close(1 - opened, closed);
  open(opened, std::abs(net) - closed);
  return result;
}

}  // namespace orvane::terminal::testing::second
