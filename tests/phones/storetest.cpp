#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "terminal/logging.h"
#include "tests/phones/phonesfixture.h"
#include "tests/support/logcapture.h"

namespace orvane::test {
namespace {

using testing::ContainsRegex;
using testing::Each;
using testing::Not;

// How the disk and the clock affect clients: locks, limits, jumps, revocations.
class StoreTest : public PhonesTest {
 protected:
  std::string audit(const std::string& name = "audit.log") const {
    std::ifstream file(dir_.path() / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // How often this was logged.
  size_t logged(const std::string& text) const {
    size_t count = 0;
    const std::string log = log_.text();
    for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
    return count;
  }

  int count(const std::string& table) { return db_.execAndGet("SELECT count(*) FROM " + table).getInt(); }

  LogCapture log_{terminal::gatewayLogger(), log4cxx::Level::getDebug()};
};

TEST_F(StoreTest, RefusesActionsWhileTheDatabaseIsLocked) {
  const auto session = client(token_);
  const auto other = client(token_);
  db_.exec("BEGIN IMMEDIATE");
  order(session, 1, "k1");
  send(session, R"({"id":2,"topic":"account.list"})");  // stays behind its order
  send(other, R"({"id":3,"topic":"account.list"})");
  ASSERT_THAT(agent_->requests, SizeIs(1));
  reply(0, "1");
  EXPECT_THAT(other->take(), SizeIs(1));
  advance(400ms);
  EXPECT_EQ(get("/health/ready").status, 200U);
  advance(100ms);
  EXPECT_EQ(get("/health/ready").status, 503U);
  advance(2400ms);
  EXPECT_THAT(session->take(), IsEmpty());
  advance(100ms);
  EXPECT_THAT(session->take(), ElementsAre(AllOf(HasSubstr(R"("id":1,)"), HasSubstr("so it is not carried out: "),
                                                 HasSubstr("gateway.db: database is locked; end the program"))));
  EXPECT_THAT(get("/health/ready"), testing::Field(&terminal::Page::status, 503U));
  EXPECT_EQ(agent_->requests.size(), 2U);  // the list behind it
  db_.exec("ROLLBACK");
  advance(1s);
  EXPECT_EQ(get("/health/ready").status, 200U);
  order(session, 4, "k1");
  EXPECT_EQ(agent_->requests.back().topic, "order.new");
  EXPECT_EQ(logged("gateway.db: database is locked; end the program"), 1U);
  EXPECT_EQ(logged("gateway.db can be written again\n"), 1U);
}

// A client whose reply was lost must not take its order for refused.
TEST_F(StoreTest, AnswersAKeyThatWasUsedWhileNothingCanBeStored) {
  const auto session = client(token_);
  for (int id = 1; id <= 3; ++id) order(session, id, fmt::format("k{}", id));
  reply(0, "[7]");
  session->take();
  db_.exec("BEGIN IMMEDIATE");
  reply(1, "[8]");
  EXPECT_THAT(session->take(), ElementsAre(HasSubstr("[8]"))) << "although it is not stored";
  for (const char* key : {"k1", "k3", "k4"}) order(session, 4, key);
  advance(3s);
  EXPECT_THAT(session->take(), ElementsAre(HasSubstr(R"({"id":4,"topic":"order.new","message":"","data":[7]})"),
                                           HasSubstr("so it is not carried out: cannot use ")));
  order(session, 5, "k2");
  EXPECT_THAT(session->take(), IsEmpty());
  db_.exec("ROLLBACK");
  reply(2, "[9]");
  EXPECT_THAT(session->take(),
              ElementsAre(HasSubstr(R"("id":3,)"), HasSubstr(R"({"id":4,"topic":"order.new","message":"","data":[9]})"),
                          HasSubstr(R"({"id":5,"topic":"order.new","message":"","data":[8]})")));
  EXPECT_THAT(agent_->requests, SizeIs(3));
}

TEST_F(StoreTest, KeepsAuditLinesWhileTheFileIsLocked) {
  const auto session = client(token_);
  order(session, 1, "k1");
  reply(0, "1");
  const int file = open((dir_.path() / "audit.log").c_str(), O_RDONLY);
  ASSERT_EQ(flock(file, LOCK_SH), 0);
  order(session, 2, "k2");
  reply(1, "2");
  constexpr const char* kKept = "; the lines are kept in gateway.db meanwhile\n";
  EXPECT_EQ(logged(kKept), 1U);
  send(session, R"({"id":3,"topic":"order.new","data":{"x":"no key"}})");
  reply(2, "3");
  EXPECT_THAT(session->take(), SizeIs(3));
  EXPECT_THAT(get("/health").body, HasSubstr(R"("audit:writes":[{"status":"warn","output":"cannot write)"));
  EXPECT_EQ(get("/health/ready").status, 200U);
  EXPECT_THAT(audit(), Not(HasSubstr(R"("k2")")));
  close(file);
  advance(1s);
  EXPECT_EQ(logged(kKept), 1U);
  EXPECT_EQ(logged("audit.log can be written again\n"), 1U);
  EXPECT_THAT(audit(), AllOf(HasSubstr(R"("key":"k2","outcome":"answered")"), HasSubstr("no key")));
  EXPECT_EQ(count("action"), 2);
  EXPECT_EQ(get("/health").status, 200U);
}

TEST_F(StoreTest, LogsWhatItCannotKeep) {
  const auto reader = client(addToken("reader", "see"));
  for (const char* end : {"xx", "xxx"}) order(reader, 1, "k1", "[\"" + std::string(1018, 'x') + end + "\"]");
  EXPECT_THAT(audit(), AllOf(HasSubstr(R"("body":["xxx)"), HasSubstr(R"("body":null)")));
  const int file = open((dir_.path() / "audit.log").c_str(), O_RDONLY);
  ASSERT_EQ(flock(file, LOCK_SH), 0);
  db_.exec("BEGIN IMMEDIATE");
  order(reader, 2, "k2");
  login(token_);
  advance(3s);
  close(file);
  EXPECT_THAT(log_.text(),
              ContainsRegex("the audit lacks \\{.*\"key\":\"k2\".*: cannot use .*gateway.db: database is locked"));
  EXPECT_EQ(logged("the use of a token is not stored: cannot use "), 1U);
}

TEST_F(StoreTest, SumsUpTheRefusalsOfEachTokenAtTheEnd) {
  const auto reader = client(addToken("reader", "see"));
  for (int i = 0; i < 11; ++i) order(reader, i, "k");
  order(client(addToken("other", "see")), 1, "k");
  phones_.stop();
  settle();
  EXPECT_THAT(audit(),
              ContainsRegex("\"token\":\"reader\"[^\n]*1 more requests of this token were refused within a second"));
}

TEST_F(StoreTest, KeepsAsManyAuditFilesAsItMay) {
  const auto session = client(token_);
  const std::string data = "{\"x\":\"" + std::string(900, 'x') + "\"}";
  for (int i = 0; i < 12; ++i) {
    order(session, i, fmt::format("k{}", i), data);
    reply(static_cast<size_t>(i), "1");
  }
  EXPECT_THAT(audit(), HasSubstr("k11"));
  EXPECT_THAT(audit("audit.log.1"), HasSubstr("k10"));
  EXPECT_THAT(audit("audit.log.2"), HasSubstr("k9"));
  EXPECT_FALSE(std::filesystem::exists(dir_.path() / "audit.log.3"));

  std::filesystem::remove(dir_.path() / "audit.log.1");
  std::filesystem::create_directory(dir_.path() / "audit.log.1");
  order(session, 12, "k12", data);
  reply(12, "1");
  EXPECT_THAT(get("/health").body, HasSubstr("audit.log: Not a directory; let the folder's owner write to it\""));
  EXPECT_THAT(audit(), HasSubstr("k11"));
}

TEST_F(StoreTest, TakesNoKeysBeyondTheLimit) {
  const auto session = client(token_);
  const std::string big = '"' + std::string(100'000, 'x') + '"';
  std::string answer;
  size_t taken = 0;
  for (; taken < 20 && answer.find("limit") == std::string::npos; ++taken) {
    order(session, 1, fmt::format("k{}", taken));
    if (agent_->requests.size() > taken) reply(taken, big);
    answer = session->take().at(0);
  }
  EXPECT_THAT(answer, HasSubstr("gateway.db has reached its limit, so it takes no more keys: start the terminal with a "
                                "larger --gateway-size than 1 MiB"));
  EXPECT_GE(taken, 10U);
  send(session, R"({"id":2,"topic":"order.new","data":{}})");
  EXPECT_EQ(agent_->requests.back().data, "{}");
}

TEST_F(StoreTest, KeepsKeysAfterAJumpOfTheClock) {
  const auto session = client(token_);
  order(session, 1, "k1");
  reply(0, "1");
  loop_.time.jump(24h * 8);
  advance(2min);
  EXPECT_THAT(
      get("/health").body,
      HasSubstr(R"("clock:keys":[{"status":"warn","output":"the wall clock jumped by 11520 minutes: keys are not )"
                "deleted until it is set right or the terminal is restarted"));
  order(session, 2, "k1");
  EXPECT_THAT(agent_->requests, SizeIs(1));

  // Started anew, the boot clock still says that the key is young.
  terminal::GatewayStore again({.dataDir = dir_.path(), .audit = {}}, loop_);
  again.turn();
  EXPECT_EQ(count("action"), 1);

  // After a start of the machine it does not.
  EXPECT_THAT(db_.execAndGet("SELECT id FROM boot").getString(), SizeIs(36));
  db_.exec("UPDATE boot SET id = 'earlier'");
  terminal::GatewayStore afterBoot({.dataDir = dir_.path(), .audit = {}}, loop_);
  afterBoot.turn();
  EXPECT_EQ(count("action"), 0);
  loop_.time.jump(-24h * 8);
  advance(1s);
  EXPECT_THAT(get("/health").body, HasSubstr(R"("clock:keys":[{"status":"pass"}])"));
}

TEST_F(StoreTest, DropsWhatWaitsOfARevokedToken) {
  const auto session = client(addToken("lost", "trade"));
  for (int i = 0; i < 300; ++i) order(session, i, fmt::format("k{}", i));
  ASSERT_THAT(agent_->requests, SizeIs(64));
  addToken("idle", "trade");
  const int64_t revocation = terminal::revokeToken(db_, "lost");
  const int64_t idle = terminal::revokeToken(db_, "idle");
  advance(100ms);
  EXPECT_EQ(session->closeCode(), CloseCode::NotEntitled);
  EXPECT_TRUE(terminal::isConfirmed(db_, idle));
  order(session, 300, "k300");
  EXPECT_FALSE(terminal::isConfirmed(db_, revocation));
  for (size_t i = 0; i < 64; ++i) reply(i, "1");
  EXPECT_TRUE(terminal::isConfirmed(db_, revocation));
  EXPECT_THAT(agent_->requests, SizeIs(64));
  EXPECT_THAT(audit() + audit("audit.log.1") + audit("audit.log.2"), HasSubstr(R"("outcome":"answered")"));
  EXPECT_EQ(count("action WHERE line IS NOT NULL OR due IS NOT NULL"), 0);
}

TEST_F(StoreTest, DropsAnActionWhoseTokenIsRevokedWhileItIsStored) {
  const auto session = client(addToken("lost", "trade"));
  phones_.onFrame(*session, orderFrame(1, "k1"));
  store_.turn();  // the answer is on its way
  const int64_t revocation = terminal::revokeToken(db_, "lost");
  advance(100ms);
  EXPECT_EQ(agent_->requests.size() + 1, terminal::isConfirmed(db_, revocation) ? 1U : 2U);
  const auto late = client(addToken("late", "trade"));
  phones_.onFrame(*late, orderFrame(1, "k1"));
  terminal::revokeToken(db_, "late");
  advance(100ms);
  settle();
  EXPECT_THAT(
      audit(),
      HasSubstr(R"("key":"k1","outcome":"refused","message":"the token was revoked: this request was not taken")"));
}

TEST_F(StoreTest, DrainsWithoutAnUnknownOutcome) {
  const auto session = client(token_);
  for (int i = 0; i < 66; ++i) order(session, i, fmt::format("k{}", i));
  bool isDrained = false;
  phones_.drain([&] { isDrained = true; });
  settle();
  EXPECT_THAT(session->take(), SizeIs(2));  // not taken
  order(session, 300, "k300");
  send(session, R"({"id":301,"topic":"account.list"})");
  EXPECT_THAT(session->take(), AllOf(SizeIs(2), Each(HasSubstr("the terminal stops: this request was not taken"))));
  for (size_t i = 0; i < 64; ++i) {
    EXPECT_FALSE(isDrained);
    reply(i, "1");
  }
  EXPECT_TRUE(isDrained);
  EXPECT_THAT(session->take(), SizeIs(64));
  store_.close();
  EXPECT_EQ(count("action WHERE line IS NOT NULL OR due IS NOT NULL"), 0);
  EXPECT_EQ(count("action WHERE reply_topic IS NOT NULL"), 64);
}

TEST_F(StoreTest, GivesUpALockedDatabaseAtTheEnd) {
  const auto session = client(token_);
  order(session, 1, "k1");
  db_.exec("BEGIN IMMEDIATE");
  reply(0, "1");
  store_.close();  // returns
  EXPECT_EQ(logged("gateway.db lacks the last replies, which the next start takes for unknown: "), 1U);
  db_.exec("ROLLBACK");
  terminal::GatewayStore again({.dataDir = dir_.path(), .audit = {}}, loop_);
  again.turn();
  again.turn();
  loop_.time.sleep(1s);
  again.turn();
  EXPECT_THAT(audit(), HasSubstr(R"("key":"k1","outcome":"answered")"));
}

}  // namespace
}  // namespace orvane::test
