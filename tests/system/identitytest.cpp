#include <fstream>
#include <regex>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/holdssoon.h"
#include "tests/support/orderclients.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using testing::HasSubstr;
using testing::MatchesRegex;

class IdentityTest : public testing::Test {
 protected:
  std::filesystem::path data() const { return dir_.path() / "data"; }
  Outcome run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--data", data().string()});
    return runTerminal(arguments);
  }

  TempDir dir_;
  TerminalProcess terminal_{data()};
};

TEST_F(IdentityTest, MakesListsAndRevokesTokens) {
  const std::string link = fmt::format("http://127.0.0.1:{}/#token=", terminal_.port());
  const Outcome added = run({"token", "add", "tablet", "--rights", "see,cancel"});
  const std::string token = added.output.substr(0, 43);
  EXPECT_EQ(added.output, token + '\n' + link + token + '\n');
  const auto phone = terminal_.login(token);
  EXPECT_THAT(run({"token", "list"}).output, MatchesRegex("name +rights +made +lastUsed *\nfirst +see,cancel,trade .*"
                                                          "\ntablet +see,cancel +202[0-9T:-]+ +202[0-9T:-]+ *\n"));
  for (const auto& entry : std::filesystem::directory_iterator(data())) {
    EXPECT_THAT(readFile(entry.path()), Not(HasSubstr(token))) << entry.path();
    EXPECT_THAT(readFile(entry.path()), Not(HasSubstr(terminal_.token()))) << entry.path();
  }
  EXPECT_EQ(run({"token", "revoke", "tablet"}).exitCode, 0);
  EXPECT_EQ(phone->waitClose(), 4403);
  Client refused(terminal_.port());
  EXPECT_THROW(refused.login(token), terminal::ClientError);
  EXPECT_THAT(run({"token", "list"}).output, Not(HasSubstr("tablet")));

  ASSERT_EQ(terminal_.stop(), 0);
  TerminalProcess again(data());
  EXPECT_NE(again.token(), terminal_.token());
  EXPECT_EQ(again.login(terminal_.token())->request("account.list").message, "");
}

TEST_F(IdentityTest, TellsMistakes) {
  struct Row {
    std::vector<std::string> arguments;
    int exitCode;
    std::string error;
  };
  const std::vector<Row> rows{
      {{"token", "add", "first", "--rights", "see"}, 1, R"(there is a token "first": revoke it first, or use)"},
      {{"token", "add", "a b", "--rights", "see"}, 1, R"("a b" is not a valid token name: use 1 to 64 characters)"},
      {{"token", "add", "x", "--rights", "see,sell"},
       2,
       R"("sell" is not a right: name one or more of see,cancel,trade)"},
      {{"token", "add", "x", "--rights", "see,"}, 2, R"("" is not a right)"},
      {{"token", "add", "x"}, 2, "--rights is required"},
      {{"token", "revoke", "x"}, 1, R"(there is no token "x": list them with pocket-terminal token list)"},
      {{"token"}, 2, "A subcommand is required"},
      {{"token", "list", "--data", "/dev/null"}, 1, "there is no /dev/null/gateway.db: start the terminal once"},
      {{"token", "add", "x", "--rights", "see", "--data", "/dev/null"}, 1, "cannot write to the folder /dev/null: "},
  };
  const auto check = [](const Row& row, const Outcome& outcome) {
    EXPECT_EQ(outcome.exitCode, row.exitCode) << testing::PrintToString(row.arguments);
    EXPECT_THAT(outcome.error, HasSubstr(row.error));
  };
  for (const Row& row : rows) {
    const bool hasData = row.arguments.size() > 2 && row.arguments[row.arguments.size() - 2] == "--data";
    check(row, hasData ? runTerminal(row.arguments) : run(row.arguments));
  }
  SQLite::Database(data() / "gateway.db", SQLite::OPEN_READWRITE).exec("PRAGMA user_version = 4");
  check({{}, 1, "gateway.db: its version is 4, this program reads version 3"}, run({"token", "list"}));
}

