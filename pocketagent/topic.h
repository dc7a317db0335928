#pragma once

#include <cstdint>

namespace orvane {

// The topics of requests.
enum OrvMobileTopic : int32_t {
  kTopicMin = -1,
  kTopicUnknown = 0,
  kTopicAccountList = 1,
  kTopicCapitalList = 2,
  kTopicOrderList = 3,
  kTopicPositionList = 4,
  kTopicFillList = 5,
  kTopicMonitorList = 6,
  kTopicCondOrderList = 7,
  kTopicNewOrder = 8,
  kTopicCancelOrder = 9,
  kTopicCodeTypePositionList = 10,
  kTopicMonitorSyncOrderList = 11,
  kTopicMonitorSyncOrderNew = 12,
  kTopicMonitorManualList = 13,
  kTopicMonitorManualUpdate = 14,
  kTopicMonitorManualClean = 15,
  kTopicMarginRateList = 16,
  kTopicCreditInfoList = 17,
};

// The topic of a name, which is case-sensitive; kTopicUnknown if there is none.
OrvMobileTopic topicFromName(const char* name);

// The name of a topic; "unknown.topic" for a value that is not listed.
const char* topicName(int32_t value);

}  // namespace orvane
