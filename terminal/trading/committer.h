#pragma once

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "host/mobilemessage.h"
#include "terminal/trading/opening.h"
#include "terminal/writetimer.h"

namespace orvane::terminal {

// Writes the book's changes to the database on a separate thread. All changes that gather during one flush become one
// transaction (group commit). If a commit fails, nothing more is accepted until the database has been written again and
// the book read back from it. Thread-safe.
class Committer {
 public:
  // The text for clients, UTF-8: empty if everything is stored, otherwise why it is not, or that the outcome is not
  // known.
  using Answer = std::function<void(const std::string& failure)>;

  // What the committer calls, on its own thread.
  struct Hooks {
    std::function<void(Book book)> restore;               // the book as stored replaces the one in memory
    std::function<void(MobileMessage message)> push;      // for what is stored, and notices; any thread, never waits
    std::function<void(const std::string& text)> notice;  // the database fails, or works again; UTF-8
  };

  // A piece of work that is not part of the book. Must not throw. Returns true to be called once more, after the
  // changes that were queued meanwhile. `database` may be a copy that is thrown away, if fault() is not empty.
  using Job = std::function<bool(Database& database)>;

  Committer(std::filesystem::path dir, OpenedBook opened, Hooks hooks);

  // Stores all changes that were added.
  ~Committer();

  // Throws StoreError while changes are refused.
  void requireOpen() const;

  // Why changes are refused, or that a write hangs, UTF-8, English; empty if neither.
  std::string fault() const;

  // Queues the change that the calling thread has made to `book`, and the messages to be pushed once it is stored. The
  // caller keeps the book locked, so that changes are queued in the order in which they were made.
  void add(const Book& book, const Change& change, std::vector<MobileMessage> pushes);

  // Sends the message behind the pushes of all changes queued so far, also if those cannot be stored.
  void notify(MobileMessage message);

  // Calls `answer` once, when the following are on the disk or given up: every change queued so far, by any thread, and
  // those which the calling thread has made since its last call. Called at once if there are none, otherwise on the
  // committer's thread.
  void whenStored(Answer answer);

  // Runs the jobs in turn on the committer's thread, between commits. Changes wait for one call of one job at most.
  void post(Job job);

 private:
  struct Group {
    Rows rows;
    std::vector<MobileMessage> pushes;
    std::vector<MobileMessage> notices;
    std::vector<Answer> answers;
    std::set<std::thread::id> changers;  // threads with changes here that have not called whenStored() since

    bool empty() const { return rows.empty && notices.empty() && answers.empty(); }
  };

  void run();
  void commit();
  void finish(const std::string& failure, bool isWritable);
  bool recover();
  void runJob(std::unique_lock<std::mutex>& lock);

  std::filesystem::path dir_;
  WriteTimer timer_;
  bool isRestored_ = true;  // the book in memory is the one on the disk; committer's thread only
  std::unique_ptr<Database> database_;
  std::unique_ptr<ReadingCopy> copy_;  // only while there is no database
  Hooks hooks_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  Group next_;     // gathering
  Group current_;  // being written, or its fate being decided
  bool isWriting_ = false;
  std::deque<Job> jobs_;
  std::optional<StoreError> error_;                  // changes are refused
  std::map<std::thread::id, std::string> failures_;  // for the next whenStored() of the thread
  bool isStopping_ = false;
  std::thread thread_;
};

}  // namespace orvane::terminal
