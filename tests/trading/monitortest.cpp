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
      {{2, 6000001}, 2, 2000, 2000, 0, "0000", "1 3 2000; "},
      {{4, kWuliangye}, 0, -500, 0, 500, "0000", "2 1 500; "},
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
  EXPECT_EQ(syncOrders(only({1, 1000002})), "") << "one is on its way already";
  MonitorSyncOrder refused;
  refused.account = capital(1).id;
  refused.code.hashCode = kRebar;
  orders = {refused};
  monitor().placeSyncOrders(orders);
  EXPECT_FALSE(inbox_.next("terminal.notice").message.empty());
}

TEST_F(MonitorTest, ManualPositionsAreStoredListedAndCleared) {
  std::list<MonitorManualPosition> update(2);
  update.front().account = update.back().account = capital(2).id;
  update.front().code.hashCode = kPingAn;
  update.front().position.longPos = 700;
  update.back().code.hashCode = kMaotai;
  update.back().position.longPos = -1;
  monitor().updateManualPositions(update);
  EXPECT_FALSE(inbox_.next("terminal.notice").message.empty()) << "a negative position is not taken";
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
