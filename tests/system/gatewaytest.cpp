#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/holdssoon.h"
#include "tests/system/contract.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using terminal::Reply;
using testing::HasSubstr;
using testing::StartsWith;

class GatewayTest : public testing::Test {
 protected:
  TempDir dir_;
  TerminalProcess terminal_{dir_.path() / "data", {"--login-timeout", "1.5", "--log-level", "debug"}};
};

TEST_F(GatewayTest, EndsItsSessionsAndKeepsItsDatabasePrivate) {
  const auto phone = terminal_.login();
  struct stat database {};
  ASSERT_EQ(stat((dir_.path() / "data" / "gateway.db").c_str(), &database), 0);
  EXPECT_EQ(database.st_mode & 0777, 0600U);
  EXPECT_EQ(terminal_.stop(), 0);
  EXPECT_EQ(phone->waitClose(), 1001);
}

// The id is repeated as it was written.
TEST_F(GatewayTest, RepeatsTheIdOfAFrame) {
  struct Row {
    std::string frame;
    std::string id;
    std::string topic;
    std::string message;
  };
  const std::vector<Row> rows{
      {R"({ "id" : 1.50e+3 , "topic":"order.condition.list"})", "1.50e+3", "order.condition.list", "暂不支持条件单"},
      {R"({"topic":"order.condition.list","id":"a\"\u4e2d,"})", R"("a\"\u4e2d,")", "order.condition.list",
       "暂不支持条件单"},
      {R"({"topic":"order.condition.list"})", "null", "order.condition.list", "暂不支持条件单"},
      {R"({"id":7,"topic":"capital.list"})", "7", "unknown.topic", "invalid json string"},
  };
  const auto phone = terminal_.login();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.frame);
    phone->send(row.frame);
    const Reply reply = phone->receive();
    EXPECT_EQ(reply.id, row.id);
    EXPECT_EQ(reply.topic, row.topic);
    EXPECT_EQ(reply.message, row.message);
    EXPECT_EQ(reply.data, "null");
  }
}

// The gateway refuses the bodies that would end the process, and only those. Here is what the library then says to the
// nearest ones; it reads the first of repeated members.
TEST_F(GatewayTest, LetsHarmlessBodiesThrough) {
  struct Row {
    std::string topic;
    std::string data;
    std::string message;
  };
  const std::vector<Row> rows{
      {"order.new", R"({"orderList":7,"orderList":[1]})", "has no orderList member or not array"},
      {"order.new", R"({"orderList":[{"side":[1]}],"orderList":[1]})", "has no Index member or not int"},
      {"order.new", R"({"a":{"orderList":[1]},"b":[1]})", "has no orderList member or not array"},
      {"order.cancel", "{}", "has no Data member or not array"},
      {"order.cancel", R"([{"index":[1]}])", "has no index member or not int"},
      {"marginrate.list", R"([{"index":1,"hashCodes":["x"]}])", "hashCodes element not int64"},
      {"position.list", "[{}]", "Data member not array"},
  };
  const auto phone = terminal_.login();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.topic + " " + row.data);
    EXPECT_EQ(phone->request(row.topic, row.data).message, row.message);
  }
  EXPECT_EQ(terminal_.stop(), 0);
}

TEST_F(GatewayTest, ClosesWhoDoesNotLogIn) {
  struct Row {
    std::string first;
    std::string message;
  };
  const std::vector<Row> rows{
      {R"({"topic":"account.list"})", R"(log in first: {"topic": "login", "token": ...})"},
      {"x", "the frame cannot be read: Invalid value. at byte 0"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.first);
    CheckedClient phone(terminal_.port());
    phone.send(row.first);
    EXPECT_THAT(phone.receive().message, StartsWith(row.message));
    EXPECT_EQ(phone.waitClose(), 4401);
  }
  EXPECT_EQ(Client(terminal_.port()).waitClose(), 4401);
  EXPECT_EQ(terminal_.login()->request("account.list").message, "");
}

TEST_F(GatewayTest, ClosesWhoBreaksTheProtocol) {
  struct Row {
    std::string frame;
    bool asText;
    uint16_t code;
  };
  const std::vector<Row> rows{
      {"{\"topic\":\"\xD6\xD0\"}", true, 1007},
      {R"({"topic":"account.list"})", false, 1003},
      {std::string(256 * 1024 + 1, ' '), true, 1009},
  };
  for (const Row& row : rows) {
    const auto phone = terminal_.login();
    phone->send(row.frame, row.asText);
    EXPECT_EQ(phone->waitClose(), row.code);
  }
  EXPECT_EQ(terminal_.login()->request("account.list").message, "");
}

TEST_F(GatewayTest, KeepsConnectionsApart) {
  const auto one = terminal_.login();
  const auto two = terminal_.login();
  constexpr int kRequests = 100;
  for (int i = 0; i < kRequests; ++i) {
    const std::string id = std::to_string(i);
    one->send(R"({"id":)" + id + R"(,"topic":"capital.list","data":[1]})");
    two->send(R"({"id":)" + id + R"(,"topic":"account.list"})");
  }
  for (int i = 0; i < kRequests; ++i) {
    const Reply capital = one->receive();
    const Reply accounts = two->receive();
    ASSERT_EQ(capital.id, std::to_string(i));
    ASSERT_EQ(capital.topic, "capital.list");
    ASSERT_EQ(accounts.id, std::to_string(i));
    ASSERT_EQ(accounts.topic, "account.list");
  }
}

