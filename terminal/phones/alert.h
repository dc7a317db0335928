#pragma once

#include <cstdint>
#include <vector>

#include <SQLiteCpp/Database.h>

namespace orvane::terminal {

// A token's wish to hear when an instrument's last price gets that far. Times are milliseconds since 1970, UTC; prices
// are in the instrument's currency.
struct Alert {
  int64_t id = 0;  // never reused
  int64_t token = 0;
  int64_t hashCode = 0;
  bool isAbove = false;  // at or above the price, otherwise at or below it
  double price = 0;
  int64_t made = 0;
  int64_t fired = 0;  // 0: not yet
  double firedPrice = 0;

  bool isReachedBy(double last) const { return isAbove ? last >= price : last <= price; }
};

struct StoredAlerts {
  std::vector<Alert> alerts;
  int64_t lastId = 0;  // ever used
};

// The table `alert` of `gateway.db`, which loses the alerts of a deleted token by itself. All throw SQLite::Exception.
StoredAlerts readAlerts(SQLite::Database& db);
void insertAlert(const SQLite::Database& db, const Alert& alert);
void updateFired(const SQLite::Database& db, const Alert& alert);
void deleteAlerts(const SQLite::Database& db, const std::vector<int64_t>& ids);

}  // namespace orvane::terminal
