#include <set>

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include "pocketagent/topic.h"
#include "terminal/phones/topics.h"
#include "terminal/trading/uiproxy.h"
#include "tests/system/contract.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;

// The library's topics, also those that are added to it later, the host's own, and what the gateway answers itself.
std::set<std::string> requestTopics() {
  std::set<std::string> topics;
  for (int32_t value = kTopicUnknown + 1; topicFromName(topicName(value)) == value; ++value) {
    topics.insert(topicName(value));
  }
  for (const std::string_view own : terminal::UiProxy::topics()) topics.emplace(own);
  topics.merge(std::set<std::string>{"alert.clear", "alert.list", "alert.set", "quote.watch"});
  return topics;
}

TEST(Topics, HaveARowAndADescriptionEach) {
  std::set<std::string> rows, described;
  for (const terminal::Topic& row : terminal::topics()) rows.emplace(row.name);
  for (const auto& [topic, right] : describedRights()) described.insert(topic);
  EXPECT_EQ(rows.erase("other"), 1U);
  EXPECT_EQ(described.erase("login"), 1U);
  EXPECT_EQ(rows, requestTopics()) << "give the topic a row in terminal/phones/topics.cpp";
  EXPECT_EQ(described, requestTopics()) << "describe the topic in docs/contract/topics.yaml";
  for (const int32_t value : {kTopicMin, kTopicUnknown}) {
    EXPECT_EQ(terminal::findTopic(topicName(value)).name, "other") << "no request has this topic";
  }
}

// The library asserts the shapes that the table names: a wrong row would end the process.
TEST(Topics, SurviveBodiesOfAnyShape) {
  const FreshTerminal terminal;
  const auto phone = terminal.login();
  std::set<std::string> topics = requestTopics();
  for (int32_t value = kTopicMin; value <= kTopicUnknown; ++value) topics.insert(topicName(value));
  topics.insert("no.such.topic");
  for (const std::string& topic : topics) {
    for (const char* body : {"7", "{}", "[7]", "[[]]", "[null]", R"({"orderList":[7]})"}) {
      SCOPED_TRACE(topic + ' ' + body);
      ASSERT_NO_THROW(phone->request(topic, body));
    }
  }
  EXPECT_EQ(phone->request("account.list").message, "");
}

TEST(Contract, NamesTheRightOfEachTopic) {
  for (const auto& [topic, right] : describedRights()) {
    if (topic == "login") continue;
    EXPECT_EQ(terminal::findRightsFault(terminal::Rights::read(right), terminal::findTopic(topic)), "") << topic;
    EXPECT_EQ(terminal::findTopic(topic).changesSomething(), right != "see") << topic;
  }
}

TEST(Contract, AcceptsItsExamples) {
  rapidjson::Document document;
  document.Parse(readFile(std::filesystem::path(CONTRACT_DIR) / "contract/examples.json").c_str());
  const rapidjson::Value& examples = document;
  for (const auto& example : examples["topics"].GetObject()) {
    EXPECT_EQ(findRequestFault(example.value["request"].GetString()), "");
    EXPECT_EQ(findAnswerFault(example.value["reply"].GetString()), "");
  }
  for (const auto& push : examples["pushes"].GetObject()) EXPECT_EQ(findAnswerFault(push.value.GetString()), "");
}

TEST(Contract, TellsWhatIsNotAsDescribed) {
  struct Row {
    std::string frame;
    std::string fault;
  };
  const std::string rate = R"("rate":[{"hashCode":1,"marginRate":0.1}]}]})";
  const std::string reply = R"({"id":1,"topic":"marginrate.list","message":"","data":[{"index":1,"accountStatus":1,)";
  const std::vector<Row> rows{
      {reply + rate, ""},
      {reply + R"("more":1,)" + rate, R"(marginrate.list.reply.json: "additionalProperties" is broken at #/0)"},
      {reply + R"("rate":[{"hashCode":1}]}]})", R"("required" is broken at #/0/rate/0: {"hashCode":1})"},
      {reply + R"("rate":[{"hashCode":1.0,"marginRate":0}]}]})", R"("type" is broken at #/0/rate/0/hashCode: 1.0)"},
      {R"({"id":1,"topic":"new.list","message":"","data":[]})", R"(no topic is described whose reply is "new.list")"},
      {R"({"id":1,"topic":"monitor.list","message":"","data":[{}]})", "monitor.manual.list.reply.json"},
      {R"({"id":1,"topic":"order.condition.list","message":"","data":null})", R"("not" is broken at #)"},
      {R"({"id":1,"topic":"x","message":"why","data":[]})", R"(frame.failure.json: "type" is broken at #/data)"},
      {R"({"seq":0,"topic":"order.push","message":"","data":[]})", R"(frame.push.json: "minimum" is broken at #/seq)"},
      {R"({"seq":1,"topic":"new.push","message":"","data":[]})", "there is no docs/schemas/new.push.push.json"},
  };
  for (const Row& row : rows) {
    const std::string fault = findAnswerFault(row.frame);
    EXPECT_EQ(fault.empty(), row.fault.empty());
    EXPECT_THAT(fault, HasSubstr(row.fault));
  }
}

}  // namespace
}  // namespace orvane::test
