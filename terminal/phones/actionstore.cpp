#include "terminal/phones/actionstore.h"

#include <chrono>
#include <utility>

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>

#include "terminal/digest.h"
#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr int64_t kKeepSeconds = int64_t{7} * 24 * 3600;
constexpr int64_t kPruneSeconds = 3600;
constexpr size_t kMaxRefusedBody = 1024;  // in the audit: unauthorised clients must not fill the disk

template <typename... Values>
void write(const SQLite::Database& db, const char* sql, const Values&... values) {
  SQLite::Statement statement(db, sql);
  SQLite::bind(statement, values...);
  statement.exec();
}

// Without full synchronisation a commit survives the end of the process, but perhaps not a power failure.
void synchronise(const SQLite::Database& db, bool fully) {
  write(db, fully ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
}

// The length prefix separates topic and body.
std::string fingerprintOf(const Action& action) {
  const AuditEntry& entry = action.entry;
  const Digest digest =
      sha256(fmt::format("{} {} {}{}", action.terminalType, entry.topic.size(), entry.topic, entry.body));
  return {digest.begin(), digest.end()};
}

MobileMessage readReply(SQLite::Statement& row, int column) {
  MobileMessage reply;
  reply.topic = row.getColumn(column).getString();
  reply.message = row.getColumn(column + 1).getString();
  reply.data = row.getColumn(column + 2).getString();
  return reply;
}

void keepLine(const SQLite::Database& db, const std::string& line, int64_t now) {
  write(db, "INSERT INTO action (token, made, fingerprint, due) VALUES (0, ?, '', ?)", now, line);
}

}  // namespace

void recordCommand(SQLite::Database& db, const std::filesystem::path& dataDir, const AuditEntry& entry) {
  const WallTime now = std::chrono::system_clock::now();
  const std::string line = auditHead(entry, now) + auditReply({});
  try {
    AuditLog(dataDir).append(line);
  } catch (const std::runtime_error&) {
    keepLine(db, line, std::chrono::system_clock::to_time_t(now));
    throw;
  }
}

ActionStore::ActionStore(SQLite::Database& db, const std::filesystem::path& dataDir, const IClock& clock)
    : db_(db), clock_(clock), audit_(dataDir) {
  giveUpOpen();
}

ActionStore::~ActionStore() {
  closeLate();
  try {
    giveUpOpen();
  } catch (const SQLite::Exception& error) {
    TERMINAL_LOG(gatewayLogger(), Error, "the audit lacks requests under way until the next start: {}", error.what());
  }
}

int64_t ActionStore::now() const { return std::chrono::system_clock::to_time_t(clock_.wallTime()); }

ActionStore::Verdict ActionStore::begin(int64_t requestId, const Action& action) try {
  const std::string fingerprint = fingerprintOf(action);
  if (auto known = findKey(action, fingerprint)) return std::move(*known);
  insert(requestId, action, fingerprint);
  return Fresh{};
} catch (const SQLite::Exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "a request is refused, since gateway.db cannot store it: {}", error.what());
  return Rejected{fmt::format("the terminal cannot remember this request, so it is not carried out: {}", error.what())};
}

std::optional<ActionStore::Verdict> ActionStore::findKey(const Action& action, const std::string& fingerprint) {
  if (action.entry.key.empty()) return std::nullopt;
  SQLite::Statement row(db_,
                        "SELECT id, fingerprint, reply_topic, reply_message, reply_data FROM action"
                        " WHERE token = ? AND key = ?");
  SQLite::bind(row, action.token, std::string(action.entry.key));
  if (!row.executeStep()) return std::nullopt;
  if (row.getColumn(1).getString() != fingerprint) {
    return Rejected{fmt::format("the key {} belongs to another request", action.entry.key)};
  }
  if (!row.isColumnNull(2)) return readReply(row, 2);
  if (const auto running = running_.find(row.getColumn(0).getInt64()); running != running_.end()) {
    return Running{running->second};
  }
  return Rejected{
      "the outcome of this request is not known: look at order.list before sending it anew under another key"};
}

