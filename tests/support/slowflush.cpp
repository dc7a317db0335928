// Preloaded or linked before the C library, makes each flush of a file take SLOW_FLUSH_MS milliseconds longer, which is
// how a disk behaves that has no cache to lie about. Nothing if the variable is not set.

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include <dlfcn.h>

namespace {

int flushSlowly(const char* function, int file) {
  using Flush = int (*)(int);
  const auto flush = reinterpret_cast<Flush>(dlsym(RTLD_NEXT, function));
  if (const char* delay = std::getenv("SLOW_FLUSH_MS")) {
    std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(delay)));
  }
  return flush(file);
}

}  // namespace

extern "C" int fsync(int file) { return flushSlowly("fsync", file); }

extern "C" int fdatasync(int file) { return flushSlowly("fdatasync", file); }
