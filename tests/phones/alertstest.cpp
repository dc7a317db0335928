#include "tests/phones/phonesfixture.h"

namespace orvane::test {
namespace {

class AlertsTest : public PhonesTest {
 protected:
  std::string set(const SessionPtr& session, int64_t hashCode, bool isAbove, double price) {
    return ask(session, "alert.set",
               fmt::format(R"({{"hashCode":{},"above":{},"price":{}}})", hashCode, isAbove, price));
  }

  static std::string row(int id, bool isAbove, double price, int64_t made, int64_t fired = 0, double firedPrice = 0) {
    return fmt::format(R"({{"id":{},"hashCode":1,"above":{},"price":{},"made":{},"fired":{},"firedPrice":{}}})", id,
                       isAbove, price, made, fired, firedPrice);
  }
  static std::string fired(const std::string& rows) { return pushOf("alert.push", rows); }
  int64_t now() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(loop_.wallTime().time_since_epoch()).count();
  }
};

TEST_F(AlertsTest, FireOnceForTheClientsOfTheirTokenAndStayUntilCleared) {
  const auto first = client(token_);
  const auto second = client(token_);
  const auto other = client(addToken("other", "see"));
  const int64_t made = now();
  EXPECT_EQ(set(first, 1, true, 11), answer("alert.set", row(1, true, 11, made)));
  EXPECT_EQ(set(first, 1, false, 10), answer("alert.set", row(1, true, 11, made) + ',' + row(2, false, 10, made)));
  EXPECT_EQ(ask(other, "alert.list"), answer("alert.list", ""));
  movePrice(10.99);
  EXPECT_THAT(first->take(), IsEmpty());

  movePrice(11);
  const std::string above = row(1, true, 11, made, now(), 11);
  EXPECT_THAT(first->take(), ElementsAre(fired(above)));
  EXPECT_THAT(second->take(), ElementsAre(fired(above)));
  EXPECT_THAT(other->take(), IsEmpty());
  movePrice(12);
  EXPECT_THAT(first->take(), IsEmpty()) << "an alert fires once";
  EXPECT_EQ(ask(second, "alert.list"), answer("alert.list", above + ',' + row(2, false, 10, made)));

  EXPECT_EQ(ask(other, "alert.clear", "[1,2]"), answer("alert.clear", "")) << "only the own";
  EXPECT_EQ(ask(first, "alert.clear", "[1,99]"), answer("alert.clear", row(2, false, 10, made)));
  movePrice(9);
  EXPECT_THAT(second->take(), ElementsAre(fired(row(2, false, 10, made, now(), 9))));
}

TEST_F(AlertsTest, ThatThePresentPriceReachesFireAtOnce) {
  const auto session = client(token_);
  set(session, 2, true, 99);
  advance(1s);
  set(session, 1, true, 10.5);
  advance(250ms);
  EXPECT_THAT(session->take(), ElementsAre(HasSubstr(R"("id":2,)")));
}

TEST_F(AlertsTest, SurviveARestartAndGoWithTheirToken) {
  const auto session = client(token_);
  const std::string gone = addToken("gone", "see");
  set(session, 1, true, 11);
  const int64_t made = now();
  set(session, 1, true, 20);
  set(client(gone), 1, true, 30);
  ask(session, "alert.clear", "[2]");
  movePrice(11);
  const int64_t then = now();

  terminal::revokeToken(db_, "gone");
  advance(1s);
  movePrice(30);
  terminal::insertAlert(db_, {.id = 4, .token = 2, .price = 30});  // its token went while it was on the way
  EXPECT_EQ(db_.execAndGet("SELECT COUNT(*) FROM alert").getInt(), 1);

  terminal::GatewayStore store({.dataDir = dir_.path(), .audit = {}}, loop_);
  ASSERT_THAT(store.alerts().alerts, SizeIs(1));
  const terminal::Alert& kept = store.alerts().alerts[0];
  EXPECT_EQ(fmt::format("{} {} {} {} {} {} {}", kept.id, kept.hashCode, kept.isAbove, kept.price, kept.made, kept.fired,
                        kept.firedPrice),
            fmt::format("1 1 true 11 {} {} 11", made, then));
  EXPECT_EQ(store.alerts().lastId, 3) << "an id is never reused";
}

TEST_F(AlertsTest, RefuseWhatIsNoAlertAndMoreThanAHundred) {
  const auto session = client(token_);
  for (const char* body : {"[]", "{}", R"({"hashCode":1,"above":true})", R"({"hashCode":1,"price":1})",
                           R"({"above":true,"price":1})", R"({"hashCode":1.5,"above":true,"price":1})",
                           R"({"hashCode":1,"above":1,"price":1})", R"({"hashCode":1,"above":true,"price":"1"})"}) {
    EXPECT_THAT(ask(session, "alert.set", body), HasSubstr("alert.set takes {")) << body;
  }
  for (const char* body : {"{}", "[1.5]", R"(["1"])", "null"}) {
    EXPECT_THAT(ask(session, "alert.clear", body), HasSubstr("alert.clear takes an array")) << body;
  }
  EXPECT_THAT(set(session, 9, true, 11), HasSubstr("there is no instrument 9"));
  for (int i = 0; i < 99; ++i) set(session, 1, true, 11);
  EXPECT_THAT(set(session, 1, true, 11), HasSubstr(R"("id":100,)"));
  EXPECT_THAT(set(session, 1, true, 11), HasSubstr("this token has 100 alerts already"));
  EXPECT_THAT(set(client(addToken("other", "see")), 1, true, 11), HasSubstr(R"("id":101,)"));
  EXPECT_THAT(ask(client(addToken("blind", "trade")), "alert.list"), HasSubstr("this token may not see"));
}

TEST_F(AlertsTest, AreRefusedIfTheyCannotBeStored) {
  const auto session = client(token_);
  db_.exec("BEGIN IMMEDIATE");
  send(session, R"({"id":7,"topic":"alert.set","data":{"hashCode":1,"above":true,"price":10}})");
  movePrice(10);
  EXPECT_THAT(session->take(), IsEmpty());
  advance(4s);
  EXPECT_THAT(session->take(), ElementsAre(HasSubstr("the alert cannot be stored: ")));
  db_.exec("ROLLBACK");
  EXPECT_EQ(ask(session, "alert.list"), answer("alert.list", ""));
}

}  // namespace
}  // namespace orvane::test