// Root makes the first token of a terminal that will run as a service.
TEST(Token, IsLeftToTheFoldersOwner) {
  if (geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  const NoLeakCheck noLeakCheck;
  constexpr uid_t kService = 65534;
  const TempDir dir;
  ASSERT_EQ(chown(dir.path().c_str(), kService, kService), 0);
  makeToken(dir.path(), "phone", "see");
  for (const char* name : {"gateway.db", "audit.log"}) {
    struct stat file {};
    ASSERT_EQ(stat((dir.path() / name).c_str(), &file), 0) << name;
    EXPECT_EQ(file.st_uid, kService) << name;
    EXPECT_EQ(file.st_mode & 0777, 0600U) << name;
  }
}

// "token topic outcome" of each line.
std::vector<std::string> auditLines(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string text; std::getline(stream, text);) {
    rapidjson::Document line;
    if (line.Parse(text.c_str()).HasParseError()) throw std::runtime_error("no JSON: " + text);
    const bool isWhole = std::regex_search(
        text, std::regex(R"re(^\{"time":"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d","token":.*)re"
                         R"re("address":"(127\.0\.0\.1|local)".*"body":.*"key":.*"message":".*"data":)re"));
    lines.push_back(fmt::format("{} {} {}{}", line["token"].IsNull() ? "-" : line["token"].GetString(),
                                line["topic"].GetString(), line["outcome"].GetString(), isWhole ? "" : "?"));
  }
  return lines;
}

TEST_F(IdentityTest, LeavesAnAuditLineForEachAction) {
  const std::filesystem::path file = data() / "audit.log";
  const auto phone = terminal_.login();
  phone->request("account.list");
  EXPECT_EQ(phone->request("order.new", orderData("x")).message, "");
  EXPECT_NE(phone->request("order.cancel", "[\n{ \"index\":\r\n1,\"\\u0000\":\"\\n\"}]").message, "");
  const auto reader = terminal_.login(makeToken(data(), "reader", "see"));
  reader->request("monitor.manual.clean", "[]");
  const std::vector<std::string> lines{"- token.add answered", "first order.new answered",
                                       "first order.cancel answered", "- token.add answered",
                                       "reader monitor.manual.clean refused"};
  EXPECT_TRUE(holdsSoon([&] { return auditLines(file).size() >= lines.size(); }));
  EXPECT_EQ(auditLines(file), lines);
}

TEST(SettingsFile, IsReadAndChecked) {
  struct Row {
    std::string text;
    std::string error;  // empty: the list of tokens is empty
  };
  const TempDir dir;
  const std::string file = (dir.path() / "terminal.toml").string();
  const std::string data = "data = \"" + dir.path().string() + "\"\n";
  const std::vector<Row> rows{
      {"# here\n" + data + "log-level = \"debug\"\nidle-timeout = 20\n",
       "there is no " + dir.path().string() + "/gateway.db"},
      {data + "colour = \"red\"\n", file + ": colour is not a setting"},
      {data + "[gateway]\nport = 1\n", file + ": gateway is not a setting"},
      {data + "[call]\ntoken = \"x\"\n", file + ": call.token is not a setting"},
      {data + "log-level = \"loud\"\n",
       "--log-level: loud not in {trace,debug,info,warn,error,off} (the settings file " + file},
      {data + "port = \"http\"\n", "Could not convert: --port = http (the settings file " + file},
  };
  for (const Row& row : rows) {
    std::ofstream(file) << row.text;
    EXPECT_THAT(runTerminal({"token", "list", "--config", file}).error, HasSubstr(row.error)) << row.text;
  }
  EXPECT_THAT(runTerminal({"--config", file + "x"}).error,
              HasSubstr("the settings file " + file + "x was not readable"));
}

}  // namespace
}  // namespace orvane::test
