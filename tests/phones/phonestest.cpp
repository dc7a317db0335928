#include <fmt/format.h>
#include <gmock/gmock.h>

#include "terminal/gatewaydatabase.h"
#include "terminal/phones/phones.h"
#include "tests/phones/fakes.h"
#include "tests/support/tempdir.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using terminal::CloseCode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// The side of clients without sockets, threads or waiting. The agent answers when the test says so.
class PhonesTest : public testing::Test {
 protected:
  using SessionPtr = std::shared_ptr<FakeSession>;

  PhonesTest() {
    phones_.agent().attach(agent_, &handle_);
    phones_.start();
  }

  SessionPtr connect(const std::string& address = "10.0.0.1") {
    auto session = std::make_shared<FakeSession>(address);
    phones_.onOpened(session);
    return session;
  }

  void send(const SessionPtr& session, const std::string& frame) { phones_.onFrame(*session, frame); }

  // `more` is further members of the login's frame.
  SessionPtr login(const std::string& token, const std::string& more = "") {
    const SessionPtr session = connect();
    send(session, fmt::format(R"({{"id":1,"topic":"login","token":"{}"{}}})", token, more));
    return session;
  }

  // Logged in, with the answer to that taken away.
  SessionPtr client(const std::string& token) {
    const SessionPtr session = login(token);
    session->sent.clear();
    return session;
  }

  void hangUp(const SessionPtr& session) { phones_.onClosed(*session); }

  void order(const SessionPtr& session, int id, const std::string& key, const std::string& data = "{}") {
    send(session, fmt::format(R"({{"id":{},"topic":"order.new","key":"{}","data":{}}})", id, key, data));
  }

  void deliver(MobileMessage message) {
    phones_.deliver(message);
    loop_.runPosted();
  }

  void push(const std::string& data) {
    MobileMessage message;
    message.topic = "order.push";
    message.data = data;
    deliver(message);
  }

  // The agent's reply to the request that it got as number `index`.
  void reply(size_t index, const std::string& data) {
    MobileMessage message;
    message.requestId = agent_->requests.at(index).id;
    message.topic = agent_->requests.at(index).topic;
    message.data = data;
    deliver(message);
  }

  terminal::Page get(const std::string& path, const std::string& authorization = "", bool isLoopback = true) {
    terminal::HttpRequest request;
    request.method = "GET";
    request.path = path;
    request.authorization = authorization;
    request.isLoopback = isLoopback;
    terminal::Page made;
    phones_.makePage(request, [&](const std::optional<terminal::Page>& page) { made = page.value(); });
    return made;
  }

  TempDir dir_;
  FakeLoop loop_;
  std::shared_ptr<FakeAgent> agent_ = std::make_shared<FakeAgent>();
  int32_t handle_ = 0;
  SQLite::Database db_ = terminal::openGatewayDatabase(dir_.path());
  const std::string token_ = terminal::addToken(db_, "first", terminal::Rights::all());
  terminal::Phones phones_{
      loop_, {.dataDir = dir_.path(), .probe = {}, .figures = [] { return terminal::TransportFigures{}; }}};
};

TEST_F(PhonesTest, AdmitsARightToken) {
  const auto session = login(token_);
  ASSERT_THAT(session->sent, SizeIs(1));
  EXPECT_THAT(session->sent[0], HasSubstr(R"("data":{"name":"first","rights":["see","cancel","trade"])"));
  EXPECT_TRUE(session->isAdmitted);
  loop_.advance(1min);
  EXPECT_FALSE(session->isClosing());
}

TEST_F(PhonesTest, EndsTheTimeForTheLogin) {
  const auto session = connect();
  loop_.advance(9999ms);
  EXPECT_FALSE(session->isClosing());
  loop_.advance(1ms);
  EXPECT_EQ(session->closeCode(), CloseCode::NoLogin);
}

TEST_F(PhonesTest, RefusesRequestsBeforeTheLogin) {
  const auto session = connect();
  send(session, R"({"id":1,"topic":"account.list"})");
  EXPECT_THAT(session->sent, ElementsAre(HasSubstr("log in first")));
  EXPECT_EQ(session->closeCode(), CloseCode::NoLogin);
  EXPECT_THAT(agent_->requests, IsEmpty());
}

