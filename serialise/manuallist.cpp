#include "serialise/manuallist.h"

#include "serialise/codetext.h"
#include "serialise/replywriter.h"

namespace orvane {

std::string serializeManualList(const std::list<MonitorManualPosition>& positions) {
  return writeRows(positions, [](ReplyWriter& row, const MonitorManualPosition& manual) {
    row.member("userCode", manual.account.userCode);
    row.member("index", manual.account.index);
    row.member("codeExch", formatCodeKey(manual.code));
    row.member("hashCode", manual.code.hashCode);
    row.member("longPos", manual.position.longPos);
    row.member("shortPos", manual.position.shortPos);
    row.member("accountStatus", 1);
  });
}

}  // namespace orvane
