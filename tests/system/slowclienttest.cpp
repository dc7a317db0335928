#include <chrono>
#include <deque>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/support/holdssoon.h"
#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;

// More than the kernel takes for a peer that does not read: 6 MB.
std::string longList(const std::string& id) {
  return frame(
      fmt::format(R"({{"id":"{}","topic":"monitor.list","data":[{}]}})", id, fmt::join(std::vector(1000, 1), ",")));
}

RawSocket openPhone(const TerminalProcess& terminal) {
  RawSocket phone = openWebSocket(terminal.port());
  phone << frame(R"({"topic":"login","token":")" + terminal.token() + "\"}");
  phone.readUntil("\"resumed\":false}}");
  return phone;
}

// Sends binary data and waits for the close code 1003.
void closeByFault(RawSocket& phone) {
  phone << frame("x", '\x82');
  EXPECT_TRUE(phone.readUntil("\x03\xEB").ends_with("\x03\xEB"));
}

std::string slowPhones(const TerminalProcess& terminal) {
  const std::string name = "closes_total{code=\"4408\"} ";
  const std::string metrics = httpGet(terminal.port(), "/metrics");
  const size_t begin = metrics.find(name) + name.size();
  return metrics.substr(begin, metrics.find('\n', begin) - begin);
}

// Pongs come from a peer that takes no byte, too.
TEST(SlowClient, IsClosedWhenItTakesNothing) {
  const FreshTerminal terminal({"--idle-timeout", "2"});
  RawSocket phone = openPhone(terminal);
  phone << longList("1");
  EXPECT_TRUE(holdsSoon([&] {
    phone << frame("", '\x8A');
    return terminal.log().find("phone 1 is closed with 4408") != std::string::npos;
  }));
}

// No ping gets past a long list, so a client that reads it for longer than the idle time is silent meanwhile.
TEST(SlowClient, MayTakeItsTimeOverALongList) {
  using Seconds = std::chrono::duration<double>;
  constexpr size_t kBytes = size_t{5} << 20;
  constexpr Seconds kTime(6);
  const FreshTerminal terminal({"--idle-timeout", "4"});
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

// The backlogs of all clients together have a limit. Beyond it the client with the largest is closed.
TEST(SlowClient, LosesTheLargestBacklog) {
  FreshTerminal terminal({"--max-backlog", "10"});
  RawSocket first = openPhone(terminal);
  RawSocket second = openPhone(terminal);
  first << longList("1");
  first.readUntil("monitor.list");
  second << longList(std::string(60'000, 'x'));
  EXPECT_LT(second.readToEnd().size(), size_t{6} << 20);
  EXPECT_EQ(slowPhones(terminal), "1");
  EXPECT_TRUE(holdsSoon(
      [&] { return terminal.log().find("phone 2 reads too slowly: of all that waits") != std::string::npos; }));
  first << frame(R"({"id":2,"topic":"account.list"})");
  EXPECT_TRUE(first.readUntil(R"("id":2,"topic":"account.list")").ends_with(R"("account.list")"));
  RawSocket third = openPhone(terminal);
  third << longList("3");
  EXPECT_EQ(third.read(size_t{5} << 20).size(), size_t{5} << 20);
  EXPECT_EQ(terminal.stop(), 0);
}

// The answers repeat the long ids until neither the connection nor the send queue can hold more of them.
TEST(SlowClient, LosesItsConnection) {
  FreshTerminal terminal;
  const auto phone = terminal.login();
  const std::string frame = "{\"id\":\"" + std::string(200'000, 'x') + "\",\"topic\":\"order.condition.list\"}";
  ASSERT_TRUE(holdsSoon([&] {
    phone->send(frame);
    return terminal.log().find("phone 1 reads too slowly") != std::string::npos;
  }));
  EXPECT_EQ(phone->waitClose(), 4408);
  EXPECT_EQ(terminal.login()->request("account.list").message, "");
}

// When the terminal stops, it waits only half a second for the answer to a close frame, also to one that was sent
// before; otherwise three seconds.
TEST(SlowClient, DelaysTheEndLittle) {
  for (const bool isBeingClosed : {false, true}) {
    FreshTerminal terminal;
    RawSocket phone = openPhone(terminal);
    if (isBeingClosed) closeByFault(phone);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(terminal.stop(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    if (!isBeingClosed) {
      EXPECT_THAT(phone.readToEnd(), HasSubstr(bigEndian(1001, 2)));
    }
  }
}

// Clients that let their connections be closed, and do not answer that, cannot keep others out.
TEST(SlowClient, ThatIsBeingClosedGivesWay) {
  const FreshTerminal terminal;
  std::deque<RawSocket> phones;
  for (int i = 0; i < 256; ++i) {
    RawSocket& phone = phones.emplace_back(terminal.port()) << kUpgrade;
    phone.readUntil("\r\n\r\n");
    closeByFault(phone);
  }
  EXPECT_EQ(terminal.login()->request("account.list").message, "");
}

}  // namespace
}  // namespace orvane::test