void ActionStore::insert(int64_t requestId, const Action& action, const std::string& fingerprint) {
  Open open{0, !action.entry.key.empty(), auditHead(action.entry, clock_.wallTime())};
  synchronise(db_, open.hasKey);
  SQLite::Statement statement(db_, "INSERT INTO action (token, made, fingerprint, line, key) VALUES (?, ?, ?, ?, ?)");
  SQLite::bind(statement, action.token, now());
  statement.bind(3, fingerprint.data(), static_cast<int>(fingerprint.size()));
  statement.bindNoCopy(4, open.line);
  if (open.hasKey) statement.bind(5, std::string(action.entry.key));
  statement.exec();
  open.row = db_.getLastInsertRowid();
  running_.emplace(open.row, requestId);
  open_.emplace(requestId, std::move(open));
}

void ActionStore::finish(int64_t requestId, const MobileMessage& reply) {
  const auto node = open_.extract(requestId);
  if (node.empty()) return;
  Open& open = node.mapped();
  running_.erase(open.row);
  std::string line = open.line + auditReply(reply);
  if (tryAppend(line)) line.clear();
  late_.push_back({std::move(open), reply, std::move(line)});
  if (late_.size() > 1 || !tryClose(late_.front())) return;
  late_.pop_front();
}

bool ActionStore::tryClose(const Closing& closing) try {
  close(closing);
  return true;
} catch (const SQLite::Exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "gateway.db cannot store the reply to {} yet: {}", closing.reply.topic,
               error.what());
  return false;
}

void ActionStore::close(const Closing& closing) {
  const auto& [open, reply, due] = closing;
  synchronise(db_, false);
  if (!open.hasKey && due.empty()) return write(db_, "DELETE FROM action WHERE id = ?", open.row);
  write(db_,
        "UPDATE action SET line = NULL, due = nullif(?, ''), reply_topic = ?, reply_message = ?, reply_data = ?"
        " WHERE id = ?",
        due, reply.topic, reply.message, reply.data, open.row);
}

void ActionStore::closeLate() {
  while (!late_.empty() && tryClose(late_.front())) late_.pop_front();
}

void ActionStore::abandon(int64_t requestId) try {
  const auto node = open_.extract(requestId);
  if (node.empty()) return;
  running_.erase(node.mapped().row);
  write(db_, "DELETE FROM action WHERE id = ?", node.mapped().row);
} catch (const SQLite::Exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "gateway.db cannot forget a request that was not carried out: {}", error.what());
}

void ActionStore::refuse(AuditEntry entry, std::string_view message) try {
  if (entry.body.size() > kMaxRefusedBody) entry.body = {};
  const std::string line = auditHead(entry, clock_.wallTime()) + auditRefusal(message);
  if (!tryAppend(line)) keepLine(db_, line, now());
} catch (const SQLite::Exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "the audit lacks a refusal of {}: {}", entry.topic, error.what());
}

void ActionStore::tidy() try {
  closeLate();
  if (behind_) appendDue();
  const int64_t time = now();
  if (time - pruned_ < kPruneSeconds) return;
  pruned_ = time;
  write(db_, "DELETE FROM action WHERE made < ? AND line IS NULL AND due IS NULL", time - kKeepSeconds);
} catch (const SQLite::Exception& error) {
  TERMINAL_LOG(gatewayLogger(), Error, "gateway.db cannot be tidied: {}", error.what());
}

bool ActionStore::tryAppend(const std::string& line) try {
  audit_.append(line);
  return true;
} catch (const std::runtime_error& error) {
  if (!behind_) TERMINAL_LOG(gatewayLogger(), Error, "{}; its lines are kept in gateway.db meanwhile", error.what());
  behind_ = true;
  return false;
}

// Actions without a reply by now will never get one.
void ActionStore::giveUpOpen() {
  write(db_, "UPDATE action SET due = line || ?, line = NULL WHERE line IS NOT NULL", auditLoss());
  appendDue();
}

void ActionStore::appendDue() {
  SQLite::Statement row(db_, "SELECT id, due FROM action WHERE due IS NOT NULL ORDER BY id");
  std::vector<int64_t> written;
  bool fine = true;
  while (fine && row.executeStep()) {
    fine = tryAppend(row.getColumn(1).getString());
    if (fine) written.push_back(row.getColumn(0).getInt64());
  }
  row.reset();
  for (const int64_t id : written) write(db_, "UPDATE action SET due = NULL WHERE id = ?", id);
  write(db_, "DELETE FROM action WHERE key IS NULL AND line IS NULL AND due IS NULL");
  if (fine && behind_) TERMINAL_LOG(gatewayLogger(), Info, "audit.log can be written again");
  behind_ = !fine;
}

}  // namespace orvane::terminal
