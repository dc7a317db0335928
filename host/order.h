#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// Where an order came from.
struct Source {
  int64_t sourceFlags = 1;  // one-bit origins, named by orderFlagName
  std::string sourceText;   // free text, GBK
  std::string reserved3;
};

// The host's record of one order. `side`, `combOffset` and `hedge` carry the numbers of vocabulary/names.h;
// `priceType` and `status` are the host's own.
struct Order {
  int64_t localOrderId = 0;  // the host's own number
  TradingAccountID account;
  SymbolCode code;
  Source orderSource;
  Source reserved5;
  std::array<std::string, 3> reserved6;
  std::string orderId;  // the exchange's or gateway's text, goes to the phone as it stands
  int64_t reserved10 = 0;
  int64_t srcTimestamp = 0;  // milliseconds since 1970
  int64_t volume = 0;
  double price = 0;
  std::array<int64_t, 2> reserved14{};
  double fillAmount = 0;  // value of what is filled
  std::array<int64_t, 2> reserved17{};
  int64_t fillVolume = 0;
  std::array<int32_t, 2> reserved20{};
  int32_t priceType = 0;
  int32_t reserved23 = 0;
  int32_t combOffset = 0;
  int32_t hedge = 0;
  int32_t side = 0;
  int32_t status = 0;
  std::array<int64_t, 3> reserved28{};
  std::string note;  // remark or reason of a refusal, GBK
  std::string reserved32;
  std::array<int64_t, 5> reserved33{};
  std::string reserved38;
  std::array<int64_t, 6> reserved39{};
  std::string reserved45;
  std::array<int64_t, 4> reserved46{};
  double fillAvgPrice = 0;
};

// The host's record of one fill; `volume` and `price` are the fill's own.
struct OrderFill {
  int64_t localOrderId = 0;  // of the order that it belongs to
  int64_t reserved2 = 0;
  TradingAccountID account;
  SymbolCode code;
  Source orderSource;
  std::array<std::string, 3> reserved6;
  std::array<int64_t, 5> reserved9{};
  int32_t reserved14 = 0;
  int32_t combOffset = 0;
  int32_t hedge = 0;
  int32_t side = 0;
  std::string fillId;         // goes to the phone as it stands
  int64_t exchTimestamp = 0;  // the host's time of the fill, written as the number it is
  int64_t reserved20 = 0;
  int64_t volume = 0;
  double price = 0;
  int64_t reserved23 = 0;
  std::string reserved24;
};

// One new order, as ITradeService::insertOrder takes it. `price`, `volume` and the numbers at the end are the phone's
// own values, unchecked: the host decides. Only `hedge` is always 1, speculation.
struct MobileNewOrderItem {
  TradingAccountID account;
  SymbolCode code;
  Source orderSource;
  std::array<std::string, 2> reserved4;
  int64_t srcTimestamp = 0;  // milliseconds, wrapped to 32 bits
  int64_t volume = 0;
  double price = 0;
  std::array<int64_t, 2> reserved9{};
  int32_t orderType = 0;
  int32_t reserved12 = 0;
  int32_t priceType = 0;
  int32_t instructionType = 0;
  int32_t combOffset = 0;
  int32_t hedge = 0;
  int32_t side = 0;
};

// One cancel, as ITradeService::cancelOrder takes it. Only the first three members ever differ from their start.
struct CancelOrderRequest {
  int64_t localOrderId = 0;  // 0 where the phone's text had no digits, clamped where it had too many
  TradingAccountID account;
  SymbolCode code;
  std::array<Source, 2> reserved4;
  std::array<std::string, 2> reserved6;
  std::string reserved8;
  std::array<int64_t, 5> reserved9{};
};

}  // namespace orvane
