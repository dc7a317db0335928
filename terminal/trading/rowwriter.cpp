#include "terminal/trading/rowwriter.h"

#include <SQLiteCpp/VariadicBind.h>

#include "host/common.h"

namespace orvane::terminal {

template <typename... Values>
void RowWriter::run(const char* sql, const Values&... values) {
  SQLite::Statement& statement = statements_.try_emplace(sql, db_, sql).first->second;
  statement.tryReset();  // whose code is that of the last run
  SQLite::bind(statement, values...);
  statement.exec();
}

void RowWriter::write(const Rows& rows) {
  for (const auto& [index, account] : rows.accounts) writeAccount(account);
  for (const auto& [key, both] : rows.holdings) {
    writeHolding(key, Direction::Long, both.longs);
    writeHolding(key, Direction::Short, both.shorts);
  }
  for (const auto& [id, row] : rows.orders) writeOrder(row);
  for (const NewFill& it : rows.fills) {
    run("INSERT INTO fill (order_id, fill_id, time, volume, price, commission) VALUES (?, ?, ?, ?, ?, ?)",
        it.fill.localOrderId, it.fill.fillId, it.fill.exchTimestamp, it.fill.volume, it.fill.price, it.commission);
  }
  for (const auto& [id, contract] : rows.contracts) writeContract(contract);
  for (const auto& [hashCode, last] : rows.quotes) run("INSERT OR REPLACE INTO quote VALUES (?, ?)", hashCode, last);
  for (const auto& [key, volumes] : rows.manual) writeManual(key, volumes);
  for (const auto& [hashCode, instrument] : rows.instruments) writeInstrument(instrument);
  if (rows.day) run("UPDATE trading_day SET day = ?", *rows.day);
}

void RowWriter::writeHolding(const Key& key, Direction direction, const Holding& it) {
  if (it.isBlank()) {
    return run("DELETE FROM holding WHERE account = ? AND hash_code = ? AND direction = ?", key.account, key.hashCode,
               static_cast<int32_t>(direction));
  }
  run("INSERT OR REPLACE INTO holding VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)", key.account, key.hashCode,
      static_cast<int32_t>(direction), it.yesterdayVolume, it.yesterdayClosed, it.todayVolume, it.yesterdayPrice,
      it.todayPrice, it.closeProfit);
}

void RowWriter::writeAccount(const Account& it) {
  run("UPDATE account SET pre_balance = ?, deposit = ?, withdraw = ?, commission = ? WHERE idx = ?", it.preBalance,
      it.deposit, it.withdraw, it.commission, it.id.index);
}

void RowWriter::writeInstrument(const Instrument& it) {
  run("UPDATE instrument SET pre_close = ?, pre_settlement = ?, lower_limit = ?, upper_limit = ? WHERE hash_code = ?",
      it.preClose, it.preSettlement, it.lowerLimit, it.upperLimit, it.symbol.hashCode);
}

void RowWriter::writeOrder(const OrderRow& row) {
  const BookOrder& it = row.order;
  const Order& order = it.order;
  run("INSERT OR REPLACE INTO orders VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
      order.localOrderId, order.account.index, order.code.hashCode, order.orderSource.sourceFlags,
      CodeConvert::gbk_to_utf8(order.orderSource.sourceText), order.orderId, order.srcTimestamp, order.side,
      order.combOffset, order.hedge, order.priceType, order.price, order.volume, it.closeYesterday, it.closeToday,
      order.status, CodeConvert::gbk_to_utf8(order.note), order.fillVolume, order.fillAmount, order.fillAvgPrice,
      row.day);
}

void RowWriter::writeManual(const Key& key, const std::optional<Volumes>& volumes) {
  if (!volumes) {
    run("DELETE FROM manual_position WHERE account = ? AND hash_code = ?", key.account, key.hashCode);
  } else {
    run("INSERT OR REPLACE INTO manual_position VALUES (?, ?, ?, ?)", key.account, key.hashCode, volumes->longs,
        volumes->shorts);
  }
}

void RowWriter::writeContract(const CreditContract& it) {
  run("INSERT OR REPLACE INTO credit_contract VALUES (?, ?, ?, ?, ?, ?, ?)", it.id, it.key.account, it.key.hashCode,
      static_cast<int32_t>(it.direction), it.volume, it.amount, it.interest);
}

}  // namespace orvane::terminal
