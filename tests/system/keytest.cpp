#include <map>
#include <regex>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/support/holdssoon.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using terminal::ClientError;
using terminal::Reply;
using testing::HasSubstr;

constexpr std::string_view kUnknown =
    "the outcome of this request is not known: look at order.list before sending it anew under another key";

// A resting order whose source is its key.
std::string keyedOrder(const std::string& key, const std::string& source, int terminalType = 8) {
  return fmt::format(
      R"({{"id":"{0}","topic":"order.new","key":"{0}","terminalType":{2},"data":{{"orderList":[{{"index":1,)"
      R"("hashCode":2000001,"side":1,"combOffset":1,"priceType":1,"price":2840,"offset":0,"volume":1,)"
      R"("insertTimestamp":1,"source":"{1}"}}]}}}})",
      key, source, terminalType);
}

Reply ask(Client& phone, const std::string& frame) {
  phone.send(frame);
  for (;;) {
    if (Reply reply = phone.receive(); !reply.id.empty() && reply.id != "null") return reply;
  }
}

// How many orders in the list have each source, from k0 on.
std::map<std::string, int> countOrders(Client& phone) {
  const std::string orders = phone.request("order.list", "[1]").data;
  const std::regex source(R"re("source":"(k\d+)["|])re");
  std::map<std::string, int> counts;
  for (std::sregex_iterator each(orders.begin(), orders.end(), source), end; each != end; ++each) ++counts[(*each)[1]];
  return counts;
}

TEST(Key, AnswersEachRepetition) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  const auto phone = terminal.login();
  const auto other = terminal.login();
  const std::string order = keyedOrder("k1", "k1");
  // The long list delays the order, so that its repetition finds it running.
  std::string accounts = "1";
  for (int i = 0; i < 500; ++i) accounts += ",1";
  phone->send(R"({"topic":"monitor.list","data":[)" + accounts + "]}");
  for (Client* each : {phone.get(), phone.get(), other.get()}) each->send(order);
  for (Client* each : {phone.get(), phone.get(), other.get()}) {
    Reply reply = each->receive();
    while (reply.id != "\"k1\"") reply = each->receive();
    EXPECT_EQ(reply.message, "");
  }
  EXPECT_EQ(ask(*phone, order).message, "");

  struct Row {
    std::string frame;
    std::string message;
  };
  const std::vector<Row> rows{
      {keyedOrder("k1", "k2"), "the key k1 belongs to another request"},
      {keyedOrder("k1", "k1", 9), "the key k1 belongs to another request"},
      {R"({"id":1,"topic":"order.cancel","key":"k1","data":[]})", "the key k1 belongs to another request"},
      {R"({"id":1,"topic":"order.list","key":"k1","data":[1]})", "only a request that changes something takes a key"},
      {std::regex_replace(keyedOrder("k3", "k3"), std::regex("2840"), "9999"), "涨跌停"},
      {std::regex_replace(keyedOrder("k3", "k3"), std::regex("2840"), "9999"), "涨跌停"},
  };
  for (const Row& row : rows) EXPECT_THAT(ask(*phone, row.frame).message, HasSubstr(row.message)) << row.frame;
  EXPECT_EQ(countOrders(*phone), (std::map<std::string, int>{{"k1", 1}, {"k3", 1}}));
  EXPECT_THAT(readFile(dir.path() / "audit.log"), HasSubstr(R"("key":"k1","outcome":"answered")"));
  // Another token's keys are its own.
  EXPECT_EQ(ask(*terminal.login(makeToken(dir.path(), "two", "trade")), order).message, "");
  EXPECT_EQ(countOrders(*phone)["k1"], 2);
}

TEST(Key, IsKeptForSevenDays) {
  const TempDir dir;
  std::string token;
  for (const char* change :
       {"UPDATE action SET boot = NULL, made = made - 7 * 86400 + 60", "UPDATE action SET made = made - 61"}) {
    TerminalProcess terminal(dir.path());
    if (token.empty()) token = terminal.token();
    EXPECT_EQ(ask(*terminal.login(token), keyedOrder("k1", "k1")).message, "");
    ASSERT_EQ(terminal.stop(), 0);
    SQLite::Database(dir.path() / "gateway.db", SQLite::OPEN_READWRITE).exec(change);
  }
  TerminalProcess terminal(dir.path());
  const auto phone = terminal.login(token);
  EXPECT_TRUE(holdsSoon(
      [&] { return ask(*phone, keyedOrder("k1", "other")).message != "the key k1 belongs to another request"; }));
  EXPECT_EQ(countOrders(*phone)["k1"], 1);
}

// Every order is sent until it has an answer, whatever happens to connection and terminal in between.
TEST(Key, DoublesNoOrderWhenRepliesAreLost) {
  constexpr int kOrders = 60;
  const TempDir dir;
  std::string token;
  const auto keyOf = [](int number) { return fmt::format("k{}", number); };
  {
    TerminalProcess terminal(dir.path());
    token = terminal.token();
    const auto sendAll = [&](Client& phone) {
      for (int i = 0; i < kOrders; ++i) phone.send(keyedOrder(keyOf(i), keyOf(i)));
    };
    sendAll(*terminal.login());  // no reply is read
    const auto phone = terminal.login();
    for (int i = 0; i < kOrders / 2; ++i) EXPECT_EQ(ask(*phone, keyedOrder(keyOf(i), keyOf(i))).message, "");
    EXPECT_EQ(countOrders(*phone).size(), kOrders + 0U);
    for (int i = kOrders; i < 2 * kOrders; ++i) phone->send(keyedOrder(keyOf(i), keyOf(i)));
    while (phone->receive().id.empty()) continue;
    terminal.kill();
  }
  TerminalProcess terminal(dir.path());
  const auto phone = terminal.login(token);
  std::map<std::string, int> atLeast;
  for (int i = 0; i < 2 * kOrders; ++i) {
    const std::string message = ask(*phone, keyedOrder(keyOf(i), keyOf(i))).message;
    EXPECT_TRUE(message.empty() || message == kUnknown) << message;
    EXPECT_TRUE(message.empty() || i >= kOrders) << i;
    atLeast[keyOf(i)] = message.empty() ? 1 : 0;
  }
  std::map<std::string, int> orders = countOrders(*phone);
  for (const auto& [key, count] : atLeast) {
    EXPECT_GE(orders[key], count) << key;
    EXPECT_LE(orders[key], 1) << key;
  }
}

}  // namespace
}  // namespace orvane::test
