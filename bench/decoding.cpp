#include <list>

#include "bench/figure.h"
#include "bench/timing.h"
#include "decoding/requestrecords.h"
#include "pocketagent/json.h"
#include "pocketagent/mobileworker.h"

namespace orvane::bench {
namespace {

// The members of an order in a body.
struct PlainOrder {
  int32_t index, side, combOffset, priceType, offset, insertTimestamp, instructionType, orderType;
  int64_t hashCode, volume;
  double price;
  std::string source;
};

std::string orderBody(size_t count) {
  std::string body = R"({"orderList":[)";
  for (size_t i = 0; i < count; ++i) {
    body += (i == 0 ? "" : ",") + std::string(R"({"index":)") + std::to_string(i % 5) + R"(,"hashCode":)" +
            std::to_string(1'000'001 + i) + R"(,"side":1,"combOffset":1,"priceType":2,"price":)" +
            std::to_string(3200 + i) + (i % 2 == 0 ? ".5" : "") + R"(,"offset":0,"volume":)" + std::to_string(1 + i) +
            R"(,"insertTimestamp":1700000000,"source":"mobile","instructionType":0,"orderType":1})";
  }
  return body + "]}";
}

const JsonValue* find(const JsonValue& object, const char* name) {
  const auto member = object.FindMember(name);
  return member == object.MemberEnd() ? nullptr : &member->value;
}

bool readInt(const JsonValue& object, const char* name, int32_t& target) {
  const JsonValue* value = find(object, name);
  if (value == nullptr || !value->IsInt()) return false;
  target = value->GetInt();
  return true;
}

bool readInt64(const JsonValue& object, const char* name, int64_t& target) {
  const JsonValue* value = find(object, name);
  if (value == nullptr || !value->IsInt64()) return false;
  target = value->GetInt64();
  return true;
}

bool readOrder(const JsonValue& element, PlainOrder& order) {
  const JsonValue* price = find(element, "price");
  const JsonValue* source = find(element, "source");
  if (price == nullptr || !price->IsNumber() || source == nullptr || !source->IsString()) return false;
  order.price = price->GetDouble();
  order.source = source->GetString();
  return readInt(element, "index", order.index) && readInt64(element, "hashCode", order.hashCode) &&
         readInt(element, "side", order.side) && readInt(element, "combOffset", order.combOffset) &&
         readInt(element, "priceType", order.priceType) && readInt(element, "offset", order.offset) &&
         readInt64(element, "volume", order.volume) && readInt(element, "insertTimestamp", order.insertTimestamp) &&
         readInt(element, "instructionType", order.instructionType) && readInt(element, "orderType", order.orderType);
}

std::list<PlainOrder> readNaively(const std::string& body) {
  std::list<PlainOrder> orders;
  rapidjson::Document document;
  document.Parse<rapidjson::kParseStopWhenDoneFlag>(body.c_str());
  const JsonValue* list = document.HasParseError() || !document.IsObject() ? nullptr : find(document, "orderList");
  if (list != nullptr && list->IsArray()) {
    for (const JsonValue& element : list->GetArray()) {
      if (!readOrder(element, orders.emplace_back())) return {};
    }
  }
  return orders;
}

MobileNewOrder readOrders(MobileWorker& worker, const std::string& body) {
  MobileNewOrder order;
  worker.parseNewOrder(1, kTopicNewOrder, body, order);
  return order;
}

// Every field of an order that both sides keep: the library reads "offset" and drops it.
std::string text(const auto& order, int32_t index, int64_t hashCode, int64_t milliseconds, const std::string& source) {
  std::string line = source;
  for (const int64_t number :
       {int64_t{index}, hashCode, order.volume, milliseconds, int64_t{order.side}, int64_t{order.combOffset},
        int64_t{order.priceType}, int64_t{order.instructionType}, int64_t{order.orderType}}) {
    line += " " + std::to_string(number);
  }
  return line + " " + std::to_string(order.price) + "\n";
}

Sides orderSides(size_t count) {
  const auto worker = std::make_shared<MobileWorker>();
  const auto body = std::make_shared<const std::string>(orderBody(count));
  std::string ours;
  for (const MobileNewOrderItem& order : readOrders(*worker, *body).items) {
    ours += text(order, order.account.index, order.code.hashCode, order.srcTimestamp, order.orderSource.sourceText);
  }
  std::string naive;
  for (const PlainOrder& order : readNaively(*body)) {
    const auto milliseconds = static_cast<int32_t>(static_cast<uint32_t>(order.insertTimestamp) * 1000U);
    naive += text(order, order.index, order.hashCode, milliseconds, order.source);
  }
  requireEqual(ours, naive);
  return {timed([worker, body] { keep(readOrders(*worker, *body)); }), timed([body] { keep(readNaively(*body)); })};
}

std::list<int32_t> selectNaively(const std::string& body) {
  std::list<int32_t> selector;
  rapidjson::Document document;
  document.Parse<rapidjson::kParseStopWhenDoneFlag>(body.c_str());
  if (document.HasParseError() || !document.IsArray()) return selector;
  for (const JsonValue& element : document.GetArray()) {
    if (!element.IsInt()) return {};
    selector.push_back(element.GetInt());
  }
  return selector;
}

AccountSelector select(MobileWorker& worker, const std::string& body) {
  AccountSelector selector;
  worker.parseTid(1, kTopicCapitalList, body, selector);
  return selector;
}

Sides selectorSides() {
  const auto worker = std::make_shared<MobileWorker>();
  const std::string body = "[1,2,30]";
  requireEqual(select(*worker, body) == selectNaively(body) ? "the same" : "not the same", "the same");
  return {timed([worker, body] { keep(select(*worker, body)); }), timed([body] { keep(selectNaively(body)); })};
}

}  // namespace

std::vector<Figure> decodingFigures() {
  const std::string document = "rapidjson `Document`, stop when done, members read into a struct";
  return {
      {"decode \"order.new\", 1 order", document, "ns", Bound::AtMost, 1.10, 1.00, 101, [] { return orderSides(1); }},
      {"decode \"order.new\", 100 orders", document, "ns", Bound::AtMost, 1.10, 1.00, 101,
       [] { return orderSides(100); }},
      {"decode a selector of 3 accounts", document, "ns", Bound::AtMost, 1.10, 1.00, 101, selectorSides},
  };
}

}  // namespace orvane::bench
