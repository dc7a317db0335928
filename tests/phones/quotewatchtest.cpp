#include "tests/phones/phonesfixture.h"

namespace orvane::test {
namespace {

class QuoteWatchTest : public PhonesTest {
 protected:
  std::string watch(const SessionPtr& session, const std::string& codes) { return ask(session, "quote.watch", codes); }

  static std::string row(int64_t hashCode, double last) {
    return fmt::format(R"({{"hashCode":{},"lastPrice":{},"bidPrice":{},"askPrice":{}}})", hashCode, last, last - 1,
                       last + 1);
  }
  static std::string frame(const std::string& rows) { return pushOf("quote.push", rows); }
};

TEST_F(QuoteWatchTest, SendsWhatChangesFourTimesASecond) {
  const auto session = client(token_);
  EXPECT_EQ(watch(session, "[2,1,2]"), answer("quote.watch", row(1, 10.5) + ',' + row(2, 10.5)));
  prices_.set(1, 11);
  prices_.set(2, 12);
  prices_.set(2, 13);
  prices_.set(3, 14);
  advance(249ms);
  EXPECT_THAT(session->take(), IsEmpty());
  advance(1ms);
  EXPECT_THAT(session->take(), ElementsAre(frame(row(1, 11) + ',' + row(2, 13))));
  advance(1s);
  EXPECT_THAT(session->take(), IsEmpty()) << "nothing has changed";
  EXPECT_THAT(agent_->requests, IsEmpty());

  watch(session, "[3]");
  prices_.set(1, 20);
  prices_.set(3, 21);
  advance(250ms);
  EXPECT_THAT(session->take(), ElementsAre(frame(row(3, 21)))) << "the list before is replaced";
  watch(session, "[]");
  prices_.set(3, 22);
  advance(1s);
  EXPECT_THAT(session->take(), IsEmpty());
}

TEST_F(QuoteWatchTest, SendsASlowClientTheLatest) {
  const auto slow = client(token_);
  const auto fast = client(token_);
  watch(slow, "[1]");
  watch(fast, "[1]");
  slow->backlog = 1;
  for (const double price : {11, 12}) movePrice(price);
  EXPECT_THAT(fast->take(), ElementsAre(frame(row(1, 11)), frame(row(1, 12))));
  EXPECT_THAT(slow->take(), IsEmpty());
  slow->backlog = 0;
  advance(250ms);
  EXPECT_THAT(slow->take(), ElementsAre(frame(row(1, 12))));
}

TEST_F(QuoteWatchTest, RefusesWhatIsNoListOfInstruments) {
  const auto session = client(token_);
  EXPECT_THAT(watch(session, ones(200)), HasSubstr(row(1, 10.5)));
  for (const std::string& body :
       std::vector<std::string>{ones(201), "{}", "[1.5]", R"(["1"])", "null", "[9223372036854775808]"}) {
    EXPECT_THAT(watch(session, body), HasSubstr("takes an array of at most 200 hash codes")) << body;
  }
  EXPECT_THAT(watch(session, "[1,9]"), HasSubstr("there is no instrument 9"));
  movePrice(11);
  EXPECT_THAT(session->take(), ElementsAre(frame(row(1, 11)))) << "a refused list leaves the one before";
}

TEST_F(QuoteWatchTest, NeedsTheRightToSeeAndEndsWithTheLogin) {
  const auto blind = client(addToken("blind", "trade"));
  EXPECT_THAT(watch(blind, "[1]"), HasSubstr("this token may not see"));
  const auto session = client(token_);
  const auto gone = client(token_);
  for (const auto& each : {session, gone}) watch(each, "[1]");
  send(session, fmt::format(R"({{"id":1,"topic":"login","token":"{}"}})", addToken("other", "trade")));
  session->take();
  hangUp(gone);
  movePrice(11);
  EXPECT_THAT(session->take(), IsEmpty());
  EXPECT_THAT(gone->take(), IsEmpty());
}

}  // namespace
}  // namespace orvane::test
