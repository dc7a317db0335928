#include <chrono>
#include <deque>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/holdssoon.h"
#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;

// More than the kernel takes for a peer that does not read: 6 MB.
std::string longList(const std::string& id) {
  std::string accounts = "1";
  for (int i = 1; i < 1000; ++i) accounts += ",1";
  return frame(R"({"id":")" + id + R"(","topic":"monitor.list","data":[)" + accounts + "]}");
}

RawSocket openPhone(const TerminalProcess& terminal) {
  RawSocket phone = openWebSocket(terminal.port());
  phone << frame(R"({"topic":"login","token":")" + terminal.token() + "\"}");
  phone.readUntil("\"resumed\":false}}");
  return phone;
}

std::string slowPhones(const TerminalProcess& terminal) {
  const std::string name = "closes_total{code=\"4408\"} ";
  const std::string metrics = httpGet(terminal.port(), "/metrics");
  const size_t begin = metrics.find(name) + name.size();
  return metrics.substr(begin, metrics.find('\n', begin) - begin);
}

// Pongs come from a peer that takes no byte, too.
TEST(SlowClient, IsClosedWhenItTakesNothing) {
  const TempDir dir;
  const TerminalProcess terminal(dir.path(), {"--idle-timeout", "2"});
  RawSocket phone = openPhone(terminal);
  phone << longList("1");
  EXPECT_TRUE(holdsSoon([&] {
    phone << frame("", '\x8A');
    return readFile(dir.path() / "terminal.log").find("phone 1 is closed with 4408") != std::string::npos;
  }));
}

// No ping gets past a long list, so a client that reads it for longer than the idle time is silent meanwhile.
TEST(SlowClient, MayTakeItsTimeOverALongList) {
  using Seconds = std::chrono::duration<double>;
  constexpr size_t kBytes = size_t{5} << 20;
  constexpr Seconds kTime(6);
  const TempDir dir;
  const TerminalProcess terminal(dir.path(), {"--idle-timeout", "4"});
  RawSocket phone = openPhone(terminal);
  phone << longList("1");
  // A terminal that needs longer than the idle time to write the list pings meanwhile.
  while (phone.read(2) == std::string("\x89\0", 2)) phone << frame("", '\x8A');
  const auto begin = std::chrono::steady_clock::now();
  for (size_t taken = 0; taken < kBytes;) {
    const Seconds passed = std::chrono::steady_clock::now() - begin;
    if (static_cast<double>(taken) >= passed / kTime * kBytes) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      continue;
    }
    const std::string bytes = phone.read(16384);
    ASSERT_FALSE(bytes.empty()) << "the terminal has closed the connection";
    taken += bytes.size();
  }
  EXPECT_EQ(slowPhones(terminal), "0");
  phone << frame(R"({"id":2,"topic":"account.list"})");
  EXPECT_TRUE(phone.readUntil(R"("id":2,"topic":"account.list")").ends_with(R"("account.list")"));
}

// What waits for all clients has a limit, and the largest backlog goes first.
TEST(SlowClient, LosesTheLargestBacklog) {
  const TempDir dir;
  TerminalProcess terminal(dir.path(), {"--max-backlog", "10"});
  RawSocket first = openPhone(terminal);
  RawSocket second = openPhone(terminal);
  first << longList("1");
  first.readUntil("monitor.list");
  second << longList(std::string(60'000, 'x'));
  EXPECT_LT(second.readToEnd().size(), size_t{6} << 20);
  EXPECT_EQ(slowPhones(terminal), "1");
  EXPECT_TRUE(holdsSoon([&] {
    return readFile(dir.path() / "terminal.log").find("phone 2 reads too slowly: of all that waits") !=
           std::string::npos;
  }));
  first << frame(R"({"id":2,"topic":"account.list"})");
  EXPECT_TRUE(first.readUntil(R"("id":2,"topic":"account.list")").ends_with(R"("account.list")"));
  RawSocket third = openPhone(terminal);
  third << longList("3");
  EXPECT_EQ(third.read(size_t{5} << 20).size(), size_t{5} << 20);
  EXPECT_EQ(terminal.stop(), 0);
}

// How long a running terminal waits for a client's answer to a close frame.
constexpr std::chrono::seconds kCloseTime{3};

// A client that does not answer the close frame delays the terminal's end by only half a second.
TEST(SlowClient, DelaysTheEndLittle) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  RawSocket phone = openPhone(terminal);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(terminal.stop(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kCloseTime);
  EXPECT_THAT(phone.readToEnd(), HasSubstr(bigEndian(1001, 2)));
}

// The terminal waits less for its answer to a close frame when it stops.
TEST(SlowClient, ThatIsBeingClosedHoldsUpNoEnd) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  RawSocket phone = openPhone(terminal);
  phone << frame("x", '\x82');  // binary
  EXPECT_TRUE(phone.readUntil("\x03\xEB").ends_with("\x03\xEB")) << "close code 1003";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(terminal.stop(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kCloseTime);
}

// Clients that let their connections be closed, and do not answer that, cannot keep others out.
TEST(SlowClient, ThatIsBeingClosedGivesWay) {
  const TempDir dir;
  const TerminalProcess terminal(dir.path());
  std::deque<RawSocket> phones;
  for (int i = 0; i < 256; ++i) {
    RawSocket& phone = phones.emplace_back(terminal.port()) << kUpgrade;
    phone.readUntil("\r\n\r\n");
    phone << frame("x", '\x82');  // binary
    phone.readUntil("\x03\xEB");  // close code 1003
  }
  EXPECT_EQ(terminal.login()->request("account.list").message, "");
}

}  // namespace
}  // namespace orvane::test
