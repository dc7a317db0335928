#include "terminal/phones/alert.h"

#include <SQLiteCpp/Statement.h>

#include "terminal/phones/sql.h"

namespace orvane::terminal {

StoredAlerts readAlerts(SQLite::Database& db) {
  StoredAlerts stored;
  SQLite::Statement row(db, "SELECT id, token, hash_code, is_above, price, made, fired, fired_price FROM alert");
  while (row.executeStep()) {
    stored.alerts.push_back({.id = row.getColumn(0).getInt64(),
                             .token = row.getColumn(1).getInt64(),
                             .hashCode = row.getColumn(2).getInt64(),
                             .isAbove = row.getColumn(3).getInt() != 0,
                             .price = row.getColumn(4).getDouble(),
                             .made = row.getColumn(5).getInt64(),
                             .fired = row.getColumn(6).getInt64(),
                             .firedPrice = row.getColumn(7).getDouble()});
  }
  SQLite::Statement last(db, "SELECT seq FROM sqlite_sequence WHERE name = 'alert'");
  if (last.executeStep()) stored.lastId = last.getColumn(0).getInt64();
  return stored;
}

void insertAlert(const SQLite::Database& db, const Alert& alert) {
  // Its token may have been revoked meanwhile.
  writeSql(db,
           "INSERT INTO alert SELECT ?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8 WHERE EXISTS (SELECT 1 FROM token WHERE id = ?2)",
           alert.id, alert.token, alert.hashCode, static_cast<int>(alert.isAbove), alert.price, alert.made, alert.fired,
           alert.firedPrice);
}

void updateFired(const SQLite::Database& db, const Alert& alert) {
  writeSql(db, "UPDATE alert SET fired = ?, fired_price = ? WHERE id = ?", alert.fired, alert.firedPrice, alert.id);
}

void deleteAlerts(const SQLite::Database& db, const std::vector<int64_t>& ids) {
  for (const int64_t id : ids) writeSql(db, "DELETE FROM alert WHERE id = ?", id);
}

}  // namespace orvane::terminal
