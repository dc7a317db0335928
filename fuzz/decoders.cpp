#include "fuzz/fuzz.h"

namespace orvane::fuzz {
namespace {

template <typename Out, ResultStatus (MobileWorker::*kDecode)(int64_t, OrvMobileTopic, const std::string&, Out&)>
ResultStatus decode(OrvMobileTopic topic, const std::string& body) {
  Out out;
  return (DirectWorker().*kDecode)(1, topic, body, out);
}

struct Row {
  OrvMobileTopic topic;
  ResultStatus (*decode)(OrvMobileTopic, const std::string&);
};

constexpr Row kDecoders[] = {
    {kTopicOrderList, decode<AccountSelector, &MobileWorker::parseTid>},
    {kTopicNewOrder, decode<MobileNewOrder, &MobileWorker::parseNewOrder>},
    {kTopicCancelOrder, decode<std::vector<MobileCancelOrder>, &MobileWorker::parseCancelOrder>},
    {kTopicMonitorSyncOrderList, decode<MobileSyncOrderReq, &MobileWorker::parseMonitorOrder>},
    {kTopicMonitorSyncOrderNew, decode<MobileSyncNewOrderReq, &MobileWorker::parseMonitorNewOrder>},
    {kTopicMonitorManualList, decode<PosMonitorManualListReq, &MobileWorker::parseMonitorManualList>},
    {kTopicMonitorManualUpdate, decode<PosMonitorManualUpdateReq, &MobileWorker::parseMonitorManualUpdate>},
    {kTopicMonitorManualClean, decode<PosMonitorManualCleanReq, &MobileWorker::parseMonitorManualClean>},
    {kTopicMarginRateList, decode<SymbolMarginRateReq, &MobileWorker::parseSymbolMarginRate>}};

}  // namespace
}  // namespace orvane::fuzz

// Decodes any body. The first byte, a digit in the seeds, selects the decoder.
int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace orvane;
  const test::ScriptedHost host;
  if (size == 0) return 0;
  const fuzz::Row& row = fuzz::kDecoders[(bytes[0] + 256U - '0') % std::size(fuzz::kDecoders)];
  const std::string body(bytes + 1, bytes + size);
  if (fuzz::isFatal(topicName(row.topic), body)) return 0;
  const ResultStatus status = row.decode(row.topic, body);
  PROVE(status.code == (status.message.empty() ? 0 : -1));
  return 0;
}
