#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/account.h"
#include "host/baseinformation.h"
#include "host/instrument.h"
#include "host/order.h"
#include "terminal/trading/bookorder.h"
#include "terminal/trading/workingorders.h"

namespace orvane::terminal {

// The primary facts of trading, in memory. Texts are GBK, as in the host's records; the database holds them in UTF-8.
// Derived figures are computed in ledger.h and never stored.

// SymbolCode.codeClass.
enum class CodeClass : int32_t { Stock = 0, Future = 1, Option = 2, Fund = 3 };

// TradingAccountID.marketType.
enum class MarketType : int32_t { Futures = 1, Stocks = 2, Options = 8, Credit = 16 };

inline bool holdsSecurities(MarketType market) { return market == MarketType::Stocks || market == MarketType::Credit; }

struct Instrument {
  SymbolCode symbol;
  std::string name;
  std::string codeType;
  double defaultMarginRate = 0;
  int64_t multiplier = 1;
  double priceTick = 0;
  int64_t lot = 1;  // step of an order's volume
  int64_t maxVolume = 0;
  double preClose = 0;
  double preSettlement = 0;  // reference of today's profit; for stocks and funds the same as preClose
  double lowerLimit = 0;
  double upperLimit = 0;
  double last = 0;

  double bid() const;
  double ask() const;
};

// Rounds to a multiple of `tick`. Divides if possible: 0.005 is not exact, so adding or multiplying ticks drifts.
double roundToTick(double price, double tick);

// Terms of a credit account. Rates and ratios are plain factors: 0.7 is 70%.
struct CreditTerms {
  double longMarginRate = 1;
  double shortMarginRate = 1;
  double keepMarginRatio = 1.3;
  double collateralRate = 0.7;  // share of a holding's value that counts as collateral
  double interestRate = 0;      // per year of 360 days
  double longLimit = 0;
  double shortLimit = 0;
};

struct Account {
  TradingAccountID id;
  bool online = true;
  bool triggerOrders = true;
  bool ordinaryOrders = true;
  double preBalance = 0;
  double deposit = 0;
  double withdraw = 0;
  double commission = 0;  // today's, sale tax included
  std::optional<CreditTerms> credit;

  MarketType market() const { return static_cast<MarketType>(id.marketType); }
};

// The long or the short holding of one instrument in one account.
struct Holding {
  int64_t yesterdayVolume = 0;  // held at the start of the day
  int64_t yesterdayClosed = 0;  // part of yesterdayVolume closed today
  int64_t todayVolume = 0;      // opened today and still held
  double yesterdayPrice = 0;    // average opening price of the part held since yesterday
  double todayPrice = 0;        // average opening price of the part opened today
  double closeProfit = 0;       // realised today

  int64_t yesterdayLeft() const { return yesterdayVolume - yesterdayClosed; }
  int64_t volume() const { return yesterdayLeft() + todayVolume; }

  // Nothing was held or closed today, so the database has no row for it.
  bool isBlank() const { return yesterdayVolume == 0 && todayVolume == 0 && closeProfit == 0; }
};

struct Holdings {
  Holding longs;
  Holding shorts;

  Holding& of(Direction direction) { return direction == Direction::Long ? longs : shorts; }
  const Holding& of(Direction direction) const { return direction == Direction::Long ? longs : shorts; }
};

// A share of the value (byMoney) plus an amount per unit of volume (byVolume).
struct Rate {
  double byMoney = 0;
  double byVolume = 0;
};

struct MarginRate {
  Rate longs;
  Rate shorts;
};

struct CommissionRate {
  Rate rate;
  double minimum = 0;  // per fill
  double saleTax = 0;  // share of the value, charged on sales
};

// A debt of a credit account: money borrowed to buy with, or securities borrowed to sell.
struct CreditContract {
  int64_t id = 0;
  Key key;
  Direction direction = Direction::Long;
  int64_t volume = 0;   // securities still owed, or bought with the loan and still held
  double amount = 0;    // money still owed; for borrowed securities, the proceeds of their sale
  double interest = 0;  // accrued up to the end of the previous trading day
};

struct Volumes {
  int64_t longs = 0;
  int64_t shorts = 0;
};

enum class TargetFamily : int32_t { Active = 1, Unsend = 2, Algo = 3 };

struct StrategyTarget {
  Key key;
  TargetFamily family = TargetFamily::Active;
  Volumes volumes;
};

// A function that the user may not call, or not on `account` if one is given.
struct RefusedFunction {
  std::string function;  // topic
  std::optional<int32_t> account;
  std::string reason;
};

struct Book {
  int64_t day = 0;  // trading day: days since 1970, local time
  BaseInformationMap exchanges;
  std::map<int64_t, Instrument> instruments;              // by hash code
  std::map<int32_t, Account> accounts;                    // by index
  std::map<Key, Holdings> holdings;                       // also has an entry for each working order
  std::map<int64_t, BookOrder> orders;                    // today's, by local order id
  std::map<int32_t, std::vector<int64_t>> accountOrders;  // today's ids in ascending order
  WorkingOrders working;                                  // those of `orders` that are working
  std::vector<OrderFill> fills;                           // today's, oldest first
  std::map<int32_t, std::vector<int64_t>> accountFills;   // places in `fills`, by account
  int64_t lastOrderId = 0;                                // highest number given out so far, on any day
  int64_t lastFillId = 0;
  std::map<Key, MarginRate> marginRates;
  std::map<std::pair<int32_t, std::string>, CommissionRate> commissionRates;  // by account and code type
  std::map<int64_t, CreditContract> contracts;                                // by id
  std::set<std::pair<Key, int64_t>> contractIds;
  std::vector<StrategyTarget> targets;
  std::map<Key, Volumes> manual;
  std::map<Key, int32_t> syncRules;
  std::vector<RefusedFunction> refusedFunctions;

  // Adds or replaces an order and updates the indexes and `holdings`.
  void put(BookOrder order);

  void put(const CreditContract& contract);
  void add(OrderFill fill);

  // Drops the orders, fills and closed holdings of the old day. REQUIRES: no order is working.
  void startDay(int64_t newDay);

  // Null if there is none.
  const Instrument* instrument(int64_t hashCode) const;
  const Account* account(int32_t index) const;
  const MarginRate* marginRate(const Key& key) const;

  // The contracts of one account and instrument, or of one account, oldest first.
  std::vector<int64_t> contractsOf(const Key& key) const;
  std::vector<int64_t> contractsOf(int32_t account) const;
};

// The instrument's code and its exchange's short name: "rb2701.SHFE".
std::string codeKey(const Book& book, const SymbolCode& symbol);

}  // namespace orvane::terminal