TEST_F(PhonesTest, DelaysTheAnswerToAWrongToken) {
  const auto session = login("guess");
  send(session, fmt::format(R"({{"id":2,"topic":"login","token":"{}"}})", token_));
  loop_.advance(999ms);
  EXPECT_THAT(session->sent, IsEmpty());
  loop_.advance(1ms);
  EXPECT_THAT(session->sent, ElementsAre(HasSubstr(R"({"id":1,"topic":"login","message":"wrong token)")));
  EXPECT_EQ(session->closeCode(), CloseCode::NoLogin);
}

TEST_F(PhonesTest, ForgetsThePenaltyOfAClientThatHasGone) {
  const auto session = login("guess");
  hangUp(session);
  loop_.advance(1min);
  EXPECT_THAT(session->sent, IsEmpty());
}

TEST_F(PhonesTest, LimitsWrongTokensOfOneNetworkForAMinute) {
  for (int i = 0; i < 10; ++i) EXPECT_FALSE(login("guess")->isClosing()) << i;
  EXPECT_EQ(login("guess")->closeCode(), CloseCode::TooMany);
  EXPECT_TRUE(login(token_)->isAdmitted);
  const auto elsewhere = connect("10.0.0.2");
  send(elsewhere, R"({"topic":"login","token":"guess"})");
  EXPECT_FALSE(elsewhere->isClosing());
  loop_.advance(59s);
  EXPECT_EQ(login("guess")->closeCode(), CloseCode::TooMany);
  loop_.advance(1s);
  EXPECT_FALSE(login("guess")->isClosing());
}

TEST_F(PhonesTest, ReplacesTheOlderSessionOfADevice) {
  const auto older = login(token_, R"(,"device":"a1")");
  const auto other = login(token_, R"(,"device":"a2")");
  const auto newer = login(token_, R"(,"device":"a1")");
  EXPECT_EQ(older->closeCode(), CloseCode::Replaced);
  EXPECT_FALSE(other->isClosing() || newer->isClosing());
}

TEST_F(PhonesTest, ResumesAfterTheLastPushThatWasSeen) {
  const auto first = login(token_);
  const std::string epoch = first->sent[0].substr(first->sent[0].find("epoch") + 8, 16);
  for (const char* data : {"1", "2", "3"}) push(data);
  const auto again = login(token_, fmt::format(R"(,"resume":{{"epoch":"{}","seq":1}})", epoch));
  EXPECT_THAT(again->sent, ElementsAre(HasSubstr(R"("seq":3,"resumed":true)"), HasSubstr(R"({"seq":2,)"),
                                       HasSubstr(R"({"seq":3,)")));
  const auto stranger = login(token_, R"(,"resume":{"epoch":"0","seq":1})");
  EXPECT_THAT(stranger->sent, ElementsAre(HasSubstr(R"("resumed":false)")));
}

TEST_F(PhonesTest, RunsAKeyOnceAndAnswersAllThatSentIt) {
  const auto session = client(token_);
  order(session, 1, "a17");
  order(session, 2, "a17");
  order(session, 3, "a17", "[]");  // the body's gate comes first
  ASSERT_THAT(agent_->requests, SizeIs(1));
  EXPECT_THAT(session->sent, ElementsAre(HasSubstr(R"({"id":3,"topic":"order.new","message":"data must be)")));
  session->sent.clear();

  const auto elsewhere = client(token_);
  order(elsewhere, 4, "a17", R"({"x":1})");
  EXPECT_THAT(elsewhere->sent, ElementsAre(HasSubstr("the key a17 belongs to another request")));
  hangUp(elsewhere);

  reply(0, "[7]");
  const std::string tail = R"(,"topic":"order.new","message":"","data":[7]})";
  EXPECT_THAT(session->sent, ElementsAre(R"({"id":1)" + tail, R"({"id":2)" + tail));
  order(session, 5, "a17");
  EXPECT_EQ(session->sent.back(), R"({"id":5)" + tail);
  EXPECT_THAT(agent_->requests, SizeIs(1));
}

TEST_F(PhonesTest, ForgetsAKeyAfterSevenDays) {
  const auto session = client(token_);
  order(session, 1, "a17");
  reply(0, "1");
  loop_.jump(24h * 7 - 1s);
  loop_.advance(1s);
  order(session, 2, "a17");
  EXPECT_THAT(agent_->requests, SizeIs(1));
  loop_.jump(1h);
  loop_.advance(1s);
  order(session, 3, "a17");
  EXPECT_THAT(agent_->requests, SizeIs(2));
}

TEST_F(PhonesTest, DoesNotUseUpTheKeyOfARefusedRequest) {
  const auto reader = client(terminal::addToken(db_, "reader", terminal::Rights::read("see")));
  order(reader, 1, "a17");
  const auto session = client(token_);
  send(session, R"({"id":2,"topic":"account.list","key":"a17"})");
  order(session, 3, "a17", "7");
  EXPECT_THAT(reader->sent, ElementsAre(HasSubstr("this token may not trade")));
  EXPECT_THAT(session->sent, ElementsAre(HasSubstr("only a request that changes something takes a key"),
                                         HasSubstr("data must be an object")));
  order(session, 4, "a17");
  EXPECT_THAT(agent_->requests, SizeIs(1));
}

TEST_F(PhonesTest, RunsAnActionWhoseClientHasGone) {
  const auto session = client(token_);
  for (int i = 0; i < 40; ++i) send(session, R"({"topic":"account.list"})");
  order(session, 1, "a17");
  ASSERT_THAT(agent_->requests, SizeIs(32));
  hangUp(session);
  for (size_t i = 0; i < 32; ++i) reply(i, "1");
  ASSERT_THAT(agent_->requests, SizeIs(33));
  EXPECT_EQ(agent_->requests.back().topic, "order.new");
}

TEST_F(PhonesTest, RefusesACrowdAndClosesAClientThatDoesNotStop) {
  const auto session = client(token_);
  const auto ask = [&] { send(session, R"({"id":1,"topic":"account.list"})"); };
  for (int i = 0; i < 1024; ++i) ask();
  EXPECT_THAT(session->sent, IsEmpty());
  EXPECT_THAT(agent_->requests, SizeIs(32));
  ask();
  EXPECT_THAT(session->sent, ElementsAre(HasSubstr("1024 requests wait for their reply already")));
  EXPECT_THAT(get("/metrics").body, HasSubstr("refusals_total{reason=\"crowd\"} 1\n"));
  for (int i = 1; i < 1023; ++i) ask();
  EXPECT_FALSE(session->isClosing());
  ask();
  EXPECT_EQ(session->closeCode(), CloseCode::TooMany);
}

TEST_F(PhonesTest, ServesTokensInTurn) {
  const auto busy = client(token_);
  const auto calm = client(terminal::addToken(db_, "calm", terminal::Rights::all()));
  for (int i = 0; i < 100; ++i) send(busy, R"({"topic":"account.list"})");
  send(calm, R"({"topic":"position.list","data":[0]})");
  reply(0, "1");
  reply(1, "1");
  const std::vector<std::string> next{agent_->requests.at(32).topic, agent_->requests.at(33).topic};
  EXPECT_THAT(next, testing::UnorderedElementsAre("account.list", "position.list"));
}

TEST_F(PhonesTest, RefusesWithoutAnAgent) {
  ASSERT_EQ(phones_.agent().detach(handle_).code, 0);
  const auto session = client(token_);
  order(session, 1, "a17");
  EXPECT_THAT(session->sent, ElementsAre(HasSubstr("this one was not taken")));
  phones_.agent().attach(agent_, &handle_);
  order(session, 2, "a17");
  EXPECT_THAT(agent_->requests, SizeIs(1));
}

TEST_F(PhonesTest, ClosesTheClientsOfARevokedTokenAtTheNextTick) {
  const std::string other = terminal::addToken(db_, "other", terminal::Rights::all());
  const auto session = login(other);
  const auto kept = login(token_);
  terminal::revokeToken(db_, "other");
  loop_.advance(999ms);
  EXPECT_FALSE(session->isClosing());
  loop_.advance(1ms);
  EXPECT_EQ(session->closeCode(), CloseCode::NotEntitled);
  EXPECT_FALSE(kept->isClosing());
}

TEST_F(PhonesTest, ReportsAnAgentThatDoesNotAnswer) {
  const auto session = client(token_);
  send(session, R"({"topic":"account.list"})");
  loop_.advance(10s);
  EXPECT_EQ(get("/health/ready").status, 200U);
  loop_.advance(1ms);
  EXPECT_EQ(get("/health/ready").status, 503U);
  reply(0, "1");
  EXPECT_EQ(get("/health/ready").status, 200U);
}

TEST_F(PhonesTest, ShowsMetricsElsewhereOnlyToATokenThatMaySee) {
  const auto status = [this](const std::string& authorization) { return get("/metrics", authorization, false).status; };
  EXPECT_EQ(status(""), 401U);
  EXPECT_EQ(status("Bearer guess"), 401U);
  EXPECT_EQ(status("Bearer " + terminal::addToken(db_, "trader", terminal::Rights::read("trade"))), 401U);
  EXPECT_EQ(status("Bearer " + token_), 200U);
}

}  // namespace
}  // namespace orvane::test
