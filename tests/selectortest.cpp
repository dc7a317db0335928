#include <string>

#include <gmock/gmock.h>

#include "tests/support/logcapture.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Selector, ReadsIntsInTheOrderOfTheBody) {
  struct Row {
    std::string body;
    AccountSelector selector;
  };
  const std::vector<Row> rows = {
      {"[]", {}},
      {"[0,3]", {0, 3}},
      {" [1, 1, 2] trailing text", {1, 1, 2}},
      {"[1][2", {1}},
      {std::string("[5]\0[6]", 7), {5}},
      {"[-2147483648,2147483647]", {INT32_MIN, INT32_MAX}},
  };
  for (const Row& row : rows) {
    AccountSelector selector;
    EXPECT_EQ(MobileWorker().parseTid(1, kTopicCapitalList, row.body, selector).code, 0) << row.body;
    EXPECT_EQ(selector, row.selector) << row.body;
  }
}

TEST(Selector, EachFailureHasItsReplyAndItsLogText) {
  struct Row {
    std::string body;
    std::string reply;
    std::string log;
  };
  const std::vector<Row> rows = {
      {"", "invalid json string", "invalid json string"},
      {"  ", "invalid json string", "invalid json string"},
      {"[1", "invalid json string", "invalid json string"},
      {"[1,]", "invalid json string", "invalid json string"},
      {std::string("\0[1]", 4), "invalid json string", "invalid json string"},
      {std::string(1'000'000, '['), "invalid json string", "invalid json string"},
      {R"({"a":1})", "Data member not array", "Data member not array"},
      {"7", "Data member not array", "Data member not array"},
      {"null", "Data member not array", "Data member not array"},
      {"[1,2.0]", "Data member not array", "Data element not int"},
      {"[1,3000000000]", "Data member not array", "Data element not int"},
      {R"(["1"])", "Data member not array", "Data element not int"},
      {"[true]", "Data member not array", "Data element not int"},
      {"[[1]]", "Data member not array", "Data element not int"},
  };
  ScriptedHost host;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.body.substr(0, 20));
    LogCapture log(log4cxx::Level::getDebug());
    const MobileMessage reply = Phone().ask("capital.list", row.body);
    EXPECT_EQ(reply.requestId, 42);
    EXPECT_EQ(reply.topic, "unknown.topic");
    EXPECT_EQ(reply.message, row.reply);
    EXPECT_EQ(reply.data, "");
    EXPECT_EQ(reply.terminalType, 8);
    EXPECT_THAT(log.lines(),
                ElementsAre("[DEBUG] PocketAgent parse tid error,RequestID=42, Topic=capital.list,msg=" + row.log));
    EXPECT_EQ(log.lastPlace(), "DEBUG accountselector.cpp");
  }
  EXPECT_THAT(host.calls(), IsEmpty());
}

TEST(Selector, FailureIsTheSameWithTheLogOffAndNamesUnknownTopics) {
  ScriptedHost host;
  AccountSelector selector;
  LogCapture log(log4cxx::Level::getInfo());
  const ResultStatus failed = MobileWorker().parseTid(7, kTopicCapitalList, "{}", selector);
  EXPECT_EQ(failed.code, -1);
  EXPECT_EQ(failed.message, "Data member not array");
  EXPECT_THAT(log.lines(), IsEmpty());
  agentLogger()->setLevel(log4cxx::Level::getDebug());
  MobileWorker().parseTid(7, OrvMobileTopic{18}, "{}", selector);
  EXPECT_THAT(log.lines(), ElementsAre("[DEBUG] PocketAgent parse tid error,RequestID=7, Topic=unknown.topic,"
                                       "msg=Data member not array"));
}

TEST(Selector, DecodesALongListOfManyDigits) {
  std::string body = "[";
  for (int index = 0; index < 10'000; ++index) {
    body += std::to_string(index) + ",";
  }
  body += "0]";
  AccountSelector selector;
  EXPECT_EQ(MobileWorker().parseTid(1, kTopicCapitalList, body, selector).code, 0);
  EXPECT_EQ(selector.size(), 10'001U);
}

}  // namespace
}  // namespace orvane::test
