#include <chrono>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/support/rawsocket.h"
#include "tests/system/faultydisk.h"
#include "tests/system/orders.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using terminal::Client;
using testing::StartsWith;

std::string placeOrder(Client& phone, const std::string& source) {
  return phone.request("order.new", orderData(source)).message;
}

std::string after(int attempt) { return fmt::format("after-{}", attempt); }

size_t countOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// A running terminal on a disk that fills or cannot flush: every list is served, no order is taken, and once the disk
// works orders do, too, without a restart. What was acknowledged is there once.
TEST(FaultyDisk, IsSurvived) {
  for (const char* fault : {"full", "flush"}) {
    SCOPED_TRACE(fault);
    const TempDir dir;
    const FaultyDisk disk;
    TerminalProcess terminal(dir.path(), {"--log-level", "debug"});
    const auto phone = terminal.login();
    ASSERT_EQ(placeOrder(*phone, "before"), "");
    disk.begin(fault);
    EXPECT_NE(placeOrder(*phone, "meanwhile"), "");
    for (const char* topic : {"account.list", "capital.list", "position.list", "order.list", "monitor.list"}) {
      EXPECT_EQ(phone->request(topic, "[1]").message, "");
    }
    EXPECT_THAT(httpGet(terminal.port(), "/health/live"), StartsWith("HTTP/1.1 200 "));
    disk.end(fault);
    int attempt = 1;
    for (const auto end = Clock::now() + 30s; Clock::now() < end && !placeOrder(*phone, after(attempt)).empty();) {
      ++attempt;
    }
    terminal.kill();
    TerminalProcess again(dir.path());
    const std::string orders = again.login()->request("order.list", "[1]").data;
    EXPECT_EQ(countOf(orders, R"("before")"), 1U);
    EXPECT_LE(countOf(orders, R"("meanwhile")"), 1U);
    EXPECT_EQ(countOf(orders, '"' + after(attempt) + '"'), 1U);
    EXPECT_EQ(again.stop(), 0);
  }
}

}  // namespace
}  // namespace orvane::test
