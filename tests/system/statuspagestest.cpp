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

TEST(Pages, TellHowTheTerminalFares) {
  const TempDir dir;
  const TerminalProcess terminal(dir.path());
  const auto get = [&](const std::string& path) { return httpGet(terminal.port(), path); };
  for (const std::string path : {"/health", "/health/live", "/health/ready"}) {
    EXPECT_THAT(get(path), StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(get(path), HasSubstr("\r\nContent-Type: application/health+json\r\n"));
  }
  EXPECT_THAT(get("/health"), HasSubstr(R"("checks":{"live":[{"status":"pass"}],"ready":[{"status":"pass"}],)"));
  const auto phone = terminal.login();
  for (const char* topic : {"account.list", "account.list", "capital.list", "evil\"} 1", "order.new"}) {
    phone->request(topic, "[[]]");
  }
  const std::string metrics = get("/metrics");
  for (const std::string line : {"build_info{version=\"0.1.0\"} 1", "requests_total{topic=\"account.list\"} 2",
                                 "requests_total{topic=\"capital.list\"} 1", "requests_total{topic=\"other\"} 1",
                                 "requests_total{topic=\"order.new\"} 0", "failures_total{topic=\"account.list\"} 0",
                                 "failures_total{topic=\"capital.list\"} 1", "failures_total{topic=\"other\"} 1",
                                 "request_seconds_bucket{topic=\"account.list\",le=\"+Inf\"} 2",
                                 "request_seconds_count{topic=\"account.list\"} 2", "refusals_total{reason=\"body\"} 1",
                                 "phones 1", "requests_waiting 0", "pushes_total 0", "closes_total{code=\"4408\"} 0"}) {
    EXPECT_THAT(metrics, HasSubstr("\npocket_terminal_" + line + "\n"));
  }
  EXPECT_THAT(metrics, Not(HasSubstr("evil")));
}

}  // namespace
}  // namespace orvane::test
