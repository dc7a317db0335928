#include <dlfcn.h>

#include "request.h"

namespace {

// Loads the library, sends it one request and unloads it.
bool loadAndAsk(const char* path) {
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  void* symbol = library == nullptr ? nullptr : dlsym(library, "_ZN6orvane12IPocketAgent11getInstanceEv");
  if (symbol == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return false;
  }
  const bool right = orvane::test::answers(*reinterpret_cast<orvane::IPocketAgent* (*)()>(symbol)());
  dlclose(library);
  const bool gone = dlopen(path, RTLD_NOW | RTLD_NOLOAD) == nullptr;
  if (!gone) std::fputs("the library stays loaded\n", stderr);
  return right && gone;
}

}  // namespace

int main(int argc, char** argv) { return argc == 2 && loadAndAsk(argv[1]) && loadAndAsk(argv[1]) ? 0 : 1; }
