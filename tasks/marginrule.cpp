#include "tasks/marginrule.h"

#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "host/uiproxymgr.h"

namespace orvane {

namespace {

// The second if the two are equal or one is NaN.
double largerOf(double first, double second) { return first > second ? first : second; }

double reduce(const MarginRateResult& result) {
  return result.a > 0 ? largerOf(result.c, result.a) : largerOf(result.d, result.b);
}

}  // namespace

double queryMarginRate(const TradingAccountID& account, const SymbolCode& code) {
  const MarginRateQuery query{account, code};
  MarginRateResult result;
  if (IServiceRouter::instance()->getTradeService()->queryMarginRate(query, result).code != 0) {
    return IUIProxyMgr::getInstance()->getDefaultMarginRate(code);
  }
  return reduce(result);
}

}  // namespace orvane
