#include "tests/trading/faultvfs.h"

#include <map>
#include <mutex>
#include <vector>

#include <sqlite3.h>

namespace orvane::terminal::testing {
namespace {

constexpr const char* kFlushed = ".flushed";

struct OpenFile {
  std::string name;
  const sqlite3_io_methods* real = nullptr;
};

// SQLite calls plain functions, so what they work on is global.
struct Disk {
  std::mutex mutex;
  sqlite3_vfs* real = nullptr;
  sqlite3_vfs vfs{};
  std::map<const sqlite3_io_methods*, sqlite3_io_methods> methods;  // ours by theirs: files with locks have others
  std::map<sqlite3_file*, OpenFile> files;
  Fault fault{};
  int at = 0;                       // 0: nothing fails
  sqlite3* connection = nullptr;    // the last one opened
  bool keeps = false;               // what is flushed
  std::atomic<bool> holds = false;  // each flush

  // Counts an operation; true if it fails.
  bool fails(bool isWrite) {
    const std::lock_guard lock(mutex);
    const int operations = ++FaultyDisk::operations;
    const bool isDue = at != 0 && (fault.lasts ? operations >= at : operations == at);
    return isDue && (isWrite || !fault.full);
  }

  const sqlite3_io_methods* methodsOf(sqlite3_file* file) {
    const std::lock_guard lock(mutex);
    return files.at(file).real;
  }
};

Disk gDisk;

int writeFile(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
  if (!gDisk.fails(true)) return gDisk.methodsOf(file)->xWrite(file, data, size, offset);
  if (const int part = static_cast<int>(size * gDisk.fault.share); part > 0) {
    gDisk.methodsOf(file)->xWrite(file, data, part, offset);
  }
  return gDisk.fault.full ? SQLITE_FULL : SQLITE_IOERR_WRITE;
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
  return gDisk.fails(false) ? SQLITE_IOERR_TRUNCATE : gDisk.methodsOf(file)->xTruncate(file, size);
}

void keepFlushed(const std::string& name) {
  std::filesystem::copy_file(name, name + kFlushed, std::filesystem::copy_options::overwrite_existing);
}

int syncFile(sqlite3_file* file, int /*flags*/) {
  if (gDisk.fails(false)) return SQLITE_IOERR_FSYNC;
  ++FaultyDisk::flushes;
  gDisk.holds.wait(true);
  const std::lock_guard lock(gDisk.mutex);
  if (gDisk.keeps) keepFlushed(gDisk.files.at(file).name);
  return SQLITE_OK;
}

int closeFile(sqlite3_file* file) {
  const std::lock_guard lock(gDisk.mutex);
  const OpenFile closed = gDisk.files.extract(file).mapped();
  if (gDisk.files.empty()) gDisk.keeps = false;
  return closed.real->xClose(file);
}

int openFile(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  const std::lock_guard lock(gDisk.mutex);
  const bool exists = name != nullptr && std::filesystem::exists(name);
  const bool onDisk = name != nullptr && std::string(name).find("/database-") == std::string::npos;  // a copy in memory
  if (FaultyDisk::isReadOnly && onDisk) {
    if (!exists) return SQLITE_CANTOPEN;
    flags = (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
  }
  const int code = gDisk.real->xOpen(gDisk.real, name, file, flags, outFlags);
  if (code != SQLITE_OK || name == nullptr) return code;
  gDisk.files[file] = {name, file->pMethods};
  sqlite3_io_methods& methods = gDisk.methods[file->pMethods];
  methods = *file->pMethods;
  methods.xWrite = &writeFile;
  methods.xTruncate = &truncateFile;
  methods.xSync = &syncFile;
  methods.xClose = &closeFile;
  file->pMethods = &methods;
  return SQLITE_OK;
}

// Run for each new connection.
int keepConnection(sqlite3* db, char** /*error*/, const sqlite3_api_routines* /*api*/) {
  gDisk.connection = db;
  return SQLITE_OK;
}

}  // namespace

FaultyDisk::FaultyDisk() {
  gDisk.real = sqlite3_vfs_find(nullptr);
  gDisk.vfs = *gDisk.real;
  gDisk.vfs.zName = "faulty";
  gDisk.vfs.xOpen = &openFile;
  sqlite3_vfs_register(&gDisk.vfs, 1);
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(&keepConnection));
}

FaultyDisk::~FaultyDisk() {
  heal();
  isReadOnly = false;
  sqlite3_vfs_unregister(&gDisk.vfs);
  sqlite3_reset_auto_extension();
}

void FaultyDisk::arm(const Fault& fault, int at) {
  const std::lock_guard lock(gDisk.mutex);
  gDisk.fault = fault;
  gDisk.at = at;
  operations = 0;
  gDisk.keeps = true;
  for (const auto& [file, open] : gDisk.files) keepFlushed(open.name);
}

void FaultyDisk::checkpointOften() { sqlite3_wal_autocheckpoint(gDisk.connection, 25); }

void FaultyDisk::holdFlushes() {
  gDisk.holds = true;
  flushes = 0;
}

void FaultyDisk::heal() {
  const std::lock_guard lock(gDisk.mutex);
  gDisk.at = 0;
  gDisk.holds = false;
  gDisk.holds.notify_all();
}

void FaultyDisk::crash(const std::filesystem::path& from, const std::filesystem::path& to, bool powerFails) {
  const std::lock_guard lock(gDisk.mutex);
  for (const std::string name : {"terminal.db", "terminal.db-wal", "gateway.db", "gateway.db-wal"}) {
    const std::filesystem::path source = from / (powerFails ? name + kFlushed : name);
    if (std::filesystem::exists(source)) std::filesystem::copy_file(source, to / name);
  }
}

}  // namespace orvane::terminal::testing
