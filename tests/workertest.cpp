#include <array>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/logcapture.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Topics, NamesAndNumbersGoBothWays) {
  constexpr std::array kNames = {"min.topic",
                                 "unknown.topic",
                                 "account.list",
                                 "capital.list",
                                 "order.list",
                                 "position.list",
                                 "trader.list",
                                 "monitor.list",
                                 "order.condition.list",
                                 "order.new",
                                 "order.cancel",
                                 "position.codetype.list",
                                 "monitor.sync.order.list",
                                 "monitor.sync.order.new",
                                 "monitor.manual.list",
                                 "monitor.manual.update",
                                 "monitor.manual.clean",
                                 "marginrate.list",
                                 "creditinfo.list"};
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
  ScriptedHost host;
  Phone phone;
  for (const std::string topic : {"quote.list", "unknown.topic", "min.topic", "Account.List"}) {
    host.forgetCalls();
    EXPECT_THAT(phone.askAll(topic, "body"), IsEmpty());
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(unknown.topic)", "requestAsync(42," + topic + ",body)"));
  }
}

TEST(Worker, BitSixteenOfTheTerminalTypeAsksTheUserInterfaceAtOnce) {
  ScriptedHost host;
  host.proxyReply.topic = "quote.list";
  host.proxyReply.message = gbk("无行情");
  host.proxyReply.data = gbk(R"({"name":"螺纹"})");
  const MobileMessage reply = Phone().ask("quote.list", "[1]", 24);
  EXPECT_EQ(reply.requestId, 42);
  EXPECT_EQ(reply.topic, "quote.list");
  EXPECT_EQ(reply.message, "无行情");
  EXPECT_EQ(reply.data, R"({"name":"螺纹"})");
  EXPECT_EQ(reply.terminalType, 8);
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
  const MobileMessage reply = Phone().ask("order.condition.list", "ignored");
  EXPECT_EQ(reply.topic, "order.condition.list");
  EXPECT_EQ(reply.message, "暂不支持条件单");
  EXPECT_EQ(reply.data, "");
  EXPECT_EQ(reply.terminalType, 8);
  EXPECT_THAT(host.calls(), IsEmpty());
}

TEST(Worker, RefusedUserGetsTheTextAndNothingElseIsAsked) {
  ScriptedHost host;
  host.userRefusal = {9, gbk("无权限")};
  for (const std::string topic : {"account.list", "capital.list", "quote.list"}) {
    host.forgetCalls();
    const MobileMessage reply = Phone().ask(topic, "[]", 24);
    const std::string name = topic == "quote.list" ? "unknown.topic" : topic;
    EXPECT_EQ(reply.topic, name);
    EXPECT_EQ(reply.message, "无权限");
    EXPECT_EQ(reply.data, "");
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(" + name + ")"));
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
  EXPECT_EQ(log.lastPlace(), "ERROR requesttask.cpp");
}

TEST(Worker, RunsRequestsInOrderOnItsThread) {
  ScriptedHost host;
  LogCapture log(log4cxx::Level::getTrace());
  MobileWorker worker;
  worker.push(1, 8, "order.condition.list", "");
  worker.start();
  worker.push(2, 8, "capital.list", "no json");
  worker.push(3, 8, "account.list", "");
  ASSERT_TRUE(host.waitForSent(3));
  worker.stop();
  EXPECT_EQ(host.sent()[0].requestId, 1);
  EXPECT_EQ(host.sent()[1].requestId, 2);
  EXPECT_EQ(host.sent()[2].requestId, 3);
  const std::vector<std::string> lines = log.lines();
  EXPECT_THAT(lines, testing::Contains("[TRACE] PocketAgent MobileWorker start begin"));
  EXPECT_EQ(lines.back(), "[TRACE] PocketAgent MobileWorker stop end");
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
