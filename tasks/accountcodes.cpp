#include "tasks/accountcodes.h"

#include <utility>

namespace orvane {

MonitorAccountCodes findAccountCodes(const std::vector<MobileCodeAccountPair>& pairs) {
  MonitorAccountCodes codes;
  for (const MobileCodeAccountPair& pair : pairs) {
    TradingAccountID account;
    SymbolCode code;
    if (IRequestTask::findAccount(pair.index, account).code == 0 &&
        IRequestTask::findCode(pair.hashCode, code).code == 0) {
      codes[std::move(account)].insert(std::move(code));
    }
  }
  return codes;
}

}  // namespace orvane
