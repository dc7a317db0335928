#include "terminal/privatefile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::terminal {

void savePrivately(const std::filesystem::path& file, std::string_view bytes) {
  const std::filesystem::path fresh = file.string() + ".new";
  unlink(fresh.c_str());  // of a program that was killed, or a planted link
  errno = 0;
  const int opened = open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  const bool isWritten = opened >= 0 &&
                         write(opened, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
                         fsync(opened) == 0;
  if (opened >= 0) close(opened);
  if (!isWritten || std::rename(fresh.c_str(), file.c_str()) != 0) {
    const int reason = errno == 0 ? ENOSPC : errno;  // a write in part sets none
    unlink(fresh.c_str());
    throw std::runtime_error(
        fmt::format("cannot write {}: {}; make room on its disk, or let the user who runs the program write to {}",
                    file.string(), std::strerror(reason), file.parent_path().string()));
  }
}

}  // namespace orvane::terminal
