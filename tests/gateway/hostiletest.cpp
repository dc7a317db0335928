#include <boost/asio/ip/host_name.hpp>

#include <gmock/gmock.h>

#include "terminal/logging.h"
#include "terminal/net/originpolicy.h"
#include "tests/gateway/gatewayrig.h"
#include "tests/support/holdssoon.h"
#include "tests/support/logcapture.h"
#include "tests/support/rawsocket.h"

namespace orvane::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::chrono::milliseconds kIdle{2000};

class HostileTest : public testing::Test {
 protected:
  std::string login() const { return frame(R"({"topic":"login","token":")" + token_ + "\"}"); }

  static size_t descriptors() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(open), end(open)));
  }

  // Clients are still served, and the hostile connections are gone.
  void expectUnharmed() {
    EXPECT_THAT((openWebSocket(port_) << login()).readUntil("}}"), HasSubstr(R"("topic":"login","message":"")"));
    std::string metrics;
    EXPECT_TRUE(holdsSoon([&] {
      metrics = httpGet(port_, "/metrics");
      return metrics.find("pocket_terminal_connections 1\n") != std::string::npos;
    }));
    EXPECT_THAT(metrics, HasSubstr("pocket_terminal_phones 0\n"));
    EXPECT_THAT(metrics, HasSubstr("pocket_terminal_requests_waiting 0\n"));
  }

  void TearDown() override {
    EXPECT_TRUE(holdsSoon([this] { return descriptors() <= descriptors_; }));
  }

  LogCapture log_{terminal::gatewayLogger(), log4cxx::Level::getDebug()};
  GatewayRig rig_{{.head = std::chrono::milliseconds(1500), .idle = kIdle}};
  const std::string token_ = rig_.addToken("first", 7);
  const uint16_t port_ = rig_.port();
  const size_t descriptors_ = descriptors();
};

TEST_F(HostileTest, HttpRequests) {
  const std::string own = boost::asio::ip::host_name();
  const std::string get = "GET / HTTP/1.1\r\nHost: ";
  const std::vector<std::tuple<std::string, std::string, std::string>> rows{
      {"\x16\x03\x01\x02\x01" + std::string(100, '\0'), "400", "This is no HTTP request: bad method.\n"},
      {"GET / HTTP/9.9\r\n\r\n", "400", "This is no HTTP request: bad version.\n"},
      {"GET / HTTP/1.1\r\nX: " + std::string(9000, 'x'), "400", "This is no HTTP request: header limit exceeded.\n"},
      {"POST /health/live HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nabc", "405",
       "Only GET is served here.\n"},
      {"GET /../etc/passwd HTTP/1.1\r\nHost: localhost\r\n\r\n", "404", "There is no such page.\n"},
      {"GET /ws HTTP/1.1\r\nHost: localhost\r\n\r\n", "426", "This address takes WebSocket connections only.\n"},
      {get + own + "\r\n\r\n", "200", "<!doctype html>"},
      {get + own + ".local:80\r\n\r\n", "200", "<!doctype html>"},
      {get + own + ".evil\r\n\r\n", "403",
       "This terminal does not answer to the name \"" + own + ".evil\". If it should, start it with --allow-origin.\n"},
      {get + "localhost\r\nOrigin: http://evil\r\n\r\n", "403",
       "Pages of http://evil may not use this terminal. If they should, start it with --allow-origin.\n"},
  };
  for (const auto& [bytes, status, body] : rows) {
    SCOPED_TRACE(bytes.substr(0, 60));
    const std::string page = (RawSocket(port_) << bytes).readToEnd();
    EXPECT_THAT(
        page,
        AllOf(StartsWith("HTTP/1.1 " + status), HasSubstr("\r\n\r\n" + body),
              HasSubstr(status == "200" ? "\r\nCache-Control: no-cache\r\n" : "\r\nCache-Control: no-store\r\n"),
              HasSubstr("\r\nReferrer-Policy: no-referrer\r\n"), HasSubstr("\r\nX-Content-Type-Options: nosniff\r\n")));
  }
  EXPECT_EQ(terminal::OriginPolicy(true, {}, {}).findFault("127.0.0.1:1", "https://127.0.0.1:1"), "");
  // The head, or the rest of it, never comes, and the time for it ends.
  RawSocket silent(port_);
  EXPECT_EQ((RawSocket(port_) << "GET / HTTP/1.1\r\nHost: local").readToEnd(), "");
  EXPECT_EQ(silent.readToEnd(), "");
  expectUnharmed();
}

TEST_F(HostileTest, CutAtEachByte) {
  for (size_t size = 0; size < kUpgrade.size(); ++size) RawSocket(port_) << kUpgrade.substr(0, size);
  const std::string frames = login() + frame(R"({"id":1,"topic":"account.list"})");
  for (size_t size = 0; size < frames.size(); ++size) openWebSocket(port_) << frames.substr(0, size);
  expectUnharmed();
  EXPECT_NE(log_.text().find(" is dropped: End of file\n"), std::string::npos);
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
  EXPECT_THAT((openWebSocket(port_) << login() + frame("x", '\x82')).readToEnd(),
              HasSubstr(bigEndian(1003, 2) + "only text frames are taken"));
  expectUnharmed();
}

// A client that only answers pings stays.
TEST_F(HostileTest, Silence) {
  RawSocket silent = openWebSocket(port_);
  silent << login();
  const std::string ping("\x89\0", 2);
  const std::string close("\x03\xE8", 2);
  {
    RawSocket alive = openWebSocket(port_);
    alive << login();
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 3; ++i) {
      EXPECT_TRUE(alive.readUntil(ping).ends_with(ping));
      alive << frame("", '\x8A');
    }
    EXPECT_GE(std::chrono::steady_clock::now() - begin, kIdle * 5 / 4);  // three times half of it, but for the login
    alive << frame(close, '\x88');
    alive.readUntil(close);
  }
  expectUnharmed();
  EXPECT_THAT(silent.readToEnd(), EndsWith(ping));  // cut off without a close frame
  EXPECT_THAT(log_.text(), AllOf(HasSubstr("[INFO] Gateway phone 1 is cut off: it is silent\n"),
                                 Not(HasSubstr("phone 2 is dropped")), Not(HasSubstr("phone 2 is cut off"))));
}

// A client that got its page and does not close.
TEST_F(HostileTest, KeepsItsEndOpen) {
  RawSocket peer(port_);
  peer << "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n";
  EXPECT_THAT(peer.readToEnd(), StartsWith("HTTP/1.1 200 "));
  expectUnharmed();
}

}  // namespace
}  // namespace orvane::test
