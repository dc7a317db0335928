#include "tasks/marginrate.h"

#include "tasks/marginrule.h"

namespace orvane {

namespace {

constexpr int32_t kClassWithMarginRate = 1;

}  // namespace

void SymbolMarginRate::execute() { reply(serializeMarginRates(collect(request_))); }

std::vector<AccountMarginRates> SymbolMarginRate::collect(const SymbolMarginRateReq& request) {
  std::vector<AccountMarginRates> accounts;
  accounts.reserve(request.queries.size());
  for (const MobileMarginRateQuery& query : request.queries) {
    TradingAccountID account;
    if (findAccount(query.index, account).code == 0) {
      accounts.push_back({account.index, collectRates(account, query.hashCodes)});
    }
  }
  return accounts;
}

std::vector<SymbolRate> SymbolMarginRate::collectRates(const TradingAccountID& account,
                                                       const std::vector<int64_t>& hashCodes) {
  std::vector<SymbolRate> rates;
  rates.reserve(hashCodes.size());
  for (const int64_t hashCode : hashCodes) {
    SymbolCode code;
    if (findCode(hashCode, code).code == 0 && code.codeClass == kClassWithMarginRate) {
      rates.push_back({hashCode, queryMarginRate(account, code)});
    }
  }
  return rates;
}

}  // namespace orvane
