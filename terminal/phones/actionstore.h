#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include <SQLiteCpp/Database.h>

#include "host/mobilemessage.h"
#include "terminal/eventloop.h"
#include "terminal/phones/action.h"
#include "terminal/phones/audittrail.h"

namespace orvane::terminal {

// The write-ahead record of actions in `gateway.db`: each is stored before it is dispatched, so that the audit misses
// none, and with a key its reply is stored too, so that none runs twice. Each operation that writes must run in a
// transaction and may be repeated if that fails; it throws SQLite::Exception. One thread.
class ActionStore {
 public:
  // Above `softBytes` of gateway.db, actions with a key are refused; the rest of the file is for open actions.
  ActionStore(SQLite::Database& db, const IClock& clock, int64_t softBytes);

  // What to do with an action that would run as `requestId`. Fresh: it is stored.
  Verdict begin(int64_t requestId, const Action& action);

  // The verdict on the action's key if an earlier request has used it. Only reads.
  std::optional<Verdict> find(const Action& action);

  // The head of the action's audit line; empty if none is open as `requestId`.
  std::string openLine(int64_t requestId) const;

  // Stores the action's reply, and the line if it is not written. Does nothing if none is open as `requestId`.
  void close(int64_t requestId, const MobileMessage& reply, const AuditLine& line);

  // Deletes the action, which was not dispatched. `line` may be null.
  void remove(int64_t requestId, const AuditLine* line);

  // Forgets that the action is open: it was closed or removed, or its beginning was not stored.
  void forget(int64_t requestId);

  // Keeps the audit lines of the actions of an earlier terminal, which will never get a reply, or of all.
  enum class Which { Earlier, All };
  void giveUp(Which which);

  // Deletes some keys older than seven days by both clocks. True if there may be more.
  bool prune();

 private:
  struct Open {
    int64_t row = 0;
    bool hasKey = false;
    std::string line;
  };

  std::optional<Verdict> findKey(const Action& action, const std::string& fingerprint);
  bool isFull() const;
  void noteBoot() const;

  SQLite::Database& db_;
  const IClock& clock_;
  const int64_t softBytes_;
  const int64_t pageBytes_;
  std::unordered_map<int64_t, Open> open_;        // by request id
  std::unordered_map<int64_t, int64_t> running_;  // request id by row
};

}  // namespace orvane::terminal
