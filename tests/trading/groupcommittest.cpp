#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "terminal/phones/replyhold.h"
#include "tests/support/holdssoon.h"
#include "tests/trading/desktest.h"

namespace orvane::terminal::testing {
namespace {

using Clock = std::chrono::steady_clock;

// Each flush takes ten milliseconds longer. The limits leave room for a machine that does other things too: with a
// flush for each order it would be a hundred orders a second.
class GroupCommitTest : public DeskTest {
 protected:
  GroupCommitTest() { setenv("SLOW_FLUSH_MS", "10", 1); }
  ~GroupCommitTest() override { unsetenv("SLOW_FLUSH_MS"); }

  static void place() { EXPECT_EQ(trade()->insertOrder(item(1, kRebar, Side::Buy, Offset::Open, 3100, 1)).code, 0); }

  static double milliseconds(Clock::time_point since) {
    return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
  }
};

// As the library's worker does it: one request after the other, of a hundred clients with eight orders under way each,
// and now and then another client's cancel.
TEST_F(GroupCommitTest, ManyClientsOrdersShareFlushesAndACancelIsPrompt) {
  reopen("UPDATE account SET pre_balance = 1e12 WHERE idx = 1");
  const auto one = Clock::now();
  place();
  EXPECT_EQ(stored(), "");
  EXPECT_GE(milliseconds(one), 10) << "the flush must be slow for this to show anything";
  constexpr int kUnderWay = 800;
  std::atomic<int> underWay = 0;
  std::atomic<int> done = 0;
  std::atomic<double> slowest = 0;
  const auto begin = Clock::now();
  for (int cancels = 0; cancels < 20;) {
    if (milliseconds(begin) > 50 * cancels) {
      const auto asked = Clock::now();
      cancelOrder(1, kSugar, 1006);  // refused but for the first time, and held back all the same
      host_->whenStored([&, asked](const std::string&) { slowest = std::max(slowest.load(), milliseconds(asked)); });
      ++cancels;
    } else if (underWay < kUnderWay) {
      place();
      ++underWay;
      host_->whenStored([&](const std::string& failure) {
        EXPECT_EQ(failure, "");
        --underWay;
        ++done;
      });
    } else {
      std::this_thread::yield();
    }
  }
  const double perSecond = done * 1000 / milliseconds(begin);
  EXPECT_EQ(stored(), "");
  RecordProperty("figures", fmt::format("{:.0f} orders a second, slowest cancel {:.0f} ms", perSecond, slowest.load()));
  EXPECT_GT(perSecond, 200) << "a flush for each order would allow a hundred";
  EXPECT_LT(slowest, 4000) << "behind 800 flushes it would take eight seconds";
}

TEST_F(GroupCommitTest, RepliesWaitForTheFlushAndReportAFailedOne) {
  MobileMessage reply;
  reply.requestId = 7;
  reply.data = "{}";
  std::promise<MobileMessage> delivered;
  ReplyHold hold([this](auto answer) { host_->whenStored(std::move(answer)); },
                 [&](const auto& message) { delivered.set_value(*message); });
  place();
  std::future<MobileMessage> first = delivered.get_future();
  hold.send(reply);
  EXPECT_EQ(first.wait_for(std::chrono::seconds(0)), std::future_status::timeout) << "the flush takes ten milliseconds";
  EXPECT_EQ(first.get().data, "{}");

  delivered = {};
  hold.send(MobileMessage{});  // a push
  EXPECT_EQ(delivered.get_future().get().requestId, kNoRequestId);

  reopen("CREATE TRIGGER full BEFORE INSERT ON orders BEGIN SELECT RAISE(ABORT, 'disk full'); END");
  delivered = {};
  place();
  hold.send(reply);
  const MobileMessage failed = delivered.get_future().get();
  EXPECT_THAT(failed.message, ::testing::HasSubstr("(disk full), 未作任何更改"));
  EXPECT_EQ(failed.data, "");
}

// A disk that hangs reports no error.
TEST_F(GroupCommitTest, AWriteThatTakesLongIsAFault) {
  setenv("SLOW_FLUSH_MS", "3500", 1);
  place();
  const auto fault = [this] { return host_->health().storageFault; };
  EXPECT_TRUE(test::holdsSoon([&] { return !fault().empty(); }));
  EXPECT_THAT(fault(), ::testing::HasSubstr("terminal.db has taken 3 s so far: check its disk"));
  setenv("SLOW_FLUSH_MS", "0", 1);
  EXPECT_EQ(stored(), "");
  EXPECT_TRUE(test::holdsSoon([&] { return fault().empty(); }));
}

}  // namespace
}  // namespace orvane::terminal::testing
