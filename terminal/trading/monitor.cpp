#include "terminal/trading/monitor.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include <fmt/format.h>

#include "host/common.h"
#include "terminal/trading/ledger.h"

namespace orvane::terminal {
namespace {

constexpr int64_t kSyncFlag = 0x1000000;
constexpr int64_t kMaxManualOrders = 1000;  // times the instrument's limit for one order
constexpr int kMaxSyncOrders = 100;         // per record

enum SyncRule : int32_t { Apart = 0, Convert = 1, Net = 2 };

bool named(const MonitorAccountCodes& codes, const Key& key) {
  if (codes.empty()) return true;
  TradingAccountID account;
  account.index = key.account;
  SymbolCode code;
  code.hashCode = key.hashCode;
  auto found = codes.find(account);
  return found != codes.end() && found->second.contains(code);
}

void add(PositionFigures& family, const Volumes& volumes) {
  family.longPos += volumes.longs;
  family.shortPos += volumes.shorts;
  family.netPos = family.longPos - family.shortPos;
}

PositionFigures& familyOf(PositionMonitorRecord& record, TargetFamily family) {
  switch (family) {
    case TargetFamily::Active:
      return record.strategyActive;
    case TargetFamily::Unsend:
      return record.strategyUnsend;
    default:
      return record.algo;
  }
}

Volumes volumesOf(const PositionFigures& family) { return {family.longPos, family.shortPos}; }

std::map<Key, PositionMonitorRecord> collectFamilies(const Book& book) {
  std::map<Key, PositionMonitorRecord> records;
  for (const auto& [key, held] : book.holdings) {
    if (held.longs.volume() == 0 && held.shorts.volume() == 0) continue;
    add(records[key].accountPos, {held.longs.volume(), held.shorts.volume()});
  }
  for (const StrategyTarget& it : book.targets) add(familyOf(records[it.key], it.family), it.volumes);
  for (const auto& [key, volumes] : book.manual) add(records[key].manual, volumes);
  return records;
}

void compare(PositionMonitorRecord& it) {
  const int64_t net = it.system.netPos - it.accountPos.netPos;
  it.theoryPosDif = net + it.strategyUnsend.netPos;
  it.longPosDif = it.system.longPos - it.accountPos.longPos;
  it.shortPosDif = it.system.shortPos - it.accountPos.shortPos;
  it.isMatchTheory = it.theoryPosDif == 0;
  it.isMatchLongShort = it.longPosDif == 0 && it.shortPosDif == 0;
  it.isMatchNetPos = net == 0;
  it.isMatchPosDif = it.syncRule == Apart ? it.isMatchLongShort : it.isMatchNetPos;
}

void addLevers(PositionMonitorRecord& it, double unitValue, double equity) {
  for (PositionFigures* family :
       {&it.system, &it.strategyActive, &it.strategyUnsend, &it.accountPos, &it.algo, &it.manual}) {
    family->netLever = equity > 0 ? static_cast<double>(family->netPos) * unitValue / equity : 0;
  }
}

std::map<Key, PositionMonitorRecord> monitorRecords(const Book& book) {
  std::map<int32_t, double> equities;
  for (const auto& [index, account] : book.accounts) equities[index] = accountFigures(book, account).equity;
  std::map<Key, PositionMonitorRecord> records = collectFamilies(book);
  for (auto& [key, it] : records) {
    const Instrument& instrument = book.instruments.at(key.hashCode);
    it.account = book.accounts.at(key.account).id;
    it.code = instrument.symbol;
    for (const PositionFigures* family : {&it.strategyActive, &it.algo, &it.manual}) add(it.system, volumesOf(*family));
    auto rule = book.syncRules.find(key);
    it.syncRule = rule == book.syncRules.end() ? Apart : rule->second;
    compare(it);
    addLevers(it, instrument.last * static_cast<double>(instrument.multiplier), equities[key.account]);
  }
  return records;
}

// Forms the orders that bring one record to its target. Working synchronising orders count as filled; otherwise a
// second request would order the same again.
class SyncOrders {
 public:
  SyncOrders(const Book& book, const Key& key, const PositionMonitorRecord& record, std::list<MonitorSyncOrder>& orders)
      : instrument_(book.instruments.at(key.hashCode)),
        market_(book.accounts.at(key.account).market()),
        record_(record),
        orders_(orders),
        freeLongs_(closable(book, key, Direction::Long)),
        freeShorts_(closable(book, key, Direction::Short)) {
    held_ = {expected(book, key, Direction::Long), expected(book, key, Direction::Short)};
  }

