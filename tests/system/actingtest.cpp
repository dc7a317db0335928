#include <map>
#include <regex>
#include <set>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using terminal::ClientError;
using terminal::Reply;
using testing::HasSubstr;

constexpr int64_t kRebar = 1000001;  // rb2701.SHFE: tick 1, 10 tons, margin 13 %
constexpr int64_t kMeal = 2000001;   // m2701.DCE

// A limit order to buy one or more lots in account 1.
std::string buyOrder(int64_t hashCode, int price, int volume, const std::string& source) {
  return fmt::format(
      R"({{"orderList":[{{"index":1,"hashCode":{},"side":1,"combOffset":1,"priceType":1,"price":{},"offset":0,)"
      R"("volume":{},"insertTimestamp":1000,"source":"{}"}}]}})",
      hashCode, price, volume, source);
}

// A numeric member of the list's row with this "codeExch", or of its first row.
double numberIn(const Reply& reply, const char* member, const std::string& codeExch = {}) {
  rapidjson::Document list;
  list.Parse(reply.data.data(), reply.data.size());
  if (!list.IsArray()) throw std::runtime_error("no list: " + reply.data + reply.message);
  for (const rapidjson::Value& row : list.GetArray()) {
    if (codeExch.empty() || row["codeExch"].GetString() == codeExch) return row[member].GetDouble();
  }
  throw std::runtime_error(codeExch + " is not in " + reply.data);
}

// The localOrderId of the one row of a push.
std::string orderIdIn(const Reply& push) {
  std::smatch id;
  std::regex_search(push.data, id, std::regex(R"re("localOrderId":"(\d+)")re"));
  return id[1];
}

TEST(Acting, OrderRestsFillsAndCancels) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  const auto phone = terminal.login();
  const auto other = terminal.login();
  const double longBefore = numberIn(phone->request("position.list", "[1]"), "longPosition", "rb2701.SHFE");
  const Reply capitalBefore = phone->request("capital.list", "[1]");

  EXPECT_EQ(phone->request("order.new", buyOrder(kRebar, 3320, 2, "phone")).message, "");
  const Reply placed = phone->waitPush("order.push");
  const std::string id = orderIdIn(placed);
  EXPECT_THAT(placed.data, HasSubstr("\"localOrderId\":\"" + id + "\",\"status\":1,"));
  EXPECT_THAT(phone->request("order.list", "[1]").data, HasSubstr("\"localOrderId\":\"" + id + "\",\"status\":1,"));
  const Reply capitalResting = phone->request("capital.list", "[1]");
  EXPECT_GT(numberIn(capitalResting, "frozenMargin"), numberIn(capitalBefore, "frozenMargin"));
  EXPECT_LT(numberIn(capitalResting, "available"), numberIn(capitalBefore, "available"));

  // The ask is one tick above the last price.
  EXPECT_EQ(phone->request("quote.set", fmt::format(R"({{"hashCode":{},"price":3319}})", kRebar)).message, "");
  for (Client* each : {phone.get(), other.get()}) {
    const Reply fill = each->waitPush("trade.push");
    EXPECT_EQ(orderIdIn(fill), id);
    EXPECT_EQ(numberIn(fill, "volume"), 2);
    EXPECT_EQ(numberIn(fill, "price"), 3320);
  }
  EXPECT_THAT(phone->waitPush("order.push").data, HasSubstr("\"localOrderId\":\"" + id + "\",\"status\":2,"));
  EXPECT_THAT(phone->request("trader.list", "[1]").data, HasSubstr("\"localOrderId\":\"" + id + "\""));
  EXPECT_EQ(numberIn(phone->request("position.list", "[1]"), "longPosition", "rb2701.SHFE"), longBefore + 2);
  const Reply capitalFilled = phone->request("capital.list", "[1]");
  EXPECT_GT(numberIn(capitalFilled, "commission"), numberIn(capitalBefore, "commission"));
  EXPECT_EQ(numberIn(capitalFilled, "frozenMargin"), numberIn(capitalBefore, "frozenMargin"));

  EXPECT_EQ(phone->request("order.new", buyOrder(kRebar, 3300, 1, "phone")).message, "");
  const std::string second = orderIdIn(phone->waitPush("order.push"));
  const std::string cancel = fmt::format(R"([{{"index":1,"localOrderId":"{}","hashCode":{}}}])", second, kRebar);
  EXPECT_EQ(phone->request("order.cancel", cancel).message, "");
  EXPECT_THAT(phone->waitPush("order.push").data, HasSubstr("\"localOrderId\":\"" + second + "\",\"status\":3,"));
  EXPECT_NE(phone->request("order.cancel", cancel).message, "");
  EXPECT_THAT(phone->request("order.new", buyOrder(kRebar, 9999, 1, "phone")).message, HasSubstr("涨跌停"));
}

TEST(Acting, KillLosesNoAcknowledgedOrder) {
  constexpr int kOrders = 200;
  constexpr int kUnderWay = 50;  // requests without an answer at any time
  const TempDir dir;
  std::set<std::string> acknowledged;
  {
    TerminalProcess terminal(dir.path());
    const auto phone = terminal.login();
    int sent = 0;
    const auto sendNext = [&] {
      phone->send(fmt::format(R"({{"id":"b{0}","topic":"order.new","data":{1}}})", sent,
                              buyOrder(kMeal, 2840, 1, fmt::format("b{}", sent))));
      ++sent;
    };
    while (sent < kUnderWay) sendNext();
    try {
      for (bool killed = false;;) {
        const Reply reply = phone->receive();
        if (reply.id.empty()) continue;
        EXPECT_EQ(reply.message, "");
        acknowledged.insert(reply.id.substr(1, reply.id.size() - 2));
        if (!killed && acknowledged.size() == kOrders / 4) {
          terminal.kill();
          killed = true;
        }
        if (!killed && sent < kOrders) sendNext();
      }
    } catch (const ClientError&) {
      // The end of the killed terminal's connection.
    }
  }
  EXPECT_GE(acknowledged.size(), kOrders / 4U);
  EXPECT_LT(acknowledged.size(), kOrders + 0U) << "the terminal was killed after the burst, not in it";

  TerminalProcess terminal(dir.path());
  const std::string orders = terminal.login()->request("order.list", "[1]").data;
  std::map<std::string, int> found;
  const std::regex source(R"re("source":"(b\d+)["|])re");
  for (std::sregex_iterator each(orders.begin(), orders.end(), source), end; each != end; ++each) ++found[(*each)[1]];
  for (const std::string& order : acknowledged) EXPECT_EQ(found.count(order), 1U) << order << " is lost";
  for (const auto& [order, times] : found) EXPECT_EQ(times, 1) << order;
}

}  // namespace
}  // namespace orvane::test
