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
  const TempDir dir;
  const TerminalProcess terminal(dir.path(), {"--allow-origin", "https://Trade.example.com:8443"});
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

}  // namespace
}  // namespace orvane::test
