#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>

#include "terminal/eventloop.h"

namespace orvane::terminal {

// One piece of work on `gateway.db`. Its functions run on the disk's thread.
struct DiskItem {
  enum class Kind : uint8_t {
    Read,
    Write,    // survives the end of the process, but perhaps not a power failure
    Durable,  // survives a power failure too
  };
  using Done = std::function<void(const std::string& fault)>;

  Kind kind = Kind::Write;
  bool isPatient = false;         // tried until it is stored; others fail at once, or after three seconds of a lock
  std::function<void()> prepare;  // called once, before the item's first transaction; may be empty
  std::function<void()> run;      // inside the transaction; may throw SQLite::Exception, and may be called again
  Done done;                      // called once: stored, or why not, in UTF-8 with the remedy
  BootTime since{};               // filled in by add()
};

// Runs items in the order in which they were added, all waiting ones in one transaction (group commit). A lock of
// another process is waited for by trying again, so that reads go on and the end is not held up.
class DiskWork {
 public:
  // `open` is called before each transaction, and throws std::runtime_error with file and remedy while `db` is not open
  // for writing.
  DiskWork(SQLite::Database& db, std::filesystem::path file, const IClock& clock, std::function<void()> open)
      : db_(db), file_(std::move(file)), clock_(clock), open_(std::move(open)) {}

  // Any thread.
  void add(DiskItem item);

  // Waits for an item, at most that long. The disk's thread.
  void wait(std::chrono::milliseconds limit);

  // From now on a lock is waited for 0.3 seconds only. Any thread.
  void hurry() { isHurried_ = true; }

  // Runs what can be run now. `beforeWriting` is called after the items are prepared. The disk's thread.
  void turn(const std::function<void()>& beforeWriting);

  // How long to wait before the next call of turn(). The disk's thread.
  std::chrono::milliseconds pause() const;

  // Why the last transaction failed, or waits for a lock for half a second, UTF-8; empty if it does not. The disk's
  // thread.
  const std::string& fault() const { return fault_; }

 private:
  void takeNew();
  void runReads();
  void runWrites();
  void writeAll();
  void fail(const std::string& fault);
  BootTime ageOf(const DiskItem& item) const { return clock_.bootTime() - item.since; }
  bool isOld(const DiskItem& item) const;

  SQLite::Database& db_;
  const std::filesystem::path file_;
  const IClock& clock_;
  const std::function<void()> open_;
  std::mutex mutex_;  // guards the new items
  std::condition_variable added_;
  std::deque<DiskItem> new_;
  std::atomic<bool> isHurried_ = false;
  std::deque<DiskItem> reads_;
  std::deque<DiskItem> writes_;
  std::string fault_;
  bool isLocked_ = false;  // the last transaction waits for another process
};

}  // namespace orvane::terminal
