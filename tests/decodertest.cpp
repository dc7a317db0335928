#include <string>
#include <vector>

#include "tests/support/logcapture.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// Strings that a check must refuse; "" leaves the member out.
const Strings kAbsent = {""};
const Strings kNotInt = {"", "1.0", "2147483648", "-2147483649", "\"1\"", "true", "null"};
const Strings kNotInt64 = {"", "1.0", "9223372036854775808", "\"1\"", "[1]"};
const Strings kNotNumber = {"\"1\"", "true", "null", "9223372036854775808"};
const Strings kNotText = {"", "7", "null"};
const Strings kNotArray = {"", "7", "{}", "null"};
const Strings kNotCodes = {"[1,\"1\"]", "[1.5]", "[{}]", "[9223372036854775808]"};
const Strings kNoIntIfThere = {"\"1\"", "1.0", "null"};

// One check of an element: the member, a good value, bad values, and the texts of the error.
struct Check {
  std::string member, good;
  Strings bad;
  std::string reply;
  std::string log = reply;  // empty: no line
};

struct Decoder {
  std::string topic, framePrefix, elementPrefix;
  std::string framePlace, elementPlace;  // operation of MobileWorker and file; the second empty if the same
  std::vector<Check> checks;

  std::string body(const std::string& elements) const {
    return topic == "order.new" ? R"({"orderList":[)" + elements + "]}" : "[" + elements + "]";
  }
};

const Check kIndex = {"index", "2", kNotInt, "has no index member or not int"};
const Check kHash = {"hashCode", "-777", kNotInt64, "has no hashCode member or not int64"};
const Check kCode = {"hashCode", "777", kNotInt64, "has no code member or not int64"};
const Check kSide = {"side", "1", kNotInt, "has no side member or not int"};
const Check kVolume = {"volume", "3", kNotInt64, "has no volume member or not int64"};

// clang-format off
const std::vector<Check> kNewOrder = {
    {"index", "2", kNotInt, "has no Index member or not int", "has no index member or not int"},
    kCode, kSide,
    {"combOffset", "1", kNotInt, "OrderList has no combOffset member", "has no combOffset member or not int"},
    {"priceType", "1", kNotInt, "OrderList has no priceType member", "has no priceType member or not int"},
    {"price", "", kAbsent, "OrderList has no price member", "has no price member"},
    {"price", "1.5", kNotNumber, "price member must be double or int64"},
    {"offset", "0", kNotInt, "has no offset member or not int"},
    kVolume,
    {"insertTimestamp", "9", kNotInt, "has no insertTimestamp member or not int"},
    {"source", "\"x\"", kNotText, "has no source member or not string"},
    {"instructionType", "1", kNoIntIfThere, "instructionType member must be int", "instructionType member not int"},
    {"orderType", "1", kNoIntIfThere, "orderType member must be int", "orderType member not int"}};

const std::vector<Check> kCancelOrder = {kIndex, {"localOrderId", "\"\"", {}, ""}, kCode};

const std::vector<Check> kPair = {kIndex, kHash};

const std::vector<Check> kManualUpdate = {
    {"index", "2", kNotInt, "has no index member or not int64", "has no index member or not int"},
    kHash,
    {"longPos", "5", kNotInt64, "has no longPos member or not int64"},
    {"shortPos", "0", kNotInt64, "has no shortPos member or not int64"}};

const std::vector<Check> kSyncOrderNew = {
    kIndex, kHash, kVolume,
    {"price", "", kAbsent, "has no price member"},
    {"price", "3520", kNotNumber, "price member must be double or int64", ""},
    kSide,
    {"combOffsetFlag", "1", kNotInt, "has no combOffsetFlag member or not int"}};

const std::vector<Check> kMarginRate = {
    kIndex,
    {"hashCodes", "", kNotArray, "has no hashCodes member or not array"},
    {"hashCodes", "[777]", kNotCodes, "hashCodes element not int64"}};
// clang-format on

