#include "terminal/ownersfile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::terminal {
namespace {

int makeFile(const std::filesystem::path& file, int flags) {
  const int made = open(file.c_str(), flags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  struct stat folder {};
  if (made < 0 || geteuid() != 0 || stat(file.parent_path().c_str(), &folder) != 0) return made;
  if (fchown(made, folder.st_uid, folder.st_gid) == 0) return made;
  const int reason = errno;
  unlink(file.c_str());
  close(made);
  errno = reason;
  return -1;
}

}  // namespace

int openOwnersFile(const std::filesystem::path& file, int flags) {
  int opened = open(file.c_str(), flags);
  if (opened < 0 && errno == ENOENT) opened = makeFile(file, flags);
  return opened < 0 && errno == EEXIST ? open(file.c_str(), flags)
                                       : opened;  // another process has created it meanwhile
}

}  // namespace orvane::terminal
