#include <gmock/gmock.h>

#include "terminal/phones/pushlog.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using terminal::PushLog;
using terminal::Reply;
using testing::HasSubstr;
using testing::StartsWith;

TEST(PushLog, KeepsTheLast) {
  PushLog log;
  MobileMessage push;
  push.topic = "p";
  EXPECT_TRUE(log.canResume(log.epoch(), 0));
  for (int i = 0; i < 1030; ++i) log.add(push);
  EXPECT_FALSE(log.canResume(log.epoch(), 5));
  EXPECT_TRUE(log.canResume(log.epoch(), 6));
  EXPECT_FALSE(log.canResume(PushLog().epoch(), 1030));
  std::string missed;
  log.resume(1028, [&](const PushLog::Text& text) { missed += *text; });
  EXPECT_EQ(missed,
            R"({"seq":1029,"topic":"p","message":"","data":null}{"seq":1030,"topic":"p","message":"","data":null})");

  push.message.assign(700'000, 'x');
  for (int i = 0; i < 3; ++i) log.add(push);
  EXPECT_FALSE(log.canResume(log.epoch(), 1030));
  EXPECT_TRUE(log.canResume(log.epoch(), 1031));
}

class Pushes : public testing::Test {
 protected:
  // Logs in with further members, and returns the answer.
  Reply login(Client& phone, const std::string& more) const {
    phone.send(R"({"id":1,"topic":"login","token":")" + terminal_.token() + "\"" + more + "}");
    return phone.receive();
  }

  TempDir dir_;
  TerminalProcess terminal_{dir_.path(), {}};
};

TEST_F(Pushes, AreBroughtToAPhoneThatComesBack) {
  Client phone(terminal_.port());
  const std::string first = login(phone, "").data;
  EXPECT_THAT(first, StartsWith(R"({"name":"first","rights":["see","cancel","trade"],"epoch":")"));
  EXPECT_THAT(first, HasSubstr(R"(","seq":0,"resumed":false})"));
  const std::string epoch = first.substr(first.find("epoch") + 8, 16);
  for (const std::string seq : {"1", "2", "3"}) {
    phone.request("order.new", R"({"orderList":[{"index":1,"hashCode":1000001,"side":1,"combOffset":1,"priceType":1,)"
                               R"("price":3300,"offset":0,"volume":1,"insertTimestamp":1000,"source":"x"}]})");
    EXPECT_EQ(phone.waitPush("order.push").seq, seq);
  }

  const auto resume = [](const std::string& from, const std::string& seq) {
    return R"(,"resume":{"epoch":")" + from + R"(","seq":)" + seq + "}";
  };
  Client back(terminal_.port());
  EXPECT_THAT(login(back, resume(epoch, "1")).data, HasSubstr(R"(","seq":3,"resumed":true})"));
  EXPECT_EQ(back.receive().seq, "2");
  EXPECT_EQ(back.receive().seq, "3");
  for (const std::string& more : {resume(epoch, "4"), resume("0123456789abcdef", "1"), std::string()}) {
    EXPECT_THAT(login(back, more).data, HasSubstr(R"("seq":3,"resumed":false})")) << more;
  }
  for (const std::string& more : {resume(epoch, "-1"), resume(epoch, "1.5"), std::string(R"(,"resume":[])"),
                                  std::string(R"(,"resume":{"seq":1})")}) {
    EXPECT_THAT(login(back, more).message, StartsWith(R"(the frame's "resume" must be an object)")) << more;
  }
  EXPECT_EQ(login(back, R"(,"device":")" + std::string(65, 'x') + "\"").message,
            R"(the frame's "device" has more than 64 bytes)");
}

TEST_F(Pushes, ReplaceTheOlderConnectionOfADevice) {
  Client older(terminal_.port());
  Client other(terminal_.port());
  Client newer(terminal_.port());
  login(older, R"(,"device":"a")");
  login(other, R"(,"device":"b")");
  EXPECT_EQ(login(newer, R"(,"device":"a")").message, "");
  EXPECT_EQ(older.waitClose(), 4409);
  EXPECT_EQ(login(newer, R"(,"device":"a")").message, "");
  EXPECT_EQ(other.request("account.list").message, "");
  EXPECT_EQ(newer.request("account.list").message, "");
}

}  // namespace
}  // namespace orvane::test
