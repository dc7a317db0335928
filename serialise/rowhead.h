#pragma once

#include "host/account.h"
#include "serialise/replywriter.h"

namespace orvane {

// The three members that start a capital, position, order and fill row. An unknown market type leaves "accountType"
// without a value, and the row out of step.
void writeHead(ReplyWriter& row, const TradingAccountID& account);

}  // namespace orvane
