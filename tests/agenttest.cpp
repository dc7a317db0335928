#include <clocale>
#include <functional>
#include <future>
#include <string>

#include "pocketagent/mobilesrvspi.h"
#include "pocketagent/pocketagent.h"
#include "tests/support/logcapture.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

const MobileSrvInfo kInfo{"http://127.0.0.1:1", "trader", "c", "d", "e", "f"};
const std::string kStart = "start(http://127.0.0.1:1,trader)";
const std::string kPush = "checkUser(unknown.topic)";  // the first call of a push

MobileMessage notice(const std::string& data = "[]") { return {kNoRequestId, "order.push", gbk("成交"), gbk(data), 3}; }

TEST(Agent, StartsWorkerServiceCallbackAndStopsCallbackWorkerService) {
  ScriptedHost host;
  LogCapture log(log4cxx::Level::getTrace());
  PocketAgent agent;
  agent.start(kInfo);
  ASSERT_EQ(host.spi.use_count(), 1);  // the service is the only owner
  host.holdIn("checkUser(account.list)");
  host.spi->onRequest(5, 8, "account.list", "");
  ASSERT_TRUE(host.waitForCall("checkUser(account.list)"));
  // The callback goes while the worker still runs a task; the service goes after the worker.
  const auto stopper = std::async(std::launch::async, [&] { agent.stop(); });
  EXPECT_TRUE(host.waitForCall("unregisterSpi"));
  EXPECT_EQ(stopper.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  EXPECT_EQ(host.calls().back(), "unregisterSpi(77)");
  host.release();
  stopper.wait();
  EXPECT_EQ(host.sent().at(0).requestId, 5);
  EXPECT_THAT(host.calls(), ElementsAre(kStart, "registerSpi", "checkUser(account.list)", "unregisterSpi(77)",
                                        "getAllTradingAccount(ids [],3)", "send", "stop"));
  EXPECT_THAT(log.lines(),
              ElementsAre("[TRACE] PocketAgent MobileWorker start begin", "[TRACE] PocketAgent MobileWorker start end",
                          "[DEBUG] PocketAgent PocketAgent start end",
                          "[TRACE] PocketAgent push RequestID=5,Topic=account.list,Data=",
                          "[DEBUG] PocketAgent PocketAgent stop begin", "[TRACE] PocketAgent MobileWorker stop begin",
                          "[TRACE] PocketAgent MobileWorker stop end", "[DEBUG] PocketAgent PocketAgent stop end"));
}

// While one operation is inside the host, no other one starts.
TEST(Agent, ControlOperationsAndPushesWaitForEachOther) {
  using Operation = std::function<void(PocketAgent&)>;
  MobileServerStatus status;
  const Operation start = [](PocketAgent& agent) { agent.start(kInfo); };
  const Operation stop = [](PocketAgent& agent) { agent.stop(); };
  const Operation ask = [&](PocketAgent& agent) { agent.getServerStatus(status); };
  const Operation push = [](PocketAgent& agent) { agent.pushNotify(notice()); };
  const std::vector<std::tuple<Operation, std::string, Operation>> rows = {
      {start, "start(", push}, {start, "start(", ask},   {stop, "stop", push},
      {stop, "stop", start},   {ask, "isRunning", push}, {ask, "isRunning", stop}};
  for (const auto& [first, call, second] : rows) {
    ScriptedHost host;
    PocketAgent agent;
    host.holdIn(call);
    const auto held = std::async(std::launch::async, [&, &first = first] { first(agent); });
    ASSERT_TRUE(host.waitForCall(call));
    const auto waits = std::async(std::launch::async, [&, &second = second] { second(agent); });
    EXPECT_EQ(waits.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout) << call;
    host.release();
  }
}

TEST(Agent, LogsWhyItDoesNotStart) {
  const std::vector<std::pair<std::function<void(ScriptedHost&, MobileSrvInfo&)>, std::string>> rows = {
      {[](auto& host, auto&) { host.baseServiceUp = false; }, " 空指针, BaseService未启动"},
      {[](auto& host, auto&) { host.mobileServiceUp = false; }, " 空指针, BaseService未启动"},
      {[](auto&, auto& info) { info.url.clear(); }, " url or userid is empty"},
      {[](auto&, auto& info) { info.userid.clear(); }, " url or userid is empty"},
      {[](auto& host, auto&) {
         host.startStatus = {1, gbk("端口被占")};
       },
       "=端口被占"}};
  for (const auto& [spoil, line] : rows) {
    ScriptedHost host;
    MobileSrvInfo info = kInfo;
    spoil(host, info);
    PocketAgent agent;
    LogCapture log(log4cxx::Level::getTrace());
    agent.start(info);
    const bool workerRuns = host.startStatus.code != 0;
    ASSERT_THAT(log.lines(), testing::SizeIs(workerRuns ? 3 : 1));
    EXPECT_EQ(log.lines().back(), "[DEBUG] PocketAgent PocketAgent start error" + gbk(line));
    EXPECT_EQ(host.spi, nullptr);
    agent.pushNotify(notice());
    EXPECT_TRUE(!workerRuns || host.waitForSent(1));
  }
}

TEST(Agent, StopWithoutServicesLeavesTheWorkerRunning) {
  ScriptedHost host;
  PocketAgent agent;
  agent.start(kInfo);
  host.mobileServiceUp = false;
  LogCapture log(log4cxx::Level::getDebug());
  agent.stop();
  MobileServerStatus status;
  status.serviceName = "untouched";
  agent.getServerStatus(status);
  EXPECT_EQ(status.serviceName, "untouched");
  EXPECT_THAT(log.lines(),
              ElementsAre("[DEBUG] PocketAgent PocketAgent stop begin",
                          "[DEBUG] PocketAgent PocketAgent stop error " + gbk("空指针, BaseService未启动"),
                          "[DEBUG] PocketAgent PocketAgent getServerStatus error " + gbk("空指针, BaseService未启动")));
  host.mobileServiceUp = true;
  agent.pushNotify(notice());
  EXPECT_TRUE(host.waitForSent(1));
}

TEST(Agent, StatusReportsTheServiceButNotWhatStartWasGiven) {
  ScriptedHost host;
  PocketAgent agent;
  for (const bool running : {true, false}) {
    agent.start(kInfo);
    host.running = running;
    MobileServerStatus status{"1", "2", "3", "4", "5", "6", "7", "8", !running};
    agent.getServerStatus(status);
    EXPECT_THAT(status, FieldsAre("", "", "3", "", "5", "6", "手机-移动交易服务器", "移动交易", running));
  }
}

TEST(Agent, PushesWaitForTheStartAndKeepTheHostsOtherFields) {
  ScriptedHost host;
  PocketAgent agent;
  agent.pushNotify(notice(R"([{"note":"全部成交"}])"));
  agent.start(kInfo);
  ASSERT_TRUE(host.waitForSent(1));
  EXPECT_THAT(host.sent()[0], FieldsAre(kNoRequestId, "order.push", "成交", R"([{"note":"全部成交"}])", 3));
  EXPECT_THAT(host.converted, ElementsAre(gbk(R"([{"note":"全部成交"}])"), gbk("成交")));
  agent.stop();
  agent.pushNotify(notice());
  host.userRefusal = {1, gbk("无权限")};
  agent.start(kInfo);
  ASSERT_TRUE(host.waitForSent(2));
  EXPECT_THAT(host.sent()[1], FieldsAre(kNoRequestId, "unknown.topic", "无权限", "", 8));
}

TEST(Agent, SecondStartAttachesASecondCallback) {
  ScriptedHost host;
  PocketAgent agent;
  agent.start(kInfo);
  const std::shared_ptr<IMobileSrvSpi> first = host.spi;
  agent.start(kInfo);
  EXPECT_NE(host.spi, first);
  agent.stop();
  agent.stop();
  EXPECT_THAT(host.calls(), ElementsAre(kStart, "registerSpi", kStart, "registerSpi", "unregisterSpi(77)", "stop",
                                        "unregisterSpi(77)", "stop"));
}

TEST(Agent, IsOneObjectAndDoesNotCallTheHostWhenItIsCreated) {
  IPocketAgent* agent = IPocketAgent::getInstance();  // there is no scripted host to call
  EXPECT_NE(agent, nullptr);
  EXPECT_EQ(agent, IPocketAgent::getInstance());
}

TEST(Log, KeepsTheBytesInEveryLocaleAndAsksForTheTimeEachTime) {
  ScriptedHost host;
  const std::string bytes = gbk("空指针") + "\xFF 空指针";
  for (const char* locale : {"C", "C.UTF-8"}) {
    ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr);
    for (const bool time : {false, true}) {
      host.logTime = time;
      LogCapture log(log4cxx::Level::getDebug());
      bool built = false;
      POCKET_TRACE((built = true, "text"));
      EXPECT_FALSE(built);
      POCKET_DEBUG(bytes);
      EXPECT_THAT(log.lines(),
                  ElementsAre((time ? "2023-11-14T22:13:20.000000Z [DEBUG] " : "[DEBUG] ") + ("PocketAgent " + bytes)));
      EXPECT_THAT(log.lastPlace(), AllOf(testing::StartsWith("DEBUG orvane::"), testing::EndsWith(" agenttest.cpp")));
    }
  }
  std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace orvane::test
