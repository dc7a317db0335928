#include "terminal/datadir.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fmt/format.h>
#include <unistd.h>

namespace orvane::terminal {

void makeDataDir(const std::filesystem::path& dir) {
  std::error_code error;
  if (std::filesystem::create_directories(dir, error)) {
    std::filesystem::permissions(dir, std::filesystem::perms::owner_all, error);
  }
  if (error) {
    throw std::runtime_error(
        fmt::format("cannot make the folder {}: {}; choose another with --data", dir.string(), error.message()));
  }
}

void requireWritable(const std::filesystem::path& dir) {
  if (access(dir.c_str(), W_OK | X_OK) == 0) return;
  throw std::runtime_error(
      fmt::format("cannot write to the folder {}: {}; choose another with --data", dir.string(), std::strerror(errno)));
}

}  // namespace orvane::terminal
