#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "tasks/neworder.h"
#include "tests/support/logcapture.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

TEST(Topics, OthersAreUnknown) {
  EXPECT_STREQ(topicName(-1), "min.topic");
  EXPECT_EQ(topicFromName("min.topic"), -1);
  for (const int32_t outside : {-2, 0, 99, INT32_MAX, INT32_MIN}) EXPECT_STREQ(topicName(outside), "unknown.topic");
  for (const char* unknown : {"", "Account.List", "account.list ", "account"}) {
    EXPECT_EQ(topicFromName(unknown), 0) << unknown;
  }
}

TEST(Worker, UnknownTopicsGoToTheUserInterface) {
  for (const std::string topic : {"quote.list", "unknown.topic", "min.topic", "Account.List"}) {
    for (const int32_t terminalType : {8, 15, 40, 16, 24}) {
      ScriptedHost host;
      host.proxyReply = {7, "the.proxys.topic", gbk("无行情"), gbk(R"({"name":"螺纹"})"), 99};
      const std::vector<MobileMessage> replies = Phone::askAll(topic, "[1]", terminalType);
      if ((terminalType & 16) == 0) {
        EXPECT_THAT(replies, IsEmpty());
        EXPECT_THAT(host.calls(), ElementsAre("checkUser(unknown.topic)", "requestAsync(42," + topic + ",[1])"));
      } else {
        EXPECT_THAT(replies, ElementsAre(FieldsAre(42, "the.proxys.topic", "无行情", R"({"name":"螺纹"})", 8)));
        EXPECT_THAT(host.calls(), ElementsAre("checkUser(unknown.topic)", "requestSync(" + topic + ",[1])", "send"));
      }
    }
  }
}

TEST(Worker, TopicEndsAtItsFirstNulButIsPassedOnAndLoggedWhole) {
  ScriptedHost host;
  LogCapture log(log4cxx::Level::getTrace());
  const std::string topic("account.list\0rest", 17);
  EXPECT_EQ(Phone::ask(topic, "not json").data, "[]");
  const std::string unknown("quote\0rest", 10);
  Phone::askAll(unknown, "");
  EXPECT_EQ(host.calls().back(), "requestAsync(42," + unknown + ",)");
  Phone::ask("capital.list", "{}");
  const std::string push = "[TRACE] PocketAgent push RequestID=42,Topic=";
  EXPECT_THAT(log.lines(), ElementsAre(push + topic + ",Data=not json", push + unknown + ",Data=",
                                       push + "capital.list,Data={}", HasSubstr("[DEBUG] PocketAgent parse tid")));
}

TEST(Worker, FailedSendIsLoggedAndNotRepeated) {
  ScriptedHost host;
  host.sendStatus = {4, "socket gone"};
  LogCapture log(log4cxx::Level::getError());
  Phone::ask("capital.list", "[]");
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] PocketAgent send error,RequestID=42,Topic=capital.list,"
                                       "TerminalType=8,msg=socket gone"));
  EXPECT_EQ(log.lastPlace(), "ERROR orvane::IRequestTask::send requesttask.cpp");
  host.sendStatus = {};
  Phone::ask("capital.list", "[]");
  EXPECT_EQ(log.lines().size(), 1U);
}

// No body can ask for a conditional order.
TEST(NewOrder, ConditionalOrderIsRefusedAfterTheAccount) {
  const std::vector<std::tuple<std::vector<int32_t>, std::string, Strings>> rows = {
      {{}, "暂不支持条件单", {"checkUser(order.new)", "send"}},
      {{1}, "暂不支持条件单", {"checkUser(order.new)", "getAllTradingAccount([1],1)", "send"}},
      {{9}, "can not find tid by index:9", {"checkUser(order.new)", "getAllTradingAccount([9],1)", "send"}}};
  for (const auto& [indexes, message, calls] : rows) {
    ScriptedHost host;
    host.accounts = {account(1)};
    MobileNewOrder conditional;
    conditional.isConditional = true;
    for (const int32_t index : indexes) conditional.items.emplace_back().account.index = index;
    NewOrderTask(1, kTopicNewOrder, conditional).execute();
    EXPECT_EQ(host.sent().back().message, message);
    EXPECT_EQ(host.calls(), calls);
  }
}

// Lets a test see the queue's settings, and that a stop has begun, also one by the destructor.
class WatchedWorker : public MobileWorker {
 public:
  static constexpr int32_t kRunning = QueueRunning;
  auto settings() const { return std::tuple(maxItems, waitMillis, exitWhenIdle); }
  const std::atomic<int32_t>& watch() const { return state; }
};

TEST(Worker, RunsRequestsInOrderAndAStopDropsWhatWaits) {
  for (const bool destroyed : {false, true}) {
    ScriptedHost host;
    host.holdIn("checkUser(account.list)");
    auto worker = std::make_unique<WatchedWorker>();
    EXPECT_EQ(worker->settings(), std::tuple(-1, 1, false));
    worker->push(1, 8, "order.condition.list", "");
    worker->start();
    worker->push(2, 8, "capital.list", "no json");
    worker->push(3, 8, "account.list", "");
    worker->push(4, 8, "account.list", "");
    ASSERT_TRUE(host.waitForCall("checkUser(account.list)"));
    const std::atomic<int32_t>& state = worker->watch();
    std::thread stopper([&worker, destroyed] { destroyed ? worker.reset() : worker->stop(); });
    while (state == WatchedWorker::kRunning) std::this_thread::yield();
    host.release();
    stopper.join();
    EXPECT_THAT(host.sent(), ElementsAre(FieldsAre(1, _, _, _, _), FieldsAre(2, _, _, _, _), FieldsAre(3, _, _, _, _)));
  }
}

}  // namespace
}  // namespace orvane::test
