#include "terminal/phones/agentcallback.h"

#include <utility>

namespace orvane::terminal {

void AgentCallback::attach(std::shared_ptr<IMobileSrvSpi> spi, int32_t* handle) {
  const std::scoped_lock lock(mutex_);
  spi_ = std::move(spi);
  *handle = ++handle_;
}

ResultStatus AgentCallback::detach(int32_t handle) {
  const std::scoped_lock lock(mutex_);
  if (handle != handle_ || spi_ == nullptr) return {-1, "no callback has this handle"};
  spi_.reset();
  return {};
}

bool AgentCallback::isAttached() const {
  const std::scoped_lock lock(mutex_);
  return spi_ != nullptr;
}

bool AgentCallback::call(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data) {
  const std::scoped_lock lock(mutex_);
  if (spi_ == nullptr) return false;
  spi_->onRequest(requestId, terminalType, topic, data);
  return true;
}

}  // namespace orvane::terminal
