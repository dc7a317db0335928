#include "tests/trading/listrow.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "host/common.h"

namespace orvane::terminal::testing {
namespace {

template <typename Number>
std::string digits(Number value) {
  return fmt::format("{:.4f}", static_cast<double>(value));
}

std::string labelled(const Source& source) {
  return source.sourceText + ((source.sourceFlags & 0x8000000) != 0 ? "|算法下单" : "") +
         ((source.sourceFlags & 0x400000) != 0 ? "|交易助手" : "");
}

// Members that rows of orders and of fills share.
template <typename Record>
Row commonRow(const Record& it, const second::SecondBook& book) {
  const second::Instrument& instrument = book.instruments.at(it.code.hashCode);
  const bool securities = it.account.marketType == 2 || it.account.marketType == 16;
  return {{"userCode", it.account.userCode},
          {"index", digits(it.account.index)},
          {"accountType", securities ? "1.0000" : "0.0000"},
          {"codeExch", it.code.code + "." + instrument.exchange},
          {"hashCode", digits(it.code.hashCode)},
          {"codeName", instrument.name},
          {"side", digits(it.side)},
          {"combOffset", digits(it.combOffset)},
          {"hedge", digits(it.hedge)},
          {"price", digits(it.price)},
          {"volume", digits(it.volume)},
          {"localOrderId", std::to_string(it.localOrderId)},
          {"source", labelled(it.orderSource)},
          {"accountStatus", "1.0000"}};
}

}  // namespace

Row rowOf(const Order& it, const second::SecondBook& book) {
  Row row = commonRow(it, book);
  row.merge(Row{{"srcTimestamp", digits(it.srcTimestamp)},
                {"priceType", digits(it.priceType)},
                {"orderId", it.orderId},
                {"status", digits(it.status)},
                {"note", it.note},
                {"fillVolume", digits(it.fillVolume)},
                {"fillAvgPrice", digits(it.fillAvgPrice)},
                {"fillAmount", digits(it.fillAmount)}});
  return row;
}

Row rowOf(const OrderFill& it, const second::SecondBook& book) {
  Row row = commonRow(it, book);
  row.merge(Row{{"exchTimestamp", digits(it.exchTimestamp)}, {"fillId", it.fillId}});
  return row;
}

Row rowOf(int64_t hash, const second::Instrument& it) {
  return {{"hashCode", digits(hash)},
          {"codeExch", it.code + "." + it.exchange},
          {"codeName", it.name},
          {"codeClass", digits(it.kind)},
          {"lastPrice", digits(it.last)},
          {"bidPrice", digits(it.bid())},
          {"askPrice", digits(it.ask())},
          {"preClosePrice", digits(it.preClose)},
          {"preSettlementPrice", digits(it.preSettlement)},
          {"lowerLimit", digits(it.low)},
          {"upperLimit", digits(it.high)},
          {"priceTick", digits(it.tick)},
          {"volumeStep", digits(it.lot)},
          {"maxVolume", digits(it.most)},
          {"multiplier", digits(it.multiplier)}};
}

std::vector<Row> rowsOf(const MobileMessage& message) {
  rapidjson::Document document;
  document.Parse(message.data.c_str());
  std::vector<Row> rows;
  if (document.HasParseError() || !document.IsArray()) {
    ADD_FAILURE() << message.topic << " is no array: " << message.data;
    return rows;
  }
  for (const auto& element : document.GetArray()) {
    Row& row = rows.emplace_back();
    for (const auto& member : element.GetObject()) {
      row[member.name.GetString()] = member.value.IsString() ? CodeConvert::gbk_to_utf8(member.value.GetString())
                                                             : digits(member.value.GetDouble());
    }
  }
  return rows;
}

}  // namespace orvane::terminal::testing
