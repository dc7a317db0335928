#include <fstream>
#include <regex>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <sys/stat.h>

#include "tests/support/holdssoon.h"
#include "tests/support/orderclients.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(IdentityTest, MakesListsAndRevokesTokens) {
  FreshTerminal terminal;
  const std::string link = fmt::format("http://127.0.0.1:{}/#token=", terminal.port());
  const Outcome added = terminal.run({"token", "add", "tablet", "--rights", "see,cancel"});
  const std::string token = added.output.substr(0, 43);
  EXPECT_EQ(added.output, token + '\n' + link + token + '\n');
  const auto phone = terminal.login(token);
  EXPECT_THAT(terminal.run({"token", "list"}).output,
              MatchesRegex("name +rights +made +lastUsed *\nfirst +see,cancel,trade .*"
                           "\ntablet +see,cancel +202[0-9T:-]+ +202[0-9T:-]+ *\n"));
  for (const auto& entry : std::filesystem::directory_iterator(terminal.dir())) {
    EXPECT_THAT(readFile(entry.path()), Not(HasSubstr(token))) << entry.path();
    EXPECT_THAT(readFile(entry.path()), Not(HasSubstr(terminal.token()))) << entry.path();
  }
  EXPECT_EQ(terminal.run({"token", "revoke", "tablet"}).exitCode, 0);
  EXPECT_EQ(phone->waitClose(), 4403);
  Client refused(terminal.port());
  EXPECT_THROW(refused.login(token), terminal::ClientError);
  EXPECT_THAT(terminal.run({"token", "list"}).output, Not(HasSubstr("tablet")));

  ASSERT_EQ(terminal.stop(), 0);
  TerminalProcess again(terminal.dir());
  EXPECT_NE(again.token(), terminal.token());
  EXPECT_EQ(again.login(terminal.token())->request("account.list").message, "");
}

TEST(IdentityTest, EndsItsSessionsAndKeepsItsDatabasePrivate) {
  const TempDir dir;
  TerminalProcess terminal(dir.path() / "data");
  const auto phone = terminal.login();
  const FreshTerminal impatient({"--login-timeout", "0.1"});
  EXPECT_EQ(Client(impatient.port()).waitClose(), 4401) << "there was no login";
  struct stat database {};
  ASSERT_EQ(stat((terminal.dir() / "gateway.db").c_str(), &database), 0);
  EXPECT_EQ(database.st_mode & 0777, 0600U);
  EXPECT_EQ(terminal.stop(), 0);
  EXPECT_EQ(phone->waitClose(), 1001);
  EXPECT_THAT(terminal.log(), HasSubstr("[INFO] Gateway phone 1 is logged in as first from 127.0.0.1\n"));
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

TEST(IdentityTest, LeavesAnAuditLineForEachAction) {
  const FreshTerminal terminal;
  const std::filesystem::path file = terminal.dir() / "audit.log";
  const auto phone = terminal.login();
  phone->request("account.list");
  EXPECT_EQ(phone->request("order.new", orderData("x")).message, "");
  EXPECT_NE(phone->request("order.cancel", "[\n{ \"index\":\r\n1,\"\\u0000\":\"\\n\"}]").message, "");
  const auto reader = terminal.login(terminal.makeToken("reader", "see"));
  reader->request("monitor.manual.clean", "[]");
  const std::vector<std::string> lines{"- token.add answered", "first order.new answered",
                                       "first order.cancel answered", "- token.add answered",
                                       "reader monitor.manual.clean refused"};
  EXPECT_TRUE(holdsSoon([&] { return auditLines(file).size() >= lines.size(); }));
  EXPECT_EQ(auditLines(file), lines);
}

}  // namespace
}  // namespace orvane::test
