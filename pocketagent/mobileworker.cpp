#include "pocketagent/mobileworker.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <string_view>
#include <utility>

#include "pocketagent/frametasks.h"
#include "pocketagent/log.h"
#include "tasks/accountlist.h"
#include "tasks/cancelorder.h"
#include "tasks/capitallist.h"
#include "tasks/codetypelist.h"
#include "tasks/creditinfo.h"
#include "tasks/filllist.h"
#include "tasks/manualposition.h"
#include "tasks/marginrate.h"
#include "tasks/monitorlist.h"
#include "tasks/neworder.h"
#include "tasks/orderlist.h"
#include "tasks/positionlist.h"
#include "tasks/syncorder.h"
#include "vocabulary/nametable.h"

namespace orvane {

namespace {

using TaskPtr = std::shared_ptr<IRequestTask>;
using TaskMaker = TaskPtr (*)(MobileWorker& worker, int64_t requestId, OrvMobileTopic topic, const std::string& data);

// For a topic whose body is ignored.
template <typename Task>
TaskPtr bodiless(MobileWorker& /*worker*/, int64_t requestId, OrvMobileTopic topic, const std::string& /*data*/) {
  return std::make_shared<Task>(requestId, topic);
}

template <typename Payload>
using Decoder = ResultStatus (MobileWorker::*)(int64_t, OrvMobileTopic, const std::string&, Payload&);

template <typename Task, typename Payload>
TaskPtr decodeTask(MobileWorker& worker, Decoder<Payload> decode, int64_t requestId, OrvMobileTopic topic,
                   OrvMobileTopic replyTopic, const std::string& data) {
  Payload payload;
  ResultStatus result = (worker.*decode)(requestId, topic, data, payload);
  if (result.code != 0) return std::make_shared<ErrorReqTask>(requestId, std::move(result.message));
  return std::make_shared<Task>(requestId, replyTopic, std::move(payload));
}

// For a topic whose body `kDecode` reads. The task's topic, which the reply carries, is the request's unless
// `kReplyTopic` is given.
template <typename Task, auto kDecode, OrvMobileTopic kReplyTopic = kTopicUnknown>
TaskPtr decoded(MobileWorker& worker, int64_t requestId, OrvMobileTopic topic, const std::string& data) {
  const OrvMobileTopic replyTopic = kReplyTopic == kTopicUnknown ? topic : kReplyTopic;
  return decodeTask<Task>(worker, kDecode, requestId, topic, replyTopic, data);
}

struct TopicRow {
  OrvMobileTopic value;
  const char* name;
  TaskMaker make;  // null: the request goes to the host's user interface proxy
};

// All topics, in the order of their values. A new topic is a new row.
constexpr std::array kTopics = std::to_array<TopicRow>({
    {kTopicMin, "min.topic", nullptr},
    {kTopicUnknown, "unknown.topic", nullptr},
    {kTopicAccountList, "account.list", bodiless<AccountListTask>},
    {kTopicCapitalList, "capital.list", decoded<CapitalListTask, &MobileWorker::parseTid>},
    {kTopicOrderList, "order.list", decoded<OrderListTask, &MobileWorker::parseTid>},
    {kTopicPositionList, "position.list", decoded<PositionListTask, &MobileWorker::parseTid>},
    {kTopicFillList, "trader.list", decoded<FillListTask, &MobileWorker::parseTid>},
    {kTopicMonitorList, "monitor.list", decoded<PosMonitorListTask, &MobileWorker::parseTid>},
    {kTopicCondOrderList, "order.condition.list", bodiless<CondOrderListTask>},
    {kTopicNewOrder, "order.new", decoded<NewOrderTask, &MobileWorker::parseNewOrder>},
    {kTopicCancelOrder, "order.cancel", decoded<CancelOrderTask, &MobileWorker::parseCancelOrder>},
    {kTopicCodeTypePositionList, "position.codetype.list", decoded<CodeTypePositionList, &MobileWorker::parseTid>},
    {kTopicMonitorSyncOrderList, "monitor.sync.order.list",
     decoded<PosMonitorSyncOrder, &MobileWorker::parseMonitorOrder>},
    {kTopicMonitorSyncOrderNew, "monitor.sync.order.new",
     decoded<PosMonitorNewOrder, &MobileWorker::parseMonitorNewOrder>},
    {kTopicMonitorManualList, "monitor.manual.list",
     decoded<PosMonitorManualList, &MobileWorker::parseMonitorManualList, kTopicMonitorList>},
    {kTopicMonitorManualUpdate, "monitor.manual.update",
     decoded<PosMonitorManualUpdate, &MobileWorker::parseMonitorManualUpdate>},
    {kTopicMonitorManualClean, "monitor.manual.clean",
     decoded<PosMonitorManualClean, &MobileWorker::parseMonitorManualClean>},
    {kTopicMarginRateList, "marginrate.list", decoded<SymbolMarginRate, &MobileWorker::parseSymbolMarginRate>},
    {kTopicCreditInfoList, "creditinfo.list", decoded<CreditInfoTask, &MobileWorker::parseCreditInfo>},
});

constexpr bool rowsFollowTheirValues() {
  int32_t value = kTopicMin;
  for (const TopicRow& row : kTopics) {
    if (row.value != value++) return false;
  }
  return true;
}
static_assert(rowsFollowTheirValues(), "topicRow finds a row by its value");

using ValuesByName = NameTable<std::string_view, OrvMobileTopic, kTopics.size()>;
constexpr ValuesByName kValuesByName = [] {
  ValuesByName::value_type rows[kTopics.size()];
  std::transform(kTopics.begin(), kTopics.end(), rows,
                 [](const TopicRow& row) { return ValuesByName::value_type(row.name, row.value); });
  return ValuesByName(rows);
}();

// The row of a value; that of kTopicUnknown for a value outside the table.
const TopicRow& topicRow(int32_t value) {
  const int64_t row = int64_t{value} - kTopicMin;
  const bool known = row >= 0 && row < std::ssize(kTopics);
  return kTopics[static_cast<size_t>(known ? row : kTopicUnknown - kTopicMin)];
}

}  // namespace

OrvMobileTopic topicFromName(const char* name) { return kValuesByName.valueOr(name, kTopicUnknown); }

const char* topicName(int32_t value) { return topicRow(value).name; }

void MobileWorker::start() {
  POCKET_TRACE("MobileWorker start begin");
  {
    const std::lock_guard control(controlMutex);
    startThread();
  }
  POCKET_TRACE("MobileWorker start end");
}

void MobileWorker::stop() {
  POCKET_TRACE("MobileWorker stop begin");
  {
    const std::lock_guard control(controlMutex);
    runStopSteps(false);
  }
  POCKET_TRACE("MobileWorker stop end");
}

void MobileWorker::push(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data) {
  const OrvMobileTopic value = topicFromName(topic.c_str());
  POCKET_TRACE("push RequestID=" + std::to_string(requestId) + ",Topic=" + topic + ",Data=" + data);
  const TaskMaker make = topicRow(value).make;
  if (make == nullptr) {
    enqueue(std::make_shared<UIRequestTask>(requestId, terminalType, topic, data));
  } else {
    enqueue(make(*this, requestId, value, data));
  }
}

}  // namespace orvane
