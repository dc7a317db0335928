#pragma once

#include <iterator>
#include <list>
#include <vector>

#include "decoding/requestrecords.h"
#include "host/positionmonitor.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// The accounts and instruments that the pairs name, from the host. A pair of which either does not exist is left out;
// of an account that is named again the first record stays.
MonitorAccountCodes findAccountCodes(const std::vector<MobileCodeAccountPair>& pairs);

// Completes the items' accounts and instruments from the host, and drops the items of which either does not exist.
template <typename Item>
void keepKnown(std::list<Item>& items) {
  for (auto item = items.begin(); item != items.end();) {
    const bool known = IRequestTask::findAccount(item->account.index, item->account).code == 0 &&
                       IRequestTask::findCode(item->code.hashCode, item->code).code == 0;
    item = known ? std::next(item) : items.erase(item);
  }
}

}  // namespace orvane
