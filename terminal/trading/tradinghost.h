#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "host/mobilemessage.h"
#include "host/mobilesrv.h"

namespace orvane::terminal {

// Walk: a seeded random walk on the ticks. Still: prices move by "quote.set" alone. Replay: prices from a file.
enum class QuoteMode { Walk, Still, Replay };

struct TradingOptions {
  std::filesystem::path dataDir;  // created if missing; holds terminal.db
  QuoteMode quotes = QuoteMode::Walk;
  std::filesystem::path quoteFile;  // for Replay
  uint64_t seed = 1;                // for Walk
};

// The state of the host.
struct TradingHealth {
  bool isStoring = true;                                   // false: the last change could not be written
  std::optional<std::chrono::duration<double>> quotesAge;  // time since the last quote; nothing if quotes need not move
};

// The paper-trading host. Opens the database (creating it with the sample data) and implements every service of host/
// but the mobile server. At most one at a time.
class TradingHost {
 public:
  // Receives one message, its texts in GBK as IPocketAgent::pushNotify expects them.
  using Notify = std::function<void(const MobileMessage&)>;

  // Throws std::runtime_error with a clear message (UTF-8) if the folder, the database or the quote file cannot be
  // used.
  explicit TradingHost(const TradingOptions& options);
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

  // Any thread.
  TradingHealth health() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace orvane::terminal
