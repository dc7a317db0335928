#include <algorithm>
#include <type_traits>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include "tests/trading/secondbook.h"

namespace orvane::terminal::testing::second {
namespace {

template <typename Field>
void take(const SQLite::Column& column, Field& field) {
  if constexpr (std::is_same_v<Field, std::string>) {
    field = column.getString();
  } else if constexpr (std::is_floating_point_v<Field>) {
    field = column.getDouble();
  } else {
    field = static_cast<Field>(column.getInt64());
  }
}

// Takes the columns of a row, from the first.
template <typename... Fields>
void take(SQLite::Statement& row, Fields&... fields) {
  int column = 0;
  (take(row.getColumn(column++), fields), ...);
}

// Calls `use` with each row of a query.
template <typename Use>
void each(SQLite::Database& db, const std::string& query, Use use) {
  SQLite::Statement rows(db, query);
  while (rows.executeStep()) use(rows);
}

void loadTerms(SQLite::Database& db, SecondBook& book) {
  each(db,
       "SELECT hash_code, code_class, exchange.name, code, instrument.name, code_type, multiplier, price_tick, lot,"
       " max_volume, pre_close, pre_settlement, lower_limit, upper_limit, ifnull(last, pre_settlement),"
       " default_margin_rate FROM instrument JOIN exchange ON exchange.id = exchange"
       " JOIN code_type ON code_type.name = code_type LEFT JOIN quote USING (hash_code)",
       [&](SQLite::Statement& row) {
         int64_t hash = 0;
         Instrument it;
         take(row, hash, it.kind, it.exchange, it.code, it.name, it.type, it.multiplier, it.tick, it.lot, it.most,
              it.preClose, it.preSettlement, it.low, it.high, it.last, it.defaultRate);
         book.instruments[hash] = it;
       });
  each(db,
       "SELECT idx, market_type, user_code, online, ordinary_orders, pre_balance, deposit, withdraw, commission"
       " FROM account",
       [&](SQLite::Statement& row) {
         int32_t index = 0;
         Account it;
         take(row, index, it.market, it.userCode, it.isOnline, it.mayOrder, it.pre, it.deposit, it.withdraw,
              it.commission);
         book.accounts[index] = it;
       });
  each(db, "SELECT * FROM commission_rate", [&](SQLite::Statement& row) {
    int32_t index = 0;
    std::string type;
    Fee it;
    take(row, index, type, it.byMoney, it.byVolume, it.minimum, it.saleTax);
    book.accounts.at(index).fees[type] = it;
  });
  each(db, "SELECT * FROM credit_terms", [&](SQLite::Statement& row) {
    int32_t index = 0;
    CreditTerms it;
    take(row, index, it.longRate, it.shortRate, it.keepRatio, it.collateralRate, it.interestRate, it.longLimit,
         it.shortLimit);
    book.accounts.at(index).credit = it;
  });
  each(db, "SELECT * FROM margin_rate", [&](SQLite::Statement& row) {
    Key key;
    Rates it;
    take(row, key.first, key.second, it.byMoney[0], it.byVolume[0], it.byMoney[1], it.byVolume[1]);
    book.rates[key] = it;
  });
}

}  // namespace

SecondBook::SecondBook(const std::filesystem::path& database) {
  SQLite::Database db(database.string());
  loadTerms(db, *this);
  each(db, "SELECT * FROM holding", [&](SQLite::Statement& row) {
    Key key;
    size_t direction = 0;
    Part it;
    take(row, key.first, key.second, direction, it.began, it.closed, it.today, it.oldPrice, it.newPrice,
         it.closeProfit);
    holdings_[key].at(direction - 1) = it;
  });
  each(db, "SELECT account, hash_code, direction - 1, volume, amount, interest FROM credit_contract ORDER BY id",
       [&](SQLite::Statement& row) {
         Contract& it = contracts_.emplace_back();
         take(row, it.key.first, it.key.second, it.side, it.volume, it.amount, it.interest);
       });
  each(db,
       "SELECT account, hash_code, family, sum(long_volume), sum(short_volume) FROM strategy_target"
       " GROUP BY account, hash_code, family",
       [&](SQLite::Statement& row) {
         Key key;
         size_t family = 0;
         PositionFigures it;
         take(row, key.first, key.second, family, it.longPos, it.shortPos);
         targets_[key].at(family - 1) = it;
       });
  each(db, "SELECT * FROM manual_position", [&](SQLite::Statement& row) {
    Key key;
    PositionFigures it;
    take(row, key.first, key.second, it.longPos, it.shortPos);
    manual[key] = it;
  });
  each(db, "SELECT * FROM sync_rule", [&](SQLite::Statement& row) {
    Key key;
    int32_t rule = 0;
    take(row, key.first, key.second, rule);
    rules_[key] = rule;
  });
  each(db,
       "SELECT id, account, hash_code, source_flags, source_text, exchange_id, created, side, comb_offset, hedge,"
       " price_type, price, volume, close_yesterday, close_today, status, note, fill_volume, fill_amount,"
       " fill_avg_price FROM orders",
       [&](SQLite::Statement& row) {
         PlacedOrder it;
         take(row, it.localOrderId, it.account.index, it.code.hashCode, it.orderSource.sourceFlags,
              it.orderSource.sourceText, it.orderId, it.srcTimestamp, it.side, it.combOffset, it.hedge, it.priceType,
              it.price, it.volume, it.closesOld, it.closesNew, it.status, it.note, it.fillVolume, it.fillAmount,
              it.fillAvgPrice);
         complete(it);
         lastOrder_ = std::max(lastOrder_, it.localOrderId);
         orders[it.localOrderId] = it;
       });
  each(db, "SELECT order_id, fill_id, time, volume, price FROM fill ORDER BY id", [&](SQLite::Statement& row) {
    int64_t id = 0;
    take(row, id);
    OrderFill it = fillOf(orders.at(id));
    take(row, id, it.fillId, it.exchTimestamp, it.volume, it.price);
    fills.push_back(it);
    ++lastFill_;
  });
}

}  // namespace orvane::terminal::testing::second
