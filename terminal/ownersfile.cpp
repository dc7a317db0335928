#include "terminal/ownersfile.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::terminal {
namespace {

bool isOwners(const struct stat& file, const struct stat& folder) {
  return S_ISREG(file.st_mode) && file.st_uid == folder.st_uid;
}

int closeWith(int descriptor, int reason) {
  close(descriptor);
  errno = reason;
  return -1;
}

int openExisting(const std::filesystem::path& file, int flags, const struct stat& folder) {
  // Without O_NONBLOCK the call would block on a planted FIFO. It makes no difference for a file.
  const int opened = open(file.c_str(), flags | O_NOFOLLOW | O_NONBLOCK);
  struct stat found {};
  if (opened < 0 || (fstat(opened, &found) == 0 && isOwners(found, folder))) return opened;
  return closeWith(opened, EPERM);
}

int makeFile(const std::filesystem::path& file, int flags, const struct stat& folder) {
  const int made = open(file.c_str(), flags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  if (made < 0 || geteuid() != 0 || fchown(made, folder.st_uid, folder.st_gid) == 0) return made;
  const int reason = errno;
  unlink(file.c_str());
  return closeWith(made, reason);
}

}  // namespace

int openOwnersFile(const std::filesystem::path& file, int flags) {
  struct stat folder {};
  if (stat(file.parent_path().c_str(), &folder) != 0) return -1;
  int opened = openExisting(file, flags, folder);
  if (opened < 0 && errno == ENOENT) opened = makeFile(file, flags, folder);
  // EEXIST: another process has created the file in between.
  return opened < 0 && errno == EEXIST ? openExisting(file, flags, folder) : opened;
}

void requireOwners(const std::filesystem::path& file) {
  struct stat found {};
  struct stat folder {};
  // Without either, opening the file will fail.
  if (lstat(file.c_str(), &found) != 0 || stat(file.parent_path().c_str(), &folder) != 0) return;
  if (!isOwners(found, folder)) {
    throw std::runtime_error("it does not belong to the folder's owner, or is not a regular file: remove it");
  }
}

void actAsOwner(const std::filesystem::path& folder) {
  struct stat found {};
  if (geteuid() != 0 || stat(folder.c_str(), &found) != 0 || found.st_uid == 0) return;
  const gid_t group = found.st_gid;
  if (setgroups(1, &group) == 0 && setgid(group) == 0 && setuid(found.st_uid) == 0) return;
  throw std::runtime_error("cannot act as the owner of " + folder.string() + ": " + std::strerror(errno));
}

}  // namespace orvane::terminal
