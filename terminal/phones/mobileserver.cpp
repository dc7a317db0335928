#include "terminal/phones/mobileserver.h"

#include <utility>

namespace orvane::terminal {

MobileServer::MobileServer(Phones& phones, WhenStored whenStored, Step open, Step close)
    : phones_(phones),
      hold_(std::move(whenStored), [&phones](auto message) { phones.deliver(std::move(message)); }),
      open_(std::move(open)),
      close_(std::move(close)) {}

ResultStatus MobileServer::start(const MobileSrvInfo& /*info*/) {
  if (started_.exchange(true)) return {-1, "the mobile server was started before"};
  open_();
  running_ = true;
  return {};
}

ResultStatus MobileServer::registerSpi(const std::shared_ptr<IMobileSrvSpi>& spi, int32_t* handle) {
  phones_.agent().attach(spi, handle);
  return {};
}

ResultStatus MobileServer::unregisterSpi(int32_t handle) { return phones_.agent().detach(handle); }

void MobileServer::stop() {
  running_ = false;
  hold_.close();
  close_();
}

ResultStatus MobileServer::send(const MobileMessage& message) {
  if (!running_) return {-1, "the mobile server is not running"};
  hold_.send(message);
  return {};
}

}  // namespace orvane::terminal
