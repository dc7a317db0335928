#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "host/mobilesrv.h"
#include "host/resultstatus.h"

namespace orvane::terminal {

// The agent's callback for requests. Any thread.
class AgentCallback {
 public:
  // Replaces the callback, so that no request runs twice, and writes the handle of the new one.
  void attach(std::shared_ptr<IMobileSrvSpi> spi, int32_t* handle);

  // Waits for a running call. Fails if no callback has this handle.
  ResultStatus detach(int32_t handle);

  bool isAttached() const;

  // Passes one request to the callback, on the caller's thread. False if there is none.
  bool call(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data);

 private:
  mutable std::mutex mutex_;  // held while the callback runs, so that detach waits for it
  std::shared_ptr<IMobileSrvSpi> spi_;
  int32_t handle_ = 0;
};

}  // namespace orvane::terminal
