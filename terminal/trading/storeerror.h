#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace orvane::terminal {

// The database could not be opened, read or written. what() names the file, the reason and the remedy in English.
class StoreError : public std::runtime_error {
 public:
  // `mayBeStored`: a flush failed, so that nobody knows whether the disk has the change.
  StoreError(const std::filesystem::path& file, const std::exception& cause, bool mayBeStored = false);

  bool mayBeStored() const { return mayBeStored_; }

  // See isDiskFault().
  bool isOfDisk() const;

  // For clients, UTF-8: nothing was changed, why, and the remedy; or that the outcome is not known.
  std::string refusal() const;
  std::string unknownOutcome() const;

  // For clients, UTF-8: rows of history are not written, or cannot be read.
  std::string lostHistory() const;
  std::string unreadable() const;

 private:
  std::string file_;
  std::string reason_;
  int code_;  // SQLite's primary result code
  bool mayBeStored_;
};

}  // namespace orvane::terminal
