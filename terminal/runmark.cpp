#include "terminal/runmark.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "terminal/ownersfile.h"

namespace orvane::terminal {
namespace {

int openMark(const std::filesystem::path& dataDir) {
  return openOwnersFile(dataDir / "terminal.lock", O_RDONLY | O_CLOEXEC);
}

}  // namespace

// A command that looks for the mark may hold the lock for a moment.
void RunMark::set() {
  if (file_ >= 0) return;
  file_ = openMark(dataDir_);
  constexpr int kTries = 100;
  for (int i = 0; i < kTries && file_ >= 0 && flock(file_, LOCK_SH | LOCK_NB) != 0; ++i) usleep(1000);
}

RunMark::~RunMark() {
  if (file_ >= 0) close(file_);
}

bool RunMark::isSet(const std::filesystem::path& dataDir) {
  const int file = openMark(dataDir);
  if (file < 0) return false;
  const bool isHeld = flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  close(file);
  return isHeld;
}

}  // namespace orvane::terminal
