#include "terminal/phones/mobileserver.h"

namespace orvane::terminal {

ResultStatus MobileServer::start(const MobileSrvInfo& /*info*/) {
  if (started_.exchange(true)) return {-1, "the mobile server was started before"};
  const auto take = [this](int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data) {
    return receive(requestId, terminalType, topic, data);
  };
  gateway_.start(take, [this] { return isTaking(); });
  running_ = true;
  return {};
}

ResultStatus MobileServer::registerSpi(const std::shared_ptr<IMobileSrvSpi>& spi, int32_t* handle) {
  const std::scoped_lock lock(spiMutex_);
  spi_ = spi;
  *handle = ++handle_;
  return {};
}

ResultStatus MobileServer::unregisterSpi(int32_t handle) {
  const std::scoped_lock lock(spiMutex_);
  if (handle != handle_ || spi_ == nullptr) return {-1, "no callback has this handle"};
  spi_.reset();
  return {};
}

void MobileServer::stop() {
  running_ = false;
  gateway_.stop();
}

ResultStatus MobileServer::send(const MobileMessage& message) {
  if (!running_) return {-1, "the mobile server is not running"};
  gateway_.deliver(message);
  return {};
}

bool MobileServer::isTaking() {
  const std::scoped_lock lock(spiMutex_);
  return spi_ != nullptr;
}

bool MobileServer::receive(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data) {
  const std::scoped_lock lock(spiMutex_);
  if (spi_ == nullptr) return false;
  spi_->onRequest(requestId, terminalType, topic, data);
  return true;
}

}  // namespace orvane::terminal
