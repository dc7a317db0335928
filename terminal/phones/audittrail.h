#pragma once

#include <memory>
#include <string>
#include <vector>

#include <SQLiteCpp/Database.h>

#include "terminal/eventloop.h"
#include "terminal/phones/auditlog.h"

namespace orvane::terminal {

// A line on its way to `audit.log`.
struct AuditLine {
  std::string text;
  bool isWritten = false;
};

// Writes lines to `audit.log`, many at a time. A line that cannot be written is kept in `gateway.db` until it can be.
// One thread.
class AuditTrail {
 public:
  using Line = std::shared_ptr<AuditLine>;

  AuditTrail(SQLite::Database& db, AuditLog log, const IClock& clock) : db_(db), log_(std::move(log)), clock_(clock) {}

  // Adds a line to those that the next flush writes.
  Line add(std::string text);

  // Writes all added lines, or marks none as written; the caller keeps those.
  void flush();

  // Looks whether the file could be written.
  void probe() { tryAppend({}); }

  // Stores a line that is not written. Throws SQLite::Exception.
  void keep(const AuditLine& line) const;

  // Another process may have kept lines, or an earlier terminal.
  void expectKept() { isBehind_ = true; }
  bool isBehind() const { return isBehind_; }

  // Writes lines that were kept. Throws SQLite::Exception.
  void writeKept();

  // Why lines are not written, UTF-8; empty if they are.
  const std::string& fault() const { return fault_; }

 private:
  bool tryAppend(const std::vector<std::string>& lines);

  SQLite::Database& db_;
  AuditLog log_;
  const IClock& clock_;
  std::vector<Line> added_;
  bool isBehind_ = true;
  std::string fault_;
};

}  // namespace orvane::terminal
