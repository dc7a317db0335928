#pragma once

#include <atomic>
#include <filesystem>

namespace orvane::terminal::testing {

// Which write, flush or truncation of a database fails, and how.
struct Fault {
  const char* name;
  bool lasts;    // so do all later ones
  bool full;     // only writes fail, for lack of room
  double share;  // part of the data that a failing write writes all the same
};

// A disk that fails on demand: as long as it lives, every database that is opened is on it. It also keeps what a power
// failure would leave, the contents of each file when it was last flushed. Nothing is really flushed, for speed.
class FaultyDisk {
 public:
  FaultyDisk();
  ~FaultyDisk();
  FaultyDisk(const FaultyDisk&) = delete;
  FaultyDisk& operator=(const FaultyDisk&) = delete;

  // Counts from here on. The operation with number `at`, from 1, fails.
  void arm(const Fault& fault, int at);

  // Lets the database opened last be checkpointed every 25 frames, a few times in a short scenario.
  static void checkpointOften();

  // Holds up each flush until heal(). Counts flushes from here on.
  void holdFlushes();

  // Nothing fails any more, and no flush is held up.
  void heal();

  // Copies the databases in `from` to the empty folder `to`: as a crash of the process leaves it, or of the power.
  static void crash(const std::filesystem::path& from, const std::filesystem::path& to, bool powerFails);

  // SQLite calls plain functions, so there is one state.
  static inline std::atomic<int> operations = 0;       // since arm()
  static inline std::atomic<int> flushes = 0;          // since holdFlushes()
  static inline std::atomic<bool> isReadOnly = false;  // files are not even opened for writing
};

}  // namespace orvane::terminal::testing
