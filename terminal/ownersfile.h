#pragma once

#include <filesystem>

namespace orvane::terminal {

// Opens a file of the data folder with the flags of open(2). A missing file is created with mode 0600, owned by the
// folder's owner. Refuses a link with ELOOP, and with EPERM anything but a regular file of the folder's owner: another
// user who can write to the folder could have planted it. Returns a descriptor, or -1 with `errno` set.
int openOwnersFile(const std::filesystem::path& file, int flags);

// Throws std::runtime_error if openOwnersFile would refuse a file that exists.
void requireOwners(const std::filesystem::path& file);

// If this process runs as root and the folder belongs to another user, acts as that user from now on. A link planted in
// the folder then opens nothing that its owner could not open. Does nothing if the folder is missing. Throws
// std::runtime_error.
void actAsOwner(const std::filesystem::path& folder);

}  // namespace orvane::terminal
