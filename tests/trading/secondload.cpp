#include <algorithm>
#include <type_traits>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include "host/common.h"
#include "tests/trading/secondbook.h"

namespace orvane::terminal::testing::second {
namespace {

// The rows of a query, one after the other.
class Rows {
 public:
  Rows(SQLite::Database& db, const std::string& query) : rows_(db, query) {}

  bool next() {
    column_ = 0;
    return rows_.executeStep();
  }

  // Takes the next columns of the row.
  template <typename... Fields>
  void take(Fields&... fields) {
    ((fields = get<Fields>()), ...);
  }

  template <typename Value>
  Value get() {
    const SQLite::Column column = rows_.getColumn(column_++);
    if constexpr (std::is_same_v<Value, std::string>) {
      return column.getString();
    } else if constexpr (std::is_floating_point_v<Value>) {
      return column.getDouble();
    } else {
      return static_cast<Value>(column.getInt64());
    }
  }

  Key key() { return {get<int32_t>(), get<int64_t>()}; }

 private:
  SQLite::Statement rows_;
  int column_ = 0;
};

void loadTerms(SQLite::Database& db, SecondBook& book) {
  for (Rows row(db,
                "SELECT hash_code, code_class, exchange, code, exchange.name, instrument.name, code_type, multiplier,"
                " price_tick, lot, max_volume, pre_close, pre_settlement, lower_limit, upper_limit,"
                " ifnull(last, pre_settlement), default_margin_rate FROM instrument"
                " JOIN exchange ON exchange.id = exchange JOIN code_type ON code_type.name = code_type"
                " LEFT JOIN quote USING (hash_code)");
       row.next();) {
    Instrument it;
    row.take(it.symbol.hashCode, it.symbol.codeClass, it.symbol.exchangeId, it.symbol.code, it.exchange, it.name,
             it.type, it.multiplier, it.tick, it.lot, it.most, it.preClose, it.preSettlement, it.low, it.high, it.last,
             it.defaultRate);
    book.instruments[it.symbol.hashCode] = it;
  }
  for (Rows row(db,
                "SELECT idx, market_type, aim_type, user_code, online, ordinary_orders, pre_balance, deposit, withdraw,"
                " commission FROM account");
       row.next();) {
    Account it;
    row.take(it.id.index, it.id.marketType, it.id.aimType, it.id.userCode, it.isOnline, it.mayOrder, it.pre, it.deposit,
             it.withdraw, it.commission);
    book.accounts[it.id.index] = it;
  }
  for (Rows row(db, "SELECT * FROM commission_rate"); row.next();) {
    Fee& it = book.accounts.at(row.get<int32_t>()).fees[row.get<std::string>()];
    row.take(it.byMoney, it.byVolume, it.minimum, it.saleTax);
  }
  for (Rows row(db, "SELECT * FROM credit_terms"); row.next();) {
    CreditTerms& it = book.accounts.at(row.get<int32_t>()).credit.emplace();
    row.take(it.longRate, it.shortRate, it.keepRatio, it.collateralRate, it.interestRate, it.longLimit, it.shortLimit);
  }
  for (Rows row(db, "SELECT * FROM margin_rate"); row.next();) {
    Rates& it = book.rates[row.key()];
    row.take(it.byMoney[0], it.byVolume[0], it.byMoney[1], it.byVolume[1]);
  }
}

}  // namespace

SecondBook::SecondBook(const std::filesystem::path& database) {
  SQLite::Database db(database.string());
  loadTerms(db, *this);
  for (Rows row(db, "SELECT * FROM holding"); row.next();) {
    auto& sides = holdings_[row.key()];
    Part& it = sides.at(row.get<size_t>() - 1);
    row.take(it.began, it.closed, it.today, it.oldPrice, it.newPrice, it.closeProfit);
  }
  for (Rows row(db,
                "SELECT account, hash_code, direction - 1, volume, amount, interest FROM credit_contract ORDER BY id");
       row.next();) {
    Contract& it = contracts_.emplace_back();
    row.take(it.key.first, it.key.second, it.side, it.volume, it.amount, it.interest);
  }
  for (Rows row(db,
                "SELECT account, hash_code, family, sum(long_volume), sum(short_volume) FROM strategy_target"
                " GROUP BY account, hash_code, family");
       row.next();) {
    auto& families = targets_[row.key()];
    PositionFigures& it = families.at(row.get<size_t>() - 1);
    row.take(it.longPos, it.shortPos);
  }
  for (Rows row(db, "SELECT * FROM manual_position"); row.next();) {
    PositionFigures& it = manual[row.key()];
    row.take(it.longPos, it.shortPos);
  }
  for (Rows row(db, "SELECT * FROM sync_rule"); row.next();) row.take(rules_[row.key()]);
  for (Rows row(db,
                "SELECT id, account, hash_code, source_flags, source_text, exchange_id, created, side, comb_offset,"
                " hedge, price_type, price, volume, close_yesterday, close_today, status, note, fill_volume,"
                " fill_amount, fill_avg_price FROM orders");
       row.next();) {
    PlacedOrder it;
    row.take(it.localOrderId, it.account.index, it.code.hashCode, it.orderSource.sourceFlags, it.orderSource.sourceText,
             it.orderId, it.srcTimestamp, it.side, it.combOffset, it.hedge, it.priceType, it.price, it.volume,
             it.closesOld, it.closesNew, it.status, it.note, it.fillVolume, it.fillAmount, it.fillAvgPrice);
    for (std::string* text : {&it.note, &it.orderSource.sourceText}) *text = CodeConvert::utf8_to_gbk(*text);
    complete(it);
    lastOrder_ = std::max(lastOrder_, it.localOrderId);
    orders[it.localOrderId] = it;
  }
  for (Rows row(db, "SELECT order_id, fill_id, time, volume, price FROM fill ORDER BY id"); row.next(); ++lastFill_) {
    OrderFill& it = fills.emplace_back(fillOf(orders.at(row.get<int64_t>())));
    row.take(it.fillId, it.exchTimestamp, it.volume, it.price);
  }
}

}  // namespace orvane::terminal::testing::second
