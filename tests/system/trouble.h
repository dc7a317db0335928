#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include <SQLiteCpp/Database.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "tests/support/tempdir.h"

namespace orvane::test {

// What may happen to a data folder. It ends with the last copy.
using Trouble = std::shared_ptr<void>;

// Another program writes to gateway.db and does not end.
inline Trouble lockDatabase(const std::filesystem::path& dir) {
  auto db = std::make_shared<SQLite::Database>(dir / "gateway.db", SQLite::OPEN_READWRITE);
  db->setBusyTimeout(10'000);
  db->exec("BEGIN IMMEDIATE");
  return db;
}

// Another program reads audit.log.
inline Trouble lockAudit(const std::filesystem::path& dir) {
  const int file = open((dir / "audit.log").c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
  flock(file, LOCK_SH);
  return {nullptr, [file](void*) { close(file); }};
}

// The disk and the clock of all terminals that are started while this lives, which fail when a test says so: see
// tests/support/faultyfiles.cpp.
class FaultyDisk {
 public:
  FaultyDisk() {
    setenv("FAULTY_FILES", control_.path().c_str(), 1);
    setenv("LD_PRELOAD", FAULTY_FILES_LIBRARY, 1);
  }
  ~FaultyDisk() {
    unsetenv("LD_PRELOAD");
    unsetenv("FAULTY_FILES");
  }
  FaultyDisk(const FaultyDisk&) = delete;
  FaultyDisk& operator=(const FaultyDisk&) = delete;

  // `fault` is "full", "flush", "hang" or "clock".
  Trouble fail(const char* fault) const {
    const std::filesystem::path file = control_.path() / fault;
    std::ofstream(file).put('x');
    return {nullptr, [file](void*) { std::filesystem::remove(file); }};
  }

 private:
  TempDir control_;
};

}  // namespace orvane::test
