#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "terminal/trading/committer.h"
#include "terminal/trading/outbox.h"
#include "terminal/trading/priceboard.h"
#include "terminal/trading/tradingday.h"

namespace orvane::terminal {

// The book shared by all services, with what stores its changes and reports them. Thread-safe.
class Desk {
 public:
  // `error` is null if all rows were read.
  using EquityReader = std::function<void(std::vector<EquityRow> rows, const StoreError* error)>;

  // Throws StoreError. If the folder cannot be written, changes are refused.
  Desk(const std::filesystem::path& dir, const IClock& clock) : Desk(dir, clock, openBook(dir)) {}

  // Runs `look` on the locked book and returns its result.
  template <typename Look>
  auto read(const Look& look) {
    const std::lock_guard lock(mutex_);
    return look(static_cast<const Book&>(book_));
  }

  // Starts a new trading day if the last one is over. Then runs `work` on the locked book and queues the change that it
  // names to be stored, and the pushes of orders and fills. Does not wait for the disk. `work` is given the time in
  // milliseconds since 1970 and must not throw once it has changed the book. Throws StoreError, and then has done
  // nothing, while the database cannot be written.
  void apply(const std::function<void(Book&, Change&, int64_t now)>& work);

  // Queues a row of history for each account, if the book's day is today. A row that cannot be written is dropped; a
  // notice says so once.
  void record();

  // Reads `range` on the committer's thread, a part at a time so that changes need not wait. Calls `done` there, with
  // the rows in order of time or with an error.
  void readEquity(const EquityRange& range, EquityReader done);

  // See Committer::whenStored.
  void whenStored(Committer::Answer answer) { committer_.whenStored(std::move(answer)); }

  // Sends a notice to all clients about an error that no reply can report, behind the pushes of earlier changes. UTF-8.
  void notice(const std::string& text);

  // Milliseconds since 1970.
  int64_t now() const { return day_.now(); }

  Outbox& outbox() { return outbox_; }

  // Who moves a price in the book shows it here too.
  PriceBoard& prices() { return prices_; }

  // English; empty if changes are stored, and if the trading day changes in time.
  std::string storageFault() const { return committer_.fault(); }
  std::string clockFault() const { return day_.fault(); }

 private:
  Desk(const std::filesystem::path& dir, const IClock& clock, OpenedBook opened);

  void changeDay();
  void restore(Book book);
  void keep(std::vector<EquityRow> rows);

  TradingDay day_;
  std::mutex mutex_;
  Book book_;
  Outbox outbox_;
  bool isKeeping_ = true;  // the last row of history was written; committer's thread only
  PriceBoard prices_;
  Committer committer_;  // last: its thread uses the others
};

}  // namespace orvane::terminal
