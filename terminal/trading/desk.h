#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>

#include "terminal/trading/book.h"
#include "terminal/trading/database.h"
#include "terminal/trading/outbox.h"

namespace orvane::terminal {

// The state that all services share: the book, the database it stands in, and the messages about what changes.
// Any thread.
class Desk {
 public:
  // Throws as Database does.
  explicit Desk(const std::filesystem::path& dir);

  // Runs `look` on the book, locked, and returns what it returns.
  template <typename Look>
  auto read(const Look& look) {
    const std::lock_guard lock(mutex_);
    return look(static_cast<const Book&>(book_));
  }

  // Begins a new trading day where the last one is over. Then runs `work` on the book, locked, writes what it names in
  // the change as one transaction, and queues the messages about orders and fills. Where one of these throws, book and
  // database are as before and the exception goes on.
  void apply(const std::function<void(Book&, Change&)>& work);

  // Tells all phones of something that went wrong where no reply could say so. UTF-8.
  void notice(const std::string& text);

  Outbox& outbox() { return outbox_; }

  // Whether the last change could be written.
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
