#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// The origin of an order.
struct Source {
  int64_t sourceFlags = 1;  // bits of orderFlagNames in vocabulary/names.h
  std::string sourceText;   // free text, GBK
  std::string reserved3;
};

// The host's record of one order. `side`, `combOffset` and `hedge` are values of vocabulary/names.h. `priceType` and
// `status` are the host's codes and the figures the host's, in its units; all are sent unchanged.
struct Order {
  int64_t localOrderId = 0;  // the host's number of the order, which "order.cancel" sends back
  TradingAccountID account;
  SymbolCode code;
  Source orderSource;
  Source reserved5;
  std::array<std::string, 3> reserved6;
  std::string orderId;  // sent to clients byte for byte
  int64_t reserved10 = 0;
  int64_t srcTimestamp = 0;  // milliseconds
  int64_t volume = 0;
  double price = 0;
  std::array<int64_t, 2> reserved14{};
  double fillAmount = 0;
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
  std::string note;  // GBK
  std::string reserved32;
  std::array<int64_t, 5> reserved33{};
  std::string reserved38;
  std::array<int64_t, 6> reserved39{};
  std::string reserved45;
  std::array<int64_t, 4> reserved46{};
  double fillAvgPrice = 0;
};

// The host's record of one fill, with codes and units as in Order. `volume` and `price` are those of the fill.
struct OrderFill {
  int64_t localOrderId = 0;  // of the order
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
  std::string fillId;         // sent to clients byte for byte
  int64_t exchTimestamp = 0;  // in the host's unit
  int64_t reserved20 = 0;
  int64_t volume = 0;
  double price = 0;
  int64_t reserved23 = 0;
  std::string reserved24;
};

// A new order for ITradeService::insertOrder. The host filled `account` and `code`; everything else is the client's,
// unchecked, except for `hedge`, which is always 1 (speculation).
struct MobileNewOrderItem {
  TradingAccountID account;
  SymbolCode code;
  Source orderSource;
  std::array<std::string, 2> reserved4;
  int64_t srcTimestamp = 0;  // the client's seconds times 1000, wrapped to 32 bits
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

// A cancel for ITradeService::cancelOrder. The library sets only the first three members.
struct CancelOrderRequest {
  int64_t localOrderId = 0;  // 0 if the client's text starts with no number, clamped if it does not fit
  TradingAccountID account;
  SymbolCode code;
  std::array<Source, 2> reserved4;
  std::array<std::string, 2> reserved6;
  std::string reserved8;
  std::array<int64_t, 5> reserved9{};
};

}  // namespace orvane
