#include "terminal/phones/actionstore.h"

#include <fstream>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "terminal/digest.h"
#include "terminal/phones/audittext.h"
#include "terminal/phones/sql.h"

namespace orvane::terminal {
namespace {

constexpr int64_t kKeepSeconds = int64_t{7} * 24 * 3600;
constexpr int kPruneAtOnce = 1000;  // so that actions do not wait for it

// The length prefix separates topic and body.
std::string fingerprintOf(const Action& action) {
  const Digest digest =
      sha256(fmt::format("{} {} {}{}", action.terminalType, action.topic.size(), action.topic, action.body));
  return {digest.begin(), digest.end()};
}

std::string headOf(const Action& action) {
  return auditHead({action.tokenName, action.address, action.topic, action.body, action.key}, action.time);
}

MobileMessage readReply(SQLite::Statement& row, int column) {
  MobileMessage reply;
  reply.topic = row.getColumn(column).getString();
  reply.message = row.getColumn(column + 1).getString();
  reply.data = row.getColumn(column + 2).getString();
  return reply;
}

// Changes with each start of the machine; empty if the system does not provide it.
std::string bootId() {
  std::string id;
  std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), id);
  return id;
}

}  // namespace

ActionStore::ActionStore(SQLite::Database& db, const IClock& clock, int64_t softBytes)
    : db_(db), clock_(clock), softBytes_(softBytes), pageBytes_(db.execAndGet("PRAGMA page_size").getInt64()) {}

Verdict ActionStore::begin(int64_t requestId, const Action& action) {
  forget(requestId);
  const std::string fingerprint = fingerprintOf(action);
  if (auto known = findKey(action, fingerprint)) return std::move(*known);
  if (!action.key.empty() && isFull()) {
    return Rejected{
        fmt::format("gateway.db has reached its limit, so it takes no more keys: start the terminal with "
                    "a larger --gateway-size than {} MiB",
                    softBytes_ >> 20)};
  }
  Open open{0, !action.key.empty(), headOf(action)};
  SQLite::Statement statement(
      db_, "INSERT INTO action (token, made, boot, fingerprint, line, key) VALUES (?, ?, ?, ?, ?, ?)");
  SQLite::bind(statement, action.token, wallSeconds(clock_), bootSeconds(clock_));
  statement.bind(4, fingerprint.data(), static_cast<int>(fingerprint.size()));
  statement.bindNoCopy(5, open.line);
  if (open.hasKey) statement.bind(6, action.key);
  statement.exec();
  open.row = db_.getLastInsertRowid();
  running_.emplace(open.row, requestId);
  open_.emplace(requestId, std::move(open));
  return Fresh{};
}

std::optional<Verdict> ActionStore::find(const Action& action) { return findKey(action, fingerprintOf(action)); }

std::optional<Verdict> ActionStore::findKey(const Action& action, const std::string& fingerprint) {
  if (action.key.empty()) return std::nullopt;
  SQLite::Statement row(db_,
                        "SELECT id, fingerprint, reply_topic, reply_message, reply_data FROM action"
                        " WHERE token = ? AND key = ?");
  SQLite::bind(row, action.token, action.key);
  if (!row.executeStep()) return std::nullopt;
  if (row.getColumn(1).getString() != fingerprint) {
    return Rejected{fmt::format("the key {} belongs to another request", action.key)};
  }
  if (!row.isColumnNull(2)) return readReply(row, 2);
  if (const auto running = running_.find(row.getColumn(0).getInt64()); running != running_.end()) {
    return Running{running->second};
  }
  return Rejected{
      "the outcome of this request is not known: look at order.list before sending it anew under another key"};
}

std::string ActionStore::openLine(int64_t requestId) const {
  const auto found = open_.find(requestId);
  return found == open_.end() ? std::string() : found->second.line;
}

void ActionStore::close(int64_t requestId, const MobileMessage& reply, const AuditLine& line) {
  const auto found = open_.find(requestId);
  if (found == open_.end()) return;
  if (!found->second.hasKey) return remove(requestId, &line);
  writeSql(db_,
           "UPDATE action SET line = NULL, due = nullif(?, ''), reply_topic = ?, reply_message = ?, reply_data = ?"
           " WHERE id = ?",
           line.isWritten ? std::string() : line.text, reply.topic, reply.message, reply.data, found->second.row);
}

void ActionStore::remove(int64_t requestId, const AuditLine* line) {
  const auto found = open_.find(requestId);
  if (found == open_.end()) return;
  const int64_t row = found->second.row;
  if (line == nullptr || line->isWritten) {
    writeSql(db_, "DELETE FROM action WHERE id = ?", row);
  } else {
    writeSql(db_, "UPDATE action SET key = NULL, line = NULL, due = ? WHERE id = ?", line->text, row);
  }
}

void ActionStore::forget(int64_t requestId) {
  if (const auto node = open_.extract(requestId); !node.empty()) running_.erase(node.mapped().row);
}

void ActionStore::giveUp(Which which) {
  noteBoot();
  std::vector<int64_t> rows;
  SQLite::Statement row(db_, "SELECT id FROM action WHERE line IS NOT NULL");
  while (row.executeStep()) {
    const int64_t id = row.getColumn(0).getInt64();
    if (which == Which::All || !running_.contains(id)) rows.push_back(id);
  }
  for (const int64_t id : rows) {
    writeSql(db_, "UPDATE action SET due = line || ?, line = NULL WHERE id = ?", auditLoss(), id);
  }
}

// Times by the boot clock of an earlier start of the machine mean nothing in this one.
void ActionStore::noteBoot() const {
  const std::string id = bootId();
  SQLite::Statement row(db_, "SELECT id FROM boot");
  if (row.executeStep() && row.getColumn(0).getString() == id) return;
  row.reset();
  writeSql(db_, "UPDATE action SET boot = NULL WHERE boot IS NOT NULL");
  writeSql(db_, "DELETE FROM boot");
  writeSql(db_, "INSERT INTO boot VALUES (?)", id);
}

bool ActionStore::prune() {
  return writeSql(db_,
                  "DELETE FROM action WHERE id IN (SELECT id FROM action WHERE made < ? AND key IS NOT NULL AND"
                  " coalesce(boot < ?, 1) AND line IS NULL AND due IS NULL LIMIT ?)",
                  wallSeconds(clock_) - kKeepSeconds, bootSeconds(clock_) - kKeepSeconds, kPruneAtOnce) == kPruneAtOnce;
}

bool ActionStore::isFull() const {
  const int64_t pages = db_.execAndGet("PRAGMA page_count").getInt64();
  if (pages * pageBytes_ < softBytes_) return false;
  return (pages - db_.execAndGet("PRAGMA freelist_count").getInt64()) * pageBytes_ >= softBytes_;
}

}  // namespace orvane::terminal
