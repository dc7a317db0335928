#include <fmt/format.h>
#include <gmock/gmock.h>

#include "terminal/net/listener.h"
#include "tests/gateway/gatewayrig.h"
#include "tests/gateway/wireclient.h"
#include "tests/support/holdssoon.h"
#include "tests/support/rawsocket.h"
#include "tests/trading/faultvfs.h"

namespace orvane::test {
namespace {

using terminal::testing::FaultyDisk;
using testing::HasSubstr;
using testing::StartsWith;

class LimitsTest : public testing::Test {
 protected:
  using Phone = std::unique_ptr<WireClient>;

  Phone login(const std::string& token) {
    auto phone = std::make_unique<WireClient>(rig_.port(), "127.0.0.1");
    phone->send(fmt::format(R"({{"id":1,"topic":"login","token":"{}"}})", token));
    EXPECT_THAT(phone->receive().text, StartsWith(R"({"id":1,"topic":"login","message":"","data":{)"));
    return phone;
  }

  FaultyDisk disk_;
  GatewayRig rig_;
  const std::string token_ = rig_.addToken("first", 7);
};

// With all 256 places taken, the longest without a login gives way, and neither a younger one nor a client.
TEST_F(LimitsTest, LetTheOldestWithoutALoginGiveWay) {
  std::deque<Phone> clients;
  clients.push_back(login(token_));
  RawSocket idle(rig_.port());
  std::deque<WireClient> silent;
  while (silent.size() < 255) silent.emplace_back(rig_.port(), "127.0.0.1");
  EXPECT_THAT(httpGet(rig_.port(), "/metrics"), HasSubstr("refusals_total{reason=\"connection\"} 2\n"));
  EXPECT_EQ(idle.readToEnd(), "");
  EXPECT_THROW(silent[0].receive(), std::runtime_error);
  EXPECT_FALSE(silent[1].sync());
  EXPECT_FALSE(silent.back().sync());
  EXPECT_FALSE(clients[0]->sync());

  silent.clear();
  for (std::string token = token_; clients.size() < 256; clients.push_back(login(token))) {
    if (clients.size() % 85 == 0) token = rig_.addToken(fmt::format("t{}", clients.size()), 1);
  }
  EXPECT_EQ(httpGet(rig_.port(), "/health/live?from=here"), "");
  clients.pop_front();
  EXPECT_TRUE(
      holdsSoon([this] { return httpGet(rig_.port(), "/health/live?from=here").starts_with("HTTP/1.1 200 "); }));
}

// A client that is closed gets first what was queued for it.
TEST_F(LimitsTest, SendWhatIsQueuedBeforeTheCloseFrame) {
  constexpr int kPushes = 1000;
  const std::string login = fmt::format(R"({{"id":1,"topic":"login","token":"{}","device":"a")", token_);
  WireClient older(rig_.port(), "127.0.0.1");
  WireClient newer(rig_.port(), "127.0.0.1");
  older.send(login + "}");
  const std::string welcome = older.receive().text;
  MobileMessage push;
  push.requestId = kNoRequestId;
  push.topic = "order.push";
  for (int i = 0; i < kPushes; ++i) rig_.deliver(push);
  for (int i = 0; i < kPushes; ++i) older.receive();
  older.send(login + R"(,"resume":{"seq":0,"epoch":")" + welcome.substr(welcome.find("epoch") + 8, 16) + "\"}}");
  EXPECT_THAT(older.receive().text, HasSubstr(R"("resumed":true)"));
  newer.send(login + "}");
  for (int i = 1; i <= kPushes; ++i) ASSERT_THAT(older.receive().text, StartsWith(fmt::format("{{\"seq\":{},", i)));
  EXPECT_EQ(older.receive().closeCode, 4409);
}

// An IPv6 client may choose among all addresses of its network.
TEST(Network, OfAnIpv6ClientIsWhole) {
  const auto network = [](const char* text) { return terminal::networkOf(boost::asio::ip::make_address(text)); };
  EXPECT_EQ(network("10.0.0.1"), "10.0.0.1");
  EXPECT_EQ(network("2001:db8:0:1:2:3:4:5"), "2001:db8:0:1::/64");
}

// An idle gateway writes every five seconds, so it sees a full disk, and its end.
TEST_F(LimitsTest, SeeAFullDisk) {
  const auto isReady = [this] { return httpGet(rig_.port(), "/health/ready").starts_with("HTTP/1.1 200 "); };
  EXPECT_TRUE(isReady());
  disk_.arm({.name = "full", .lasts = true, .full = true, .share = 0}, 1);
  rig_.advance(std::chrono::seconds(6));
  EXPECT_TRUE(holdsSoon([&] { return !isReady(); }));
  disk_.heal();
  rig_.advance(std::chrono::seconds(1));
  EXPECT_TRUE(holdsSoon(isReady));
}

// Before the library runs it, a key is on the disk.
TEST_F(LimitsTest, LetNoKeyBeLostWithThePower) {
  const Phone phone = login(token_);
  disk_.arm({}, 0);  // keeps what is flushed; nothing fails
  phone->send(R"({"id":1,"topic":"order.new","key":"a17","data":{}})");
  ASSERT_TRUE(rig_.agent().take());
  const TempDir copy;
  FaultyDisk::crash(rig_.dataDir(), copy.path(), true);
  SQLite::Database db(copy.path() / "gateway.db", SQLite::OPEN_READWRITE);
  EXPECT_EQ(db.execAndGet("SELECT count(*) FROM action WHERE key = 'a17'").getInt(), 1);
}

}  // namespace
}  // namespace orvane::test
