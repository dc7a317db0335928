#include "serialise/accountlist.h"

#include "serialise/replywriter.h"

namespace orvane {

std::string serializeAccountList(const std::vector<MobileAccountItem>& items) {
  return writeRows(items, [](ReplyWriter& row, const MobileAccountItem& item) {
    row.member("userCode", item.id.userCode);
    row.member("index", item.id.index);
    row.member("marketType", item.id.marketType);
    row.member("triggerOrderPrivilege", item.triggerOrderPrivilege);
    row.member("ordinaryOrderPrivilege", item.ordinaryOrderPrivilege);
    row.member("accountStatus", item.accountStatus);
  });
}

}  // namespace orvane
