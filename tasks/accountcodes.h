#pragma once

#include <iterator>
#include <list>
#include <vector>

#include "decoding/requestrecords.h"
#include "host/positionmonitor.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// The host's records of the pairs' accounts and instruments. A pair is left out if the host lacks either. An account
// that occurs again keeps its first record.
MonitorAccountCodes findAccountCodes(const std::vector<MobileCodeAccountPair>& pairs);

// Completes the accounts and instruments of the items, and removes each item for which the host lacks either.
template <typename Item>
void keepKnown(std::list<Item>& items) {
  for (auto item = items.begin(); item != items.end();) {
    const bool known = IRequestTask::findAccount(item->account.index, item->account).code == 0 &&
                       IRequestTask::findCode(item->code.hashCode, item->code).code == 0;
    item = known ? std::next(item) : items.erase(item);
  }
}

}  // namespace orvane