  void append() {
    const int64_t longs = record_.system.longPos - held_.longs;
    const int64_t shorts = record_.system.shortPos - held_.shorts;
    if (record_.syncRule == Apart) {
      longs > 0 ? open(Direction::Long, longs) : close(Direction::Long, -longs);
      shorts > 0 ? open(Direction::Short, shorts) : close(Direction::Short, -shorts);
    } else if (record_.syncRule == Net && !holdsSecurities(market_)) {
      emit(longs > shorts ? Side::Buy : Side::Sell, Offset::AutoOpenClose, std::abs(longs - shorts));
    } else {
      convert(longs - shorts);
    }
  }

 private:
  int64_t expected(const Book& book, const Key& key, Direction direction) const {
    int64_t volume = direction == Direction::Long ? record_.accountPos.longPos : record_.accountPos.shortPos;
    for (const int64_t id : book.working.ids(key)) {
      const BookOrder& order = book.orders.at(id);
      if (order.direction() != direction || (order.order.orderSource.sourceFlags & kSyncFlag) == 0) continue;
      volume += order.opens() ? order.order.volume : -order.order.volume;
    }
    return volume;
  }

  // Closes the opposite holding first and opens the rest.
  void convert(int64_t net) {
    const int64_t closing = std::min(std::abs(net), net > 0 ? held_.shorts : held_.longs);
    close(net > 0 ? Direction::Short : Direction::Long, closing);
    open(net > 0 ? Direction::Long : Direction::Short, std::abs(net) - closing);
  }

  // A stock account cannot sell short.
  void open(Direction direction, int64_t volume) {
    if (direction == Direction::Long) {
      emit(Side::Buy, Offset::Open, volume);
    } else if (market_ != MarketType::Stocks) {
      emit(market_ == MarketType::Credit ? Side::ShortSelling : Side::Sell, Offset::Open, volume);
    }
  }

  // Securities: only what can be closed today, own shares before those bought with borrowed money.
  void close(Direction direction, int64_t volume) {
    if (!holdsSecurities(market_)) {
      return emit(direction == Direction::Long ? Side::Sell : Side::Buy, Offset::Close, volume);
    }
    if (direction == Direction::Short) {
      return emit(Side::SecurityReimbursement, Offset::Close, std::min(volume, freeShorts_.volume()));
    }
    volume = std::min(volume, freeLongs_.volume());
    const int64_t own = std::min(volume, freeLongs_.own);
    emit(Side::Sell, Offset::Close, own);
    emit(Side::SellingReimbursement, Offset::Close, volume - own);
  }

  // Whole lots, split at the instrument's limit for one order, at a price that fills at once.
  void emit(Side side, Offset offset, int64_t volume) {
    volume -= volume % instrument_.lot;
    for (; volume > 0 && formed_ < kMaxSyncOrders; ++formed_) {
      MonitorSyncOrder it;
      it.account = record_.account;
      it.code = record_.code;
      it.volume = std::min(volume, instrument_.maxVolume);
      it.price = isBuying(side) ? instrument_.ask() : instrument_.bid();
      it.side = static_cast<int32_t>(side);
      it.combOffsetFlag = static_cast<int32_t>(offset);
      it.position = record_.accountPos;
      volume -= it.volume;
      orders_.push_back(std::move(it));
    }
  }

