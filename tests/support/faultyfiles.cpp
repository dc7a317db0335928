// Preloaded or linked before the C library, makes files and the wall clock fail as those of a broken machine do.
// FAULTY_FILES names a folder. While it holds a file
//   "full", nothing is written to any file of the same file system;
//   "flush", no flush of such a file succeeds;
//   "hang", writes and flushes of such files wait;
//   "clock", the wall clock is eight days ahead.
// SLOW_FLUSH_MS makes each flush take that many milliseconds longer, as on a disk without a cache.

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr time_t kJump = time_t{8} * 24 * 3600;

bool isOn(const char* fault, struct stat& control) {
  const char* folder = std::getenv("FAULTY_FILES");
  return folder != nullptr && stat((std::string(folder) + '/' + fault).c_str(), &control) == 0;
}

// Sockets and pipes are on no disk.
bool isFaulty(int descriptor, const char* fault) {
  struct stat control {};
  struct stat file {};
  return isOn(fault, control) && fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode) &&
         file.st_dev == control.st_dev;
}

template <typename Result, typename... Arguments>
Result callReal(const char* function, Arguments... arguments) {
  using Function = Result (*)(Arguments...);
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, function))(arguments...);
}

template <typename Result, typename... Arguments>
Result callUnless(const char* fault, int error, const char* function, int descriptor, Arguments... arguments) {
  while (isFaulty(descriptor, "hang")) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  if (isFaulty(descriptor, fault)) {
    errno = error;
    return -1;
  }
  return callReal<Result>(function, descriptor, arguments...);
}

int flush(const char* function, int file) {
  if (const char* delay = std::getenv("SLOW_FLUSH_MS")) {
    std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(delay)));
  }
  return callUnless<int>("flush", EIO, function, file);
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

extern "C" int fsync(int file) { return flush("fsync", file); }

extern "C" int fdatasync(int file) { return flush("fdatasync", file); }

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  const int result = callReal<int>("clock_gettime", clock, now);
  struct stat control {};
  if (result == 0 && clock == CLOCK_REALTIME && isOn("clock", control)) now->tv_sec += kJump;
  return result;
}
