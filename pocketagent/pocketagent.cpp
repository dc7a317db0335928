#include "pocketagent/pocketagent.h"

#include <memory>
#include <mutex>
#include <string>

#include "host/servicerouter.h"
#include "pocketagent/frametasks.h"
#include "pocketagent/log.h"
#include "pocketagent/mobilesrvspi.h"
#include "vocabulary/gbk.h"

namespace orvane {

namespace {

// The host's mobile service, or null while it or the base service is down. Looked up at each use, because the host may
// restart its services.
IMobileSrv* mobileService() {
  IBaseService* base = IServiceRouter::instance()->getBaseService();
  return base == nullptr ? nullptr : base->getMobileSrv();
}

}  // namespace

IPocketAgent* IPocketAgent::getInstance() {
  agentLogger();  // created before the agent, so that it outlives it
  static PocketAgent agent;
  return &agent;
}

void PocketAgent::start(const MobileSrvInfo& info) {
  const std::lock_guard lock(lock_);
  if (mobileService() == nullptr) {
    POCKET_DEBUG("PocketAgent start error 空指针, BaseService未启动"_gbk);
    return;
  }
  if (info.url.empty() || info.userid.empty()) {
    POCKET_DEBUG("PocketAgent start error url or userid is empty");
    return;
  }
  worker_.start();
  const ResultStatus started = mobileService()->start(info);
  if (started.code != 0) {
    // The worker keeps running: a later start finds it so.
    POCKET_DEBUG("PocketAgent start error=" + started.message);
    return;
  }
  // The statuses of registerSpi and, in stop, unregisterSpi say nothing that the agent could act on.
  mobileService()->registerSpi(
      std::make_shared<MobileSrvSpi>(
          [this](int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data) {
            worker_.push(requestId, terminalType, topic, data);
          }),
      &callbackHandle_);
  POCKET_DEBUG("PocketAgent start end");
}

void PocketAgent::pushNotify(const MobileMessage& message) {
  const std::shared_lock lock(lock_);
  worker_.enqueue(std::make_shared<PushNotifyListTask>(message));
}

void PocketAgent::stop() {
  POCKET_DEBUG("PocketAgent stop begin");
  const std::lock_guard lock(lock_);
  if (mobileService() == nullptr) {
    POCKET_DEBUG("PocketAgent stop error 空指针, BaseService未启动"_gbk);
    return;
  }
  mobileService()->unregisterSpi(callbackHandle_);
  worker_.stop();
  mobileService()->stop();
  POCKET_DEBUG("PocketAgent stop end");
}

void PocketAgent::getServerStatus(MobileServerStatus& status) {
  const std::lock_guard lock(lock_);
  if (mobileService() == nullptr) {
    POCKET_DEBUG("PocketAgent getServerStatus error 空指针, BaseService未启动"_gbk);
    return;
  }
  status.url = info_.url;
  status.userid = info_.userid;
  status.reserved4 = info_.reserved4;
  status.serviceName = "手机-移动交易服务器";
  status.serviceKind = "移动交易";
  status.running = mobileService()->isRunning();
}

}  // namespace orvane
