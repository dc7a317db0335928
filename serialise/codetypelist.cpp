#include "serialise/codetypelist.h"

#include "host/common.h"
#include "serialise/replywriter.h"

namespace orvane {

std::string serializeCodeTypeList(const std::vector<CodeTypePosition>& positions) {
  return writeRows(positions, [](ReplyWriter& row, const CodeTypePosition& group) {
    row.member("codeType", CodeConvert::gbk_to_utf8(group.codeType));
    row.member("netAbsLever", group.netAbsLever);
    row.member("totalLever", group.totalLever);
    row.member("leverWeight", group.leverWeight);
    row.member("todayProfit", group.todayProfit);
    row.member("profitRatio", group.profitRatio);
    row.member("todayProfitType", group.todayProfitType);
    row.member("todayProfitAccount", group.todayProfitAccount);
    row.member("amassProfit", group.amassProfit);
    row.member("amassProfitType", group.amassProfitType);
    row.member("amassProfitAccount", group.amassProfitAccount);
    row.member("totalMarketValue", group.totalMarketValue);
  });
}

}  // namespace orvane