  const Instrument& instrument_;
  MarketType market_;
  const PositionMonitorRecord& record_;
  std::list<MonitorSyncOrder>& orders_;
  Closable freeLongs_;
  Closable freeShorts_;
  Volumes held_;
  int formed_ = 0;
};

int64_t manualLimit(const Book& book, int64_t hashCode) {
  const Instrument* instrument = book.instrument(hashCode);
  return instrument == nullptr ? 0 : instrument->maxVolume * kMaxManualOrders;
}

bool isPlausible(const PositionFigures& figures, int64_t limit) {
  return figures.longPos >= 0 && figures.longPos <= limit && figures.shortPos >= 0 && figures.shortPos <= limit;
}

}  // namespace

std::list<MonitorSyncOrder> PositionMonitor::getSyncOrders(const MonitorAccountCodes& codes) {
  return desk_.read([&](const Book& book) {
    std::list<MonitorSyncOrder> orders;
    for (const auto& [key, record] : monitorRecords(book)) {
      if (named(codes, key)) SyncOrders(book, key, record, orders).append();
    }
    return orders;
  });
}

void PositionMonitor::placeSyncOrders(std::list<MonitorSyncOrder>& orders) {
  for (const MonitorSyncOrder& it : orders) {
    MobileNewOrderItem item;
    item.account = it.account;
    item.code = it.code;
    item.orderSource.sourceFlags = kSyncFlag;
    item.orderSource.sourceText = CodeConvert::utf8_to_gbk("头寸监控一键同步");
    item.volume = it.volume;
    item.price = it.price;
    item.priceType = static_cast<int32_t>(PriceType::Limit);
    item.combOffset = it.combOffsetFlag;
    item.hedge = 1;
    item.side = it.side;
    const ResultStatus status = engine_.insertOrder(item);
    if (status.code != 0) {
      desk_.notice(fmt::format("头寸监控同步委托被拒绝 ({} {}): {}", it.account.userCode, it.code.code,
                               CodeConvert::gbk_to_utf8(status.message)));
    }
  }
}

void PositionMonitor::getMonitorRecords(MonitorSnapshot& snapshot) {
  desk_.read([&](const Book& book) {
    for (auto& [key, record] : monitorRecords(book)) snapshot.records.push_back(std::move(record));
  });
}

void PositionMonitor::cleanManualPositions(const MonitorAccountCodes& codes) {
  changeManual([&](Book& book, Change& change, int64_t /*now*/) {
    std::erase_if(book.manual, [&](const auto& entry) {
      const bool clean = named(codes, entry.first);
      if (clean) change.manual.insert(entry.first);
      return clean;
    });
  });
}

void PositionMonitor::updateManualPositions(std::list<MonitorManualPosition>& positions) {
  changeManual([&](Book& book, Change& change, int64_t /*now*/) {
    for (const MonitorManualPosition& it : positions) {
      const int64_t limit = manualLimit(book, it.code.hashCode);
      if (!isPlausible(it.position, limit)) {
        desk_.notice(fmt::format("手工头寸无效 ({} {}): 多 {}, 空 {}, 应在 0 至 {} 之间", it.account.userCode,
                                 it.code.code, it.position.longPos, it.position.shortPos, limit));
        continue;
      }
      const Key key{it.account.index, it.code.hashCode};
      book.manual[key] = volumesOf(it.position);
      change.manual.insert(key);
    }
  });
}

void PositionMonitor::getManualPositions(const MonitorAccountCodes& codes,
                                         std::list<MonitorManualPosition>& positions) {
  desk_.read([&](const Book& book) {
    for (const auto& [key, volumes] : book.manual) {
      if (!named(codes, key)) continue;
      MonitorManualPosition& it = positions.emplace_back();
      it.account = book.accounts.at(key.account).id;
      it.code = book.instruments.at(key.hashCode).symbol;
      add(it.position, volumes);
    }
  });
}

void PositionMonitor::changeManual(const std::function<void(Book&, Change&, int64_t now)>& work) {
  try {
    desk_.apply(work);
  } catch (const StoreError& error) {
    desk_.notice(fmt::format("手工头寸未能保存: {}", error.refusal()));
  }
}

}  // namespace orvane::terminal
