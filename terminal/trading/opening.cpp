#include "terminal/trading/opening.h"

#include <cstdlib>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace orvane::terminal {
namespace {

constexpr const char* kFile = "terminal.db";
constexpr const char* kLog = "terminal.db-wal";

// A folder in memory if there is one, because the disk fails. Removed by the destructor.
class CopyFolder {
 public:
  CopyFolder() {
    const std::filesystem::path memory = "/dev/shm";
    path_ = (access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path()) / "book-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) throw std::system_error(errno, std::generic_category(), path_);
  }
  ~CopyFolder() {
    std::error_code ignored;  // a copy that stays behind does no harm
    std::filesystem::remove_all(path_, ignored);
  }
  CopyFolder(const CopyFolder&) = delete;
  CopyFolder& operator=(const CopyFolder&) = delete;

  std::filesystem::path path() const { return path_; }

 private:
  std::string path_;
};

// Holds SQLite's shared lock on the database: no terminal can open the file until it is released, and it cannot be
// taken while one has the file open.
class ReadLock {
 public:
  explicit ReadLock(const std::filesystem::path& file) : file_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct flock range {};
    range.l_type = F_RDLCK;
    range.l_whence = SEEK_SET;
    range.l_start = 0x40000002;  // SQLite's shared bytes
    range.l_len = 510;
    if (file_ >= 0 && fcntl(file_, F_SETLK, &range) == 0) return;
    const int error = errno;
    if (file_ >= 0) ::close(file_);
    throw std::system_error(error, std::generic_category(), file.string());
  }
  ~ReadLock() { ::close(file_); }
  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

 private:
  int file_;
};

Book readCopy(const std::filesystem::path& dir) {
  const CopyFolder copy;
  {
    const ReadLock lock(dir / kFile);
    std::filesystem::copy_file(dir / kFile, copy.path() / kFile);
    if (std::filesystem::exists(dir / kLog)) std::filesystem::copy_file(dir / kLog, copy.path() / kLog);
  }
  std::filesystem::permissions(copy.path() / kFile, std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
  return Database(copy.path()).load();
}

bool isThere(const std::filesystem::path& file) {
  std::error_code error;
  return std::filesystem::file_size(file, error) > 0 && !error;
}

}  // namespace

OpenedBook openBook(const std::filesystem::path& dir) {
  try {
    auto database = std::make_unique<Database>(dir);
    Book book = database->load();
    return {std::move(database), std::move(book), std::nullopt};
  } catch (const StoreError& error) {
    if (!error.isOfDisk() || !isThere(dir / kFile)) throw;
    try {
      return {nullptr, readCopy(dir), error};
    } catch (const std::exception& copying) {
      throw StoreError(dir / kFile,
                       std::runtime_error(std::string(error.what()) + "; nor can it be read: " + copying.what()));
    }
  }
}

}  // namespace orvane::terminal
