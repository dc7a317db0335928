#include <array>
#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "tests/support/phone.h"
#include "vocabulary/names.h"

namespace orvane::test {
namespace {

// The names in the order of their numbers, which must run from 0 without a gap.
template <size_t kSize>
std::string inOrder(const NumbersByName<kSize>& table) {
  std::array<std::string_view, kSize> names;
  for (const auto& [name, number] : table) {
    names.at(static_cast<size_t>(number)) = name;
    EXPECT_EQ(table.find(name)->second, number);
  }
  EXPECT_EQ(table.find("no such name"), table.end());
  std::string text;
  for (const std::string_view name : names) {
    text.append(text.empty() ? "" : " ").append(name);
  }
  return text;
}

TEST(Vocabulary, NamesEachNumberOfTheWire) {
  EXPECT_EQ(inOrder(sideNames),
            "Unknown Buy Sell MarginBuying ShortSelling SecurityReimbursement SellingReimbursement "
            "ReturnFund ReturnSec");
  EXPECT_EQ(inOrder(offsetNames), "Unknown Open OpenAuto AutoOpenClose Close CloseToday CloseYesterday CloseAuto");
  EXPECT_EQ(inOrder(hedgeNames), "Unknown Speculatio Arbitrage Hedge MarketMaker");
  EXPECT_EQ(inOrder(closePriorityNames), "NULL_PRIORITY TODAY_PRIORITY YESTERDAY_PRIORITY");
  EXPECT_EQ(inOrder(valueTypeNames),
            "UNKNOWN bool int double string bool_1d int_1d double_1d string_1d bool_2d int_2d "
            "double_2d string_2d");
  EXPECT_EQ(inOrder(tradeChannelNames),
            "UNKNOWN XLTraderPaper CTP Rohon HsUfx ITN JSD GSA KD HSO32 FAKE KingNew Femas Cms XTEXT QDIAM ZhiFu QDP "
            "ZhiDa HxXt OrvOldFuture OrvAsset CTPSe OrvSTK XTPSTK HSIS CTPStkOptSe FemasFull UfxStkOpt Esunny XTCTP "
            "TradeGateWay Jees PBCms Pobo");
}

TEST(Vocabulary, OrderOriginsAreFlagsInGbk) {
  std::string rows;
  for (const auto& [flag, name] : orderOriginNames) {
    rows += std::to_string(flag) + " " + CodeConvert::gbk_to_utf8(std::string(name)) + " ";
  }
  EXPECT_EQ(rows, "1 非本机 2 手工单 4 程序化单 8 ORVPY单 16 算法单 32 交易助手单 64 头寸监控单 127 全部 ");
  EXPECT_EQ(orderOriginNames.find(0), orderOriginNames.end());
}

}  // namespace
}  // namespace orvane::test
