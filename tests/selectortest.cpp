#include <string>
#include <vector>

#include "tests/support/logcapture.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

TEST(Selector, ReadsIntsInTheOrderOfTheBody) {
  const std::vector<std::pair<std::string, AccountSelector>> rows = {
      {"[]", {}},
      {"[0,3]", {0, 3}},
      {" [1, 1, 2] trailing text", {1, 1, 2}},
      {"[1][2", {1}},
      {std::string("[5]\0[6]", 7), {5}},
      {"[-2147483648,2147483647]", {INT32_MIN, INT32_MAX}}};
  for (const auto& [body, expected] : rows) {
    AccountSelector selector;
    EXPECT_EQ(MobileWorker().parseTid(1, kTopicCapitalList, body, selector).code, 0) << body;
    EXPECT_EQ(selector, expected) << body;
  }
}

TEST(Selector, EachFailureHasItsReplyAndItsLogText) {
  struct Row {
    std::vector<std::string> bodies;
    std::string reply, log;
  };
  const std::vector<Row> rows = {
      {{"", "  ", "[1", "[1,]", std::string("\0[1]", 4), std::string(1'000'000, '[')},
       "invalid json string",
       "invalid json string"},
      {{R"({"a":1})", "7", "null"}, "Data member not array", "Data member not array"},
      {{"[1,2.0]", "[1,3000000000]", R"(["1"])", "[true]", "[[1]]"}, "Data member not array", "Data element not int"}};
  ScriptedHost host;
  for (const Row& row : rows) {
    for (const std::string& body : row.bodies) {
      SCOPED_TRACE(body.substr(0, 20));
      LogCapture log(log4cxx::Level::getDebug());
      EXPECT_THAT(Phone().ask("capital.list", body), FieldsAre(42, "unknown.topic", row.reply, "", 8));
      EXPECT_THAT(log.lines(),
                  ElementsAre("[DEBUG] PocketAgent parse tid error,RequestID=42, Topic=capital.list,msg=" + row.log));
      EXPECT_EQ(log.lastPlace(), "DEBUG orvane::MobileWorker::parseTid accountselector.cpp");
    }
  }
  EXPECT_THAT(host.calls(), IsEmpty());
}

TEST(Selector, FailureIsTheSameWithTheLogOffAndNamesUnknownTopics) {
  ScriptedHost host;
  AccountSelector selector;
  LogCapture log(log4cxx::Level::getInfo());
  EXPECT_THAT(MobileWorker().parseTid(7, kTopicCapitalList, "{}", selector), FieldsAre(-1, "Data member not array"));
  EXPECT_THAT(log.lines(), IsEmpty());
  agentLogger()->setLevel(log4cxx::Level::getDebug());
  MobileWorker().parseTid(7, OrvMobileTopic{99}, "{}", selector);
  EXPECT_THAT(log.lines(), ElementsAre("[DEBUG] PocketAgent parse tid error,RequestID=7, Topic=unknown.topic,"
                                       "msg=Data member not array"));
}

TEST(Selector, DecodesALongListOfManyDigits) {
  std::string body = "[0";
  for (int index = 0; index < 10'000; ++index) {
    body += "," + std::to_string(index);
  }
  AccountSelector selector;
  EXPECT_EQ(MobileWorker().parseTid(1, kTopicCapitalList, body + "]", selector).code, 0);
  EXPECT_EQ(selector.size(), 10'001U);
}

}  // namespace
}  // namespace orvane::test
