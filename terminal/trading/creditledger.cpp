#include "terminal/trading/creditledger.h"

#include <algorithm>

namespace orvane::terminal {
namespace {

// Gains count as collateral at a discount, losses count in full.
double discounted(double profit, double rate) { return profit > 0 ? profit * rate : profit; }

void addContract(CreditInfoRecord& it, const CreditContract& contract, double last) {
  it.debtInterest += contract.interest;
  if (contract.direction == Direction::Short) {
    it.shortLimitUsed += contract.amount;
    return;
  }
  it.longDebtBalance += contract.amount;
  it.longMarginMarket += static_cast<double>(contract.volume) * last;
}

void addContracts(const Book& book, const Account& account, CreditInfoRecord& it) {
  for (const int64_t id : book.contractsOf(account.id.index)) {
    const CreditContract& contract = book.contracts.at(id);
    addContract(it, contract, book.instruments.at(contract.key.hashCode).last);
  }
}

}  // namespace

CreditInfoRecord creditInfo(const Book& book, const Account& account) {
  const AccountFigures figures = accountFigures(book, account);
  const CreditTerms& terms = *account.credit;
  CreditInfoRecord it;
  addContracts(book, account, it);
  it.totalAssets = figures.cash + figures.longs.marketValue;
  it.netAssets = figures.equity;
  it.cashAssets = figures.cash;
  it.freeBalance = figures.available;
  it.longMarginRate = terms.longMarginRate;
  it.shortMarginRate = terms.shortMarginRate;
  it.keepMarginRatio = terms.keepMarginRatio;
  it.longMarginProfit = it.longMarginMarket - it.longDebtBalance;
  it.longMarginUsed = figures.longs.margin;
  it.shortMarginMarket = figures.shorts.marketValue;
  it.shortMarginProfit = figures.shorts.floatProfit;
  it.shortMarginUsed = figures.shorts.margin;
  it.shortDebtBalance = figures.shorts.marketValue;
  it.tradeDebtBalance = it.longDebtBalance + it.shortDebtBalance;
  it.totalDebtBalance = it.tradeDebtBalance + it.debtInterest;
  it.marginRatio = it.totalDebtBalance > 0 ? it.totalAssets / it.totalDebtBalance : 0;
  it.longProfit = figures.longs.floatProfit;
  it.shortProfit = figures.shorts.floatProfit;
  it.totalProfit = it.longProfit + it.shortProfit;
  it.longLimit = terms.longLimit;
  it.longLimitUsed = it.longDebtBalance;
  it.longLimitAvl = it.longLimit - it.longLimitUsed;
  it.shortLimit = terms.shortLimit;
  it.shortLimitAvl = it.shortLimit - it.shortLimitUsed;
  it.marginAvl = it.freeBalance + (figures.longs.marketValue - it.longMarginMarket) * terms.collateralRate +
                 discounted(it.longMarginProfit, terms.collateralRate) +
                 discounted(it.shortMarginProfit, terms.collateralRate) - it.longMarginUsed - it.shortMarginUsed -
                 it.debtInterest - figures.frozenMargin;
  return it;
}

}  // namespace orvane::terminal
