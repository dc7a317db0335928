#pragma once

#include <filesystem>
#include <memory>

namespace orvane::terminal {

// True if an SQLite result code means that the disk is full, read-only or failing; false if the file is locked, damaged
// or belongs to another program.
bool isDiskFault(int code);

// A copy of a database and its write-ahead log, in memory if there is room. SQLite cannot read a database with a log
// from a folder that it cannot write. The copy is deleted with the object.
class DatabaseCopy {
 public:
  // REQUIRES: this process has no connection to the file, whose locks would be lost. Throws std::system_error if the
  // file cannot be read, another process has locked it exclusively, or there is no room.
  explicit DatabaseCopy(const std::filesystem::path& file);
  ~DatabaseCopy();
  DatabaseCopy(const DatabaseCopy&) = delete;
  DatabaseCopy& operator=(const DatabaseCopy&) = delete;

  // Where it is, under the file's own name.
  const std::filesystem::path& dir() const;

 private:
  class Folder;

  std::unique_ptr<Folder> folder_;
};

}  // namespace orvane::terminal
