#include <gmock/gmock.h>

#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;

std::string loginFrame(const std::string& token) { return frame(R"({"topic":"login","token":")" + token + "\"}"); }

// Many orders at once, which the client does not wait for: each is answered, unless the client is closed for the crowd.
TEST(Flood, IsAnsweredOrClosed) {
  const TempDir dir;
  const TerminalProcess terminal(dir.path());
  constexpr size_t kOrders = 3000;
  const std::string order = frame(
      R"({"topic":"order.new","data":{"orderList":[{"index":1,"hashCode":1000001,"side":1,"combOffset":1,"offset":0,)"
      R"("priceType":1,"price":3300,"volume":1,"insertTimestamp":1,"source":"x"}]}})");
  std::string requests;
  for (size_t i = 0; i < kOrders; ++i) requests += order;
  RawSocket phone = openWebSocket(terminal.port());
  phone << loginFrame(terminal.token());
  phone.readUntil("\"resumed\":false}}");
  const std::string end = "\"data\":null}";
  phone << requests;
  size_t answered = 0;
  std::string text = end;
  for (; answered < kOrders && text.ends_with(end); ++answered) text = phone.readUntil(end);
  EXPECT_THAT(text, AnyOf(EndsWith(end), HasSubstr(bigEndian(4429, 2) + "too many requests wait for their reply")));
  EXPECT_EQ(terminal.login()->request("account.list").message, "");
}

// A client that does not answer the close frame delays the terminal's end by only half a second.
TEST(SilentClient, DelaysTheEndLittle) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  RawSocket phone = openWebSocket(terminal.port());
  phone << loginFrame(terminal.token());
  phone.readUntil("\"resumed\":false}}");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(terminal.stop(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  EXPECT_THAT(phone.readToEnd(), HasSubstr(bigEndian(1001, 2)));
}

}  // namespace
}  // namespace orvane::test
