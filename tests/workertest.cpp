#include <array>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/logcapture.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

TEST(Topics, NamesAndNumbersGoBothWays) {
  // clang-format off
  constexpr std::array kNames = {
      "min.topic", "unknown.topic", "account.list", "capital.list", "order.list", "position.list", "trader.list",
      "monitor.list", "order.condition.list", "order.new", "order.cancel", "position.codetype.list",
      "monitor.sync.order.list", "monitor.sync.order.new", "monitor.manual.list", "monitor.manual.update",
      "monitor.manual.clean", "marginrate.list", "creditinfo.list"};
  // clang-format on
  int32_t value = -1;
  for (const char* name : kNames) {
    EXPECT_EQ(topicFromName(name), value);
    EXPECT_STREQ(topicName(value), name);
    ++value;
  }
  for (const int32_t outside : {-2, 18, INT32_MAX, INT32_MIN}) {
    EXPECT_STREQ(topicName(outside), "unknown.topic");
  }
  for (const char* unknown : {"", "Account.List", "account.list ", "account"}) {
    EXPECT_EQ(topicFromName(unknown), 0) << unknown;
  }
}

TEST(Worker, TopicsNotKnownHereGoToTheUserInterface) {
  for (const std::string topic : {"quote.list", "unknown.topic", "min.topic", "Account.List"}) {
    ScriptedHost host;
    EXPECT_THAT(Phone().askAll(topic, "body"), IsEmpty());
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(unknown.topic)", "requestAsync(42," + topic + ",body)"));
  }
}

TEST(Worker, BitSixteenOfTheTerminalTypeAsksTheUserInterfaceAtOnce) {
  ScriptedHost host;
  host.proxyReply = {7, "the.proxys.topic", gbk("无行情"), gbk(R"({"name":"螺纹"})"), 99};
  EXPECT_THAT(Phone().ask("quote.list", "[1]", 24),
              FieldsAre(42, "the.proxys.topic", "无行情", R"({"name":"螺纹"})", 8));
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(unknown.topic)", "requestSync(quote.list,[1])"));
}

TEST(Worker, TopicEndsAtItsFirstNulButIsPassedOnAndLoggedWhole) {
  ScriptedHost host;
  LogCapture log(log4cxx::Level::getTrace());
  const std::string topic("account.list\0rest", 17);
  EXPECT_EQ(Phone().ask(topic, "not json").data, "[]");
  const std::string unknown("quote\0rest", 10);
  Phone().askAll(unknown, "");
  EXPECT_EQ(host.calls().back(), "requestAsync(42," + unknown + ",)");
  EXPECT_EQ(log.lines().front(), "[TRACE] PocketAgent push RequestID=42,Topic=" + topic + ",Data=not json");
}

TEST(Worker, ConditionalOrdersAreRefusedInUtf8) {
  ScriptedHost host;
  EXPECT_THAT(Phone().ask("order.condition.list", "ignored"),
              FieldsAre(42, "order.condition.list", "暂不支持条件单", "", 8));
  EXPECT_THAT(host.calls(), IsEmpty());
}

TEST(Worker, RefusedUserCostsNoOtherCall) {
  // The topic asked, and the one that is checked and answered where that is another.
  // clang-format off
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"account.list", ""}, {"capital.list", ""}, {"position.list", ""}, {"order.list", ""}, {"trader.list", ""},
      {"monitor.list", ""}, {"order.cancel", ""}, {"position.codetype.list", ""}, {"monitor.sync.order.list", ""},
      {"monitor.manual.list", "monitor.list"}, {"quote.list", "unknown.topic"}};
  // clang-format on
  for (const auto& [topic, other] : rows) {
    const std::string named = other.empty() ? topic : other;
    ScriptedHost host;
    host.userRefusal = {9, gbk("无权限")};
    EXPECT_THAT(Phone().ask(topic, "[]", 24), FieldsAre(42, named, "无权限", "", 8));
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(" + named + ")"));
  }
}

TEST(Worker, FailedSendWritesOneErrorLine) {
  ScriptedHost host;
  host.sendStatus = {4, "socket gone"};
  host.logTime = true;
  LogCapture log(log4cxx::Level::getError());
  Phone().ask("capital.list", "[]");
  EXPECT_THAT(log.lines(), ElementsAre("2023-11-14T22:13:20.000000Z [ERROR] PocketAgent send error,RequestID=42,"
                                       "Topic=capital.list,TerminalType=8,msg=socket gone"));
  EXPECT_EQ(log.lastPlace(), "ERROR orvane::IRequestTask::send requesttask.cpp");
}

TEST(Worker, RunsRequestsInOrderOnItsThread) {
  ScriptedHost host;
  MobileWorker worker;
  worker.push(1, 8, "order.condition.list", "");
  worker.start();
  worker.push(2, 8, "capital.list", "no json");
  worker.push(3, 8, "account.list", "");
  ASSERT_TRUE(host.waitForSent(3));
  for (size_t at = 0; at < 3; ++at) {
    EXPECT_EQ(host.sent()[at].requestId, at + 1);
  }
}

TEST(Worker, GoesWithItsThreadRunningAndLetsTheRunningTaskFinish) {
  ScriptedHost host;
  std::promise<void> inTask;
  std::promise<void> mayEnd;
  host.onSend = [&](const MobileMessage& message) {
    if (message.requestId == 0) {
      inTask.set_value();
      mayEnd.get_future().wait();
    }
  };
  auto worker = std::make_unique<MobileWorker>();
  worker->start();
  for (int64_t id = 0; id < 20; ++id) {
    worker->push(id, 8, "order.condition.list", "");
  }
  inTask.get_future().wait();
  std::thread end([&] { worker.reset(); });
  mayEnd.set_value();
  end.join();
  EXPECT_GE(host.sent().size(), 1U);
}

}  // namespace
}  // namespace orvane::test
