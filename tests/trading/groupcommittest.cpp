#include <atomic>

#include <gmock/gmock.h>

#include "terminal/phones/replyhold.h"
#include "tests/support/holdssoon.h"
#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

class GroupCommitTest : public DeskTest {
 protected:
  GroupCommitTest() { reopen("UPDATE account SET pre_balance = 1e12 WHERE idx = 1"); }

  static void place() { EXPECT_EQ(insertOrder(rebar(3100)).code, 0); }

  // Places an order whose flush does not end before heal().
  void placeAndHold() {
    disk_.holdFlushes();
    place();
    ASSERT_TRUE(test::holdsSoon([] { return FaultyDisk::flushes > 0; }));
  }
};

// As the library's worker does it: one request after the other, of many clients, and another client's cancel.
TEST_F(GroupCommitTest, OrdersAndACancelDuringAFlushShareTheNext) {
  constexpr int kOrders = 800;
  std::atomic<int> done = 0;
  const auto count = [&](const std::string& failure) {
    EXPECT_EQ(failure, "");
    ++done;
  };
  placeAndHold();
  for (int i = 0; i < kOrders; ++i) {
    place();
    host_->whenStored(count);
  }
  EXPECT_EQ(cancelOrder(1, kSugar, 1006).code, 0);
  host_->whenStored(count);
  EXPECT_EQ(done, 0);
  disk_.heal();
  EXPECT_EQ(stored(), "");
  EXPECT_EQ(done, kOrders + 1);
  EXPECT_LT(disk_.flushes, 5);
}

// A disk that hangs reports no error, so its health does.
TEST_F(GroupCommitTest, RepliesWaitForTheFlushAndAHangIsAFault) {
  Inbox delivered;
  ReplyHold hold([this](auto answer) { host_->whenStored(std::move(answer)); },
                 [&](const auto& message) { delivered.put(*message); });
  const MobileMessage reply{7, "order.new", "", "{}", 8};
  const auto fault = [this] { return host_->health().storageFault; };
  placeAndHold();
  hold.send(reply);
  hold.send({kNoRequestId, "order.push", "", "[]", 8});
  EXPECT_EQ(delivered.size(), 1U) << "a push does not wait";
  EXPECT_TRUE(test::holdsSoon([&] { return !fault().empty(); }));
  EXPECT_THAT(fault(), ::testing::ContainsRegex("terminal.db has taken [0-9]+ s so far: check its disk"));
  EXPECT_EQ(delivered.size(), 1U);
  disk_.heal();
  EXPECT_EQ(delivered.next("order.new").data, "{}");
  EXPECT_TRUE(test::holdsSoon([&] { return fault().empty(); }));

  reopen("CREATE TRIGGER full BEFORE INSERT ON orders BEGIN SELECT RAISE(ABORT, 'disk full'); END");
  place();
  hold.send(reply);
  const MobileMessage failed = delivered.next("order.new");
  EXPECT_THAT(failed.message, ::testing::HasSubstr("(disk full), 未作任何更改"));
  EXPECT_EQ(failed.data, "");
}

}  // namespace
}  // namespace orvane::terminal::testing
