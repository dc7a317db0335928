#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>

#include "terminal/trading/book.h"
#include "terminal/trading/database.h"
#include "terminal/trading/outbox.h"

namespace orvane::terminal {

// The state shared by all services: the book, its database, and the messages about changes. Thread-safe.
class Desk {
 public:
  // Throws like Database.
  explicit Desk(const std::filesystem::path& dir);

  // Runs `look` on the locked book and returns its result.
  template <typename Look>
  auto read(const Look& look) {
    const std::lock_guard lock(mutex_);
    return look(static_cast<const Book&>(book_));
  }

  // Starts a new trading day if the last one is over. Then runs `work` on the locked book, writes the change that it
  // names in one transaction, and queues the pushes of orders and fills. If any of this throws, book and database are
  // unchanged and the exception is passed on.
  void apply(const std::function<void(Book&, Change&)>& work);

  // Sends a notice to all clients about an error that no reply can report. UTF-8.
  void notice(const std::string& text);

  Outbox& outbox() { return outbox_; }

  // False if the last change could not be written.
  bool isStoring() const { return isStoring_; }

 private:
  void store(const Change& change);
  void commit(const std::function<void(Book&, Change&)>& work);
  Book reload() noexcept;
  void announce(const Change& change);

  std::mutex mutex_;
  std::atomic<bool> isStoring_ = true;
  Database database_;
  Book book_;
  Outbox outbox_;
};

}  // namespace orvane::terminal
