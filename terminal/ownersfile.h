#pragma once

#include <filesystem>

namespace orvane::terminal {

// Opens a file of the data folder with the flags of open(2). A missing file is created with mode 0600, owned by the
// folder's owner. Refuses a link (ELOOP), and with EPERM what is no file or belongs to somebody else: whoever may write
// the folder could have put it there. Returns a descriptor, or -1 with `errno` set.
int openOwnersFile(const std::filesystem::path& file, int flags);

// Throws std::runtime_error if openOwnersFile would refuse a file that exists.
void requireOwners(const std::filesystem::path& file);

// If this process is root's and the folder another user's, acts as that user from now on, so that a link planted in the
// folder leads nowhere that its owner may not go. Does nothing if there is no such folder. Throws std::runtime_error.
void actAsOwner(const std::filesystem::path& folder);

}  // namespace orvane::terminal
