#include "bench/paperdesk.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fmt/format.h>

#include "terminal/trading/tradinghost.h"

namespace orvane::bench {

void makePaperDesk(const std::filesystem::path& folder, int accounts) {
  terminal::TradingOptions options;
  options.dataDir = folder;
  { const terminal::TradingHost host(options); }
  SQLite::Database database((folder / "terminal.db").string(), SQLite::OPEN_READWRITE);
  database.exec(fmt::format(
      R"(BEGIN;
         WITH RECURSIVE numbers(idx) AS (SELECT {0} UNION ALL SELECT idx + 1 FROM numbers WHERE idx + 1 < {1} + {2})
         INSERT INTO account SELECT idx, 'B' || idx, 1, 1, 1, 1, 1, 50000000, 0, 0, 0 FROM numbers;
         INSERT INTO holding SELECT idx, hash_code, 1, idx, 0, 0, pre_close, 0, 0 FROM account, instrument
           WHERE idx >= {1} OR (idx = {0} AND hash_code = 1000001);
         COMMIT;)",
      kAccountOfOne, kFirstAccountOfTwenty, accounts));
}

}  // namespace orvane::bench
