#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/mobilemessage.h"
#include "host/mobilesrv.h"
#include "terminal/clocks.h"
#include "terminal/liveprices.h"
#include "terminal/trading/tradingoptions.h"

namespace orvane::terminal {

// Texts are English; empty if all is well.
struct TradingHealth {
  std::string storageFault;                                // why changes are refused: the file, the reason, the remedy
  std::string clockFault;                                  // why the trading day does not change
  std::optional<std::chrono::duration<double>> quotesAge;  // time since the last quote; nothing if quotes need not move
};

// The paper-trading host. Opens the database (creating it with the sample data) and implements every service of host/
// but the mobile server. At most one at a time.
class TradingHost {
 public:
  // Receives one message, its texts in GBK as IPocketAgent::pushNotify expects them.
  using Notify = std::function<void(const MobileMessage&)>;

  // `clock` is that of the trading day and of the times of orders and fills, and must outlive the host. Throws
  // std::runtime_error with a clear message (UTF-8) if the folder, the database or the quote file cannot be used.
  explicit TradingHost(const TradingOptions& options, const IClock& clock = systemClock());
  ~TradingHost();
  TradingHost(const TradingHost&) = delete;
  TradingHost& operator=(const TradingHost&) = delete;

  // Sets the result of IBaseService::getMobileSrv, null at first. The server must live until it is replaced.
  void setMobileServer(IMobileSrv* server);

  // Starts the quotes and the thread that delivers messages. `notify` runs on that thread only, never on the agent's
  // worker. REQUIRES: not started.
  void start(Notify notify);

  // No `notify` runs after this returns. Undelivered messages are dropped. Call it before the agent's stop. Does
  // nothing if not started.
  void stop();

  // Calls `answer` once with an empty text when everything is on the disk that has been changed so far, and with the
  // reason (UTF-8, for clients) if some of it could not be stored or may not have been. The changes that the calling
  // thread has made since its last call are always included, so a reply that is held back until then reports the truth.
  // `answer` must not block. Any thread.
  void whenStored(std::function<void(const std::string& failure)> answer);

  // Any thread.
  TradingHealth health() const;

  // Valid as long as the host.
  const ILivePrices& prices() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace orvane::terminal