TEST_F(GatewayTest, PassesOtherTopicsOnBothWays) {
  const auto phone = terminal_.login();
  for (const int32_t terminalType : {8, 24}) {
    SCOPED_TRACE(terminalType);
    const Reply info = phone->request("terminal.info", {}, terminalType);
    EXPECT_EQ(info.topic, "terminal.info");
    EXPECT_THAT(info.data, HasSubstr(R"("quotes":"still")"));
    const Reply unknown = phone->request("no such \"topic\"", "{}", terminalType);
    EXPECT_THAT(unknown.message, HasSubstr("no such \"topic\""));
  }
  ASSERT_EQ(terminal_.stop(), 0);
  EXPECT_THAT(readFile(dir_.path() / "data" / "terminal.log"),
              HasSubstr("[INFO] Gateway phone 1 is logged in as first from 127.0.0.1\n"));
}

TEST_F(GatewayTest, CallTellsTheOutcome) {
  struct Row {
    std::vector<std::string> arguments;
    int exitCode;
    std::string output;
    std::string error;
  };
  const std::string port = std::to_string(terminal_.port());
  const std::string data = (dir_.path() / "data").string();
  const std::vector<Row> rows{
      {{"account.list", "--port", port, "--data", data}, 0, R"([{"userCode":"80010001",)", ""},
      {{"account.list", "--port", port, "--token", terminal_.token()}, 0, R"([{"userCode":"80010001",)", ""},
      {{"capital.list", "{}", "--port", port, "--data", data}, 1, "", "Data member not array\n"},
      {{"no.topic", "--terminal-type", "24", "--port", port, "--data", data}, 1, "", "未知的功能: no.topic\n"},
      {{"account.list", "--port", "1", "--data", data},
       2,
       "",
       "127.0.0.1:1: Connection refused\nIs the terminal running"},
      {{"account.list", "--port", port, "--token", "x"}, 2, "", "wrong token"},
      {{"account.list", "--port", port, "--data", data + "/none"}, 2, "", "/none/gateway.db: start the terminal once"},
      {{"capital.list", "[1", "--port", port},
       2,
       "",
       "not JSON: Missing a comma or ']' after an array element. at byte 2"},
      {{"--port", port}, 2, "", "TOPIC is required"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    std::vector<std::string> arguments{"call"};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    const Outcome outcome = runTerminal(arguments);
    EXPECT_EQ(outcome.exitCode, row.exitCode);
    EXPECT_THAT(outcome.output, StartsWith(row.output));
    EXPECT_THAT(outcome.error, HasSubstr(row.error));
  }
}

// So long that the library gets one at a time.
TEST_F(GatewayTest, AnswersManyLongRequests) {
  const auto phone = terminal_.login();
  const std::string body = "[1" + std::string(5000, ' ') + "]";
  for (int id = 1; id <= 40; ++id) {
    phone->send(fmt::format(R"({{"id":{},"topic":"capital.list","data":{}}})", id, id % 4 == 0 ? "[1]" : body));
  }
  for (int id = 1; id <= 40; ++id) EXPECT_EQ(phone->receive().id, std::to_string(id));
}

TEST_F(GatewayTest, SaysWhyItCannotStart) {
  const std::string port = std::to_string(terminal_.port());
  TempDir other;
  const Outcome taken = runTerminal({"--port", port, "--data", other.path().string()});
  EXPECT_EQ(taken.exitCode, 1);
  EXPECT_THAT(taken.error, HasSubstr("cannot listen on 127.0.0.1:" + port + ": Address already in use"));

  std::filesystem::permissions(other.path() / "gateway.db", std::filesystem::perms(0644));
  const Outcome shared = runTerminal({"--port", "0", "--data", other.path().string()});
  EXPECT_EQ(shared.exitCode, 1);
  EXPECT_THAT(shared.error, HasSubstr("other users can read it"));
}

// The answers repeat the long ids until neither the connection nor the send queue can hold more of them.
TEST(SlowPhone, IsDropped) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  const auto phone = terminal.login();
  const std::string frame = "{\"id\":\"" + std::string(200'000, 'x') + "\",\"topic\":\"order.condition.list\"}";
  ASSERT_TRUE(holdsSoon([&] {
    phone->send(frame);
    return readFile(dir.path() / "terminal.log").find("phone 1 reads too slowly") != std::string::npos;
  }));
  EXPECT_EQ(phone->waitClose(), 4408);
  EXPECT_EQ(terminal.login()->request("account.list").message, "");
}

// A client that does not read does not answer pings either.
TEST(DeadPhone, IsDropped) {
  const TempDir dir;
  TerminalProcess terminal(dir.path(), {"--idle-timeout", "0.2", "--log-level", "debug"});
  const auto dead = terminal.login();
  const auto alive = terminal.login();
  const std::filesystem::path log = dir.path() / "terminal.log";
  ASSERT_TRUE(holdsSoon([&] {
    EXPECT_EQ(alive->request("account.list").message, "");
    return readFile(log).find("phone 1 is gone") != std::string::npos;
  }));
  EXPECT_EQ(dead->waitClose(), 0);
}

}  // namespace
}  // namespace orvane::test
