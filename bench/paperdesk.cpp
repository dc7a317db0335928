#include "bench/paperdesk.h"

#include <numeric>

#include <SQLiteCpp/SQLiteCpp.h>
#include <fmt/format.h>

#include "terminal/trading/tradinghost.h"

namespace orvane::bench {
namespace {

constexpr int kAccountOfTen = 98;
constexpr int kAccountOfOne = 99;
constexpr int kFirstAccountOfTwenty = 100;
constexpr size_t kTwenty = 20;

}  // namespace

void makePaperDesk(const std::filesystem::path& folder, size_t rows) {
  terminal::TradingOptions options;
  options.dataDir = folder;
  { const terminal::TradingHost host(options); }
  SQLite::Database database((folder / "terminal.db").string(), SQLite::OPEN_READWRITE);
  database.exec(fmt::format(
      R"(BEGIN;
         WITH RECURSIVE numbers(idx) AS (SELECT {0} UNION ALL SELECT idx + 1 FROM numbers WHERE idx + 1 < {2} + {3})
         INSERT INTO account SELECT idx, 'B' || idx, 1, 1, 1, 1, 1, 50000000, 0, 0, 0 FROM numbers;
         WITH ranked AS (SELECT *, row_number() OVER (ORDER BY hash_code) AS rank FROM instrument)
         INSERT INTO holding SELECT idx, hash_code, 1, idx, 0, 0, pre_close, 0, 0 FROM account, ranked
           WHERE idx >= {2} OR (idx = {0} AND rank <= 10) OR (idx = {1} AND rank = 1);
         INSERT INTO orders (account, hash_code, source_flags, source_text, exchange_id, created, side, comb_offset,
                             hedge, price_type, price, volume, close_yesterday, close_today, status, note, fill_volume,
                             fill_amount, fill_avg_price)
           SELECT account, hash_code, 65536, '手机', 'B', unixepoch() * 1000, 1, 1, 1, 1, yesterday_price, 1, 0, 0, 3,
                  '用户撤单', 0, 0, 0 FROM holding WHERE account >= {0};
         COMMIT;)",
      kAccountOfTen, kAccountOfOne, kFirstAccountOfTwenty, rows / kTwenty));
}

std::list<int32_t> accountsOfRows(size_t rows) {
  if (rows < kTwenty) return {rows == 1 ? kAccountOfOne : kAccountOfTen};
  std::list<int32_t> accounts(rows / kTwenty);
  std::iota(accounts.begin(), accounts.end(), kFirstAccountOfTwenty);
  return accounts;
}

std::string selectorOfRows(size_t rows) { return fmt::format("[{}]", fmt::join(accountsOfRows(rows), ",")); }

}  // namespace orvane::bench
