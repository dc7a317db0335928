#include "serialise/ordersource.h"

#include <map>
#include <string_view>

#include "vocabulary/gbk.h"

namespace orvane {

namespace {

constexpr int32_t kAlgorithmOrder = 0x8000000;
constexpr int32_t kTradingAssistant = 0x400000;

}  // namespace

std::string orderFlagName(int32_t flag) {
  static const auto& names = *new std::map<int32_t, std::string_view>{
      {0, "未知"_gbk},
      {0x1, "非本机"_gbk},
      {0x2, "预埋单"_gbk},
      {0x4, "图中有宝"_gbk},
      {0x8, "套利宝"_gbk},
      {0x10, "价差下单"_gbk},
      {0x20, "止损获利单"_gbk},
      {0x40, "画线下单"_gbk},
      {0x80, "一键全撤"_gbk},
      {0x100, "一键撤单"_gbk},
      {0x200, "融资融券"_gbk},
      {0x400, "合约调仓"_gbk},
      {0x800, "账户调仓"_gbk},
      {0x1000, "一键全平"_gbk},
      {0x2000, "一键平仓"_gbk},
      {0x4000, "盘口下单"_gbk},
      {0x8000, "一键下单"_gbk},
      {0x10000, "手工下单"_gbk},
      {0x20000, "触发下单"_gbk},
      {0x40000, "批量下单"_gbk},
      {0x80000, "快速下单"_gbk},
      {0x100000, "普通下单"_gbk},
      {0x200000, "orvpy下单"_gbk},
      {kTradingAssistant, "交易助手"_gbk},
      {0x800000, "交易助手撤单"_gbk},
      {0x1000000, "头寸监控一键同步"_gbk},
      {0x2000000, "头寸监控自动同步"_gbk},
      {0x4000000, "监控器根据合约号撤单"_gbk},
      {kAlgorithmOrder, "算法下单"_gbk},
      {0x10000000, "算法撤单"_gbk},
      {0x20000000, "程序化下单"_gbk},
      {0x40000000, "模式下单"_gbk},
  };
  const auto name = names.find(flag);
  return name == names.end() ? std::string() : std::string(name->second);
}

std::string formatOrderSource(const Source& source) {
  std::string text = source.sourceText;
  for (const int32_t flag : {kAlgorithmOrder, kTradingAssistant}) {
    if ((source.sourceFlags & flag) != 0) {
      text.append("|").append(orderFlagName(flag));
    }
  }
  return text;
}

}  // namespace orvane
