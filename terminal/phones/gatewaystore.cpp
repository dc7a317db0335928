#include "terminal/phones/gatewaystore.h"

#include <utility>

#include <fmt/format.h>

#include "terminal/gatewaydatabase.h"
#include "terminal/logging.h"
#include "terminal/phones/audittext.h"
#include "terminal/phones/sql.h"

namespace orvane::terminal {
namespace {

using Kind = DiskItem::Kind;

constexpr const char* kFile = "gateway.db";
constexpr std::chrono::milliseconds kWatchPeriod{100};
constexpr std::chrono::milliseconds kTidyPeriod{500};
constexpr std::chrono::seconds kProbePeriod{5};
constexpr std::chrono::minutes kPrunePeriod{1};
constexpr int64_t kReserveBytes = int64_t{16} * 1024 * 1024;  // beyond the limit: for replies, and what has no key
constexpr int kLastTurns = 30;

SQLite::Database openDatabase(const StoreOptions& options) {
  SQLite::Database db = openGatewayDatabase(options.dataDir);
  const int64_t pageBytes = db.execAndGet("PRAGMA page_size").getInt64();
  db.execAndGet(fmt::format("PRAGMA max_page_count = {}", (options.maxBytes + kReserveBytes) / pageBytes));
  db.setBusyTimeout(0);  // DiskWork tries again
  return db;
}

// A transaction that changes nothing writes nothing, and an update that leaves its row as it is does not either. This
// does, so it shows whether there is room.
void probe(SQLite::Database& db) {
  const int version = db.execAndGet("PRAGMA user_version").getInt();
  db.exec(fmt::format("PRAGMA user_version = {}", version));
}

std::vector<Revocation> readRevocations(SQLite::Database& db) {
  SQLite::Statement row(db, "SELECT id, token FROM revocation");
  std::vector<Revocation> revocations;
  while (row.executeStep()) revocations.push_back({row.getColumn(0).getInt64(), row.getColumn(1).getInt64()});
  return revocations;
}

std::shared_ptr<const TokenSnapshot> readSnapshot(SQLite::Database& db) {
  return std::make_shared<const TokenSnapshot>(TokenSnapshot{readTokens(db), readRevocations(db)});
}

void logFault(const std::string& what, const std::string& fault) {
  if (!fault.empty()) TERMINAL_LOG(gatewayLogger(), Error, "{}: {}", what, fault);
}

}  // namespace

GatewayStore::GatewayStore(const StoreOptions& options, const IClock& clock)
    : options_(options),
      file_(options.dataDir / kFile),
      clock_(clock),
      watch_(clock),
      mark_(options.dataDir),
      db_(":memory:"),
      audit_(db_, AuditLog(options.dataDir, options.audit), clock),
      actions_(db_, clock, options.maxBytes),
      work_(db_, file_, clock, [this] { open(); }) {
  mark_.set();
  try {
    open();
    watchTokens();
    alerts_ = readAlerts(db_);
  } catch (const DiskFault& fault) {
    readGatewayCopy(options.dataDir, fault, [this](SQLite::Database& copy) {
      tokens_ = readSnapshot(copy);
      alerts_ = readAlerts(copy);
    });
  }
  addPatientWrite(
      [this] {
        probe(db_);
        actions_.giveUp(ActionStore::Which::Earlier);
      },
      [](const std::string&) {});
}

void GatewayStore::open() {
  if (isOpen_) return;
  db_ = openDatabase(options_);
  isOpen_ = true;
}

void GatewayStore::watch(OnTokens onTokens, OnHealth onHealth) {
  onTokens_ = std::move(onTokens);
  onHealth_ = std::move(onHealth);
}

void GatewayStore::addWrite(std::function<void()> run, Done done) {
  work_.add({.kind = Kind::Write, .prepare = {}, .run = std::move(run), .done = std::move(done)});
}

void GatewayStore::addPatientWrite(std::function<void()> run, Done done) {
  work_.add({.kind = Kind::Write, .isPatient = true, .prepare = {}, .run = std::move(run), .done = std::move(done)});
}

void GatewayStore::readTokens(Done done) {
  work_.add({.kind = Kind::Read, .prepare = {}, .run = [this] { watchTokens(); }, .done = std::move(done)});
}

void GatewayStore::begin(int64_t requestId, std::shared_ptr<const Action> action, OnVerdict answer) {
  const Kind kind = action->key.empty() ? Kind::Write : Kind::Durable;
  const auto verdict = std::make_shared<Verdict>();
  work_.add({.kind = kind,
             .prepare = {},
             .run = [this, requestId, action, verdict] { *verdict = actions_.begin(requestId, *action); },
             .done =
                 [this, requestId, action = std::move(action), verdict,
                  answer = std::move(answer)](const std::string& fault) {
                   if (!fault.empty()) {
                     actions_.forget(requestId);
                     *verdict = refuse(*action, fault);
                   }
                   answer(std::move(*verdict));
                 }});
}

// An action that was sent before may have run, so it is not called refused then.
Verdict GatewayStore::refuse(const Action& action, const std::string& fault) try {
  if (!action.key.empty() && !isOpen_) throw SQLite::Exception("gateway.db is not open");
  if (auto known = actions_.find(action)) return std::move(*known);
  return Rejected{"the terminal cannot remember this request, so it is not carried out: " + fault};
} catch (const SQLite::Exception&) {
  return Rejected{"the terminal cannot look up the key of this request, so it does nothing now: " + fault};
}

void GatewayStore::finish(int64_t requestId, const MobileMessage& reply) {
  const auto line = std::make_shared<AuditTrail::Line>();
  work_.add({.kind = Kind::Write,
             .isPatient = true,
             .prepare = [this, requestId, reply,
                         line] { *line = audit_.add(actions_.openLine(requestId) + auditReply(reply)); },
             .run = [this, requestId, reply, line] { actions_.close(requestId, reply, **line); },
             .done = [this, requestId](const std::string&) { actions_.forget(requestId); }});
}

void GatewayStore::abandon(int64_t requestId, const std::string& refusal) {
  const auto line = std::make_shared<AuditTrail::Line>();
  work_.add({.kind = Kind::Write,
             .isPatient = true,
             .prepare =
                 [this, requestId, refusal, line] {
                   if (!refusal.empty()) *line = audit_.add(actions_.openLine(requestId) + auditRefusal(refusal));
                 },
             .run = [this, requestId, line] { actions_.remove(requestId, line->get()); },
             .done = [this, requestId](const std::string&) { actions_.forget(requestId); }});
}

void GatewayStore::note(std::string text) {
  const auto line = std::make_shared<AuditTrail::Line>();
  work_.add({.kind = Kind::Write,
             .prepare = [this, text = std::move(text), line] { *line = audit_.add(text); },
             .run =
                 [this, line] {
                   if (!(*line)->isWritten) audit_.keep(**line);
                 },
             .done =
                 [line](const std::string& fault) {
                   if (!(*line)->isWritten) logFault("the audit lacks " + (*line)->text, fault);
                 }});
}

void GatewayStore::touch(int64_t token) {
  addWrite([this, token] { writeSql(db_, "UPDATE token SET used = ? WHERE id = ?", wallSeconds(clock_), token); },
           [](const std::string& fault) { logFault("the use of a token is not stored", fault); });
}

void GatewayStore::addAlert(const Alert& alert, Done done) {
  addWrite([this, alert] { insertAlert(db_, alert); }, std::move(done));
}

void GatewayStore::deleteAlerts(std::vector<int64_t> ids, Done done) {
  addWrite([this, ids = std::move(ids)] { terminal::deleteAlerts(db_, ids); }, std::move(done));
}

void GatewayStore::keepFired(const Alert& alert) {
  addPatientWrite([this, alert] { updateFired(db_, alert); }, [](const std::string& /*fault: tried for ever*/) {});
}

void GatewayStore::noteLink(const std::string& link, Done done) {
  addPatientWrite(
      [this, link] {
        db_.exec("DELETE FROM address");
        writeSql(db_, "INSERT INTO address VALUES (?)", link);
      },
      std::move(done));
}

void GatewayStore::confirm(int64_t revocation) {
  addWrite([this, revocation] { writeSql(db_, "DELETE FROM revocation WHERE id = ?", revocation); },
           [](const std::string& fault) { logFault("a revocation is not confirmed", fault); });
}

std::chrono::milliseconds GatewayStore::turn() {
  const WriteTimer::Write write(timer_);
  mark_.set();  // at the start the folder may have been read-only
  if (isDue(watched_, kWatchPeriod)) readTokens([](const std::string& fault) { logFault("tokens", fault); });
  if (isDue(tidied_, kTidyPeriod)) tidy();
  work_.turn([this] { audit_.flush(); });
  publishHealth();
  return work_.pause();
}

// data_version changes with each commit of another connection.
void GatewayStore::watchTokens() {
  if (!isOpen_) return;
  const int64_t version = db_.execAndGet("PRAGMA data_version").getInt64();
  if (version == version_) return;
  tokens_ = readSnapshot(db_);
  version_ = version;
  audit_.expectKept();  // a command keeps its line if audit.log is locked
  if (onTokens_) onTokens_(tokens_);
}

// Writes at least nothing, which shows whether a file is locked; and at times something, which shows whether there is
// room.
void GatewayStore::tidy() {
  const bool isBehind = audit_.isBehind();
  if (!isBehind) audit_.probe();
  const bool isProbed = !work_.fault().empty() || isDue(probed_, kProbePeriod);
  const bool mayPrune = watch_.agrees() && isDue(pruned_, kPrunePeriod);
  addWrite(
      [this, isBehind, isProbed, mayPrune] {
        if (isProbed) probe(db_);
        if (isBehind) audit_.writeKept();
        if (mayPrune && actions_.prune()) pruned_ = {};
      },
      [](const std::string& /*fault: logged once by DiskWork*/) {});
}

void GatewayStore::publishHealth() {
  StoreHealth health{work_.fault(), audit_.fault(), {}};
  if (!watch_.agrees()) {
    health.clock = fmt::format(
        "the wall clock jumped by {} minutes: keys are not deleted until it is set right or the terminal is restarted",
        std::chrono::duration_cast<std::chrono::minutes>(watch_.jump()).count());
  }
  if (health == health_) return;
  health_ = std::move(health);
  if (onHealth_) onHealth_(health_);
}

bool GatewayStore::isDue(BootTime& last, std::chrono::milliseconds period) const {
  const BootTime now = clock_.bootTime();
  if (last != BootTime{} && now - last < period) return false;
  last = now;
  return true;
}

void GatewayStore::close() {
  hurry();
  bool isStored = false;
  addPatientWrite(
      [this] {
        actions_.giveUp(ActionStore::Which::All);
        audit_.writeKept();
      },
      [&isStored](const std::string&) { isStored = true; });
  for (int turns = 0; turns < kLastTurns && !isStored; ++turns) {
    if (turns > 0) {
      work_.wait(turn());
    } else {
      turn();
    }
  }
  if (isStored) return;
  logFault("gateway.db lacks the last replies, which the next start takes for unknown",
           work_.fault().empty() ? "it is locked" : work_.fault());
}

}  // namespace orvane::terminal
