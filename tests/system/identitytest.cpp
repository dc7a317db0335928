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

}  // namespace
}  // namespace orvane::test
