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

std::string shown(const JsonValue& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value.Accept(writer);
  return buffer.GetString();
}

// The decoders' document is the stock parser's, whichever way it was read.
void checkDocument(const std::string& text) {
  const JsonBody body(text);
  rapidjson::Document stock;
  stock.Parse<kParseFlags>(text.c_str());
  PROVE(body.isInvalid() == stock.HasParseError());
  PROVE(body.isInvalid() || shown(body.root()) == shown(stock));
}

}  // namespace
}  // namespace orvane::fuzz

// Any body. The first byte, a digit in the seeds, chooses the decoder.
int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace orvane;
  const test::ScriptedHost host;
  if (size == 0) return 0;
  const fuzz::Row& row = fuzz::kDecoders[(bytes[0] + 256U - '0') % std::size(fuzz::kDecoders)];
  const std::string body(bytes + 1, bytes + size);
  fuzz::checkDocument(body);
  if (fuzz::isFatal(topicName(row.topic), body)) return 0;
  const ResultStatus status = row.decode(row.topic, body);
  PROVE(status.code == (status.message.empty() ? 0 : -1));
  return 0;
}