const std::vector<Decoder> kDecoders = {
    {"order.new", "newOrder", "orderList", "parseNewOrder neworder.cpp", "parseOrderList neworder.cpp", kNewOrder},
    {"order.cancel", "cancelOrder", "cancelOrder", "parseCancelOrder cancelorder.cpp", "", kCancelOrder},
    {"monitor.sync.order.list", "monitorSync", "monitorManualList", "parseMonitorOrder monitor.cpp", "", kPair},
    {"monitor.sync.order.new", "monitorNewOrder", "monitorNewOrder", "parseMonitorNewOrder monitor.cpp", "",
     kSyncOrderNew},
    {"monitor.manual.list", "monitorManualList", "monitorManualList", "parseMonitorManualList monitor.cpp", "", kPair},
    {"monitor.manual.update", "manualUpdate", "manualUpdate", "parseMonitorManualUpdate monitor.cpp", "",
     kManualUpdate},
    {"monitor.manual.clean", "monitorManualClean", "newOrder", "parseMonitorManualClean monitor.cpp", "", kPair},
    {"marginrate.list", "symbolMarginRate", "marginRate", "parseSymbolMarginRate marginrate.cpp", "", kMarginRate}};

// Sends a body that must fail.
void expectFailure(const std::string& topic, const std::string& body, const std::string& prefix,
                   const std::string& reply, const std::string& log, const std::string& place) {
  SCOPED_TRACE(topic + " " + body.substr(0, 200));
  ScriptedHost host;
  LogCapture capture(log4cxx::Level::getDebug());
  EXPECT_THAT(Phone::ask(topic, body), FieldsAre(42, "unknown.topic", reply, "", 8));
  std::vector<std::string> lines;
  if (!log.empty()) {
    lines.push_back("[DEBUG] PocketAgent parse " + prefix + " error,RequestID=42, Topic=" + topic + ",msg=" + log);
  }
  EXPECT_EQ(capture.lines(), lines);
  EXPECT_EQ(capture.lastPlace(), log.empty() ? "" : "DEBUG orvane::MobileWorker::" + place);
  EXPECT_THAT(host.calls(), ElementsAre("send"));
  EXPECT_THAT(host.converted, ElementsAre(reply));
}

void append(std::string& members, const std::string& name, const std::string& value) {
  if (!value.empty()) members += (members.empty() ? "\"" : ",\"") + name + "\":" + value;
}

std::string goodElement(const Decoder& decoder) {
  std::string members;
  for (const Check& check : decoder.checks) append(members, check.member, check.good);
  return "{" + members + "}";
}

// Each bad element ends at its error and follows a good one, so both an omitted check and a wrong order are noticed.
TEST(Decoders, EachCheckHasItsReplyAndItsLogText) {
  for (const Decoder& decoder : kDecoders) {
    std::string before;
    for (const Check& check : decoder.checks) {
      for (const std::string& bad : check.bad) {
        std::string members = before;
        append(members, check.member, bad);
        expectFailure(decoder.topic, decoder.body(goodElement(decoder) + ",{" + members + "}"), decoder.elementPrefix,
                      check.reply, check.log, decoder.elementPlace.empty() ? decoder.framePlace : decoder.elementPlace);
      }
      append(before, check.member, check.good);
    }
  }
}

TEST(Decoders, EachFrameHasItsReplyAndItsLogText) {
  for (const Decoder& decoder : kDecoders) {
    std::string text = "Data member not array";
    Strings bodies = {"{}", "7", "null", R"("[]")"};
    if (decoder.topic == "order.new") {
      text = "has no orderList member or not array";
      bodies = {"{}", R"({"orderList":{}})", R"({"orderList":null})", R"({"OrderList":[]})"};
    } else if (decoder.topic == "order.cancel") {
      text = "has no Data member or not array";
    }
    for (const std::string& body : bodies) {
      expectFailure(decoder.topic, body, decoder.framePrefix, text, text, decoder.framePlace);
    }
    for (const std::string body : {"", " ", "[{", R"({"orderList":[})"}) {
      expectFailure(decoder.topic, body, decoder.framePrefix, "invalid json string", "invalid json string",
                    decoder.framePlace);
    }
  }
}

