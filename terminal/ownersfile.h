#pragma once

#include <filesystem>

namespace orvane::terminal {

// Opens a file of the data folder with the flags of open(2). One that is missing is made, readable by its owner alone,
// who is the folder's: root may make it by a command, and the terminal that runs as a service writes it too. Returns a
// descriptor, or -1 with `errno` set.
int openOwnersFile(const std::filesystem::path& file, int flags);

}  // namespace orvane::terminal
