#include "tasks/creditinfo.h"

#include "host/servicerouter.h"
#include "host/tradeservice.h"

namespace orvane {

void CreditInfoTask::execute() {
  std::list<AccountCreditInfo> accounts;
  if (collect(accounts).code != 0) {
    reply(ResultStatus{-1, "query credit info error"});
  } else {
    reply(serializeCreditInfo(accounts));
  }
}

ResultStatus CreditInfoTask::collect(std::list<AccountCreditInfo>& accounts) const {
  for (const int32_t index : selector_) {
    TradingAccountID account;
    if (findAccount(index, account).code != 0) continue;
    AccountCreditInfo info;
    ITradeService* service = IServiceRouter::instance()->getTradeService();
    if (service->queryCreditInfo(account, info.records).code != 0) continue;
    info.account = std::move(account);
    accounts.push_back(std::move(info));
  }
  return {};
}

}  // namespace orvane