TEST(Decoders, GoodBodyPassesWithOtherMembersAndTextBehindIt) {
  for (const Decoder& decoder : kDecoders) {
    ScriptedHost host;
    LogCapture log(log4cxx::Level::getDebug());
    const std::string element = goodElement(decoder).insert(1, R"("more":[{}],)");
    const std::string body = decoder.body(std::string(element).append(",").append(element)).append("]]");
    EXPECT_NE(Phone::ask(decoder.topic, body).topic, "unknown.topic");
    EXPECT_THAT(log.lines(), IsEmpty()) << decoder.topic;
  }
}

TEST(Decoders, FirstOfDuplicateMembersCountsInEveryOrder) {
  for (const std::string body :
       {R"([{"index":2,"index":1,"hashCodes":[]}])", R"([{"hashCodes":[],"index":2,"index":1}])"}) {
    SymbolMarginRateReq request;
    EXPECT_EQ(MobileWorker().parseSymbolMarginRate(1, kTopicMarginRateList, body, request).code, 0);
    EXPECT_EQ(request.queries.at(0).index, 2) << body;
  }
}

TEST(DecodersDeathTest, ElementThatIsNotAnObjectEndsTheProcess) {
  ScriptedHost host;
  for (const Decoder& decoder : kDecoders) {
    for (const std::string element : {"7", "[]"}) {
      EXPECT_DEATH(Phone::ask(decoder.topic, decoder.body(goodElement(decoder) + "," + element)), "IsObject\\(\\)");
    }
  }
  for (const std::string root : {"[]", "7", "null"}) {
    EXPECT_DEATH(Phone::ask("order.new", root), "IsObject\\(\\)") << root;
  }
}

TEST(Selector, ReadsIntsInTheOrderOfTheBody) {
  std::string longBody = "[0";
  for (int index = 0; index < 10'000; ++index) longBody += "," + std::to_string(index);
  const std::vector<std::pair<std::string, AccountSelector>> rows = {
      {"[]", {}},
      {"[0,3]", {0, 3}},
      {" [1, 1, 2] trailing text", {1, 1, 2}},
      {"[1][2", {1}},
      {std::string("[5]\0[6]", 7), {5}},
      {"[-2147483648,2147483647]", {INT32_MIN, INT32_MAX}}};
  AccountSelector selector;
  EXPECT_EQ(MobileWorker().parseTid(1, kTopicCapitalList, longBody + "]", selector).code, 0);
  EXPECT_EQ(selector.size(), 10'001U);
  for (const auto& [body, expected] : rows) {
    selector.clear();
    EXPECT_EQ(MobileWorker().parseTid(1, kTopicCapitalList, body, selector).code, 0) << body;
    EXPECT_EQ(selector, expected) << body;
  }
}

TEST(Selector, EachFailureHasItsReplyAndItsLogText) {
  const std::string invalid = "invalid json string";
  const std::string notArray = "Data member not array";
  const std::vector<std::tuple<Strings, std::string, std::string>> rows = {
      {{"", "  ", "[1", "[1,]", std::string("\0[1]", 4), std::string(1'000'000, '[')}, invalid, invalid},
      {{R"({"a":1})", "7", "null"}, notArray, notArray},
      {{"[1,2.0]", "[1,3000000000]", R"(["1"])", "[true]", "[[1]]"}, notArray, "Data element not int"}};
  for (const auto& [bodies, reply, log] : rows) {
    for (const std::string& body : bodies) {
      for (const std::string topic : {"capital.list", "creditinfo.list"}) {
        expectFailure(topic, body, "tid", reply, log, "parseTid accountselector.cpp");
      }
    }
  }
}

TEST(Selector, FailureIsTheSameWithTheLogOffAndNamesUnknownTopics) {
  ScriptedHost host;
  AccountSelector selector;
  LogCapture log(log4cxx::Level::getInfo());
  EXPECT_THAT(MobileWorker().parseTid(7, kTopicCapitalList, "{}", selector), FieldsAre(-1, "Data member not array"));
  EXPECT_THAT(log.lines(), IsEmpty());
  agentLogger()->setLevel(log4cxx::Level::getDebug());
  MobileWorker().parseTid(7, OrvMobileTopic{99}, "{}", selector);
  EXPECT_THAT(log.lines(), ElementsAre("[DEBUG] PocketAgent parse tid error,RequestID=7, Topic=unknown.topic,"
                                       "msg=Data member not array"));
}

}  // namespace
}  // namespace orvane::test
