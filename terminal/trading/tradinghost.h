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

// How the host fares.
struct TradingHealth {
  bool isStoring = true;                                   // the last change could be written
  std::optional<std::chrono::duration<double>> quotesAge;  // nothing where quotes may stand still
};

// The paper-trading host: opens the database (creating it with the sample data), and stands behind every service of
// host/ but the mobile server from construction to destruction. At most one at a time.
class TradingHost {
 public:
  // Receives one message, its texts in GBK as IPocketAgent::pushNotify takes them.
  using Notify = std::function<void(const MobileMessage&)>;

  // Throws std::runtime_error with a clear message (UTF-8) where the folder, the database or the quote file is at
  // fault.
  explicit TradingHost(const TradingOptions& options);
  ~TradingHost();
  TradingHost(const TradingHost&) = delete;
  TradingHost& operator=(const TradingHost&) = delete;

  // What IBaseService::getMobileSrv returns from now on; null at first. The server must outlive its being set.
  void setMobileServer(IMobileSrv* server);

  // Starts the quotes and the thread that delivers messages. `notify` is called on that thread alone, never on the
  // agent's worker. REQUIRES: not started.
  void start(Notify notify);

  // No `notify` runs after this has returned; messages not yet delivered are dropped. To be called before the agent's
  // stop. Does nothing when not started.
  void stop();

  // Any thread.
  TradingHealth health() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace orvane::terminal
