#include "serialise/rowhead.h"

namespace orvane {

void writeHead(ReplyWriter& row, const TradingAccountID& account) {
  row.member("userCode", account.userCode);
  row.member("index", account.index);
  switch (account.marketType) {
    case 1:
    case 8:
      return row.member("accountType", 0);
    case 2:
    case 16:
      return row.member("accountType", 1);
    default:
      return row.key("accountType");
  }
}

}  // namespace orvane
