#include "terminal/trading/bookreader.h"

#include <utility>

#include <SQLiteCpp/Statement.h>

#include "host/common.h"
#include "terminal/trading/ledger.h"

namespace orvane::terminal {
namespace {

// Reads the columns of a row from left to right.
class Row {
 public:
  explicit Row(SQLite::Statement& statement) : statement_(statement) {}

  int64_t int64() { return next().getInt64(); }
  int32_t int32() { return next().getInt(); }
  bool flag() { return int32() != 0; }
  double real() { return next().getDouble(); }
  std::string text() { return next().getString(); }
  std::string gbk() { return CodeConvert::utf8_to_gbk(text()); }
  bool isNull() const { return statement_.isColumnNull(column_); }
  Key key() {
    int32_t account = int32();
    return {account, int64()};
  }
  Volumes volumes() {
    int64_t longs = int64();
    return {longs, int64()};
  }

 private:
  SQLite::Column next() { return statement_.getColumn(column_++); }

  SQLite::Statement& statement_;
  int column_ = 0;
};

template <typename Read>
void forEachRow(const SQLite::Database& db, const char* sql, const Read& read) {
  SQLite::Statement statement(db, sql);
  while (statement.executeStep()) {
    Row row(statement);
    read(row);
  }
}

void readInstruments(const SQLite::Database& db, Book& book) {
  forEachRow(db, "SELECT id, name, full_name FROM exchange", [&](Row& row) {
    int32_t id = row.int32();
    book.exchanges.exchangeNames[id] = row.text();
    book.exchanges.exchangeFullNames[id] = row.gbk();
  });
  forEachRow(db,
             "SELECT hash_code, code_class, exchange, code, i.name, code_type, default_margin_rate, multiplier,"
             " price_tick, lot, max_volume, pre_close, pre_settlement, lower_limit, upper_limit,"
             " coalesce(last, pre_settlement)"
             " FROM instrument i JOIN code_type t ON t.name = code_type LEFT JOIN quote USING (hash_code)",
             [&](Row& row) {
               Instrument it;
               it.symbol.hashCode = row.int64();
               it.symbol.codeClass = row.int32();
               it.symbol.exchangeId = row.int32();
               it.symbol.code = row.text();
               it.name = row.gbk();
               it.codeType = row.gbk();
               it.defaultMarginRate = row.real();
               it.multiplier = row.int64();
               it.priceTick = row.real();
               it.lot = row.int64();
               it.maxVolume = row.int64();
               it.preClose = row.real();
               it.preSettlement = row.real();
               it.lowerLimit = row.real();
               it.upperLimit = row.real();
               it.last = row.real();
               book.instruments.emplace(it.symbol.hashCode, std::move(it));
             });
}

void readAccounts(const SQLite::Database& db, Book& book) {
  forEachRow(db,
             "SELECT idx, user_code, market_type, aim_type, online, trigger_orders, ordinary_orders, pre_balance,"
             " deposit, withdraw, commission FROM account",
             [&](Row& row) {
               Account it;
               it.id.index = row.int32();
               it.id.userCode = row.text();
               it.id.marketType = row.int32();
               it.id.aimType = row.int32();
               it.online = row.flag();
               it.triggerOrders = row.flag();
               it.ordinaryOrders = row.flag();
               it.preBalance = row.real();
               it.deposit = row.real();
               it.withdraw = row.real();
               it.commission = row.real();
               book.accounts.emplace(it.id.index, std::move(it));
             });
  forEachRow(db,
             "SELECT account, long_margin_rate, short_margin_rate, keep_margin_ratio, collateral_rate, interest_rate,"
             " long_limit, short_limit FROM credit_terms",
             [&](Row& row) {
               CreditTerms& it = book.accounts.at(row.int32()).credit.emplace();
               it.longMarginRate = row.real();
               it.shortMarginRate = row.real();
               it.keepMarginRatio = row.real();
               it.collateralRate = row.real();
               it.interestRate = row.real();
               it.longLimit = row.real();
               it.shortLimit = row.real();
             });
  forEachRow(db, "SELECT function, reason, account FROM refused_function", [&](Row& row) {
    RefusedFunction it{row.text(), {}, row.gbk()};
    if (!row.isNull()) it.account = row.int32();
    book.refusedFunctions.push_back(std::move(it));
  });
}

void readRates(const SQLite::Database& db, Book& book) {
  forEachRow(db,
             "SELECT account, hash_code, long_by_money, long_by_volume, short_by_money, short_by_volume"
             " FROM margin_rate",
             [&](Row& row) {
               MarginRate& it = book.marginRates[row.key()];
               it.longs.byMoney = row.real();
               it.longs.byVolume = row.real();
               it.shorts.byMoney = row.real();
               it.shorts.byVolume = row.real();
             });
  forEachRow(db, "SELECT account, code_type, by_money, by_volume, minimum, sale_tax FROM commission_rate",
             [&](Row& row) {
               int32_t account = row.int32();
               CommissionRate& it = book.commissionRates[{account, row.gbk()}];
               it.rate.byMoney = row.real();
               it.rate.byVolume = row.real();
               it.minimum = row.real();
               it.saleTax = row.real();
             });
}

void readHoldings(const SQLite::Database& db, Book& book) {
  forEachRow(db,
             "SELECT account, hash_code, direction, yesterday_volume, yesterday_closed, today_volume, yesterday_price,"
             " today_price, close_profit FROM holding",
             [&](Row& row) {
               Holdings& both = book.holdings[row.key()];
               Holding& it = both.of(static_cast<Direction>(row.int32()));
               it.yesterdayVolume = row.int64();
               it.yesterdayClosed = row.int64();
               it.todayVolume = row.int64();
               it.yesterdayPrice = row.real();
               it.todayPrice = row.real();
               it.closeProfit = row.real();
             });
  forEachRow(db, "SELECT id, account, hash_code, direction, volume, amount, interest FROM credit_contract",
             [&](Row& row) {
               CreditContract it;
               it.id = row.int64();
               it.key = row.key();
               it.direction = static_cast<Direction>(row.int32());
               it.volume = row.int64();
               it.amount = row.real();
               it.interest = row.real();
               book.put(it);
             });
}

BookOrder readOrder(Row& row, const Book& book) {
  BookOrder it;
  Order& order = it.order;
  order.localOrderId = row.int64();
  order.account = book.accounts.at(row.int32()).id;
  order.code = book.instruments.at(row.int64()).symbol;
  order.orderSource.sourceFlags = row.int64();
  order.orderSource.sourceText = row.gbk();
  order.orderId = row.text();
  order.srcTimestamp = row.int64();
  order.side = row.int32();
  order.combOffset = row.int32();
  order.hedge = row.int32();
  order.priceType = row.int32();
  order.price = row.real();
  order.volume = row.int64();
  it.closeYesterday = row.int64();
  it.closeToday = row.int64();
  order.status = row.int32();
  order.note = row.gbk();
  order.fillVolume = row.int64();
  order.fillAmount = row.real();
  order.fillAvgPrice = row.real();
  it.funds = orderFunds(book, it);
  return it;
}

void readOrders(const SQLite::Database& db, Book& book) {
  forEachRow(db,
             "SELECT id, account, hash_code, source_flags, source_text, exchange_id, created, side, comb_offset, hedge,"
             " price_type, price, volume, close_yesterday, close_today, status, note, fill_volume, fill_amount,"
             " fill_avg_price FROM orders WHERE day = (SELECT day FROM trading_day) ORDER BY id",
             [&](Row& row) { book.put(readOrder(row, book)); });
  forEachRow(db,
             "SELECT order_id, fill_id, time, f.volume, f.price FROM fill f JOIN orders o ON o.id = order_id"
             " WHERE day = (SELECT day FROM trading_day) ORDER BY f.id",
             [&](Row& row) {
               OrderFill it = fillOf(book.orders.at(row.int64()).order);
               it.fillId = row.text();
               it.exchTimestamp = row.int64();
               it.volume = row.int64();
               it.price = row.real();
               book.add(std::move(it));
             });
  forEachRow(db,
             "SELECT day, (SELECT coalesce(max(id), 1000) FROM orders), (SELECT coalesce(max(id), 0) FROM fill)"
             " FROM trading_day",
             [&](Row& row) {
               book.day = row.int64();
               book.lastOrderId = row.int64();
               book.lastFillId = row.int64();
             });
}

void readMonitor(const SQLite::Database& db, Book& book) {
  forEachRow(db, "SELECT account, hash_code, family, long_volume, short_volume FROM strategy_target", [&](Row& row) {
    Key key = row.key();
    auto family = static_cast<TargetFamily>(row.int32());
    book.targets.push_back({key, family, row.volumes()});
  });
  forEachRow(db, "SELECT account, hash_code, long_volume, short_volume FROM manual_position", [&](Row& row) {
    Key key = row.key();
    book.manual[key] = row.volumes();
  });
  forEachRow(db, "SELECT account, hash_code, rule FROM sync_rule", [&](Row& row) {
    Key key = row.key();
    book.syncRules[key] = row.int32();
  });
}

}  // namespace

Book readBook(const SQLite::Database& db) {
  Book book;
  readInstruments(db, book);
  readAccounts(db, book);
  readRates(db, book);
  readHoldings(db, book);
  readOrders(db, book);
  readMonitor(db, book);
  return book;
}

}  // namespace orvane::terminal
