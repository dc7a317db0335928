#include "serialise/ordersource.h"

#include "vocabulary/names.h"

namespace orvane {

namespace {

constexpr int32_t kAlgorithmOrder = 0x8000000;
constexpr int32_t kTradingAssistant = 0x400000;

}  // namespace

std::string orderFlagName(int32_t flag) { return std::string(orderFlagNames.valueOr(flag, "")); }

std::string formatOrderSource(const Source& source) {
  std::string text = source.sourceText;
  for (const int32_t flag : {kAlgorithmOrder, kTradingAssistant}) {
    if ((source.sourceFlags & flag) != 0) text.append("|").append(orderFlagName(flag));
  }
  return text;
}

}  // namespace orvane
