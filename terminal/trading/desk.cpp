#include "terminal/trading/desk.h"

#include <memory>
#include <vector>

#include "host/common.h"
#include "terminal/trading/pushrow.h"
#include "terminal/trading/settlement.h"

namespace orvane::terminal {
namespace {

constexpr size_t kRowsAtOnce = 4000;  // about two milliseconds

std::vector<MobileMessage> pushesOf(const Book& book, const Change& change) {
  std::vector<MobileMessage> pushes;
  MobileMessage message;
  if (!change.orders.empty()) {
    message.topic = "order.push";
    message.data = orderRows(book, change);
    pushes.push_back(message);
  }
  if (!change.fills.empty()) {
    message.topic = "trade.push";
    message.data = fillRows(book, change);
    pushes.push_back(std::move(message));
  }
  return pushes;
}

MobileMessage noticeOf(const std::string& text) {
  MobileMessage message;
  message.topic = "terminal.notice";
  message.message = CodeConvert::utf8_to_gbk(text);
  return message;
}

}  // namespace

Desk::Desk(const std::filesystem::path& dir, const IClock& clock, OpenedBook opened)
    : day_(clock),
      book_(std::move(opened.book)),
      committer_(dir, std::move(opened),
                 {[this](Book book) { restore(std::move(book)); },
                  [this](MobileMessage message) { outbox_.post(std::move(message)); },
                  [this](const std::string& text) { outbox_.post(noticeOf(text)); }}) {
  const std::lock_guard lock(mutex_);
  prices_.showAll(book_);
  if (committer_.fault().empty()) changeDay();
}

void Desk::apply(const std::function<void(Book&, Change&, int64_t now)>& work) {
  const std::lock_guard lock(mutex_);
  committer_.requireOpen();
  changeDay();
  Change change;
  work(book_, change, day_.now());
  if (!change.empty()) committer_.add(book_, change, pushesOf(book_, change));
}

void Desk::notice(const std::string& text) { committer_.notify(noticeOf(text)); }

void Desk::changeDay() {
  const std::optional<int64_t> today = day_.today();
  if (!today || *today <= book_.day) return;
  keep(equityRows(book_, TradingDay::lastMinute(book_.day)));
  Change change;
  settle(book_, change, *today);
  committer_.add(book_, change, pushesOf(book_, change));
  book_.startDay(*today);
  keep(equityRows(book_, day_.now()));
}

void Desk::record() {
  const std::lock_guard lock(mutex_);
  if (day_.today() == book_.day) keep(equityRows(book_, day_.now()));
}

// Behind the changes that the rows include.
void Desk::keep(std::vector<EquityRow> rows) {
  committer_.post([this, rows = std::move(rows)](Database& database) {
    if (!committer_.fault().empty()) return false;  // clients know it already
    try {
      database.save(rows);
      isKeeping_ = true;
    } catch (const StoreError& error) {
      if (std::exchange(isKeeping_, false)) outbox_.post(noticeOf(error.lostHistory()));
    }
    return false;
  });
}

void Desk::readEquity(const EquityRange& range, EquityReader done) {
  auto rows = std::make_shared<std::vector<EquityRow>>();
  committer_.post([rest = range, rows, done = std::move(done)](Database& database) mutable {
    const size_t before = rows->size();
    try {
      database.readEquity(rest, kRowsAtOnce, *rows);
    } catch (const StoreError& error) {
      done({}, &error);
      return false;
    }
    const bool isAll = rows->size() - before < kRowsAtOnce;
    if (isAll) {
      done(std::move(*rows), nullptr);
    } else {
      rest.from = rows->back().time + 1;
    }
    return !isAll;
  });
}

// The old book is destroyed after the lock is gone.
void Desk::restore(Book book) {
  const std::lock_guard lock(mutex_);
  std::swap(book_, book);
  prices_.showAll(book_);
}

}  // namespace orvane::terminal
