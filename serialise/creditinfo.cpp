#include "serialise/creditinfo.h"

#include "serialise/replywriter.h"

namespace orvane {

namespace {

void writeRecord(ReplyWriter& row, const CreditInfoRecord& record) {
  row.member("totalAssets", record.totalAssets);
  row.member("netAssets", record.netAssets);
  row.member("cashAssets", record.cashAssets);
  row.member("freeBalance", record.freeBalance);
  row.member("longMarginRate", record.longMarginRate);
  row.member("shortMarginRate", record.shortMarginRate);
  row.member("keepMarginRatio", record.keepMarginRatio);
  row.member("marginAvl", record.marginAvl);
  row.member("marginRatio", record.marginRatio);
  row.member("longProfit", record.longProfit);
  row.member("shortProfit", record.shortProfit);
  row.member("totalProfit", record.totalProfit);
  row.member("totalDebtBalance", record.totalDebtBalance);
  row.member("longDebtBalance", record.longDebtBalance);
  row.member("shortDebtBalance", record.shortDebtBalance);
  row.member("debtInterest", record.debtInterest);
  row.member("tradeDebtBalance", record.tradeDebtBalance);
  row.member("longLimitAvl", record.longLimitAvl);
  row.member("longLimitUsed", record.longLimitUsed);
  row.member("longLimit", record.longLimit);
  row.member("longMarginMarket", record.longMarginMarket);
  row.member("longMarginProfit", record.longMarginProfit);
  row.member("longMarginUsed", record.longMarginUsed);
  row.member("shortLimitAvl", record.shortLimitAvl);
  row.member("shortLimitUsed", record.shortLimitUsed);
  row.member("shortLimit", record.shortLimit);
  row.member("shortMarginMarket", record.shortMarginMarket);
  row.member("shortMarginProfit", record.shortMarginProfit);
  row.member("shortMarginUsed", record.shortMarginUsed);
}

}  // namespace

std::string serializeCreditInfo(const std::list<AccountCreditInfo>& accounts) {
  return writeRows(accounts, [](ReplyWriter& row, const AccountCreditInfo& info) {
    row.member("index", info.account.index);
    row.member("accountStatus", 1);
    row.memberRows("creditInfo", info.records, writeRecord);
  });
}

}  // namespace orvane
