#pragma once

#include <string>

#include "terminal/trading/book.h"

namespace orvane::terminal {

// Checks a new order against the book and computes the volumes that it closes.
class OrderCheck {
 public:
  // REQUIRES: the order's account and instrument exist in the book. Both references must outlive the check.
  OrderCheck(const Book& book, BookOrder& order);

  // Returns empty if the order is acceptable, and then has set `closeYesterday` and `closeToday`, and the opposite
  // quote as the price of a market order. Otherwise returns what is wrong, with the figure. UTF-8.
  std::string fault();

 private:
  std::string account();
  std::string market();
  std::string terms();
  std::string price();
  std::string volume();
  std::string closing();
  std::string funds();
  std::string creditLimit();
  void findClosable();
  bool wantsToClose() const;
  std::string allocate();
  BookOrder atFillPrice() const;

  const Book& book_;
  BookOrder& order_;
  const Account& account_;
  const Instrument& instrument_;
  int64_t freeYesterday_ = 0;  // the parts of the opposite holding that may be closed
  int64_t freeToday_ = 0;
  int64_t ownLeft_ = 0;  // part of the holding not bought with borrowed money
};

}  // namespace orvane::terminal
