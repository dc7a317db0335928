#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/holdssoon.h"
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
  TerminalProcess terminal_{dir_.path() / "data"};
};

TEST_F(GatewayTest, EndsItsSessionsAndKeepsItsDatabasePrivate) {
  const auto phone = terminal_.login();
  const TerminalProcess impatient(dir_.path() / "other", {"--login-timeout", "0.1"});
  EXPECT_EQ(Client(impatient.port()).waitClose(), 4401) << "there was no login";
  struct stat database {};
  ASSERT_EQ(stat((dir_.path() / "data" / "gateway.db").c_str(), &database), 0);
  EXPECT_EQ(database.st_mode & 0777, 0600U);
  EXPECT_EQ(terminal_.stop(), 0);
  EXPECT_EQ(phone->waitClose(), 1001);
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

}  // namespace
}  // namespace orvane::test
