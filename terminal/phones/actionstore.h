#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>

#include <SQLiteCpp/Database.h>

#include "host/mobilemessage.h"
#include "terminal/phones/auditlog.h"

namespace orvane::terminal {

// A request that changes something.
struct Action {
  int64_t token = 0;  // its id
  int32_t terminalType = 0;
  AuditEntry entry;
};

// Writes what a command did to the audit. Throws std::runtime_error if that fails; the terminal's next start then
// writes it.
void recordCommand(SQLite::Database& db, const std::filesystem::path& dataDir, const AuditEntry& entry);

// The write-ahead record of actions: each is stored before it is dispatched, so that the audit misses none, and with a
// key its reply is stored too, so that none runs twice. One thread.
class ActionStore {
 public:
  struct Fresh {};  // to be dispatched
  struct Running {
    int64_t requestId = 0;  // of the same action; its reply answers this one too
  };
  struct Rejected {
    std::string message;
  };
  using Verdict = std::variant<Fresh, Running, MobileMessage, Rejected>;  // the message is the stored reply

  // Writes what an earlier terminal left open to the audit.
  ActionStore(SQLite::Database& db, const std::filesystem::path& dataDir, const IClock& clock);
  ~ActionStore();
  ActionStore(const ActionStore&) = delete;
  ActionStore& operator=(const ActionStore&) = delete;

  // What to do with an action that would run as `requestId`. Fresh: it is stored; with a key it also survives a power
  // failure.
  Verdict begin(int64_t requestId, const Action& action);

  // The action's reply. Does nothing if no action has this `requestId`.
  void finish(int64_t requestId, const MobileMessage& reply);

  // The action was not dispatched: forgets it.
  void abandon(int64_t requestId);

  // Writes the audit line of a refused action.
  void refuse(AuditEntry entry, std::string_view message);

  // Writes replies and audit lines that could not be written before, and forgets keys older than 7 days. To be called
  // every second or so.
  void tidy();

 private:
  struct Open {
    int64_t row = 0;
    bool hasKey = false;
    std::string line;
  };
  struct Closing {
    Open open;
    MobileMessage reply;
    std::string due;  // the audit line if it is not written yet
  };

  std::optional<Verdict> findKey(const Action& action, const std::string& fingerprint);
  void insert(int64_t requestId, const Action& action, const std::string& fingerprint);
  bool tryClose(const Closing& closing);
  void close(const Closing& closing);
  void closeLate();
  bool tryAppend(const std::string& line);
  void giveUpOpen();
  void appendDue();

  int64_t now() const;

  SQLite::Database& db_;
  const IClock& clock_;
  AuditLog audit_;
  bool behind_ = false;                           // audit lines wait in the database
  int64_t pruned_ = 0;                            // when old keys were last deleted
  std::unordered_map<int64_t, Open> open_;        // by request id
  std::unordered_map<int64_t, int64_t> running_;  // request id by row
  std::deque<Closing> late_;                      // replies that the database could not store yet
};

}  // namespace orvane::terminal
