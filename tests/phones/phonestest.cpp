#include "terminal/phones/mobileserver.h"
#include "tests/phones/phonesfixture.h"

namespace orvane::test {
namespace {

// Each login closes the one before, and none of them hangs up.
TEST_F(PhonesTest, DropsTheListsOfClosingClientsAndDoesNotCountThem) {
  const std::string device = R"(,"device":"a1")";
  const auto first = login(token_, device);
  for (int i = 0; i < 40; ++i) send(first, R"({"topic":"account.list"})");
  for (int i = 0; i < 84; ++i) login(token_, device);
  EXPECT_TRUE(login(token_, device)->isAdmitted);
  reply(0, "1");
  EXPECT_THAT(agent_->requests, SizeIs(32));
}

TEST_F(PhonesTest, ForgetsAKeyAfterSevenDays) {
  const auto session = client(token_);
  order(session, 1, "a17");
  reply(0, "1");
  loop_.time.sleep(24h * 7 - 1min);
  advance(1s);
  order(session, 2, "a17");
  EXPECT_THAT(agent_->requests, SizeIs(1));
  loop_.time.sleep(2min);
  advance(1s);
  order(session, 3, "a17");
  EXPECT_THAT(agent_->requests, SizeIs(2));
}

TEST_F(PhonesTest, RefusesACrowdAndClosesAClientThatDoesNotStop) {
  const auto session = client(token_);
  const auto ask = [&] { send(session, R"({"id":1,"topic":"account.list"})"); };
  for (int i = 0; i < 1024; ++i) ask();
  EXPECT_THAT(session->sent, IsEmpty());
  for (int i = 0; i < 1023; ++i) ask();
  EXPECT_FALSE(session->isClosing());
  for (size_t i = 0; i < 513; ++i) reply(i, "1");  // fewer than half are left: the client has waited
  for (int i = 0; i < 513 + 1023; ++i) ask();
  for (size_t i = 513; i < 513 + 512; ++i) reply(i, "1");  // half is left, which is not enough
  for (int i = 0; i < 512; ++i) ask();
  EXPECT_FALSE(session->isClosing());
  ask();
  EXPECT_EQ(session->closeCode(), CloseCode::TooMany);
}

// While other tokens are active, the agent gets at most two lists of a busy token, and actions of the others overtake
// the rest.
TEST_F(PhonesTest, ServesTokensInTurn) {
  const auto busy = client(token_);
  const auto calm = client(terminal::addToken(db_, "calm", terminal::Rights::all()));
  for (int i = 0; i < 100; ++i) send(busy, R"({"topic":"account.list"})");
  EXPECT_THAT(agent_->requests, SizeIs(2));
  send(calm, R"({"topic":"position.list","data":[0]})");
  order(calm, 1, "k1");
  ASSERT_THAT(agent_->requests, SizeIs(4));
  EXPECT_EQ(agent_->requests[2].topic, "position.list");
  EXPECT_EQ(agent_->requests[3].topic, "order.new");
  hangUp(calm);
  send(busy, R"({"topic":"account.list"})");
  EXPECT_THAT(agent_->requests, SizeIs(33)) << "a token that is alone gets all 32 places for lists";
}

TEST_F(PhonesTest, GivesTheAgentFewerLongRequests) {
  const auto session = client(token_);
  const std::string list = R"({"topic":"account.list","data":")" + std::string(40'000, 'x') + "\"}";
  for (int i = 0; i < 3; ++i) send(session, list);
  EXPECT_THAT(agent_->requests, SizeIs(2));
}

TEST_F(PhonesTest, IsNotReadyWithoutAnAgent) {
  EXPECT_EQ(phones_.agent().detach(handle_ + 1).code, -1);
  EXPECT_EQ(get("/health").status, 200U);
  EXPECT_EQ(phones_.agent().detach(handle_).code, 0);
  EXPECT_THAT(get("/health").body, AllOf(HasSubstr(R"("ready":[{"status":"fail"}])"),
                                         HasSubstr(R"("status":"fail","output":"the agent takes no requests"})")));
}

TEST_F(PhonesTest, SendsOnlyWhileItsServerRuns) {
  terminal::MobileServer server(
      phones_, [](const auto& stored) { stored(""); }, [] {}, [] {});
  EXPECT_EQ(server.send({}).code, -1);
  EXPECT_EQ(server.start({}).code, 0);
  EXPECT_EQ(server.start({}).code, -1);
  EXPECT_EQ(server.send({}).code, 0);
  server.stop();
  EXPECT_EQ(server.send({}).code, -1);
}

// Neither waits for an answer forever.
TEST_F(PhonesTest, EndsClientAndPageThatFailInside) {
  const auto session = client(token_);
  send(session, R"({"topic":"account.list"})");
  session->isBroken = true;
  reply(0, "1");
  EXPECT_EQ(session->closeCode(), CloseCode::Fault);
  failsInside_ = true;
  EXPECT_EQ(get("/health").status, 500U);
  EXPECT_THAT(get("/metrics").body, HasSubstr("refusals_total{reason=\"fault\"} 2\n"));
}

TEST_F(PhonesTest, SendsNoticesToATraderThatMayHaveCausedThem) {
  const auto trader = client(addToken("trader", "trade"));
  const auto other = client(addToken("other", "trade"));
  send(trader, R"({"id":1,"topic":"monitor.sync.order.new","data":[{}]})");
  push("terminal.notice");
  push("order.push");
  EXPECT_THAT(trader->take(), ElementsAre(HasSubstr("terminal.notice")));
  advance(11s);
  push("terminal.notice");
  EXPECT_THAT(trader->take(), SizeIs(1));
  reply(0, "1");
  advance(9999ms);
  push("terminal.notice");
  EXPECT_THAT(trader->take(), SizeIs(2));
  advance(1ms);
  push("terminal.notice");
  EXPECT_THAT(trader->take(), IsEmpty());
  EXPECT_THAT(other->take(), IsEmpty());
}

}  // namespace
}  // namespace orvane::test
