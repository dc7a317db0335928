#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "decoding/requestrecords.h"
#include "host/resultstatus.h"
#include "pocketagent/asyncbufferqueuethread.h"
#include "pocketagent/json.h"
#include "pocketagent/requesttask.h"
#include "pocketagent/topic.h"

namespace orvane {

// Turns each request into a task and runs the tasks, one after the other, on its thread.
class MobileWorker : public AsyncBufferQueueThread<std::shared_ptr<IRequestTask>> {
 public:
  MobileWorker() : AsyncBufferQueueThread(-1, 1, false) {}
  // The thread may still run, where the host has not stopped the agent: it must end while `handle` is this class's.
  ~MobileWorker() override { stopThread(false); }

  void start();
  // Waits for the running task; those behind it are dropped without a reply.
  void stop();

  // Takes one request: looks the topic up, decodes the body and queues the task. Runs on the service's thread. A body
  // that does not decode is answered by the worker in its turn, a topic not known here by the host's user interface.
  void push(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data);

  // The decoders. Each reads the body (a UTF-8 text up to its first NUL; parseOrderList an array of it) into `out` and
  // returns code 0, or code -1 and the failure's text; `out` then holds what was read before the fault. They keep no
  // state and may run on any thread. An array element that must be an object and is not one, and a body of "order.new"
  // that is no object, end the process by rapidjson's assertion.

  // An account selector: an array of ints.
  ResultStatus parseTid(int64_t requestId, OrvMobileTopic topic, const std::string& data, AccountSelector& out);
  ResultStatus parseCreditInfo(int64_t requestId, OrvMobileTopic topic, const std::string& data, AccountSelector& out) {
    return parseTid(requestId, topic, data, out);
  }
  // {"orderList": [{...}, ...]}
  ResultStatus parseNewOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data, MobileNewOrder& out);
  ResultStatus parseOrderList(int64_t requestId, OrvMobileTopic topic, const JsonValue& orderList, MobileNewOrder& out);
  // The others: an array of objects.
  ResultStatus parseCancelOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                std::vector<MobileCancelOrder>& out);
  ResultStatus parseMonitorOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                 MobileSyncOrderReq& out);
  ResultStatus parseMonitorNewOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                    MobileSyncNewOrderReq& out);
  ResultStatus parseMonitorManualList(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                      PosMonitorManualListReq& out);
  ResultStatus parseMonitorManualUpdate(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                        PosMonitorManualUpdateReq& out);
  ResultStatus parseMonitorManualClean(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                       PosMonitorManualCleanReq& out);
  ResultStatus parseSymbolMarginRate(int64_t requestId, OrvMobileTopic topic, const std::string& data,
                                     SymbolMarginRateReq& out);

 protected:
  void handle(std::shared_ptr<IRequestTask>& task) override { task->execute(); }
};

}  // namespace orvane
