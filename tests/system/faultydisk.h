#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/tempdir.h"

namespace orvane::test {

// The disk and the clock of all terminals that are started while this lives, which fail when a test says so: see
// tests/support/faultyfiles.cpp.
class FaultyDisk {
 public:
  FaultyDisk() {
    setenv("FAULTY_FILES", control_.path().c_str(), 1);
    setenv("LD_PRELOAD", FAULTY_FILES_LIBRARY, 1);
  }
  ~FaultyDisk() {
    unsetenv("LD_PRELOAD");
    unsetenv("FAULTY_FILES");
  }
  FaultyDisk(const FaultyDisk&) = delete;
  FaultyDisk& operator=(const FaultyDisk&) = delete;

  // `fault` is "full", "flush", "hang" or "clock".
  void begin(const char* fault) const { std::ofstream(control_.path() / fault).put('x'); }
  void end(const char* fault) const { std::filesystem::remove(control_.path() / fault); }

 private:
  TempDir control_;
};

}  // namespace orvane::test
