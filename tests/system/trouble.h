#pragma once

#include <filesystem>

#include <SQLiteCpp/Database.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace orvane::test {

// What may happen to a data folder, for as long as the object lives.
class Trouble {
 public:
  Trouble() = default;
  virtual ~Trouble() = default;
  Trouble(const Trouble&) = delete;
  Trouble& operator=(const Trouble&) = delete;
};

// Another program writes to gateway.db and does not end.
class DatabaseLock : public Trouble {
 public:
  explicit DatabaseLock(const std::filesystem::path& dir) : db_(dir / "gateway.db", SQLite::OPEN_READWRITE) {
    db_.setBusyTimeout(10'000);
    db_.exec("BEGIN IMMEDIATE");
  }

 private:
  SQLite::Database db_;
};

// Another program reads audit.log.
class AuditLock : public Trouble {
 public:
  explicit AuditLock(const std::filesystem::path& dir)
      : file_(open((dir / "audit.log").c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600)) {
    flock(file_, LOCK_SH);
  }
  ~AuditLock() override { close(file_); }

 private:
  int file_;
};

}  // namespace orvane::test
