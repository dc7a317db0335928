#include "tasks/codetypelist.h"

#include <vector>

#include "host/uiproxymgr.h"
#include "serialise/codetypelist.h"

namespace orvane {

void CodeTypePositionList::execute() {
  if (!checkEntitlement()) return;
  std::vector<TradingAccountID> accounts;
  findAccounts(selector_, accounts);  // always succeeds
  std::vector<CodeTypePosition> positions;
  IUIProxyMgr::getInstance()->getCodeTypePositions(accounts, true, true, positions);
  reply(serializeCodeTypeList(positions));
}

}  // namespace orvane
