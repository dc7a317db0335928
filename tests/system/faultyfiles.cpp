// Loaded before the C library, makes files fail as those of a broken disk do. FAULTY_FILES names a folder; while it
// holds a file "full", nothing is written to any file of the same file system, and while it holds "flush", no flush
// succeeds.

#include <cerrno>
#include <cstdlib>
#include <string>

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

// Sockets and pipes are on no disk.
bool isFaulty(int descriptor, const char* fault) {
  const char* folder = std::getenv("FAULTY_FILES");
  struct stat control {};
  struct stat file {};
  if (folder == nullptr || stat((std::string(folder) + '/' + fault).c_str(), &control) != 0) return false;
  return fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode) && file.st_dev == control.st_dev;
}

template <typename Result, typename... Arguments>
Result callUnless(const char* fault, int error, const char* function, int descriptor, Arguments... arguments) {
  if (isFaulty(descriptor, fault)) {
    errno = error;
    return -1;
  }
  using Function = Result (*)(int, Arguments...);
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, function))(descriptor, arguments...);
}

}  // namespace

extern "C" ssize_t write(int file, const void* bytes, size_t count) {
  return callUnless<ssize_t>("full", ENOSPC, "write", file, bytes, count);
}

extern "C" ssize_t writev(int file, const iovec* parts, int count) {
  return callUnless<ssize_t>("full", ENOSPC, "writev", file, parts, count);
}

extern "C" ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
  return callUnless<ssize_t>("full", ENOSPC, "pwrite", file, bytes, count, offset);
}

extern "C" ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t offset) {
  return callUnless<ssize_t>("full", ENOSPC, "pwrite64", file, bytes, count, offset);
}

extern "C" int fsync(int file) { return callUnless<int>("flush", EIO, "fsync", file); }

extern "C" int fdatasync(int file) { return callUnless<int>("flush", EIO, "fdatasync", file); }
