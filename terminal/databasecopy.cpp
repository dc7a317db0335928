#include "terminal/databasecopy.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::terminal {
namespace {

namespace fs = std::filesystem;

constexpr int kTries = 10;  // while commands of other processes write

[[noreturn]] void fail(int reason, const fs::path& file) {
  throw std::system_error(reason, std::generic_category(), file.string());
}

fs::path logOf(const fs::path& file) { return file.string() + "-wal"; }

// Holds SQLite's shared lock on the database: no process can lock the file exclusively until it is released, and it
// cannot be taken while one has.
class ReadLock {
 public:
  explicit ReadLock(const fs::path& file) : file_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct flock range {};
    range.l_type = F_RDLCK;
    range.l_whence = SEEK_SET;
    range.l_start = 0x40000002;  // SQLite's shared bytes
    range.l_len = 510;
    if (file_ >= 0 && fcntl(file_, F_SETLK, &range) == 0) return;
    const int error = errno;
    if (file_ >= 0) ::close(file_);
    fail(error, file);
  }
  ~ReadLock() { ::close(file_); }
  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

 private:
  int file_;
};

// Differs if the database was written meanwhile.
struct State {
  explicit State(const fs::path& file) : parts{sizeAndTime(file), sizeAndTime(logOf(file))} {}
  bool operator==(const State&) const = default;

  static std::array<int64_t, 3> sizeAndTime(const fs::path& file) {
    struct stat found {};
    if (stat(file.c_str(), &found) != 0) return {-1, 0, 0};
    return {found.st_size, found.st_mtim.tv_sec, found.st_mtim.tv_nsec};
  }

  std::array<std::array<int64_t, 3>, 2> parts;
};

void copyOnce(const fs::path& file, const fs::path& copy) {
  const ReadLock lock(file);
  fs::remove(logOf(copy));
  fs::copy_file(file, copy, fs::copy_options::overwrite_existing);
  fs::permissions(copy, fs::perms::owner_write, fs::perm_options::add);
  if (fs::exists(logOf(file))) fs::copy_file(logOf(file), logOf(copy));
}

void copyUnchanged(const fs::path& file, const fs::path& copy) {
  for (int i = 0; i < kTries; ++i) {
    const State before(file);
    copyOnce(file, copy);
    if (State(file) == before) return;
  }
  fail(EBUSY, file);
}

}  // namespace

bool isDiskFault(int code) {
  const int primary = code & 0xFF;
  return primary == SQLITE_FULL || primary == SQLITE_READONLY || primary == SQLITE_CANTOPEN || primary == SQLITE_IOERR;
}

class DatabaseCopy::Folder {
 public:
  explicit Folder(const fs::path& parent) {
    std::string name = parent / "database-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) fail(errno, name);
    path = name;
  }
  ~Folder() {
    std::error_code ignored;  // a copy that stays behind does no harm
    fs::remove_all(path, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  fs::path path;
};

// The folder of a container's shared memory may be too small.
DatabaseCopy::DatabaseCopy(const fs::path& file) {
  try {
    folder_ = std::make_unique<Folder>("/dev/shm");
    copyUnchanged(file, dir() / file.filename());
  } catch (const std::system_error&) {
    folder_ = std::make_unique<Folder>(fs::temp_directory_path());
    copyUnchanged(file, dir() / file.filename());
  }
}

DatabaseCopy::~DatabaseCopy() = default;

const std::filesystem::path& DatabaseCopy::dir() const { return folder_->path; }

}  // namespace orvane::terminal
