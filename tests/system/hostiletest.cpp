#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/support/holdssoon.h"
#include "tests/system/rawsocket.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class HostileTest : public testing::Test {
 protected:
  std::string login() const { return frame(R"({"topic":"login","token":")" + terminal_.token() + "\"}"); }

  size_t descriptors() const {
    const std::filesystem::directory_iterator open("/proc/" + std::to_string(terminal_.pid()) + "/fd");
    return static_cast<size_t>(std::distance(begin(open), end(open)));
  }

  // Clients are still served, and nothing is left of the hostile connections after the last has ended.
  void expectUnharmed() {
    EXPECT_EQ(terminal_.login()->request("account.list").message, "");
    std::string metrics;
    EXPECT_TRUE(holdsSoon([&] {
      metrics = httpGet(port_, "/metrics");
      return metrics.find("pocket_terminal_connections 1\n") != std::string::npos;
    }));
    EXPECT_THAT(metrics, HasSubstr("pocket_terminal_phones 0\n"));
    EXPECT_THAT(metrics, HasSubstr("pocket_terminal_requests_waiting 0\n"));
    EXPECT_TRUE(holdsSoon([this] { return descriptors() <= descriptors_; }));
  }

  TempDir dir_;
  TerminalProcess terminal_{dir_.path(), {"--login-timeout", "0.5", "--log-level", "debug"}};
  const uint16_t port_ = terminal_.port();
  const size_t descriptors_ = descriptors();
};

TEST_F(HostileTest, NoHttp) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"\x16\x03\x01\x02\x01" + std::string(100, '\0'), "HTTP/1.1 400 "},
      {"GET / HTTP/9.9\r\n\r\n", "HTTP/1.1 400 "},
      {"GET / HTTP/1.1\r\nX: " + std::string(9000, 'x') + "\r\n\r\n", "HTTP/1.1 400 "},
      {"POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nabc", "HTTP/1.1 405 "},
      {"GET /../etc/passwd HTTP/1.1\r\nHost: localhost\r\n\r\n", "HTTP/1.1 404 "},
      {"GET / HTTP/1.1\r\nHost: local", ""},  // the rest never comes, and the time for the head ends
      {"", ""},
  };
  for (const auto& [bytes, answer] : rows) {
    SCOPED_TRACE(bytes.substr(0, 30));
    EXPECT_THAT((RawSocket(port_) << bytes).readToEnd(), StartsWith(answer));
  }
  expectUnharmed();
}

TEST_F(HostileTest, CutAtEachByte) {
  for (size_t size = 0; size < kUpgrade.size(); ++size) RawSocket(port_) << kUpgrade.substr(0, size);
  const std::string frames = login() + frame(R"({"id":1,"topic":"account.list"})");
  for (size_t size = 0; size < frames.size(); ++size) openWebSocket(port_) << frames.substr(0, size);
  expectUnharmed();
}

TEST_F(HostileTest, BadFrames) {
  std::string fragments = frame(std::string(60000, ' '), '\x01');
  for (int i = 0; i < 5; ++i) fragments += frame(std::string(60000, ' '), '\0');
  const std::vector<std::pair<std::string, size_t>> rows{
      {"\x81\xFF\x7F" + std::string(7, '\xFF') + std::string(4, '\0'), 1009},  // announces 2^63 bytes
      {fragments, 1009},
      {std::string("\x81\x01x", 3), 1002},  // not masked
      {frame("x", '\xC1'), 1002},           // a reserved bit
      {frame("x", '\x83'), 1002},           // a reserved kind
      {frame("x", '\x80'), 1002},           // continues nothing
      {frame("\xD6\xD0"), 1007},
      {frame(std::string("\x03\xED", 2), '\x88'), 1002},  // a close code that must not be sent
  };
  for (const auto& [frames, code] : rows) {
    SCOPED_TRACE(testing::PrintToString(frames.substr(0, 20)));
    EXPECT_THAT((openWebSocket(port_) << login() + frames).readToEnd(), HasSubstr(bigEndian(code, 2)));
  }
  expectUnharmed();
}

// A client that got its page and does not close.
TEST_F(HostileTest, KeepsItsEndOpen) {
  RawSocket peer(port_);
  peer << "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n";
  EXPECT_THAT(peer.readToEnd(), StartsWith("HTTP/1.1 200 "));
  expectUnharmed();
}

// Idle connections give way to a new one; a logged-in client stays.
TEST_F(HostileTest, HalfOpenConnections) {
  const auto phone = terminal_.login();
  std::deque<RawSocket> silent;
  for (int i = 0; i < 300; ++i) silent.emplace_back(port_);
  EXPECT_EQ(terminal_.login()->request("account.list").message, "");
  EXPECT_EQ(phone->request("account.list").message, "");
  EXPECT_THAT(httpGet(port_, "/metrics"), testing::ContainsRegex("refusals_total.reason=\"connection\". [1-9]"));
  phone->send("{", false);
  EXPECT_EQ(phone->waitClose(), 1003);
  for (RawSocket& each : silent) EXPECT_EQ(each.readToEnd(), "");
  expectUnharmed();
}

// Many orders at once, which the client does not wait for: each is answered, unless the client is closed for the crowd.
TEST_F(HostileTest, Flood) {
  constexpr size_t kOrders = 3000;
  const std::string order = frame(
      R"({"topic":"order.new","data":{"orderList":[{"index":1,"hashCode":1000001,"side":1,"combOffset":1,"offset":0,)"
      R"("priceType":1,"price":3300,"volume":1,"insertTimestamp":1,"source":"x"}]}})");
  std::string requests;
  for (size_t i = 0; i < kOrders; ++i) requests += order;
  RawSocket phone = openWebSocket(port_);
  phone << login();
  phone.readUntil("\"resumed\":false}}");
  const std::string end = "\"data\":null}";
  phone << requests;
  size_t answered = 0;
  std::string text = end;
  for (; answered < kOrders && text.ends_with(end); ++answered) text = phone.readUntil(end);
  EXPECT_THAT(text, AnyOf(EndsWith(end), HasSubstr(bigEndian(4429, 2) + "too many requests wait for their reply")));
  expectUnharmed();
}

// A client that does not answer the close frame delays the terminal's end by only half a second.
TEST_F(HostileTest, SilentAtTheEnd) {
  RawSocket phone = openWebSocket(port_);
  phone << login();
  phone.readUntil("\"resumed\":false}}");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(terminal_.stop(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  EXPECT_THAT(phone.readToEnd(), HasSubstr(bigEndian(1001, 2)));
}

}  // namespace
}  // namespace orvane::test
