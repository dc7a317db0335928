#include "serialise/filllist.h"

#include "host/common.h"
#include "serialise/codetext.h"
#include "serialise/ordersource.h"
#include "serialise/replywriter.h"
#include "serialise/rowhead.h"

namespace orvane {

std::string serializeFillList(const std::list<OrderFill>& fills) {
  return writeRows(fills, [](ReplyWriter& row, const OrderFill& fill) {
    writeHead(row, fill.account);
    row.member("codeExch", formatCodeKey(fill.code));
    row.member("hashCode", fill.code.hashCode);
    row.member("codeName", instrumentName(fill.code));
    row.member("side", fill.side);
    row.member("combOffset", fill.combOffset);
    row.member("hedge", fill.hedge);
    row.member("price", fill.price);
    row.member("volume", fill.volume);
    row.member("exchTimestamp", fill.exchTimestamp);
    row.member("fillId", fill.fillId);
    row.member("localOrderId", std::to_string(fill.localOrderId));
    row.member("source", CodeConvert::gbk_to_utf8(formatOrderSource(fill.orderSource)));
    row.member("accountStatus", 1);
  });
}

}  // namespace orvane
