#include "tasks/positionlist.h"

#include <list>
#include <set>

#include "host/baseinformation.h"
#include "host/common.h"
#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "tasks/marginrule.h"

namespace orvane {

namespace {

// Yesterday's and today's volumes do not count.
bool isEmpty(const Position& position) {
  return position.longPosition == 0 && position.longActiveVolume == 0 && position.shortPosition == 0 &&
         position.shortActiveVolume == 0;
}

std::string exchangeName(int32_t exchangeId) {
  const auto& names = gBaseInformationMap->exchangeFullNames;
  const auto name = names.find(exchangeId);
  return CodeConvert::gbk_to_utf8(name == names.end() ? std::string() : name->second);
}

}  // namespace

void PositionListTask::execute() {
  if (!checkEntitlement()) return;
  reply(serializePositionList(collect(selector_)));
}

std::vector<PositionEntry> PositionListTask::collect(const AccountSelector& selector) {
  std::list<Position> positions;
  std::list<int32_t> availableIndexes;
  TradeUtils::getAllPosition(IServiceRouter::instance()->getTradeService(), selector, kQueryList, positions,
                             availableIndexes);
  const std::set<int32_t> available(availableIndexes.begin(), availableIndexes.end());
  std::vector<PositionEntry> entries;
  entries.reserve(positions.size());
  for (Position& held : positions) {
    if (isEmpty(held)) continue;
    PositionEntry& entry = entries.emplace_back();
    entry.position = std::move(held);
    const Position& position = entry.position;
    findCodeType(position.code.hashCode, entry.codeType, entry.codeName);  // the row is sent without them too
    entry.marginRate = queryMarginRate(position.account, position.code);
    entry.exchangeName = exchangeName(position.code.exchangeId);
    entry.accountStatus = available.contains(position.account.index) ? 1 : 0;
  }
  return entries;
}

}  // namespace orvane
