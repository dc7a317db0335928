#include "serialise/marginrates.h"

#include "serialise/replywriter.h"

namespace orvane {

std::string serializeMarginRates(const std::vector<AccountMarginRates>& accounts) {
  return writeRows(accounts, [](ReplyWriter& row, const AccountMarginRates& account) {
    row.member("index", account.index);
    row.member("accountStatus", 1);
    row.memberRows("rate", account.rates, [](ReplyWriter& inner, const SymbolRate& rate) {
      inner.member("hashCode", rate.hashCode);
      inner.member("marginRate", rate.marginRate);
    });
  });
}

}  // namespace orvane
