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

// Turns each request into a task and runs the tasks one at a time on its thread.
class MobileWorker : public AsyncBufferQueueThread<std::shared_ptr<IRequestTask>> {
 public:
  MobileWorker() : AsyncBufferQueueThread(-1, 1, false) {}
  // A host may not have stopped the agent, and the thread must end before `handle` becomes pure again.
  ~MobileWorker() override { stopThread(false); }

  void start();
  // Waits for the running task. Waiting tasks are dropped without a reply.
  void stop();

  // Looks up the topic, decodes the body and queues the task. Runs on the service's thread. An invalid body gets an
  // error reply from the worker, in its turn. An unknown topic goes to the host's user interface proxy.
  void push(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data);

  // The decoders. Each reads a body, UTF-8 up to its first NUL, into `out` and returns code 0, or code -1 and the
  // failure text; `out` then holds the elements before the error. `requestId` and `topic` are for the log. Stateless,
  // so any thread may call them. If an element that must be an object is not one, or the body of "order.new" is not an
  // object, rapidjson's assertion ends the process.

  // An account selector: an array of ints.
  ResultStatus parseTid(int64_t requestId, OrvMobileTopic topic, const std::string& data, AccountSelector& out);
  ResultStatus parseCreditInfo(int64_t requestId, OrvMobileTopic topic, const std::string& data, AccountSelector& out) {
    return parseTid(requestId, topic, data, out);
  }
  // {"orderList": [{...}, ...]}; parseOrderList reads the array.
  ResultStatus parseNewOrder(int64_t requestId, OrvMobileTopic topic, const std::string& data, MobileNewOrder& out);
  ResultStatus parseOrderList(int64_t requestId, OrvMobileTopic topic, const JsonValue& orderList, MobileNewOrder& out);
  // The other bodies are arrays of objects.
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
