#include "serialise/monitorlist.h"

#include "host/common.h"
#include "serialise/codetext.h"
#include "serialise/replywriter.h"
#include "vocabulary/names.h"

namespace orvane {

namespace {

// An unknown rule is shown as rule 0.
std::string syncRuleName(int32_t rule) {
  return CodeConvert::gbk_to_utf8(std::string(syncRuleNames.valueOr(rule, syncRuleNames.find(0)->second)));
}

}  // namespace

std::string serializeMonitorList(const std::vector<PositionMonitorRow>& rows) {
  return writeRows(rows, [](ReplyWriter& row, const PositionMonitorRow& entry) {
    const PositionMonitorRecord& record = entry.record;
    row.member("userCode", record.account.userCode);
    row.member("index", record.account.index);
    row.member("codeExch", formatCodeKey(record.code));
    row.member("hashCode", record.code.hashCode);
    row.member("codeType", entry.codeType);
    row.member("theoryPosDif", record.theoryPosDif);
    row.member("longPosDif", record.longPosDif);
    row.member("shortPosDif", record.shortPosDif);
    row.member("isMatchTheory", record.isMatchTheory != 0);
    row.member("isMatchLongShort", record.isMatchLongShort != 0);
    row.member("isMatchNetPos", record.isMatchNetPos != 0);
    row.member("isMatchPosDif", record.isMatchPosDif != 0);
    row.member("systemNetPos", record.system.netPos);
    row.member("systemLongPos", record.system.longPos);
    row.member("systemShortPos", record.system.shortPos);
    row.member("strategyActiveNetPos", record.strategyActive.netPos);
    row.member("strategyActiveLongPos", record.strategyActive.longPos);
    row.member("strategyActiveShortPos", record.strategyActive.shortPos);
    row.member("strategyUnsendNetPos", record.strategyUnsend.netPos);
    row.member("strategyUnsendLongPos", record.strategyUnsend.longPos);
    row.member("strategyUnsendShortPos", record.strategyUnsend.shortPos);
    row.member("accountNetPos", record.accountPos.netPos);
    row.member("accountLongPos", record.accountPos.longPos);
    row.member("accountShortPos", record.accountPos.shortPos);
    row.member("accountNetLever", record.accountPos.netLever);
    row.member("manualNetPos", record.manual.netPos);
    row.member("manualLongPos", record.manual.longPos);
    row.member("manualShortPos", record.manual.shortPos);
    row.member("algoLongPos", record.algo.longPos);
    row.member("algoShortPos", record.algo.shortPos);
    row.member("syncRule", record.syncRule);
    row.member("syncRuleDetail", syncRuleName(record.syncRule));
    row.member("accountStatus", 1);
  });
}

}  // namespace orvane
