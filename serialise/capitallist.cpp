#include "serialise/capitallist.h"

#include "serialise/replywriter.h"
#include "serialise/rowhead.h"

namespace orvane {

namespace {

double lastAmount(const TradingAccount& account) {
  if (account.id.marketType == 2 || account.id.marketType == 16) return account.dynamicAmount;
  return account.baseAmount + account.deposit + account.preCloseProfit - account.withdraw;
}

// A fraction, not a percentage. Unlike lastAmount, it ignores `withdraw`. The limit avoids a division by zero and also
// makes the ratio of a negative or NaN sum 0.
double profitRatio(const TradingAccount& account) {
  const double invested = account.baseAmount + account.deposit;
  return invested > 0.000001 ? account.preCloseProfit / invested : 0.0;
}

}  // namespace

std::string serializeCapitalList(const std::vector<CapitalEntry>& entries) {
  return writeRows(entries, [](ReplyWriter& row, const CapitalEntry& entry) {
    const TradingAccount& account = entry.account;
    writeHead(row, account.id);
    row.member("lastAmount", lastAmount(account));
    row.member("profitRatio", profitRatio(account));
    row.member("netLever", account.netLever);
    row.member("preCloseProfit", account.preCloseProfit);
    row.member("totalLever", account.totalLever);
    row.member("risk", account.risk);
    row.member("available", account.available);
    row.member("todayFloatingProfit", account.todayFloatingProfit);
    row.member("amassFloatingProfit", 0.0);
    row.member("closeProfit", account.closeProfit);
    row.member("maintainAmount", account.maintainAmount);
    row.member("dynamicAmount", account.dynamicAmount);
    row.member("preBalance", account.preBalance);
    row.member("withdrawQuota", account.withdrawQuota);
    row.member("currMargin", account.currMargin);
    row.member("frozenMargin", account.frozenMargin);
    row.member("deposit", account.deposit);
    row.member("withdraw", account.withdraw);
    row.member("commission", account.commission);
    row.member("accountStatus", entry.accountStatus);
  });
}

}  // namespace orvane
