#include "terminal/trading/desk.h"

#include <cstdio>
#include <ctime>
#include <exception>
#include <vector>

#include <fmt/format.h>

#include "host/common.h"
#include "terminal/trading/pushrow.h"
#include "terminal/trading/settlement.h"

namespace orvane::terminal {
namespace {

int64_t localDay() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return (now + local.tm_gmtoff) / 86400;
}

// By hash code. Most prices are only in memory, so a reload would lose them.
std::vector<double> lastPrices(const Book& book) {
  std::vector<double> prices;
  prices.reserve(book.instruments.size());
  for (const auto& [hashCode, instrument] : book.instruments) prices.push_back(instrument.last);
  return prices;
}

}  // namespace

Desk::Desk(const std::filesystem::path& dir) : database_(dir), book_(database_.load()) {
  apply([](Book&, Change&) {});
}

void Desk::apply(const std::function<void(Book&, Change&)>& work) {
  const std::lock_guard lock(mutex_);
  if (const int64_t today = localDay(); today > book_.day) {
    commit([today](Book& book, Change& change) { settle(book, change, today); });
    book_ = reload();
  }
  commit(work);
}

void Desk::commit(const std::function<void(Book&, Change&)>& work) {
  Change change;
  const std::vector<double> prices = lastPrices(book_);
  try {
    work(book_, change);
    if (!change.empty()) store(change);
  } catch (...) {
    book_ = reload();
    auto price = prices.begin();
    for (auto& [hashCode, instrument] : book_.instruments) instrument.last = *price++;
    throw;
  }
  announce(change);
}

void Desk::store(const Change& change) try {
  database_.save(book_, change);
  isStoring_ = true;
} catch (...) {
  isStoring_ = false;
  throw;
}

void Desk::notice(const std::string& text) {
  MobileMessage message;
  message.topic = "terminal.notice";
  message.message = CodeConvert::utf8_to_gbk(text);
  outbox_.post(std::move(message));
}

// Ends the process if the book cannot be read back: nobody may trade on a book that differs from the disk.
Book Desk::reload() noexcept {
  try {
    return database_.load();
  } catch (const std::exception& e) {
    fmt::print(stderr,
               "pocket-terminal: the book cannot be read back: {}; ending, because it may differ from what is stored\n",
               e.what());
    std::terminate();
  }
}

void Desk::announce(const Change& change) {
  MobileMessage message;
  if (!change.orders.empty()) {
    message.topic = "order.push";
    message.data = orderRows(book_, change);
    outbox_.post(message);
  }
  if (!change.fills.empty()) {
    message.topic = "trade.push";
    message.data = fillRows(book_, change);
    outbox_.post(std::move(message));
  }
}

}  // namespace orvane::terminal
