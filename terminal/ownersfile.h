#pragma once

#include <filesystem>

namespace orvane::terminal {

// Opens a file of the data folder with the flags of open(2). A missing file is created with mode 0600, owned by the
// folder's owner: a command of root may create what the terminal, which runs as a service, must write. Returns a
// descriptor, or -1 with `errno` set.
int openOwnersFile(const std::filesystem::path& file, int flags);

}  // namespace orvane::terminal
