#include "tests/trading/desktest.h"

namespace orvane::terminal::testing {
namespace {

class MonitorTest : public DeskTest {
 protected:
  static IPositionMonitor& monitor() { return *IPositionMonitor::getInstance(); }

  static PositionMonitorRecord record(const Key& key) {
    MonitorSnapshot snapshot;
    monitor().getMonitorRecords(snapshot);
    for (const PositionMonitorRecord& it : snapshot.records) {
      if (it.account.index == key.account && it.code.hashCode == key.hashCode) return it;
    }
    ADD_FAILURE() << "no record of " << key.hashCode;
    return {};
  }

  static MonitorAccountCodes only(const Key& key) {
    TradingAccountID account;
    account.index = key.account;
    SymbolCode code;
    code.hashCode = key.hashCode;
    return {{account, {code}}};
  }

  // Side, offset, volume and price of each order.
  static std::string syncOrders(const MonitorAccountCodes& codes) {
    std::string text;
    for (const MonitorSyncOrder& it : monitor().getSyncOrders(codes)) {
      text +=
          std::to_string(it.side) + " " + std::to_string(it.combOffsetFlag) + " " + std::to_string(it.volume) + "; ";
    }
    return text;
  }
};

TEST_F(MonitorTest, DifferencesFlagsAndOrdersUnderEachRule) {
  struct Case {
    Key key;
    int32_t rule;
    int64_t theory, longs, shorts;
    std::string flags;  // theory, long and short, net, rule
    std::string orders;
  };
  const Case cases[] = {
      {{1, kRebar}, 0, 0, 0, 0, "1111", ""},
      {{1, 1000002}, 0, 1, 1, 0, "0000", "1 1 1; "},
      {{1, 2000002}, 1, 7, 2, -5, "0000", "1 4 5; 1 1 2; "},
      {{1, kSugar}, 3, -5, 0, 5, "0000", "2 1 5; "},
      {{1, 3000002}, 0, 4, 0, 0, "0111", ""},
      {{1, 4000001}, 2, 1, 1, 0, "0000", "1 3 1; "},
      {{2, 6000001}, 2, 2000, 2000, 0, "0000", "1 1 2000; "},
      {{4, kWuliangye}, 0, -500, 0, 500, "0000", "4 1 500; "},
  };
  for (const Case& it : cases) {
    SCOPED_TRACE(it.key.hashCode);
    const PositionMonitorRecord got = record(it.key);
    EXPECT_EQ(got.syncRule, it.rule);
    EXPECT_EQ(got.theoryPosDif, it.theory);
    EXPECT_EQ(got.longPosDif, it.longs);
    EXPECT_EQ(got.shortPosDif, it.shorts);
    std::string flags;
    for (uint8_t flag : {got.isMatchTheory, got.isMatchLongShort, got.isMatchNetPos, got.isMatchPosDif}) {
      flags += flag != 0 ? '1' : '0';
    }
    EXPECT_EQ(flags, it.flags);
    EXPECT_EQ(syncOrders(only(it.key)), it.orders);
  }
}

TEST_F(MonitorTest, UnderTheNetRuleOnlyTheNetPositionMustMatch) {
  const Key key{1, 4000001};
  std::list<MonitorManualPosition> update(1);
  update.front().account = capital(1).id;
  update.front().code.hashCode = key.hashCode;
  update.front().position = record(key).manual;
  ++update.front().position.shortPos;  // as many as are missing on the long side
  monitor().updateManualPositions(update);
  EXPECT_EQ(record(key).isMatchLongShort, 0);
  EXPECT_EQ(record(key).isMatchPosDif, 1);
}

TEST_F(MonitorTest, PlacedOrdersCloseTheDifference) {
  std::list<MonitorSyncOrder> orders = monitor().getSyncOrders(only({1, 2000002}));
  monitor().placeSyncOrders(orders);
  EXPECT_EQ(lastOrder().orderSource.sourceFlags, 0x1000000);
  EXPECT_EQ(utf8(lastOrder().orderSource.sourceText), "头寸监控一键同步");
  EXPECT_EQ(record({1, 2000002}).isMatchPosDif, 1);
  EXPECT_EQ(syncOrders(only({1, 2000002})), "");
  orders = monitor().getSyncOrders(only({1, 1000002}));
  orders.front().price = 950;
  monitor().placeSyncOrders(orders);
  EXPECT_EQ(lastOrder().status, static_cast<int32_t>(OrderStatus::Working));
  EXPECT_EQ(syncOrders(only({1, 1000002})), "") << "one is working already";
  MonitorSyncOrder refused;
  refused.account = capital(1).id;
  refused.code.hashCode = kRebar;
  orders = {refused};
  monitor().placeSyncOrders(orders);
  EXPECT_FALSE(inbox_.next("terminal.notice").message.empty());
}

TEST_F(MonitorTest, SecuritiesAccountsAreOfferedOrdersThatTheEngineAccepts) {
  struct Case {
    Key key;
    int32_t rule;
    Volumes target;
    std::string orders;
  };
  const Case cases[] = {
      {{2, kMerchants}, 0, {0, 500}, "2 4 4000; "},
      {{2, kMaotai}, 1, {100, 500}, "2 4 200; "},
      {{2, kWuliangye}, 0, {0, 500}, ""},
      {{2, kCatl}, 0, {100, 0}, ""},  // bought today
      {{4, kMerchants}, 0, {9000, 0}, "1 1 1000; "},
      {{4, kPingAn}, 0, {3000, 0}, "6 4 1000; "},
      {{4, 6000001}, 0, {19000, 200}, "2 4 1000; 4 1 200; "},
      {{4, kCatl}, 0, {0, 0}, ""},
      {{4, kWuliangye}, 2, {100, 0}, "5 4 1000; 1 1 100; "},
  };
  std::string sql = "DELETE FROM strategy_target; DELETE FROM sync_rule; DELETE FROM manual_position;";
  for (const Case& it : cases) {
    const std::string key = std::to_string(it.key.account) + ", " + std::to_string(it.key.hashCode) + ", ";
    sql += "INSERT INTO sync_rule VALUES (" + key + std::to_string(it.rule) + ");";
    sql += "INSERT INTO manual_position VALUES (" + key + std::to_string(it.target.longs) + ", " +
           std::to_string(it.target.shorts) + ");";
  }
  reopen(sql);
  for (const Case& it : cases) {
    SCOPED_TRACE(it.key.hashCode);
    EXPECT_EQ(syncOrders(only(it.key)), it.orders);
    std::list<MonitorSyncOrder> offered = monitor().getSyncOrders(only(it.key));
    const size_t before = orders().size();
    monitor().placeSyncOrders(offered);
    const std::list<Order> after = orders();
    ASSERT_EQ(after.size(), before + offered.size());
    for (auto placed = std::next(after.begin(), static_cast<int64_t>(before)); placed != after.end(); ++placed) {
      EXPECT_EQ(placed->status, static_cast<int32_t>(OrderStatus::Filled)) << utf8(placed->note);
    }
  }
}

TEST_F(MonitorTest, ALargeDifferenceIsOfferedInParts) {
  std::list<MonitorManualPosition> update(2);
  for (MonitorManualPosition& it : update) it.account = capital(1).id;
  update.front().code.hashCode = update.back().code.hashCode = kTreasury;
  update.back().code.code = "T2703";
  update.front().position.longPos = update.front().position.shortPos = 50'000;  // a thousand orders of the largest size
  update.back().position.shortPos = 50'001;
  monitor().updateManualPositions(update);
  EXPECT_EQ(utf8(inbox_.next("terminal.notice").message),
            "手工头寸无效 (80010001 T2703): 多 0, 空 50001, 应在 0 至 50000 之间");
  EXPECT_EQ(record({1, kTreasury}).manual.longPos, 50'000);
  EXPECT_EQ(record({1, kTreasury}).manual.shortPos, 50'000);
  EXPECT_EQ(monitor().getSyncOrders(only({1, kTreasury})).size(), 100U);
}

TEST_F(MonitorTest, ManualPositionsAreStoredListedAndCleared) {
  std::list<MonitorManualPosition> update(2);
  update.front().account = update.back().account = capital(2).id;
  update.front().code.hashCode = kPingAn;
  update.front().position.longPos = 700;
  update.back().code.hashCode = kMaotai;
  update.back().position.longPos = -1;
  monitor().updateManualPositions(update);
  EXPECT_FALSE(inbox_.next("terminal.notice").message.empty()) << "a negative position is refused";
  reopen();
  EXPECT_EQ(record({2, kPingAn}).manual.longPos, 700);
  EXPECT_EQ(record({2, kMaotai}).manual.longPos, 200);
  std::list<MonitorManualPosition> listed;
  monitor().getManualPositions(only({2, kPingAn}), listed);
  ASSERT_EQ(listed.size(), 1U);
  EXPECT_EQ(listed.front().code.code, "601318");
  monitor().cleanManualPositions(only({2, kPingAn}));
  listed.clear();
  monitor().getManualPositions({}, listed);
  EXPECT_EQ(listed.size(), 12U);
  monitor().cleanManualPositions({});
  reopen();
  listed.clear();
  monitor().getManualPositions({}, listed);
  EXPECT_TRUE(listed.empty());
}

}  // namespace
}  // namespace orvane::terminal::testing
