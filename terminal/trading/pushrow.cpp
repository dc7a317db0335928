#include "terminal/trading/pushrow.h"

#include "host/common.h"
#include "terminal/trading/jsontext.h"

namespace orvane::terminal {
namespace {

std::string sourceText(const Source& source) {
  constexpr int64_t kAlgorithm = 0x8000000;
  constexpr int64_t kAssistant = 0x400000;
  std::string text = CodeConvert::gbk_to_utf8(source.sourceText);
  if ((source.sourceFlags & kAlgorithm) != 0) text += "|算法下单";
  if ((source.sourceFlags & kAssistant) != 0) text += "|交易助手";
  return text;
}

// The members that rows of orders and of fills have in common, which come first.
template <typename Record>
void writeHead(JsonText& row, const Book& book, const Record& record) {
  const bool securities = holdsSecurities(static_cast<MarketType>(record.account.marketType));
  row.member("userCode", record.account.userCode);
  row.member("index", record.account.index);
  row.member("accountType", securities ? 1 : 0);
  row.member("codeExch", codeKey(book, record.code));
  row.member("hashCode", record.code.hashCode);
  row.member("codeName", CodeConvert::gbk_to_utf8(book.instruments.at(record.code.hashCode).name));
  row.member("side", record.side);
  row.member("combOffset", record.combOffset);
  row.member("hedge", record.hedge);
  row.member("price", record.price);
  row.member("volume", record.volume);
}

void writeOrder(JsonText& row, const Book& book, const Order& order) {
  writeHead(row, book, order);
  row.member("srcTimestamp", order.srcTimestamp);
  row.member("priceType", order.priceType);
  row.member("orderId", order.orderId);
  row.member("localOrderId", std::to_string(order.localOrderId));
  row.member("status", order.status);
  row.member("note", CodeConvert::gbk_to_utf8(order.note));
  row.member("source", sourceText(order.orderSource));
  row.member("fillVolume", order.fillVolume);
  row.member("fillAvgPrice", order.fillAvgPrice);
  row.member("fillAmount", order.fillAmount);
  row.member("accountStatus", 1);
}

void writeFill(JsonText& row, const Book& book, const OrderFill& fill) {
  writeHead(row, book, fill);
  row.member("exchTimestamp", fill.exchTimestamp);
  row.member("fillId", fill.fillId);
  row.member("localOrderId", std::to_string(fill.localOrderId));
  row.member("source", sourceText(fill.orderSource));
  row.member("accountStatus", 1);
}

}  // namespace

std::string orderRows(const Book& book, const Change& change) {
  return CodeConvert::utf8_to_gbk(
      jsonRows(change.orders, [&](JsonText& row, int64_t id) { writeOrder(row, book, book.orders.at(id).order); }));
}

std::string fillRows(const Book& book, const Change& change) {
  return CodeConvert::utf8_to_gbk(
      jsonRows(change.fills, [&](JsonText& row, const NewFill& it) { writeFill(row, book, it.fill); }));
}

}  // namespace orvane::terminal
