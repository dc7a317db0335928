#include <set>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(Pages, AreServedToTheirOwnOrigin) {
  const FreshTerminal terminal({"--allow-origin", "https://Trade.example.com:8443"});
  const std::string own = "127.0.0.1:" + std::to_string(terminal.port());
  const std::vector<std::tuple<std::string, std::string, int>> rows{
      {own, "", 200},
      {own, "http://" + own, 200},
      {"LocalHost:9999", "http://localhost:9999", 200},  // through a forwarded port
      {"[::1]:8700", "http://[::1]:8700", 200},
      {"trade.example.com:8443", "https://trade.example.com:8443", 200},
      {own, "https://trade.example.com:8443", 200},
      {own, "https://" + own, 403},
      {own, "http://127.0.0.1", 403},
      {own, "https://trade.example.com", 403},
      {own, "null", 403},
      {own, "http://" + own + ".evil.com", 403},
      {"evil.com", "http://evil.com", 403},  // DNS rebinding
      {"evil.com", "", 403},
      {"", "", 403},
  };
  for (const auto& [host, origin, status] : rows) {
    SCOPED_TRACE(host + " " + origin);
    std::string headers = "Host: " + host + (origin.empty() ? "" : "\r\nOrigin: " + origin) + "\r\n";
    EXPECT_THAT(httpGet(terminal.port(), "/", headers), StartsWith(fmt::format("HTTP/1.1 {} ", status)));
    headers += "Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 12\r\n";
    const int upgraded = status == 200 ? 400 : status;  // there is no version 12
    EXPECT_THAT(httpGet(terminal.port(), "/ws", headers), StartsWith(fmt::format("HTTP/1.1 {} ", upgraded)));
  }
  EXPECT_THAT(httpGet(terminal.port(), "/"), HasSubstr("\r\nContent-Security-Policy: default-src 'none';"));
  EXPECT_THAT(httpGet(terminal.port(), "/"), Not(HasSubstr("Strict-Transport-Security")));
}

TEST(Pages, FilesAreSentInTheShortestFormThatTheClientTakesAndOnlyOnce) {
  const FreshTerminal terminal;
  const std::vector<std::tuple<std::string, std::string, size_t>> rows{
      {"gzip, deflate, br", "\r\nContent-Encoding: br\r\n", 45'000},
      {"GZIP", "\r\nContent-Encoding: gzip\r\n", 50'000},
      {"br;q=0, gzip;q=0.5", "\r\nContent-Encoding: gzip\r\n", 50'000},
      {"br;q=0.0, identity", "\r\nVary: Accept-Encoding\r\n", 200'000},
      {"", "\r\nVary: Accept-Encoding\r\n", 200'000},
  };
  const std::string page = httpGet(terminal.port(), "/");
  const size_t name = page.find("chunk-");
  ASSERT_NE(name, std::string::npos);
  const std::string script = "/" + page.substr(name, page.find('"', name) - name);
  std::set<std::string> tags;
  for (const auto& [accepted, expected, length] : rows) {
    SCOPED_TRACE(accepted);
    const std::string headers = "Host: 127.0.0.1\r\nAccept-Encoding: " + accepted + "\r\n";
    const std::string file = httpGet(terminal.port(), script, headers);
    EXPECT_THAT(file, HasSubstr(expected));
    EXPECT_THAT(file, HasSubstr("\r\nCache-Control: no-cache\r\n"));
    EXPECT_LT(file.size(), length);
    const size_t at = file.find("ETag: ") + 6;
    const std::string tag = file.substr(at, file.find('\r', at) - at);
    tags.insert(tag);
    for (const std::string& known : {tag, "\"x\", W/" + tag, std::string("*")}) {
      const std::string again = httpGet(terminal.port(), script, headers + "If-None-Match: " + known + "\r\n");
      EXPECT_THAT(again, StartsWith("HTTP/1.1 304 "));
      EXPECT_THAT(again, testing::EndsWith("\r\n\r\n"));
    }
    EXPECT_EQ(file, httpGet(terminal.port(), script, headers + "If-None-Match: \"x\"\r\n"));
  }
  EXPECT_EQ(tags.size(), 3U);  // a strong tag names the exact bytes
  EXPECT_THAT(httpGet(terminal.port(), "/health"), HasSubstr("\r\nCache-Control: no-store\r\n"));
}

}  // namespace
}  // namespace orvane::test
