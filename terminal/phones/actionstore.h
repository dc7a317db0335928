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

// Puts what a command did into the audit. Throws std::runtime_error where that fails; the terminal's next start does
// it.
void recordCommand(SQLite::Database& db, const std::filesystem::path& dataDir, const AuditEntry& entry);

// What the database remembers of actions: each one before it is handed on, so that none is missing in the audit, and
// the reply to each one with a key, so that none is carried out twice. One thread.
class ActionStore {
 public:
  struct Fresh {};  // to be handed on
  struct Running {
    int64_t requestId = 0;  // of the same action, whose reply is this one's too
  };
  struct Refusal {
    std::string message;
  };
  using Verdict = std::variant<Fresh, Running, MobileMessage, Refusal>;  // the message: the reply that is known

  // Puts what an earlier terminal left undone into the audit.
  ActionStore(SQLite::Database& db, const std::filesystem::path& dataDir);
  ~ActionStore();
  ActionStore(const ActionStore&) = delete;
  ActionStore& operator=(const ActionStore&) = delete;

  // What to do with an action that would run as `requestId`. Fresh: it is remembered, one with a key also over a power
  // failure.
  Verdict begin(int64_t requestId, const Action& action);

  // The action's reply came. Does nothing where `requestId` is no action's.
  void finish(int64_t requestId, const MobileMessage& reply);

  // The action was not handed on: forgets it.
  void abandon(int64_t requestId);

  // The audit line of an action that was not let through.
  void refuse(AuditEntry entry, std::string_view message);

  // Writes replies and audit lines that could not be written before, and forgets keys older than 7 days. To be called
  // now and then.
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
    std::string due;  // the audit line where it is not written yet
  };

  std::optional<Verdict> findKey(const Action& action, const std::string& fingerprint);
  void insert(int64_t requestId, const Action& action, const std::string& fingerprint);
  bool tryClose(const Closing& closing);
  void close(const Closing& closing);
  void closeLate();
  bool tryAppend(const std::string& line);
  void giveUpOpen();
  void appendDue();

  SQLite::Database& db_;
  AuditLog audit_;
  bool behind_ = false;                           // lines are due
  int64_t pruned_ = 0;                            // when
  std::unordered_map<int64_t, Open> open_;        // by request id
  std::unordered_map<int64_t, int64_t> running_;  // request id by row
  std::deque<Closing> late_;                      // those whose reply the database could not take yet
};

}  // namespace orvane::terminal
