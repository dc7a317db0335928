#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "host/mobilesrv.h"

namespace orvane {

// Passes requests to a handler, on the service's thread. An empty handler throws std::bad_function_call, which is
// better than losing requests silently.
class MobileSrvSpi final : public IMobileSrvSpi {
 public:
  using RequestHandler = std::function<void(int64_t, int32_t, const std::string&, const std::string&)>;

  explicit MobileSrvSpi(RequestHandler handler) : handler_(std::move(handler)) {}

  void onRequest(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data) override {
    handler_(requestId, terminalType, topic, data);
  }

 private:
  RequestHandler handler_;
};

}  // namespace orvane
