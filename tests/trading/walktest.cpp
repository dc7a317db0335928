#include <cmath>
#include <thread>

#include <rapidjson/document.h>

#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

using WalkTest = DeskTest;

// Within limits of one tick a price can only stay or turn back.
TEST_F(WalkTest, PricesStayOnTheTicksAndWithinTheLimitsAndAreStored) {
  EXPECT_FALSE(host_->health().quotesAge) << "quotes that need not move have no age";
  host_.reset();
  change(dir_,
         "UPDATE instrument SET lower_limit = last, upper_limit = last + price_tick FROM quote"
         " WHERE quote.hash_code = instrument.hash_code");
  open(QuoteMode::Walk);
  bool moved = false;
  for (int looks = 0; (looks < 40 || (!moved && looks < 1000)) && !HasFailure(); ++looks) {
    rapidjson::Document rows;
    rows.Parse(ask("quote.list", "").data.c_str());
    ASSERT_EQ(rows.Size(), 20U);
    for (const auto& row : rows.GetArray()) {
      const char* const code = row["codeExch"].GetString();
      const double above = row["lastPrice"].GetDouble() - row["lowerLimit"].GetDouble();
      const double ticks = above / row["priceTick"].GetDouble();
      EXPECT_NEAR(ticks, std::round(ticks), 1e-6) << code;
      EXPECT_GT(ticks, -0.5) << code;
      EXPECT_LT(ticks, 1.5) << code;
      moved = moved || ticks > 0.5;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_TRUE(moved);
  EXPECT_TRUE(host_->health().quotesAge);
  host_->stop();
  const double walked = position(2, kMaotai).currentPrice;
  reopen();
  EXPECT_EQ(position(2, kMaotai).currentPrice, walked);
}

}  // namespace
}  // namespace orvane::terminal::testing
