#include "terminal/json.h"
#include "tests/phones/phonesfixture.h"

namespace orvane::test {
namespace {

std::string refusal(const std::string& id, const std::string& topic, const std::string& message) {
  return fmt::format(R"({{"id":{},"topic":"{}","message":{},"data":null}})", id, topic, terminal::jsonString(message));
}

TEST_F(PhonesTest, RefusesFramesWithTheReason) {
  struct Row {
    std::string frame;
    std::string id;
    std::string topic;
    std::string message;
  };
  const std::string hint = R"(; expected one such as {"id": 7, "topic": "capital.list", "data": [0, 3]})";
  const std::string deep(100000, '[');
  const std::string topicRule = R"(the frame's "topic" must be 1 to 64 printable ASCII characters)";
  const std::vector<Row> rows{
      {"", "null", "", "the frame cannot be read: The document is empty. at byte 0" + hint},
      {"7", "null", "", "a frame must be an object, not a number" + hint},
      {"[7]", "null", "", "a frame must be an object, not an array" + hint},
      {R"({"id":7,"topic":"x")", "7", "x",
       "the frame cannot be read: Missing a comma or '}' after an object member. at byte 19" + hint},
      {R"({"id":7,"topic":"x"} {})", "7", "x",
       "the frame cannot be read: The document root must not be followed by other values. at byte 21" + hint},
      {std::string("{\"id\":7,\"topic\":\"account.list\"}\0", 32), "7", "account.list",
       "the frame cannot be read: A NUL follows the value." + hint},
      {R"({"id":7,"id":8,"topic":"x"})", "7", "", R"(the frame cannot be read: "id" appears twice, at byte 12)" + hint},
      {R"({"topic":"x","id":[7]})", "null", "x", R"(the frame's "id" must be a string or a number, not an array)"},
      {R"({ "id" : 1.50e+3 })", "1.50e+3", "", R"(the frame's "topic" must be a string, not nothing)"},  // as written
      {R"({"id":"a\"\u4e2d,"})", R"("a\"\u4e2d,")", "", R"(the frame's "topic" must be a string, not nothing)"},
      {R"({"id":7})", "7", "", R"(the frame's "topic" must be a string, not nothing)"},
      {R"({"id":7,"topic":null})", "7", "", R"(the frame's "topic" must be a string, not null)"},
      {R"({"id":7,"topic":""})", "7", "", topicRule},
      {R"({"id":7,"topic":"a\u0000b"})", "7", "", topicRule},
      {R"({"id":7,"topic":"中"})", "7", "", topicRule},
      {R"({"id":7,"topic":")" + std::string(65, 'x') + "\"}", "7", "", topicRule},
      {R"({"id":7,"topic":"x","token":{}})", "7", "x", R"(the frame's "token" must be a string, not an object)"},
      {R"({"id":7,"topic":"x","key":"a b"})", "7", "x",
       R"(the frame's "key" must be a string of 1 to 64 characters from A-Z a-z 0-9 . _ -)"},
      {R"({"id":7,"topic":"x","device":")" + std::string(65, 'x') + "\"}", "7", "x",
       R"(the frame's "device" has more than 64 bytes)"},
      {R"({"id":7,"topic":"x","terminalType":8.0})", "7", "x",
       R"(the frame's "terminalType" must be a whole number of 32 bits, not 8.0)"},
      {R"({"id":7,"topic":"x","data":)" + deep, "7", "x",
       "the frame cannot be read: Invalid value. at byte 100027" + hint},
      {R"({"id":7,"topic":"x","data":1e999})", "7", "x",
       "the frame cannot be read: Number too big to be stored in double. at byte 27" + hint},
  };
  const auto session = client(token_);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.frame.substr(0, 100));
    send(session, row.frame);
    EXPECT_THAT(session->take(), ElementsAre(refusal(row.id, row.topic, row.message)));
  }
  EXPECT_THAT(agent_->requests, IsEmpty());
}

