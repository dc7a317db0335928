#include <cmath>
#include <thread>

#include "tests/trading/desktest.h"
#include "tests/trading/listrow.h"

namespace orvane::terminal::testing {
namespace {

using WalkTest = DeskTest;

// Within limits of one tick a price can only stay or turn back.
TEST_F(WalkTest, PricesStayOnTheTicksAndWithinTheLimitsAndAreStored) {
  EXPECT_FALSE(host_->health().quotesAge) << "quotes that need not move have no age";
  host_.reset();
  SQLite::Database((dir_ / "terminal.db").string(), SQLite::OPEN_READWRITE)
      .exec(
          "UPDATE instrument SET lower_limit = last, upper_limit = last + price_tick FROM quote"
          " WHERE quote.hash_code = instrument.hash_code");
  host_.emplace(TradingOptions{dir_, QuoteMode::Walk, {}, 7});
  host_->start([](const MobileMessage&) {});
  bool moved = false;
  for (int looks = 0; (looks < 40 || (!moved && looks < 1000)) && !HasFailure(); ++looks) {
    MobileMessage reply;
    IUIProxyMgr::getInstance()->requestSync("quote.list", "", reply);
    for (const Row& row : rowsOf(reply)) {
      const double last = std::stod(row.at("lastPrice"));
      const double ticks = (last - std::stod(row.at("lowerLimit"))) / std::stod(row.at("priceTick"));
      EXPECT_NEAR(ticks, std::round(ticks), 1e-6) << row.at("codeExch");
      EXPECT_GT(ticks, -0.5) << row.at("codeExch");
      EXPECT_LT(ticks, 1.5) << row.at("codeExch");
      moved = moved || ticks > 0.5;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_TRUE(moved);
  EXPECT_TRUE(host_->health().quotesAge);
  host_->stop();
  const double walked = positions().at({2, kMaotai}).currentPrice;
  reopen();
  EXPECT_EQ(positions().at({2, kMaotai}).currentPrice, walked);
}

}  // namespace
}  // namespace orvane::terminal::testing
