#include "terminal/phones/audittrail.h"

#include <stdexcept>
#include <utility>

#include "terminal/logging.h"
#include "terminal/phones/sql.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxAtOnce = 1000;  // kept lines in one transaction

}  // namespace

AuditTrail::Line AuditTrail::add(std::string text) {
  added_.push_back(std::make_shared<AuditLine>(AuditLine{std::move(text)}));
  return added_.back();
}

void AuditTrail::flush() {
  if (added_.empty()) return;
  std::vector<std::string> lines;
  lines.reserve(added_.size());
  for (const Line& line : added_) lines.push_back(line->text);
  const bool isWritten = tryAppend(lines);
  for (const Line& line : added_) line->isWritten = isWritten;
  isBehind_ = isBehind_ || !isWritten;
  added_.clear();
}

void AuditTrail::keep(const AuditLine& line) const { keepAuditLine(db_, line.text, wallSeconds(clock_)); }

void AuditTrail::writeKept() {
  SQLite::Statement row(db_, "SELECT id, due FROM action WHERE due IS NOT NULL ORDER BY id LIMIT ?");
  row.bind(1, static_cast<int64_t>(kMaxAtOnce));
  std::vector<int64_t> rows;
  std::vector<std::string> lines;
  while (row.executeStep()) {
    rows.push_back(row.getColumn(0).getInt64());
    lines.push_back(row.getColumn(1).getString());
  }
  if (!lines.empty() && !tryAppend(lines)) return;
  for (const int64_t id : rows) {
    writeSql(db_, "DELETE FROM action WHERE id = ? AND key IS NULL AND line IS NULL", id);
    writeSql(db_, "UPDATE action SET due = NULL WHERE id = ?", id);
  }
  isBehind_ = lines.size() == kMaxAtOnce;
}

bool AuditTrail::tryAppend(const std::vector<std::string>& lines) try {
  log_.append(lines);
  if (!fault_.empty()) TERMINAL_LOG(gatewayLogger(), Info, "audit.log can be written again");
  fault_.clear();
  return true;
} catch (const std::runtime_error& error) {
  if (fault_ != error.what()) {
    TERMINAL_LOG(gatewayLogger(), Error, "{}; the lines are kept in gateway.db meanwhile", error.what());
  }
  fault_ = error.what();
  return false;
}

}  // namespace orvane::terminal