// The library would end the process over some of these bodies.
TEST_F(PhonesTest, RefusesBodiesWithTheReason) {
  struct Row {
    std::string topic;
    std::string data;
    std::string message;
  };
  const std::vector<Row> rows{
      {"order.new", "[]", R"(data must be an object with the array "orderList", not an array)"},
      {"order.new", "null", R"(data must be an object with the array "orderList", not null)"},
      {"order.new", R"({"orderList":[{},7]})", "element 2 of orderList must be an object, not a number"},
      {"order.new", R"({"a":[1],"order\u004cist":[[{}]]})", "element 1 of orderList must be an object, not an array"},
      {"order.cancel", "[true]", "element 1 of data must be an object, not true or false"},
      {"monitor.sync.order.list", "[1]", "element 1 of data must be an object, not a number"},
      {"monitor.sync.order.new", "[{},null]", "element 2 of data must be an object, not null"},
      {"monitor.manual.list", "[[]]", "element 1 of data must be an object, not an array"},
      {"monitor.manual.update", "[\"\"]", "element 1 of data must be an object, not a string"},
      {"monitor.manual.clean", "[1]", "element 1 of data must be an object, not a number"},
      {"marginrate.list", "[1]", "element 1 of data must be an object, not a number"},
      {"monitor.list", ones(1001), "data has more than 1000 elements: ask in parts"},
      {"order.new", R"({"orderList":)" + ones(1001) + "}", "element 1 of orderList must be an object, not a number"},
  };
  const auto session = client(token_);
  for (const Row& row : rows) {
    EXPECT_EQ(ask(session, row.topic, row.data), refusal("7", row.topic, row.message)) << row.data.substr(0, 80);
  }
  EXPECT_THAT(agent_->requests, IsEmpty());

  const std::vector<std::pair<std::string, std::string>> harmless{
      {"order.new", R"({"orderList":7,"orderList":[1]})"},
      {"order.new", R"({"orderList":[{"side":[1]}],"orderList":[1]})"},
      {"order.new", R"({"a":{"orderList":[1]},"b":[1]})"},
      {"order.cancel", "{}"},
      {"order.cancel", R"([{"index":[1]}])"},
      {"monitor.list", ones(1000)},
      {"position.list", "[{}]"},
      {" ~" + std::string(62, 'x'), "[{}]"},
  };
  for (const auto& [topic, data] : harmless) {
    send(session, fmt::format(R"({{"id":7,"topic":"{}","data":{}}})", topic, data));
    EXPECT_THAT(session->take(), IsEmpty()) << topic << ' ' << data.substr(0, 80);
    EXPECT_EQ(agent_->requests.back().topic + agent_->requests.back().data, topic + data);
  }
  EXPECT_THAT(agent_->requests, SizeIs(harmless.size()));
}

TEST_F(PhonesTest, HoldsFramesWhileTheTokensAreRead) {
  const auto session = connect();
  phones_.onFrame(*session, fmt::format(R"({{"id":1,"topic":"login","token":"{}"}})", addToken("new", "see")));
  phones_.onFrame(*session, R"({"id":2,"topic":"account.list"})");
  EXPECT_THAT(session->sent, IsEmpty());
  settle();
  EXPECT_THAT(session->sent, ElementsAre(HasSubstr(R"("name":"new")")));
  EXPECT_THAT(agent_->requests, SizeIs(1));

  const auto gone = connect();
  phones_.onFrame(*gone, R"({"id":1,"topic":"login","token":"guess"})");
  hangUp(gone);
  settle();
  EXPECT_THAT(gone->sent, IsEmpty());

  for (const auto& [frames, bytes, isKept] :
       {std::tuple(256, 1, true), {257, 1, false}, {4, 64 * 1024, true}, {4, 64 * 1024 + 1, false}}) {
    const auto busy = connect();
    phones_.onFrame(*busy, R"({"id":1,"topic":"login","token":"guess"})");
    for (int i = 0; i < frames; ++i) phones_.onFrame(*busy, std::string(static_cast<size_t>(bytes), ' '));
    EXPECT_EQ(busy->closeCode() == CloseCode::TooMany, !isKept) << frames << " frames of " << bytes;
    settle();
  }
}

}  // namespace
}  // namespace orvane::test
