#pragma once

#include "host/account.h"
#include "serialise/replywriter.h"

namespace orvane {

// The first three members of capital, position, order and fill rows. For an unknown market type "accountType" has no
// value, which makes the rest of the row invalid JSON; clients expect that.
void writeHead(ReplyWriter& row, const TradingAccountID& account);

}  // namespace orvane
