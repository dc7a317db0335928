#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/credit.h"
#include "host/order.h"
#include "host/position.h"
#include "host/positionmonitor.h"
#include "host/uiproxymgr.h"

// A second book of the paper-trading host, plain and slow. It is written from docs/terminal.md and shares no code with
// the terminal but the conversion of texts: it loads the sample data, follows each step of a day, and calculates every
// figure from the start. Texts are UTF-8, but those of orders and fills GBK as the host's. Index 0 is long, 1 short.
namespace orvane::terminal::testing::second {

using Key = std::pair<int32_t, int64_t>;  // account and hash code

struct Instrument {
  double bid() const;
  double ask() const;
  int32_t kind() const { return symbol.codeClass; }  // 0 stock, 1 future, 2 option, 3 fund
  bool isSecurity() const { return kind() == 0 || kind() == 3; }

  SymbolCode symbol;
  std::string exchange, name, type;
  double multiplier = 0, tick = 0, defaultRate = 0;
  int64_t lot = 0, most = 0;
  double preClose = 0, preSettlement = 0, low = 0, high = 0, last = 0;
};

// One side of a holding: the rest of yesterday's volume, and the volume opened today and still held.
struct Part {
  bool isEmpty() const { return began == 0 && today == 0 && closeProfit == 0; }
  int64_t old() const { return began - closed; }
  int64_t held() const { return old() + today; }
  double average() const;

  int64_t began = 0, closed = 0, today = 0;
  double oldPrice = 0, newPrice = 0, closeProfit = 0;
};

struct Rates {
  std::array<double, 2> byMoney{}, byVolume{};
};

struct Fee {
  double byMoney = 0, byVolume = 0, minimum = 0, saleTax = 0;
};

struct CreditTerms {
  double longRate = 0, shortRate = 0, keepRatio = 0, collateralRate = 0, interestRate = 0, longLimit = 0,
         shortLimit = 0;
};

// What one margin purchase (side 0) or short sale (side 1) still owes.
struct Contract {
  Key key;
  size_t side = 0;
  int64_t volume = 0;
  double amount = 0, interest = 0;
};

struct Account {
  bool holdsSecurities() const { return id.marketType == 2 || id.marketType == 16; }
  bool trades(const Instrument& it) const {
    return holdsSecurities() ? it.isSecurity() : it.kind() == (id.marketType == 1 ? 1 : 2);
  }

  TradingAccountID id;
  bool isOnline = false, mayOrder = false;
  double pre = 0, deposit = 0, withdraw = 0, commission = 0;
  std::map<std::string, Fee> fees;  // by code type
  std::optional<CreditTerms> credit;
};

// Figures of one side of a holding, and sums of them.
struct SideSum {
  SideSum& operator+=(const SideSum& other);
  double today() const { return todayFloating + closeProfit; }

  double value = 0, margin = 0, floating = 0, todayFloating = 0, closeProfit = 0;
  double sinceClose = 0;  // today's profit against the last close
  double start = 0;       // the value that today's profit is measured against
};

struct PlacedOrder : Order {
  Key key() const { return {account.index, code.hashCode}; }
  bool isWorking() const { return status == 1; }
  bool isSynchronising() const { return orderSource.sourceFlags == 0x1000000; }
  bool buys() const { return side == 1 || side == 3 || side == 5; }
  bool closes() const { return closesOld + closesNew > 0; }
  size_t holdingSide() const { return buys() == closes() ? 1 : 0; }  // the side of the holding that it changes

  int64_t closesOld = 0, closesNew = 0;
};

// Of a key that is not in the map, `otherwise`.
template <typename Map>
typename Map::mapped_type valueOf(const Map& map, const typename Map::key_type& key,
                                  const typename Map::mapped_type& otherwise = {}) {
  const auto found = map.find(key);
  return found == map.end() ? otherwise : found->second;
}

inline double number(int64_t value) { return static_cast<double>(value); }

// A fill with its order's account, instrument, source and terms.
OrderFill fillOf(const PlacedOrder& order);

class SecondBook {
 public:
  // Reads terms and facts from the database of a host that is not running.
  explicit SecondBook(const std::filesystem::path& database);

  // Steps. A refusal is the beginning of the text that the terminal gives; empty if the step is taken.
  std::string place(PlacedOrder order);
  std::string cancel(const Key& key, int64_t id);
  bool setQuote(int64_t hash, double price);
  void setManual(const Key& key, int64_t longs, int64_t shorts);
  void newDay(int days);

  TradingAccount capital(int32_t index) const;
  Position position(const Key& key) const;
  CreditInfoRecord credit(int32_t index) const;
  PositionMonitorRecord monitor(const Key& key) const;
  std::list<MonitorSyncOrder> syncOrders(const Key& key) const;
  std::vector<CodeTypePosition> codeTypes(const std::set<int32_t>& chosen) const;  // by name in GBK
  std::set<Key> positionKeys() const;                                              // held, or in a working order
  std::set<Key> monitorKeys() const;                                               // held, or wanted

  std::map<int64_t, Instrument> instruments;
  std::map<int32_t, Account> accounts;
  std::map<Key, Rates> rates;
  std::map<Key, PositionFigures> manual;
  std::map<int64_t, PlacedOrder> orders;  // of the day, as the fills
  std::vector<OrderFill> fills;
  std::vector<PlacedOrder> changed;  // since the caller emptied it, as the beginnings of notices
  std::vector<std::string> notices;
  int64_t now = 0;  // of the steps to come, in milliseconds since 1970

 private:
  std::set<Key> heldKeys() const;
  std::array<Part, 2> parts(const Key& key) const { return valueOf(holdings_, key); }
  SideSum sideSum(const Key& key, size_t side) const;
  std::array<SideSum, 2> sums(int32_t account) const;
  Rates ratesOf(const Key& key) const;
  Contract owed(int32_t account, size_t side, const Key* only = nullptr) const;  // the sum of the contracts
  double orderValue(const PlacedOrder& order) const;
  double fee(const PlacedOrder& order) const;
  double boundCash(const PlacedOrder& order) const;
  double boundMargin(const PlacedOrder& order) const;
  std::pair<int64_t, int64_t> closable(const Key& key, size_t side) const;
  int64_t ownClosable(const Key& key) const;
  void complete(PlacedOrder& order) const;
  std::string refusal(PlacedOrder& order) const;
  std::string closingRefusal(PlacedOrder& order) const;
  std::string moneyRefusal(PlacedOrder order) const;
  void fill(PlacedOrder& order, double price);
  void close(const PlacedOrder& order, double price);
  void payBack(const Key& key, int64_t sold, double money);
  void giveBack(const Key& key, int64_t volume);

  std::map<Key, std::array<Part, 2>> holdings_;
  std::vector<Contract> contracts_;
  std::map<Key, std::array<PositionFigures, 3>> targets_;  // active, not yet sent, algorithms
  std::map<Key, int32_t> rules_;
  int64_t lastOrder_ = 0, lastFill_ = 0;
};

}  // namespace orvane::terminal::testing::second
