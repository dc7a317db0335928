#include <memory>

#include <SQLiteCpp/SQLiteCpp.h>
#include <fmt/format.h>

#include "bench/figure.h"
#include "bench/servers.h"

namespace orvane::bench {
namespace {

// Orders of the day that a request does not ask for.
struct Crowd {
  int count;
  int account;
  int status;  // as on the wire: 1 working, 3 cancelled
};

struct Case {
  const char* name;
  const char* yardstick;
  const char* topic;
  const char* body;
  const char* right;  // of the client, so that it gets no pushes of its own orders
  size_t requests;    // of one slice
  Crowd crowd;
};

// Account 1 gets funds for all orders of the measurement.
void addOrders(const std::filesystem::path& folder, const Crowd& crowd) {
  SQLite::Database database((folder / "terminal.db").string(), SQLite::OPEN_READWRITE);
  database.exec(fmt::format(
      R"(BEGIN;
         UPDATE account SET pre_balance = 1e12 WHERE idx = 1;
         WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < {0})
         INSERT INTO orders (account, hash_code, source_flags, source_text, exchange_id, created, side, comb_offset,
                             hedge, price_type, price, volume, close_yesterday, close_today, status, note, fill_volume,
                             fill_amount, fill_avg_price)
           SELECT {1}, 1000001, 65536, '', 'B', unixepoch() * 1000, 1, 1, 1, 1, 3100, 1, 0, 0, {2}, '', 0, 0, 0
             FROM numbers WHERE {0} > 0;
         COMMIT;)",
      crowd.count, crowd.account, crowd.status));
}

// A terminal with a crowd, and one client.
class Asked {
 public:
  Asked(const Case& it, const Crowd& crowd)
      : requests_(it.requests),
        terminal_(startBeside(crowd)),
        client_(terminal_.port(), 1, exchangeWith(terminal_, login(it), it.topic, it.body)) {}

  // Nanoseconds per request.
  double measure() { return client_.load(requests_) / static_cast<double>(requests_); }

 private:
  std::string login(const Case& it) const {
    return fmt::format(R"({{"topic":"login","token":"{}"}})", test::makeToken(desk_.folder(), it.right, it.right));
  }

  Server startBeside(const Crowd& crowd) const {
    addOrders(desk_.folder(), crowd);
    return desk_.start("still");
  }

  size_t requests_;
  Desk desk_{20};
  Server terminal_;
  Clients client_;
};

constexpr const char* kOrder =
    R"({"orderList":[{"index":1,"hashCode":1000001,"side":1,"combOffset":1,"priceType":1,"price":3100,"offset":0,"volume":1,"insertTimestamp":0,"source":"bench"}]})";

}  // namespace

std::vector<Figure> crowdFigures() {
  std::vector<Figure> figures;
  for (const Case& each :
       {Case{"order.list of 7 rows beside 100,000", "without them", "order.list", "[2]", "see", 100, {100'000, 3, 3}},
        {"order.new beside 10,000 working orders", "without them", "order.new", kOrder, "trade", 20, {10'000, 1, 1}}}) {
    figures.push_back({each.name, each.yardstick, "ns", Bound::AtMost, 1.5, 1.1, 15, [each] {
                         const auto beside = std::make_shared<Asked>(each, each.crowd);
                         const auto alone = std::make_shared<Asked>(each, Crowd{0, 1, 1});
                         return Sides{[=] { return beside->measure(); }, [=] { return alone->measure(); }};
                       }});
  }
  return figures;
}

}  // namespace orvane::bench
