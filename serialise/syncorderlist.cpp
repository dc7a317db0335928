#include "serialise/syncorderlist.h"

#include "serialise/codetext.h"
#include "serialise/replywriter.h"

namespace orvane {

std::string serializeSyncOrderList(const std::list<MonitorSyncOrder>& orders) {
  return writeRows(orders, [](ReplyWriter& row, const MonitorSyncOrder& order) {
    row.member("userCode", order.account.userCode);
    row.member("index", order.account.index);
    row.member("codeExch", formatCodeKey(order.code));
    row.member("hashCode", order.code.hashCode);
    row.member("volume", order.volume);
    row.member("price", order.price);
    row.member("side", order.side);
    row.member("combOffsetFlag", order.combOffsetFlag);
    row.member("longPos", order.position.longPos);
    row.member("shortPos", order.position.shortPos);
    row.member("netPos", order.position.netPos);
    row.member("accountStatus", 1);
  });
}

}  // namespace orvane
