#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <SQLiteCpp/Database.h>

#include "host/mobilemessage.h"
#include "terminal/clocks.h"
#include "terminal/eventloop.h"
#include "terminal/phones/actionstore.h"
#include "terminal/phones/alert.h"
#include "terminal/phones/audittrail.h"
#include "terminal/phones/diskwork.h"
#include "terminal/phones/tokensnapshot.h"
#include "terminal/runmark.h"
#include "terminal/writetimer.h"

namespace orvane::terminal {

struct StoreOptions {
  std::filesystem::path dataDir;
  AuditLimits audit;
  int64_t maxBytes = int64_t{1024} * 1024 * 1024;  // of gateway.db, from which on keys are refused
};

// What is wrong with the files, UTF-8; empty if nothing is.
struct StoreHealth {
  std::string database;  // actions are refused
  std::string audit;     // its lines wait in the database
  std::string clock;     // keys are not pruned

  bool operator==(const StoreHealth&) const = default;
};

// What the gateway keeps on the disk: tokens, keys, alerts and the audit. In the terminal nothing else uses
// `gateway.db` and `audit.log`. Operations may be called on any thread, return at once, and are done in their order;
// their answers come on the disk's thread.
class GatewayStore {
 public:
  using Done = DiskItem::Done;
  using OnTokens = std::function<void(std::shared_ptr<const TokenSnapshot>)>;
  using OnHealth = std::function<void(const StoreHealth&)>;
  using OnVerdict = std::function<void(Verdict)>;

  // On a disk that is full, read-only or failing the tokens are read, and actions are refused until the database can be
  // written. Throws std::runtime_error if the database cannot be used for another reason, or cannot be read. `clock`
  // must outlive the store and be thread-safe.
  GatewayStore(const StoreOptions& options, const IClock& clock);

  // Callbacks for new tokens and for changes of health, on the disk's thread. Call it before the first turn.
  void watch(OnTokens onTokens, OnHealth onHealth);

  // That a write of the disk's thread hangs, which is why it reports nothing itself; empty if none does. UTF-8.
  std::string hang() const { return timer_.fault(file_); }

  // The tokens and alerts at the start.
  std::shared_ptr<const TokenSnapshot> tokens() const { return tokens_; }
  const StoredAlerts& alerts() const { return alerts_; }

  // Looks for new tokens at once, and then calls `done`.
  void readTokens(Done done);

  // What to do with an action that would run as `requestId`. If it is Fresh, it is stored; with a key it also survives
  // a power failure. At most about three seconds later it is Rejected, with the reason and the remedy.
  void begin(int64_t requestId, std::shared_ptr<const Action> action, OnVerdict answer);

  // The reply of an action that was begun.
  void finish(int64_t requestId, const MobileMessage& reply);

  // An action that was begun was not dispatched: forgets it. `refusal` goes to the audit, unless it is empty.
  void abandon(int64_t requestId, const std::string& refusal);

  // Writes an audit line that belongs to no action that was begun.
  void note(std::string text);

  // Stores that a token was used.
  void touch(int64_t token);

  // Stores a new alert, and deletes some; then calls `done`.
  void addAlert(const Alert& alert, Done done);
  void deleteAlerts(std::vector<int64_t> ids, Done done);

  // Stores that the alert has fired.
  void keepFired(const Alert& alert);

  // Stores the terminal's link, which the command `token` shows, and then calls `done`.
  void noteLink(const std::string& link, Done done);

  // Confirms to the command that revoked a token that no further request of it begins.
  void confirm(int64_t revocation);

  // The terminal ends: does not wait long for locked files any more.
  void hurry() { work_.hurry(); }

  // The disk's thread: what turn() could do next, or `limit`, whichever is first.
  void wait(std::chrono::milliseconds limit) { work_.wait(limit); }

  // Does all work that is possible now, and returns how long to wait before the next call. The disk's thread.
  std::chrono::milliseconds turn();

  // The last turn, in which actions without a reply become unknown. The disk's thread, or after its end.
  void close();

 private:
  void open();
  Verdict refuse(const Action& action, const std::string& fault);
  void addWrite(std::function<void()> run, Done done);
  void addPatientWrite(std::function<void()> run, Done done);
  void watchTokens();
  void tidy();
  void publishHealth();
  bool isDue(BootTime& last, std::chrono::milliseconds period) const;

  const StoreOptions options_;
  const std::filesystem::path file_;
  WriteTimer timer_;
  const IClock& clock_;
  ClockWatch watch_;
  RunMark mark_;
  SQLite::Database db_;  // empty and in memory until the file can be opened for writing
  bool isOpen_ = false;
  AuditTrail audit_;
  ActionStore actions_;
  DiskWork work_;
  std::shared_ptr<const TokenSnapshot> tokens_;
  StoredAlerts alerts_;
  int64_t version_ = -1;  // of the data, as SQLite counts other connections' commits
  OnTokens onTokens_;
  OnHealth onHealth_;
  StoreHealth health_;
  BootTime watched_{};
  BootTime tidied_{};
  BootTime probed_{};
  BootTime pruned_{};
};

}  // namespace orvane::terminal
