#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "tests/fullhost.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// A request of requests.txt, which describes the format: the host's calls in order, with the answers among them.
struct Case {
  std::string host, topic, body;
  Strings steps;
};

// The text with each «part» in GBK.
std::string unmarked(const std::string& text) {
  static const std::regex mark("«(.*?)»");
  std::string plain;
  std::string rest = text;
  for (std::smatch found; std::regex_search(rest, found, mark); rest = found.suffix()) {
    plain += found.prefix().str() + gbk(found[1]);
  }
  return plain + rest;
}

std::vector<Case> readCases() {
  std::ifstream file(REQUESTS);
  std::vector<Case> cases;
  std::string host;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("[")) {
      host = line.substr(1, line.size() - 2);
    } else if (line.starts_with("  ")) {
      static const std::regex separator("; ?");
      std::transform(std::sregex_token_iterator(line.begin() + 2, line.end(), separator, -1),
                     std::sregex_token_iterator(), std::back_inserter(cases.back().steps),
                     [](const auto& step) { return unmarked(step.str()); });
    } else if (!line.empty() && !line.starts_with("#")) {
      const size_t end = std::min(line.find(' '), line.size());
      cases.push_back({host, line.substr(0, end), line.substr(std::min(end + 1, line.size())), {}});
    }
  }
  return cases;
}

// Accounts 3 and 1 with a record in each list, an instrument 1 whose class has a margin rate, and a monitor record of
// account 2 without a code type.
struct SelectionHost : ScriptedHost {
  SelectionHost() {
    for (const int32_t index : {3, 1}) {
      accounts.push_back(account(index, "u"));
      orders.emplace_back().account = fills.emplace_back().account = accountId(index, "u");
      orders.back().code = fills.back().code = symbol(1, "c");
      positions.push_back({.account = accountId(index, "u"), .code = symbol(1, "c"), .reserved4 = ""});
      positions.back().longPosition = 1;
    }
    for (const int32_t index : {3, 2, 1}) {
      monitorRecords.emplace_back().account.index = index;
      monitorRecords.back().code.hashCode = index == 2 ? 2 : 1;
    }
    codeTypes[1] = {};
    credits[1] = {};
  }
};

// Refuses account 2, the cancel of order 5 and orders of the instruments 30 to 50. The instrument 7 is a stock.
struct OrderHost : ScriptedHost {
  OrderHost() {
    accounts = {account(1, "u1"), account(2, "u2"), account(-1)};
    for (const int64_t hash : {10, 20, 30, 40, 50, -5}) symbols[hash] = symbol(hash, "c");
    symbols[7] = symbol(7, "stock", 1, 0);
    marginRates[-5].a = 0.1;
    marginRates[7].a = 1;
    defaultMarginRate = 0.5;
    accountRefusals[2] = {6, gbk("未授权")};
    cancelStatuses[5] = {3, gbk("已成交")};
    insertStatuses = {{10, {0, gbk("已收")}}, {30, {4, "later"}}, {40, {-3, gbk("资金不足")}}, {50, {1, ""}}};
  }
};

std::unique_ptr<ScriptedHost> makeHost(const std::string& name) {
  if (name == "full") return std::make_unique<FullHost>();
  if (name == "selection") return std::make_unique<SelectionHost>();
  return std::make_unique<OrderHost>();
}

// The data of an answer. Of SelectionHost's rows only the account indexes matter.
std::string shown(const std::string& host, const std::string& data) {
  if (host != "selection" || data.empty() || data == "[]") return data;
  static const std::regex index(R"("index":(-?\d+))");
  std::string indexes = "rows of";
  for (std::sregex_iterator it(data.begin(), data.end(), index), end; it != end; ++it) indexes += " " + it->str(1);
  return indexes;
}

// The steps of one request. An answer is "= data" or "! message"; another topic than the request's is before it.
Strings stepsOf(const Case& request, int32_t terminalType) {
  const std::vector<MobileMessage> sent = Phone::askAll(request.topic, request.body, terminalType);
  Strings steps = ScriptedHost::current().calls();
  auto next = sent.begin();
  for (std::string& step : steps) {
    if (step != "send" || next == sent.end()) continue;
    EXPECT_THAT(*next, FieldsAre(42, _, _, _, 8));
    step = next->message.empty() ? "=" : "!";
    for (const std::string& part :
         {next->topic == request.topic ? "" : next->topic, next->message, shown(request.host, next->data)}) {
      step += part.empty() ? "" : " " + part;
    }
    ++next;
  }
  return steps;
}

TEST(Requests, CallTheHostAndAreAnsweredToTheByte) {
  for (const Case& it : readCases()) {
    const auto host = makeHost(it.host);
    EXPECT_EQ(stepsOf(it, 8), it.steps) << it.topic << " " << it.body;
  }
}

// A refused user learns nothing else. Topics without a check answer as ever.
TEST(Requests, EndAtTheCheckOfTheUser) {
  for (const Case& it : readCases()) {
    const auto host = makeHost(it.host);
    host->userRefusal = {9, gbk("无权限")};
    Strings steps = it.steps;
    if (steps.at(0).starts_with("checkUser(")) {
      const std::string checked = steps[0].substr(10, steps[0].size() - 11);
      steps = {steps[0], (checked == it.topic ? "! " : "! " + checked + " ") + "无权限"};
    }
    EXPECT_EQ(stepsOf(it, 24), steps) << it.topic << " " << it.body;
  }
}

}  // namespace
}  // namespace orvane::test
